// The static scanners: brackets, strings, literals and comments, forward and backward; instruction ends.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "vnxSyntaxe.h"

namespace {

int lastOf(const char* text) { return static_cast<int>(std::strlen(text)) - 1; }

typedef int (*Scan)(const char*, int, int);
int block(const char* s, int from, int limit) { return vnxSyntaxe::SearchEndOfTAPBloc(s, from, limit, 0); }
int blockC(const char* s, int from, int limit) { return vnxSyntaxe::SearchEndOfTAPBloc(s, from, limit, 1); }

// Forward scanners take (text, from, limit) and answer the closing offset or 0;
// backward ones take (text, from, lowest) and answer the opening offset or 0.
// Either way -1 stands for the text's last character.
struct ScanRow { const char* name; Scan scan; const char* text; int first, second, expected; };

void checkScans(std::initializer_list<ScanRow> rows) {
  for (const ScanRow& row : rows) {
    const int first = row.first < 0 ? lastOf(row.text) : row.first;
    const int second = row.second < 0 ? lastOf(row.text) : row.second;
    EXPECT_EQ(row.scan(row.text, first, second), row.expected)
        << row.name << " over [" << row.text << "] (" << first << ", " << second << ")";
  }
}

#define SCAN(f) #f, vnxSyntaxe::f

TEST(TreeScanner, ForwardSearchesNestTheirBracketsAndSkipLiteralsAndOtherBrackets) {
  checkScans({
      // Nesting; a ')' inside [], a string, a character literal, adjacent or wide literals does not close.
      {SCAN(SearchEndOfPar), "(a(b)c)", 0, -1, 6}, {SCAN(SearchEndOfPar), "(a[)]b)", 0, -1, 6},
      {SCAN(SearchEndOfPar), "(\")\")", 0, -1, 4}, {SCAN(SearchEndOfPar), "(')')", 0, -1, 4},
      {SCAN(SearchEndOfPar), "(\"a\"\"b\")", 0, -1, 7}, {SCAN(SearchEndOfPar), "(L\")\")", 0, -1, 5},
      {SCAN(SearchEndOfPar), "x(a)", 1, -1, 3}, {SCAN(SearchEndOfPar), "xy)", 1, -1, 1} /* not on '(': its start */,
      {SCAN(SearchEndOfPar), "(a", 0, -1, 0}, {SCAN(SearchEndOfPar), "(a)", 0, 1, 0} /* ')' past limit */,
      {SCAN(SearchEndOfPar), "(a)", 2, 2, 0} /* limit not above from */, {SCAN(SearchEndOfPar), "(\"a)", 0, -1, 0},
      {"block", block, "{a{b}c}", 0, -1, 6}, {"block", block, "{ \"}\" }", 0, -1, 6},
      {"block", block, "{ '}' }", 0, -1, 6}, {"block", block, "{ (}) }", 0, -1, 6}, {"block", block, "{ [}] }", 0, -1, 6},
      {"block", block, "{ /* } */ }", 0, -1, 5} /* without comments a '}' in one counts */,
      {"block", block, "{ a", 0, -1, 0}, {"block", block, "{}", 0, -1, 1},
      {"block+comments", blockC, "{ /* } */ }", 0, -1, 10}, {"block+comments", blockC, "{ // }\n}", 0, -1, 7},
      {"block+comments", blockC, "{ a/b }", 0, -1, 6}, {"block+comments", blockC, "{ // }", 0, -1, 0},
      {SCAN(SearchEndOfIndex), "[a[b]c]", 0, -1, 6}, {SCAN(SearchEndOfIndex), "[(])]", 0, -1, 4},
      {SCAN(SearchEndOfIndex), "[\"]\"]", 0, -1, 4}, {SCAN(SearchEndOfIndex), "[a", 0, -1, 0},
      {SCAN(SearchEndOfString), "\"abc\"", 0, -1, 4}, {SCAN(SearchEndOfString), "\"a\\\"b\"", 0, -1, 5},
      {SCAN(SearchEndOfString), "\"a\"\"b\"", 0, -1, 5}, {SCAN(SearchEndOfString), "\"a\"\"", 0, 2, 2} /* quote at limit */,
      {SCAN(SearchEndOfString), "\"ab", 0, -1, 0}, {SCAN(SearchEndOfString), "\"", 0, 0, 0},
      {SCAN(SearchEndOfString2), "'a'", 0, -1, 2}, {SCAN(SearchEndOfString2), "'\\''", 0, -1, 3},
      {SCAN(SearchEndOfString2), "'\"'", 0, -1, 2}, {SCAN(SearchEndOfString2), "'ab", 0, -1, 0},
      // The comment scanners keep their crossed names; a backslash hands back right after itself.
      {SCAN(SearchEndOfCComment), "// x\ny", 2, -1, 4}, {SCAN(SearchEndOfCComment), "// a\\\nb", 2, -1, 5},
      {SCAN(SearchEndOfCComment), "// x", 2, -1, 0}, {SCAN(SearchEndOfCComment), "//\n", 2, 2, 0},
      {SCAN(SearchEndOfCPPComment), "/* x */", 2, -1, 6}, {SCAN(SearchEndOfCPPComment), "/**/", 2, -1, 3},
      {SCAN(SearchEndOfCPPComment), "/* x *", 2, -1, 0}, {SCAN(SearchEndOfCPPComment), "/*/", 2, -1, 0},
  });
}

TEST(TreeScanner, BackwardSearchesFindTheOpeningCharacter) {
  checkScans({
      {SCAN(SearchBeginOfPar), "x(a(b)c)", -1, 0, 1}, {SCAN(SearchBeginOfPar), "x(a\")\"b)", -1, 0, 1},
      {SCAN(SearchBeginOfPar), "x(a[(]b)", -1, 0, 1}, {SCAN(SearchBeginOfPar), "x(a)", -1, 2, 0} /* '(' below lowest */,
      {SCAN(SearchBeginOfPar), "(a)", -1, 0, 0}, {SCAN(SearchBeginOfTAPBloc), "x{a{b}c}", -1, 0, 1},
      {SCAN(SearchBeginOfTAPBloc), "x{ (}) }", -1, 0, 1}, {SCAN(SearchBeginOfTAPBloc), "x{ '{' }", -1, 0, 1},
      {SCAN(SearchBeginOfTAPBloc), "x{a", 2, 0, 2} /* not on '}': its start */,
      {SCAN(SearchBeginOfIndex), "x[a[b]c]", -1, 0, 1}, {SCAN(SearchBeginOfIndex), "x[a\"]\"b]", -1, 0, 1},
      // An escaped quote is inside; one after two backslashes opens; adjacent literals are one string.
      {SCAN(SearchBeginOfString), "x\"a\\\"b\"", -1, 0, 1}, {SCAN(SearchBeginOfString), "x\"\\\\\"y\"", -1, 0, 4},
      {SCAN(SearchBeginOfString), "x\"a\"\"b\"", -1, 0, 1}, {SCAN(SearchBeginOfString), "x\"ab\"", -1, 2, 0},
      {SCAN(SearchBeginOfString2), "x'a'", -1, 0, 1}, {SCAN(SearchBeginOfString2), "x'\\''", -1, 0, 1},
  });
}

TEST(TreeScanner, UnclosedWideLiteralsAndCommentsLeaveAMessageAndWordCharactersArePlainAscii) {
  // A literal right behind a wide string is checked too, and so is one right behind a slash.
  const struct { const char* text; int withComments; const char* message; } rows[] = {
      {"(L\"a)", 0, "Missing \""}, {"(L'a)", 0, "Missing '"}, {"{ L\"a\"'b }", 0, "Missing '"},
      {"{ /* a }", 1, "Missing */"}, {"{ /\"a }", 0, "Missing \""}};
  for (const auto& row : rows) {
    vnxSyntaxe::ErrMsg = "";
    const int limit = lastOf(row.text);
    const int end = row.text[0] == '(' ? vnxSyntaxe::SearchEndOfPar(row.text, 0, limit)
                                       : vnxSyntaxe::SearchEndOfTAPBloc(row.text, 0, limit, row.withComments);
    EXPECT_EQ(end, 0) << row.text;
    EXPECT_STREQ(vnxSyntaxe::GetErrMsg(), row.message) << row.text;
  }
  vnxSyntaxe::ErrMsg = "";
  EXPECT_EQ(vnxSyntaxe::SearchEndOfPar("(\"a)", 0, 3), 0);
  EXPECT_STREQ(vnxSyntaxe::GetErrMsg(), "") << "a plain unclosed string fails silently";
  for (char c : std::string("azAZ09_")) EXPECT_EQ(vnxSyntaxe::isAlphaNumOrUnderScoreChar(c), 1) << c;
  for (char c : std::string(" -$.\xe9\x80")) EXPECT_EQ(vnxSyntaxe::isAlphaNumOrUnderScoreChar(c), 0) << int(c);
}

TEST(TreeScanner, DeepAlternatingBracketsFailInsteadOfExhaustingTheStack) {
  auto nested = [](int n) {
    std::string open, close;
    for (int i = 0; i < n; ++i) open += "([", close += "])";
    return open + close;
  };
  const std::string deep = nested(5000), fine = nested(200), prefixed = "x" + deep;
  EXPECT_EQ(vnxSyntaxe::SearchEndOfPar(deep.c_str(), 0, lastOf(deep.c_str())), 0);
  EXPECT_EQ(vnxSyntaxe::SearchBeginOfPar(prefixed.c_str(), lastOf(prefixed.c_str()), 0), 1);
  EXPECT_EQ(vnxSyntaxe::SearchEndOfPar(fine.c_str(), 0, lastOf(fine.c_str())), lastOf(fine.c_str()));
}

TEST(TreeScanner, InstructionEndFollowsStatementsLabelsAndBlocks) {
  const struct { const char* text; const char* first; } rows[] = {  // first: the text up to the end offset
      {"a=1; b=2;", "a=1;"}, {"if(x) y=1; else y=2;", "if(x) y=1;"}, {"if(a)if(b) x; else y;", "if(a)if(b) x; else y;"},
      {"if(a) if(b) x; else y;", "if(a) if(b) x;"},  // the blank hides the inner if
      {"else if(a) b; else c; d;", "else if(a) b; else c;"}, {"do{ i++; }while(i<3);", "do{ i++; }"},
      {"while(i<3); x;", "while(i<3);"}, {"if(c)do{ a; }while(b); x;", "if(c)do{ a; }while(b);"},
      {"for(i=0;i<3;i++){a;}b;", "for(i=0;i<3;i++){a;}"}, {"else{a;}b;", "else{a;}"}, {"public: int a;", "public:"},
      {"protected: int a;", "protected:"}, {"private: int a;", "private:"}, {"x = c ? 1 : 2; y;", "x = c ? 1 : 2;"},
      {"case 3: f();", "case 3:"}, {"unsigned flag:1; x;", "unsigned flag:1;"},
      {"unsigned flag : 1;", "unsigned flag :"}, {"label:1; x;", "label:"},
      {"class A : public B { int x; };", "class A : public B "}, {"a::b(c); d;", "a::b(c);"},
      {"A::A():x(1){}", "A::A():"}, {"f(\";\"); g;", "f(\";\");"}, {"c = ';'; d;", "c = ';';"},
      {"s = L\";\"; d;", "s = L\";\";"}, {"int f() { return 1; }", "int f() "}, {"x", "x"}, {"   ", "   "},
  };
  for (const auto& row : rows) {
    const int end = vnxSyntaxe::SearchEndOfTAPInstruction(row.text, 0, lastOf(row.text), 0, 0);
    EXPECT_EQ(std::string(row.text, static_cast<size_t>(end) + 1), row.first) << row.text;
  }
}

// (text, nested, pending '?', answer): nested mode takes a whole block; a pending '?' answers the first ':'.
TEST(TreeScanner, InstructionEndHonoursNestingAPendingQuestionAndFailsOnUnclosedConstructs) {
  const struct { const char* text; int nested, question, end; } rows[] = {
      {"x{a;}y;", 1, 0, 4}, {"x{a;}y;", 0, 0, 0} /* just before the '{' */, {"b : c;", 0, 1, 5}, {"b : c;", 0, 0, 2},
      {"f(a;", 0, 0, 0}, {"s = \"abc;", 0, 0, 0}, {"c = 'a;", 0, 0, 0}, {"if(a;", 0, 0, 0}, {"x[1;", 0, 0, 0}};
  for (const auto& row : rows)
    EXPECT_EQ(vnxSyntaxe::SearchEndOfTAPInstruction(row.text, 0, lastOf(row.text), row.nested, row.question), row.end)
        << row.text;
  EXPECT_EQ(vnxSyntaxe::SearchEndOfTAPInstruction("a;", 1, 0, 0, 0), 0) << "limit below from";
  std::string ok;  // chained controlled statements are capped at the nesting limit
  for (int i = 0; i < vnxSyntaxe::kMaxInstructionNesting; ++i) ok += "if(a)";
  const std::string tooDeep = "if(a)" + ok + "x; y;";
  ok += "x; y;";
  EXPECT_EQ(vnxSyntaxe::SearchEndOfTAPInstruction(ok.c_str(), 0, lastOf(ok.c_str()), 0, 0), lastOf(ok.c_str()) - 3);
  EXPECT_EQ(vnxSyntaxe::SearchEndOfTAPInstruction(tooDeep.c_str(), 0, lastOf(tooDeep.c_str()), 0, 0), 0);
}

TEST(TreeScanner, ScannersNeverReadPastLimit) {
  // Every prefix of every sample, from a heap copy cut at limit (ASan reports any read beyond it).
  const char* samples[] = {"if(a)if(b) x; else y;", "{ /* a */ \"b\" 'c' L\"d\"'e' }", "do{ a; }while(b);",
                           "x = c ? a::b : L'c';", "(a[b(c)d]e)", "public: x", "else do x; while(y);"};
  for (const char* sample : samples) {
    const int length = static_cast<int>(std::strlen(sample));
    for (int n = 1; n <= length; ++n) {
      char* copy = static_cast<char*>(std::memcpy(new char[n], sample, static_cast<size_t>(n)));
      const int limit = n - 1;
      for (int from = 0; from <= limit; ++from) {
        for (int nested = 0; nested < 2; ++nested)
          EXPECT_LE(vnxSyntaxe::SearchEndOfTAPInstruction(copy, from, limit, nested, 0), limit);
        for (Scan forward : {blockC, &vnxSyntaxe::SearchEndOfPar, &vnxSyntaxe::SearchEndOfIndex,
                             &vnxSyntaxe::SearchEndOfString, &vnxSyntaxe::SearchEndOfString2,
                             &vnxSyntaxe::SearchEndOfCPPComment})
          EXPECT_LE(forward(copy, from, limit), limit);
        for (Scan backward : {&vnxSyntaxe::SearchBeginOfTAPBloc, &vnxSyntaxe::SearchBeginOfPar,
                              &vnxSyntaxe::SearchBeginOfIndex, &vnxSyntaxe::SearchBeginOfString,
                              &vnxSyntaxe::SearchBeginOfString2})
          EXPECT_GE(backward(copy, from, 0), 0);
      }
      delete[] copy;
    }
  }
}

}  // namespace
