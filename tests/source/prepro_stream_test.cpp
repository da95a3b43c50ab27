// The preprocessed stream: squeezing (chunked runs against a character loop), noise words, list macros, and
// comments (chains of line comments too), directives and dead branches taken out.
#include <gtest/gtest.h>

#include <utility>

#include "directive_test_support.h"
#include "vnxComment.h"
#include "vnxZELPreproDirective.h"

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

TEST(PreproStream, DeadBranchesAreRecordedAsCommentsAndASecondPassFails) {
  StreamCapture quiet;
  vnxSourceFile* source = new vnxSourceFile("#if 0\nint dead;\n#else\nint live;\n#endif\n", nullptr, TAFileName());
  ASSERT_EQ(0, source->preProcess());
  EXPECT_EQ(1, source->preProcess()) << "the buffer is gone after the first pass";
  ZELListPtr<vnxComment> comments;
  source->getCommentList(comments);
  std::string all;
  for (int i = 1; i <= comments.Size(); ++i) all += std::string(comments[i]->getCommentString()) + "|";
  for (int i = 1; i <= comments.Size(); ++i) comments[i]->Release();
  EXPECT_NE(std::string::npos, all.find("int dead;"));
  EXPECT_EQ(std::string::npos, all.find("int live;"));
  source->Release();
  source = new vnxSourceFile("", nullptr, TAFileName());
  EXPECT_EQ(0, source->preProcess());
  EXPECT_EQ(0, source->GetSize());
  source->Release();
}

// Lines: the raw line of the stream's last character. Code lines: the rises of the raw line along the stream
// (only the entries leaving a line are looked up), over stretches of every length around the eight-entry steps,
// broken by squeezed blanks, comments, folds and dead branches.
TEST(PreproStream, CountsLinesAndCodeLines) {
  struct Row { std::string text; int lines, codeLines; };  // -1: not checked
  std::vector<Row> texts = {
      {"// header\n\nint a;\n/* c */\nint b;\n\n", 5, 2}, {"int a; int b;\n\n\nint c;", 4, 2},
      {"int f(int a,\n      int b);\n", 2, 2}, {"#if 0\nint x;\nint z;\n#endif\nint y;\n", 5, 1},
      {"int a;\n#if 1\nint b;\n#else\nint c;\n#endif\nint d;\n", 7, 3}, {"a\nb\nc\n", -1, -1},
      {"ab\ncd\n\nef  gh\n", -1, -1}, {"x = 1; // c\n  y = 2;\n/* a\nb */ z;\n", -1, -1},
      {"#if 0\nint x;\n#endif\nint y; int\n\tz;\n", -1, -1}, {"f(a,\n  b) { { g(); } }\n", -1, -1},
      {"s = \"a\nb\";\nt;\n", -1, -1}, {"a \\\nb\n", -1, -1}};
  for (int run = 1; run <= 17; ++run) {
    std::string text;
    for (int line = 0; line < 12; ++line) {
      text += std::string(static_cast<size_t>(run + line % 5), static_cast<char>('a' + line));
      text += line % 3 == 0 ? "  \n" : line % 3 == 1 ? "\n" : " ;\n\n";
    }
    texts.push_back({text, -1, -1});
  }
  for (const Row& text : texts) {
    SCOPED_TRACE(text.text);
    vnxSourceFile* source = new vnxSourceFile(text.text.c_str(), nullptr, TAFileName());
    ASSERT_EQ(0, source->preProcess());
    int rises = 0, previous = 0;
    for (int k = 0; k < source->GetSize(); ++k) {
      int line = 0, col = 0;
      ASSERT_EQ(0, source->GetPos(k, line, col));
      rises += line > previous ? 1 : 0;
      previous = line;
    }
    EXPECT_EQ(rises, source->GetNbCodeLine());
    if (text.lines >= 0) { EXPECT_EQ(text.lines, source->GetNbLine()); }
    if (text.codeLines >= 0) { EXPECT_EQ(text.codeLines, source->GetNbCodeLine()); }
    source->Release();
  }
}

