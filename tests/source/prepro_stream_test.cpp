// The preprocessed stream: squeezing, punctuation rules, noise words, list
// macros, comments and directives taken out.
#include <gtest/gtest.h>

#include <string>

#include "TestSupport.h"
#include "ZELFileBuffer.h"
#include "vnxComment.h"
#include "vnxSourceFile.h"

namespace {

struct Preprocessed {
  std::string stream;
  int status = -1;
  std::string errors;
};

Preprocessed preprocess(const std::string& raw, const char* name = "t.h") {
  StreamCapture capture;
  vnxSourceFile* source =
      new vnxSourceFile(ZELFileBuffer::CreateFromString(raw.c_str(), name), nullptr, TAFileName());
  Preprocessed result;
  result.status = source->preProcess();
  if (source->GetStream()) result.stream.assign(source->GetStream(), static_cast<size_t>(source->GetSize()));
  result.errors = capture.text();
  source->Release();
  return result;
}

struct StreamCase {
  const char* raw;
  const char* stream;
};

TEST(PreproStream, SqueezesBlanksAndDropsThemAroundPunctuation) {
  const StreamCase cases[] = {
      {"int  a ;", "int a;"},
      {"f ( a , b )", "f(a,b)"},
      {"int\ta;", "int a;"},
      {"if (x) y = 1 ;", "if(x)y = 1;"},
      {"x = a - b;", "x = a- b;"},
      {"char * p;", "char* p;"},
      {"std::vector< int > v;", "std::vector< int >v;"},
      {"a ? b : c;", "a ? b: c;"},
      {"   leading", "leading"},
      {"int a;\r\nint b;\r\n", "int a;int b;"},
      {"int a;\n\n\nint b;", "int a;int b;"},
      {"s = \"a  b\" ;", "s =\"a  b\";"},
      {"c = ' ' ;", "c =' ';"},
      {"a\\\nb", "a b"},
      {"int \xC3\xA9;", "int;"},
  };
  for (const StreamCase& c : cases) {
    Preprocessed p = preprocess(c.raw);
    EXPECT_EQ(0, p.status) << c.raw;
    EXPECT_EQ(c.stream, p.stream) << "raw: " << c.raw;
  }
}

TEST(PreproStream, StringsAndCharacterLiteralsKeepTheirContent) {
  const StreamCase cases[] = {
      {"x = \"a /* not a comment */ b\";", "x =\"a /* not a comment */ b\";"},
      {"x = \"esc \\\" // still\";", "x =\"esc \\\" // still\";"},
      {"x = \"a\\\\\" ; y", "x =\"a\\\\\";y"},
      {"c = '\\'' ; d", "c ='\\'';d"},
      {"c = '\"' ; d = 1;", "c ='\"';d = 1;"},
  };
  for (const StreamCase& c : cases) EXPECT_EQ(c.stream, preprocess(c.raw).stream) << "raw: " << c.raw;
}

TEST(PreproStream, RemovesDeclarationNoise) {
  const StreamCase cases[] = {
      {"extern int x;", "int x;"},
      {"extern \"C\" { void f(); }", "void f();"},
      {"extern \"C\" int g();", "int g();"},
      {"void __stdcall f();", "void f();"},
      {"void _cdecl f();", "void f();"},
      {"class __declspec(dllexport) A;", "class A;"},
      {"class __declspec( dllimport ) A;", "class A;"},
      {"int externals;", "int externals;"},
      {"x = 1; extern", "x = 1;"},
  };
  for (const StreamCase& c : cases) EXPECT_EQ(c.stream, preprocess(c.raw).stream) << "raw: " << c.raw;
}

TEST(PreproStream, FoldsListMacrosIntoOneIdentifier) {
  const StreamCase cases[] = {
      {"ZELLISTP(vnxComment) x;", "ZELLISTP_vnxComment_ x;"},
      {"ZELLISTV( int ) values;", "ZELLISTV_int_ values;"},
      {"typedef SEQUENCE(Point) Points;", "typedef SEQUENCE_Point_ Points;"},
      {"SEQUENCE(a,b) stays;", "SEQUENCE(a,b)stays;"},
      {"MYSEQUENCE(a) x;", "MYSEQUENCE(a)x;"},
  };
  for (const StreamCase& c : cases) EXPECT_EQ(c.stream, preprocess(c.raw).stream) << "raw: " << c.raw;
}

TEST(PreproStream, ListMacroWithTwoWordsFailsThePass) {
  Preprocessed p = preprocess("ZELLISTP(const X) list;", "lists.h");
  EXPECT_EQ(1, p.status);
  EXPECT_NE(std::string::npos,
            p.errors.find("# VNX-ERROR:   Missing end of '(' in ZELLISTP() or ZELLISTV() or SEQUENCE in lists.h"));
}

TEST(PreproStream, FoldsABlockThatOnlyHoldsAnotherBlock) {
  EXPECT_EQ("{ a;}", preprocess("{{a;}}").stream);
  EXPECT_EQ("f(){ x;}", preprocess("f() {{ x; }}").stream);
  EXPECT_EQ("{a;}{b;}", preprocess("{a;} {b;}").stream);
}

TEST(PreproStream, CommentsLeaveNoTraceAndTextOnBothSidesJoins) {
  const StreamCase cases[] = {
      {"a/*c*/b", "ab"},
      {"a /* c */ b", "a b"},
      {"int a; // trailing\nint b;", "int a;int b;"},
      {"int a; /* multi\n line */ int b;", "int a;int b;"},
      {"x // unterminated at end", "x "},
  };
  for (const StreamCase& c : cases) EXPECT_EQ(c.stream, preprocess(c.raw).stream) << "raw: " << c.raw;
}

TEST(PreproStream, DirectivesAreTakenOut) {
  const StreamCase cases[] = {
      {"#define X 1\nint a;", "int a;"},
      {"  #  pragma once\nint a;", "int a;"},
      {"#include \"a.h\"\n#include <b.h>\nint a;", "int a;"},
      {"#define LONG a \\\n  b\nint c;", "int c;"},
      {"int a; #define NOT_A_DIRECTIVE\n", "int a;#define NOT_A_DIRECTIVE "},
      {"#define LAST", ""},
  };
  for (const StreamCase& c : cases) EXPECT_EQ(c.stream, preprocess(c.raw).stream) << "raw: " << c.raw;
}

TEST(PreproStream, ConditionalGroupsKeepOnlyTheSelectedBranch) {
  const StreamCase cases[] = {
      {"#if 0\nint a;\n#else\nint b;\n#endif\n", "int b;"},
      {"#ifdef HARBO_CLIENT\nint a;\n#endif\nint z;\n", "int a;int z;"},
      {"#ifndef HARBO_CLIENT\nint a;\n#endif\nint z;\n", "int z;"},
      {"#define A\n#ifdef A\nint a;\n#else\nint b;\n#endif\n", "int a;"},
      {"#ifdef A\n#ifdef B\nint ab;\n#endif\n#else\nint na;\n#endif\n", "int na;"},
      {"#define B 1\n#if defined(B)\n#if B\nint b;\n#endif\n#endif\n", "int b;"},
  };
  for (const StreamCase& c : cases) EXPECT_EQ(c.stream, preprocess(c.raw).stream) << "raw: " << c.raw;
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
    if (text.find("int dead;") != std::string::npos) found = true;
    EXPECT_EQ(std::string::npos, text.find("int live;"));
    comments[i]->Release();
  }
  EXPECT_TRUE(found);
  source->Release();
}

