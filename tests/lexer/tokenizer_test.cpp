// The tokenizer's classification rules, its size limit, and its walk through
// a buffer. Expected offsets and kinds are worked out by hand from the rules.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "LexerTestSupport.h"

namespace {

struct Row {
  const char* text;
  std::vector<Tok> expected;
};

void expectRows(const std::vector<Row>& rows) {
  for (const Row& row : rows) EXPECT_EQ(row.expected, tokenize(row.text)) << "text: " << row.text;
}

TEST(LexerTokenizer, EachSpellingStandingAloneIsOneTokenOfItsKind) {
  const struct { const char* text; int kind; } rows[] = {
      {",", 0},    {"{", 1},     {"(", 2},    {"[", 3},     {"}", 4},      {")", 5},      {"]", 6},
      {";", 7},    {"!", 8},     {"~", 9},    {"+", 10},    {"-", 11},     {"*", 12},     {"/", 13},
      {"%", 14},   {"&", 15},    {"|", 16},   {"^", 17},    {"=", 18},     {"<", 19},     {">", 20},
      {"&&", 21},  {"&=", 22},   {"|=", 23},  {"^=", 24},   {"/=", 25},    {".*", 26},    {"...", 27},
      {"==", 28},  {"<=", 29},   {">=", 29},  {"-=", 31},   {"--", 32},    {"%=", 33},    {"!=", 34},
      {"||", 35},  {"+=", 36},   {"++", 37},  {"->", 38},   {"->*", 39},   {"::", 40},    {"<<", 43},
      {">>", 43},  {"<<=", 44},  {">>=", 44}, {"*=", 45},   {"::*", 46},   {"_x9", 47},   {"\"s\"", 48},
      {"'c'", 49}, {"##", 50},   {"#", 51},   {"\n", 52},   {"/* c */", 53}, {"// c\n", 54}, {"42", 55},
      {"?", 56},   {"@", 56},    {"$", 56},   {"\\", 56},   {"`", 56},     {".", 56},     {":", 56},
  };
  for (const auto& row : rows)
    EXPECT_EQ(std::vector<Tok>({{0, row.kind, row.text}}), tokenize(row.text)) << "text: " << row.text;
}

TEST(LexerTokenizer, OperatorsTakeTheLongestSpellingAndNumberSignsPairWhenTwoCharactersRemain) {
  expectRows({
      {"a<<=b>>c", {{0, ID, "a"}, {1, 44, "<<="}, {4, ID, "b"}, {5, 43, ">>"}, {7, ID, "c"}}},
      {"i---j", {{0, ID, "i"}, {1, 32, "--"}, {3, 11, "-"}, {4, ID, "j"}}},
      {"x=y==z", {{0, ID, "x"}, {1, 18, "="}, {2, ID, "y"}, {3, 28, "=="}, {5, ID, "z"}}},
      {"A::*p", {{0, ID, "A"}, {1, 46, "::*"}, {4, ID, "p"}}}, {"###", {{0, 50, "##"}, {2, 51, "#"}}},
      {"a##b", {{0, ID, "a"}, {1, 50, "##"}, {3, ID, "b"}}}, {"# #", {{0, 51, "#"}, {2, 51, "#"}}},
  });
}

TEST(LexerTokenizer, LoneDotsColonsStrayAndHighBytesAreUnknownOfLengthOne) {
  expectRows({
      {"..x", {{0, UNK, "."}, {1, UNK, "."}, {2, ID, "x"}}},
      {"a:b?c", {{0, ID, "a"}, {1, UNK, ":"}, {2, ID, "b"}, {3, UNK, "?"}, {4, ID, "c"}}},
      {"1.5", {{0, NUM, "1"}, {1, UNK, "."}, {2, NUM, "5"}}},
      {"\x01x\x7f", {{0, UNK, "\x01"}, {1, ID, "x"}, {2, UNK, "\x7f"}}},
      {"a \f b\vc", {{0, ID, "a"}, {2, UNK, "\f"}, {4, ID, "b"}, {5, UNK, "\v"}, {6, ID, "c"}}},
      {"caf\xC3\xA9", {{0, ID, "caf"}, {3, UNK, "\xC3"}, {4, UNK, "\xA9"}}}, {"\"\xC3\xA9\"", {{0, STR, "\"\xC3\xA9\""}}},
  });
}

TEST(LexerTokenizer, NumbersTakeOneSuffixLetterAndBlanksButNotNewlinesAreSkipped) {
  expectRows({
      {"10UL", {{0, NUM, "10U"}, {3, ID, "L"}}}, {"0x1F", {{0, NUM, "0"}, {1, ID, "x1F"}}},
      {"7l+1u", {{0, NUM, "7l"}, {2, 10, "+"}, {3, NUM, "1u"}}}, {"1e5", {{0, NUM, "1"}, {1, ID, "e5"}}},
      {"  \t\r a", {{5, ID, "a"}}}, {"a\r\nb", {{0, ID, "a"}, {2, NL, "\n"}, {3, ID, "b"}}}, {"   \t", {}}, {"", {}},
  });
}

TEST(LexerTokenizer, StringsAndCharacterLiteralsCloseOnTheirQuoteOrLeaveTheOpeningQuoteUnknown) {
  expectRows({
      {"\"a\\\"b\"", {{0, STR, "\"a\\\"b\""}}}, {"\"a\\\\\"", {{0, STR, "\"a\\\\\""}}},
      {"\"a\\\\\\\"b\"", {{0, STR, "\"a\\\\\\\"b\""}}}, {"\"\"", {{0, STR, "\"\""}}},
      {"\"a\nb\"", {{0, STR, "\"a\nb\""}}}, {"L\"w\"", {{0, ID, "L"}, {1, STR, "\"w\""}}},
      // Unterminated: the quote alone is unknown and the rest is tokenized.
      {"\"abc", {{0, UNK, "\""}, {1, ID, "abc"}}}, {"\"\\", {{0, UNK, "\""}, {1, UNK, "\\"}}},
      {"\"a\\\"", {{0, UNK, "\""}, {1, ID, "a"}, {2, UNK, "\\"}, {3, UNK, "\""}}},
      // Character literals hold one character or an escape up to the next quote.
      {"'\\''", {{0, CHR, "'\\''"}}}, {"'\\\\'", {{0, CHR, "'\\\\'"}}}, {"'\\x41'", {{0, CHR, "'\\x41'"}}},
      {"'''", {{0, CHR, "'''"}}}, {"'\\n\nx'", {{0, CHR, "'\\n\nx'"}}},  // the escape form's search crosses lines
      // Multi-character constants, the empty literal and unterminated ones are not literals.
      {"'ab'", {{0, UNK, "'"}, {1, ID, "ab"}, {3, UNK, "'"}}}, {"''", {{0, UNK, "'"}, {1, UNK, "'"}}},
      {"'", {{0, UNK, "'"}}}, {"'a", {{0, UNK, "'"}, {1, ID, "a"}}}, {"'\\ab", {{0, UNK, "'"}, {1, UNK, "\\"}, {2, ID, "ab"}}},
  });
}

TEST(LexerTokenizer, LineCommentsRunThroughTheirNewlineAndBlockCommentsToTheFirstStarSlash) {
  expectRows({
      {"//", {{0, LINE, "//"}}}, {"// a \\\n b\nc", {{0, LINE, "// a \\\n b\n"}, {10, ID, "c"}}},
      {"// x\r\ny", {{0, LINE, "// x\r\n"}, {6, ID, "y"}}},
      // A backslash before CR-LF does not continue the comment: the CR sits between.
      {"// a \\\r\nb\n", {{0, LINE, "// a \\\r\n"}, {8, ID, "b"}, {9, NL, "\n"}}},
      // A comment left open on the last line is not a comment.
      {"//x\n//y", {{0, LINE, "//x\n"}, {4, UNK, "/"}, {5, 13, "/"}, {6, ID, "y"}}},
      // Block comments end at the first slash after a star.
      {"/*/", {{0, BLOCK, "/*/"}}}, {"/* a\nb */", {{0, BLOCK, "/* a\nb */"}}},
      {"a/**/b", {{0, ID, "a"}, {1, BLOCK, "/**/"}, {5, ID, "b"}}},
      // After a backslash "/*" opens nothing; an unterminated one is no comment.
      {"\\/* x */", {{0, UNK, "\\"}, {1, 13, "/"}, {2, 12, "*"}, {4, ID, "x"}, {6, 12, "*"}, {7, 13, "/"}}},
      {"/* a * / b", {{0, UNK, "/"}, {1, 12, "*"}, {3, ID, "a"}, {5, 12, "*"}, {7, 13, "/"}, {9, ID, "b"}}},
  });
}

TEST(LexerTokenizer, SizeLimitsWhereTokensStartAndWhereDelimitedTokensEnd) {
  const struct { const char* text; unsigned int size; std::vector<Tok> expected; } rows[] = {
      // Identifiers, operators and escaped character literals run to their natural end.
      {"abcdef", 3, {{0, ID, "abcdef"}}}, {"x   y", 2, {{0, ID, "x"}, {4, ID, "y"}}},
      {"a+=b", 2, {{0, ID, "a"}, {1, 36, "+="}}}, {"'\\x41'", 2, {{0, CHR, "'\\x41'"}}},
      {"a,b", 1, {{0, ID, "a"}}},
      // Strings, comments and numbers must end inside the size.
      {"a \"bc\"", 4, {{0, ID, "a"}, {2, UNK, "\""}, {3, ID, "bc"}}},
      {"x // c\n", 4, {{0, ID, "x"}, {2, UNK, "/"}, {3, 13, "/"}}},
      {"x /**/", 5, {{0, ID, "x"}, {2, UNK, "/"}, {3, 12, "*"}, {4, 12, "*"}}}, {"123", 3, {{0, NUM, "123"}}},
      {"12u", 2, {{0, UNK, "1"}, {1, UNK, "2"}}}, {"12u", 3, {{0, NUM, "12u"}}},
      // "##" needs the requested offset, not the '#' itself, to leave two characters.
      {"##", 1, {{0, 51, "#"}}}, {" ##", 2, {{1, 50, "##"}}}, {"x##", 2, {{0, ID, "x"}, {1, 51, "#"}}},
      {"ab", 0, {}}, {"ab", 100, {{0, ID, "ab"}}},
  };
  for (const auto& row : rows)
    EXPECT_EQ(row.expected, tokenize(row.text, row.size)) << "text: " << row.text << " size " << row.size;
}

TEST(LexerTokenizer, SizeIsClippedAtTheFirstNulAndNullTextIsEmpty) {
  const std::string withNul("ab\0cd", 5);
  EXPECT_EQ(std::vector<Tok>({{0, ID, "ab"}}), tokenize(withNul.data(), 5));
  EXPECT_TRUE(vnxTokenizer(withNul.data(), 5).getStringSize() == 2u && vnxTokenizer(withNul.data()).getStringSize() == 2u);
  EXPECT_EQ(3u, vnxTokenizer("abcd", 3).getStringSize());
  EXPECT_EQ(0u, vnxTokenizer(nullptr).getStringSize() + vnxTokenizer(nullptr, 5).getStringSize());
  EXPECT_TRUE(tokenize(nullptr).empty() && tokenize(nullptr, 5).empty());
}

TEST(LexerTokenizer, TokenAtCursorReportsWhereTheTokenBeginsOrLeavesThePositionAlone) {
  vnxTokenizer tokenizer("ab  cd   ");
  int pos = 99;
  const auto at = [&](unsigned int cursor) {
    const vnxToken t = tokenizer.getTokenAtCursor(cursor, pos);
    return Tok{pos, t.getKind(), t.getStart() ? std::string(t.getStart(), t.getLength()) : "<null>"};
  };
  EXPECT_EQ(Tok({1, ID, "b"}), at(1));  // inside an identifier: its tail
  EXPECT_EQ(Tok({4, ID, "cd"}), at(2));
  EXPECT_EQ(Tok({9, UNK, "<null>"}), at(6));  // only blanks left: the null token, position on the NUL
  pos = 99;  // at or past the size the position is left alone
  EXPECT_TRUE(at(9) == Tok({99, UNK, "<null>"}) && at(1000) == Tok({99, UNK, "<null>"}));
}

TEST(LexerTokenIterator, WalksToTheEndStaysThereAndRestartsOnInit) {
  const char* text = "a ?b";
  vnxTokenizer tokenizer(text);
  vnxTokenIterator it = tokenizer.getTokenIterator();
  EXPECT_TRUE(it.getString() == text && it.getCursor() == text && it.getTokenPosition() == -1);
  vnxToken token;
  ASSERT_TRUE(it.getNextToken(token) == 1 && it.getCursor() == text + 1);
  vnxTokenIterator copy(it);
  ASSERT_TRUE(it.getNextToken(token) == 1 && token.getKind() == UNK);  // an unknown character does not stop the walk
  ASSERT_TRUE(it.getNextToken(token) == 1 && it.getTokenPosition() == 3);
  for (int i = 0; i < 2; ++i)
    EXPECT_TRUE(it.getNextToken(token) == 0 && token.getStart() == nullptr && token.getLength() == 0 && it.getCursor() == nullptr);
  // Copies walk on their own.
  ASSERT_TRUE(copy.getNextToken(token) == 1 && copy.getTokenPosition() == 2);
  vnxTokenIterator assigned;
  assigned = copy;
  ASSERT_TRUE(assigned.getNextToken(token) == 1 && assigned.getTokenPosition() == 3);
  it.init();
  EXPECT_TRUE(it.getTokenPosition() == -1 && it.getCursor() == text);
  ASSERT_TRUE(it.getNextToken(token) == 1 && token.getStart() == text);
}

TEST(LexerTokenIterator, WithoutATokenizerItAnswersZeroAndLeavesTheTokenAlone) {
  const char* text = "abc";
  vnxTokenIterator none, onNull(nullptr);
  for (vnxTokenIterator* it : {&none, &onNull}) {
    vnxToken token(text, 2, ID);
    EXPECT_EQ(0, it->getNextToken(token));
    EXPECT_TRUE(token.getStart() == text && token.getLength() == 2 && token.getKind() == ID && it->getString() == nullptr &&
                it->getCursor() == nullptr && it->getTokenPosition() == -1);
  }
}

TEST(LexerToken, EqualityComparesSpellingsNotKinds) {
  const char* text = "abc abd ab";
  const vnxToken abc(text, 3, ID);
  EXPECT_TRUE(abc == vnxToken(text, 3, STR) && !(abc != vnxToken(text, 3, STR)));
  EXPECT_TRUE(abc != vnxToken(text + 4, 3, ID) && abc != vnxToken(text + 8, 2, ID));
  // Characters after a NUL are not compared, as strncmp does.
  const char left[] = {'a', '\0', 'x'}, right[] = {'a', '\0', 'y'};
  EXPECT_TRUE(vnxToken(left, 3, UNK) == vnxToken(right, 3, UNK));
  // The null token equals any empty token and no other.
  EXPECT_TRUE(vnxToken() == vnxToken::ZELCSCTokenNull && vnxToken(text, 0, ID) == vnxToken::ZELCSCTokenNull);
  EXPECT_TRUE(abc != vnxToken::ZELCSCTokenNull);
  EXPECT_EQ(UNK, vnxToken::ZELCSCTokenNull.getKind());
}

}  // namespace