// The pass's squeeze of letters, digits and blank-handling punctuation: blanks give one space, none at the
// start, none after "(),;>{", and a space before "(),;-*:" goes.
void expectSqueezed(const std::string& raw) {
  std::string out;
  std::vector<int> map;
  for (size_t i = 0; i < raw.size(); ++i) {
    const char c = raw[i];
    const bool blank = c == ' ' || c == '\t' || c == '\n';
    if (blank && (out.empty() || out.back() == ' ' || std::strchr("(),;>{", out.back()))) continue;
    if (!blank && !out.empty() && out.back() == ' ' && std::strchr("(),;-*:", c)) {
      out.pop_back();
      map.pop_back();
    }
    out += blank ? ' ' : c;
    map.push_back(static_cast<int>(i));
  }
  StreamCapture quiet;
  vnxSourceFile* source = new vnxSourceFile(ZELFileBuffer::CreateFromString(raw.c_str(), "t.h"), nullptr, TAFileName());
  ASSERT_EQ(0, source->preProcess()) << raw;
  ASSERT_EQ(out, std::string(source->GetStream(), static_cast<size_t>(source->GetSize()))) << raw;
  EXPECT_EQ(map, std::vector<int>(source->getPositionMap(), source->getPositionMap() + source->GetSize())) << raw;
  source->Release();
}

// "ex" (where the pass looks for "extern"), blanks, blank-dropping punctuation and the letters a noise word or
// list macro ends or starts with ("call", "decl", "t)", "SE", "ZE") at every offset around the sixteen-character
// chunks a run is copied in. No "n", so no word is "extern".
TEST(PreproRun, RunsCopiedInChunksSqueezeLikeTheCharacterLoopAtEveryOffset) {
  for (const char* piece : {"ex", " ", "  ", " (", "( ", ", ", " ;", "x -y", "a *b", " :", "> a", "{ b", "\tq",
                            "\n r", "vertex", "index", "E1", "_0", "x)", "(y)", "call", "decl l", "t)", "f(at )",
                            "SEQ", "ZE", "S Z", ";\n  Real", "a\n\t(b"}) {
    for (int offset = 0; offset < 40; ++offset) {
      std::string raw(static_cast<size_t>(offset), 'a');
      for (int k = 0; k < offset; k += 7) raw[static_cast<size_t>(k)] = 'e';
      expectSqueezed(raw + piece + " bcd efg hij kmo pqr stu vwx yz0 ABCD EFGH");
    }
  }
}

// The word "extern" goes wherever a chunk boundary falls around it; words that only contain "ex" stay.
TEST(PreproRun, ExternGoesAtEveryOffsetInsideALongRun) {
  const struct { const char* with; const char* without; } cases[] = {
      {" extern int y; vertex next", " int y; vertex next"}, {" index extern  int y;", " index int y;"},
      {";extern int z;", ";int z;"}, {" externals exam;", " externals exam;"},
  };
  for (const auto& c : cases) {
    for (int offset = 0; offset < 40; ++offset) {
      const std::string pad = std::string(static_cast<size_t>(offset), 'b') + "q", tail = " tail_of_the_text_here";
      const Preprocessed with = preprocess(pad + c.with + tail), without = preprocess(pad + c.without + tail);
      EXPECT_EQ(0, with.status);
      EXPECT_EQ(without.stream, with.stream) << "offset " << offset << ": " << c.with;
    }
  }
}

// Longer texts mixing the same characters at random, each a few hundred characters.
TEST(PreproRun, RandomOrdinaryTextSqueezesLikeTheCharacterLoop) {
  const char alphabet[] = "abcdexxeeEtx_09()   ,;-*:>{\t\nlSZ";
  unsigned int seed = 12345;
  for (int text = 0; text < 300; ++text) {
    std::string raw;
    for (int k = 0; k < 20 + text % 280; ++k) {
      seed = seed * 1103515245u + 12345u;
      raw += alphabet[(seed >> 16) % (sizeof(alphabet) - 1)];
    }
    expectSqueezed(raw);
  }
}

// blanks: the raw positions the stream's blanks map to; comments: "text@line:col>outputPosition", in order.
struct ChainCase { const char *raw, *stream; std::vector<int> blanks; std::vector<const char*> comments; int directs; };