TEST(PreproStream, GroupRunningToTheEndOfTheTextIsReported) {
  Preprocessed p = preprocess("#ifdef HARBO_CLIENT\nint a;\n#endif", "end.h");
  EXPECT_EQ(0, p.status);
  EXPECT_EQ("int a;", p.stream);
  EXPECT_NE(std::string::npos, p.errors.find("# VNX-ERROR:   Problem in processing file end.h")) << p.errors;
  EXPECT_NE(std::string::npos, p.errors.find("# VNX-ERROR:   \tMaybe missing final newline character in file."));
}

TEST(PreproStream, MissingEndifLeavesTheTextAndSaysSo) {
  Preprocessed p = preprocess("#ifdef A\nint a;\n", "open.h");
  EXPECT_EQ(0, p.status);
  EXPECT_NE(std::string::npos, p.errors.find("Missing #endif directive for begin in line 1 in source open.h"));
  EXPECT_EQ("int a;", p.stream);
}

TEST(PreproStream, EmptyTextAndSecondPass) {
  vnxSourceFile* source = new vnxSourceFile("", nullptr, TAFileName());
  EXPECT_EQ(0, source->preProcess());
  EXPECT_EQ(0, source->GetSize());
  EXPECT_EQ(1, source->preProcess()) << "the buffer is gone after the first pass";
  source->Release();
}

TEST(PreproStream, CountsLinesAndCodeLines) {
  vnxSourceFile* source =
      new vnxSourceFile("// header\n\nint a;\n/* c */\nint b;\n\n", nullptr, TAFileName());
  ASSERT_EQ(0, source->preProcess());
  EXPECT_EQ("int a;int b;", std::string(source->GetStream()));
  EXPECT_EQ(5, source->GetNbLine());
  EXPECT_EQ(2, source->GetNbCodeLine());
  source->Release();
}

}  // namespace
