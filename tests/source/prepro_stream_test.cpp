// The preprocessed stream: squeezing, noise words, list macros, comments and directives taken out.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "directive_test_support.h"
#include "vnxComment.h"

namespace {

TEST(PreproStream, TheStreamIsTheCodeSqueezedWithNoiseCommentsDirectivesAndDeadBranchesTakenOut) {
  const struct { const char* raw; const char* stream; } cases[] = {
      // Blanks are squeezed and dropped around punctuation.
      {"int  a ;", "int a;"}, {"if (x) y = 1 ;", "if(x)y = 1;"}, {"x = a - b;", "x = a- b;"}, {"char * p;", "char* p;"},
      {"std::vector< int > v;", "std::vector< int >v;"}, {"a ? b : c;", "a ? b: c;"}, {"a\\\nb", "a b"},
      {"f(a ) ; g( b  ) ;h(x\t)", "f(a);g(b);h(x)"}, {"    indented;\n\t\t  more  ;\n", "indented;more;"},
      {"int a;\r\nint b;\r\n", "int a;int b;"}, {"int \xC3\xA9;", "int;"},
      // Runs of blanks stepped over sixteen at a time: ending at each chunk offset, with tabs/newlines, to the end.
      {"a                 b", "a b"}, {"a                \t   \t  \n       b", "a b"},
      {"x ;                         ", "x;"}, {"f(                      x                 )", "f(x)"},
      // Literals keep their content.
      {"s = \"a  b\" ;", "s =\"a  b\";"}, {"x = \"a /* not a comment */ b\";", "x =\"a /* not a comment */ b\";"},
      {"x = \"esc \\\" // still\";", "x =\"esc \\\" // still\";"}, {"x = \"a\\\\\" ; y", "x =\"a\\\\\";y"},
      {"c = '\\'' ; d", "c ='\\'';d"}, {"c = '\"' ; d = 1;", "c ='\"';d = 1;"},
      // Declaration noise goes, and only as whole words.
      {"extern \"C\" { void f(); }", "void f();"}, {"extern \"C\" int g();", "int g();"}, {"x = 1; extern", "x = 1;"},
      {"void _cdecl f();", "void f();"}, {"int externals;", "int externals;"},
      {"int value; extern int y;", "int value;int y;"}, {"int index = next + vertex;", "int index = next + vertex;"},
      {"typedef void (__stdcall *callback)(int);", "typedef void(*callback)(int);"},
      {"int WINAPI_cdecl x; long  __cdecl f(int  a ,  int  b ) ;", "int WINAPI x;long f(int a,int b);"},
      {"class __declspec(dllexport) Widget : public Base {};", "class Widget: public Base {};"},
      {"long_identifier_with_an_e_xample_in_it = 1;", "long_identifier_with_an_e_xample_in_it = 1;"},
      // List macros fold into one identifier; a block holding only a block folds.
      {"ZELLISTP(vnxComment) x;", "ZELLISTP_vnxComment_ x;"}, {"ZELLISTV( int ) values;", "ZELLISTV_int_ values;"},
      {"SEQUENCE(a,b) stays;", "SEQUENCE(a,b)stays;"}, {"MYSEQUENCE(a) x;", "MYSEQUENCE(a)x;"},
      {"LPSTR s; SEQUENCE(Point) pts; ZELLISTV(int) v;", "LPSTR s;SEQUENCE_Point_ pts;ZELLISTV_int_ v;"},
      {"f() {{ x; }}", "f(){ x;}"}, {"{{ {{x;}} }}", "{   x;}"}, {"{{x;}}}}", "{ x;}}}"}, {"{ {{x;}} y;}", "{{ x;}y;}"},
      {"{{{x;}\"}\"}}", "{ {x;}\"}\"}"}, {"{a;} {b;}", "{a;}{b;}"},
      // Comments leave no trace and the text on both sides joins.
      {"a/*c*/b", "ab"}, {"a /* c */ b", "a b"}, {"int a; /* multi\n line */ int b;", "int a;int b;"},
      {"x // unterminated at end", "x "},
      // Directives are taken out, only at the start of a line; conditional groups keep only the selected branch.
      {"  #  pragma once\nint a;", "int a;"}, {"#define LONG a \\\n  b\nint c;", "int c;"}, {"#define LAST", ""},
      {"int a; #define NOT_A_DIRECTIVE\n", "int a;#define NOT_A_DIRECTIVE "},
      {"#ifdef HARBO_CLIENT\nint a;\n#endif\nint z;\n", "int a;int z;"},
      {"#define A\n#ifdef A\nint a;\n#else\nint b;\n#endif\n", "int a;"},
      {"#define B 1\n#if defined(B)\n#if B\nint b;\n#endif\n#endif\n", "int b;"},
  };
  for (const auto& c : cases) {
    Preprocessed p = preprocess(c.raw);
    EXPECT_EQ(0, p.status) << c.raw;
    EXPECT_EQ(c.stream, p.stream) << "raw: " << c.raw;
  }
}

TEST(PreproStream, ProblemsAreReportedWithTheFileName) {
  const struct { const char* raw; int status; const char* stream; std::vector<std::string> messages; } cases[] = {
      {"ZELLISTP(const X) list;", 1, "",
       {"# VNX-ERROR:   Missing end of '(' in ZELLISTP() or ZELLISTV() or SEQUENCE in t.h"}},
      {"#ifdef HARBO_CLIENT\nint a;\n#endif", 0, "int a;",
       {"# VNX-ERROR:   Problem in processing file t.h",
        "# VNX-ERROR:   \tMaybe missing final newline character in file."}},
      {"#ifdef A\nint a;\n", 0, "int a;", {"Missing #endif directive for begin in line 1 in source t.h"}},
  };
  for (const auto& c : cases) {
    Preprocessed p = preprocess(c.raw);
    EXPECT_EQ(c.status, p.status) << c.raw;
    if (c.status == 0) {
      EXPECT_EQ(c.stream, p.stream) << c.raw;
    }
    for (const std::string& m : c.messages) EXPECT_NE(std::string::npos, p.errors.find(m)) << p.errors;
  }
}

TEST(PreproStream, DeadBranchesAreRecordedAsComments) {
  StreamCapture quiet;
  vnxSourceFile* source = new vnxSourceFile("#if 0\nint dead;\n#else\nint live;\n#endif\n", nullptr, TAFileName());
  ASSERT_EQ(0, source->preProcess());
  ZELListPtr<vnxComment> comments;
  source->getCommentList(comments);
  bool found = false;
  for (int i = 1; i <= comments.Size(); ++i) {
    const std::string text = comments[i]->getCommentString();
    found = found || text.find("int dead;") != std::string::npos;
    EXPECT_EQ(std::string::npos, text.find("int live;"));
    comments[i]->Release();
  }
  EXPECT_TRUE(found);
  source->Release();
}

TEST(PreproStream, EmptyTextAndSecondPass) {
  vnxSourceFile* source = new vnxSourceFile("", nullptr, TAFileName());
  EXPECT_EQ(0, source->preProcess());
  EXPECT_EQ(0, source->GetSize());
  EXPECT_EQ(1, source->preProcess()) << "the buffer is gone after the first pass";
  source->Release();
}

TEST(PreproStream, CountsLinesAndCodeLines) {
  // Lines: the raw line of the stream's last character; code lines: the raw lines the stream comes from.
  const struct { const char* text; const char* stream; int lines; int codeLines; } rows[] = {
      {"// header\n\nint a;\n/* c */\nint b;\n\n", "int a;int b;", 5, 2},
      {"int a; int b;\n\n\nint c;", "int a;int b;int c;", 4, 2},
      {"int f(int a,\n      int b);\n", "int f(int a,int b);", 2, 2},
      {"#if 0\nint x;\nint z;\n#endif\nint y;\n", "int y;", 5, 1},
      {"int a;\n#if 1\nint b;\n#else\nint c;\n#endif\nint d;\n", "int a;int b;int d;", 7, 3},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    vnxSourceFile* source = new vnxSourceFile(row.text, nullptr, TAFileName());
    ASSERT_EQ(0, source->preProcess());
    EXPECT_EQ(row.stream, std::string(source->GetStream()));
    EXPECT_EQ(row.lines, source->GetNbLine());
    EXPECT_EQ(row.codeLines, source->GetNbCodeLine());
    source->Release();
  }
}

TEST(PreproStream, CodeLinesAreTheRisesOfTheLineAlongTheStream) {
  // The count reads only the ends of runs copied as they stand; the reference
  // reads every character's line. Runs of every length around the four-entry
  // steps, broken by squeezed blanks, comments, folds and dead branches.
  std::vector<std::string> texts = {
      "a\nb\nc\n", "ab\ncd\n\nef  gh\n", "x = 1; // c\n  y = 2;\n/* a\nb */ z;\n",
      "#if 0\nint x;\n#endif\nint y; int\n\tz;\n", "f(a,\n  b) { { g(); } }\n", "s = \"a\nb\";\nt;\n",
      "a \\\nb\n"};
  for (int run = 1; run <= 9; ++run) {
    std::string text;
    for (int line = 0; line < 12; ++line) {
      text += std::string(static_cast<size_t>(run + line % 5), static_cast<char>('a' + line));
      text += line % 3 == 0 ? "  \n" : line % 3 == 1 ? "\n" : " ;\n\n";
    }
    texts.push_back(text);
  }
  for (const std::string& text : texts) {
    SCOPED_TRACE(text);
    vnxSourceFile* source = new vnxSourceFile(text.c_str(), nullptr, TAFileName());
    ASSERT_EQ(0, source->preProcess());
    int rises = 0, previous = 0;
    for (int k = 0; k < source->GetSize(); ++k) {
      int line = 0, col = 0;
      ASSERT_EQ(0, source->GetPos(k, line, col));
      rises += line > previous ? 1 : 0;
      previous = line;
    }
    EXPECT_EQ(rises, source->GetNbCodeLine());
    source->Release();
  }
}

}  // namespace