std::string describe(vnxComment* c) {
  return std::string(c->getCommentString()) + "@" + std::to_string(c->getBeginLineInRawStream()) + ":" +
         std::to_string(c->getBeginColInRawStream()) + ">" + std::to_string(c->getOutputPosition());
}

// Runs of line comments, taken one after another without going back to the scan loop, match separate ones.
TEST(PreproCommentChain, ConsecutiveLineCommentsGiveTheStreamMapAndRecordsOfSeparateOnes) {
  const ChainCase cases[] = {
      // The blank for the first newline is dropped after ';'; blank lines and indentation between comments.
      {"int a;\n// one\n  // two\n\n//three\nint b;", "int a;int b;", {3, 35},
       {"// one@2:1>6", "// two@3:3>6", "//three@5:1>6"}, 0},
      // After a word the first newline gives the one blank, mapped to that newline.
      {"int a\n// one\n\t// two\nint b;", "int a int b;", {3, 5, 24}, {"// one@2:1>6", "// two@3:2>6"}, 0},
      // A comment right after text: the newline after it gives the blank.
      {"x// one\n \t // two\ny", "x y", {7}, {"// one@1:2>1", "// two@2:4>2"}, 0},
      // No blank after a quote; `extern "C"` and its braces go as without comments.
      {"extern \"C\"// c\n// d\n{ int v; }", "int v;", {25}, {"// c@1:11>9", "// d@2:1>9"}, 0},
      // The blank for the newline completes "extern " ten characters back, which removes the keyword.
      {"extern ab// c\n// d\nint v;", "ab int v;", {13, 22}, {"// c@1:10>9", "// d@2:1>3"}, 0},
      // The text ends inside the last comment.
      {"a;\n// one\n// two", "a;", {}, {"// one@2:1>2", "// two@3:1>2"}, 0},
      // A directive or a block comment between line comments ends the run; the scan loop takes them.
      {"// one\n#define X 1\n// two\nint y;", "int y;", {29}, {"// one@1:1>0", "// two@3:1>0"}, 1},
      {"// one\n/* two */\n// three\nz", "z", {}, {"// one@1:1>0", "/* two */@2:1>0", "// three@3:1>0"}, 0},
      // A continued line comment takes the next line; the one after it still chains.
      {"q\n// one \\\n two\n// three\nr", "q r", {1}, {"// one \\\n two@2:1>2", "// three@4:1>2"}, 0},
  };
  for (const ChainCase& c : cases) {
    StreamCapture quiet;
    vnxSourceFile* source = new vnxSourceFile(ZELFileBuffer::CreateFromString(c.raw, "t.h"), nullptr, TAFileName());
    ASSERT_EQ(0, source->preProcess()) << c.raw;
    const std::string stream(source->GetStream(), static_cast<size_t>(source->GetSize()));
    EXPECT_EQ(c.stream, stream) << c.raw;
    const std::string raw(c.raw);
    std::vector<int> blanks;
    for (size_t k = 0; k < stream.size(); ++k) {
      const int at = source->getPositionMap()[k];
      if (stream[k] == ' ') blanks.push_back(at);
      else EXPECT_EQ(stream[k], raw[static_cast<size_t>(at)]) << c.raw << " @" << k;
    }
    EXPECT_EQ(c.blanks, blanks) << c.raw;
    ZELListPtr<vnxComment> comments;
    source->getCommentList(comments);
    std::vector<std::string> got;
    for (int k = 1; k <= comments.Size(); ++k) {
      got.push_back(describe(comments[k]));
      comments[k]->Release();
    }
    EXPECT_EQ(std::vector<std::string>(c.comments.begin(), c.comments.end()), got) << c.raw;
    ZELListPtr<vnxZELPreproDirective> directives;
    source->getPreproDirectiveList(directives);
    EXPECT_EQ(c.directs, directives.Size()) << c.raw;
    for (int k = 1; k <= directives.Size(); ++k) directives[k]->Release();
    source->Release();
  }
}

}  // namespace
