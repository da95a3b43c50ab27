// Tokens, token lists and the tokenizer: classification rules, the size limit, the walk through a
// buffer, and bad or large input (it stays inside its buffer, always advances, and stays linear).
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <ostream>
#include <string>
#include <type_traits>
#include <vector>

#include "TAFatalError.h"
#include "TestSupport.h"
#include "ZELListValvnxToken.h"
#include "vnxToken.h"
#include "vnxTokenizer.h"

static_assert(std::is_same<ZELListVal<vnxToken>, ZELListValvnxToken>::value, "the generic spelling must name the token list");

namespace {

// A token as (offset, kind, text), and a buffer's whole token sequence as the iterator gives it.
struct Tok {
  int pos, kind;
  std::string text;
  bool operator==(const Tok& o) const { return pos == o.pos && kind == o.kind && text == o.text; }
};

inline std::ostream& operator<<(std::ostream& out, const Tok& t) {
  out << "{" << t.pos << ", " << t.kind << ", \"";
  for (char c : t.text) out << (c == '\n' ? "\\n" : c == '\r' ? "\\r" : c == '\t' ? "\\t" : std::string(1, c));
  return out << "\"}";
}

inline std::vector<Tok> drain(vnxTokenizer& tokenizer) {
  std::vector<Tok> out;
  vnxTokenIterator it = tokenizer.getTokenIterator();
  vnxToken token;
  while (it.getNextToken(token))
    out.push_back(Tok{it.getTokenPosition(), token.getKind(), std::string(token.getStart(), token.getLength())});
  return out;
}

inline std::vector<Tok> tokenize(const char* text) { vnxTokenizer t(text); return drain(t); }
inline std::vector<Tok> tokenize(const char* text, unsigned int size) { vnxTokenizer t(text, size); return drain(t); }

// Short kind names for the expectation tables.
constexpr int ID = vnxToken::kIdentifier, NUM = vnxToken::kNumber, STR = vnxToken::kString, CHR = vnxToken::kCharacter;
constexpr int NL = vnxToken::kNewline, UNK = vnxToken::kUnknown, BLOCK = vnxToken::kBlockComment, LINE = vnxToken::kLineComment;

struct Row {
  const char* text;
  std::vector<Tok> expected;
  unsigned int size = ~0u;  // ~0u: the one-argument constructor
};

void expectRows(const std::vector<Row>& rows) {
  for (const Row& row : rows)
    EXPECT_EQ(row.expected, row.size == ~0u ? tokenize(row.text) : tokenize(row.text, row.size))
        << "text: " << row.text << " size " << row.size;
}

TEST(LexerTokenizer, EachSpellingStandingAloneIsOneTokenOfItsKind) {
  const struct { const char* text; int kind; } rows[] = {
      {",", 0}, {"{", 1}, {"(", 2}, {"[", 3}, {"}", 4}, {")", 5}, {"]", 6}, {";", 7}, {"!", 8}, {"~", 9}, {"+", 10},
      {"-", 11}, {"*", 12}, {"/", 13}, {"%", 14}, {"&", 15}, {"|", 16}, {"^", 17}, {"=", 18}, {"<", 19}, {">", 20},
      {"&&", 21}, {"&=", 22}, {"|=", 23}, {"^=", 24}, {"/=", 25}, {".*", 26}, {"...", 27}, {"==", 28}, {"<=", 29},
      {">=", 29}, {"-=", 31}, {"--", 32}, {"%=", 33}, {"!=", 34}, {"||", 35}, {"+=", 36}, {"++", 37}, {"->", 38},
      {"->*", 39}, {"::", 40}, {"<<", 43}, {">>", 43}, {"<<=", 44}, {">>=", 44}, {"*=", 45}, {"::*", 46}, {"_x9", 47},
      {"\"s\"", 48}, {"'c'", 49}, {"##", 50}, {"#", 51}, {"\n", 52}, {"/* c */", 53}, {"// c\n", 54}, {"42", 55},
      {"?", 56}, {"@", 56}, {"$", 56}, {"\\", 56}, {"`", 56}, {".", 56}, {":", 56},
  };
  for (const auto& row : rows)
    EXPECT_EQ(std::vector<Tok>({{0, row.kind, row.text}}), tokenize(row.text)) << "text: " << row.text;
}

TEST(LexerTokenizer, OperatorsTakeTheLongestSpellingAndNumberSignsPairWhenTwoCharactersRemain) {
  expectRows({
      {"a<<=b>>c", {{0, ID, "a"}, {1, 44, "<<="}, {4, ID, "b"}, {5, 43, ">>"}, {7, ID, "c"}}},
      {"i---j", {{0, ID, "i"}, {1, 32, "--"}, {3, 11, "-"}, {4, ID, "j"}}},
      {"x=y==z", {{0, ID, "x"}, {1, 18, "="}, {2, ID, "y"}, {3, 28, "=="}, {5, ID, "z"}}},
      {"A::*p", {{0, ID, "A"}, {1, 46, "::*"}, {4, ID, "p"}}},
      {"###", {{0, 50, "##"}, {2, 51, "#"}}}, {"# #", {{0, 51, "#"}, {2, 51, "#"}}},
  });
}

TEST(LexerTokenizer, LoneDotsColonsStrayAndHighBytesAreUnknownOfLengthOne) {
  expectRows({
      {"..x", {{0, UNK, "."}, {1, UNK, "."}, {2, ID, "x"}}}, {"1.5", {{0, NUM, "1"}, {1, UNK, "."}, {2, NUM, "5"}}},
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

TEST(LexerTokenizer, SizeLimitsWhereTokensStartAndWhereDelimitedTokensEndAfterClippingAtTheFirstNul) {
  expectRows({
      // Identifiers, operators and escaped character literals run to their natural end.
      {"abcdef", {{0, ID, "abcdef"}}, 3}, {"x   y", {{0, ID, "x"}, {4, ID, "y"}}, 2},
      {"a+=b", {{0, ID, "a"}, {1, 36, "+="}}, 2}, {"'\\x41'", {{0, CHR, "'\\x41'"}}, 2}, {"a,b", {{0, ID, "a"}}, 1},
      // Strings, comments and numbers must end inside the size.
      {"a \"bc\"", {{0, ID, "a"}, {2, UNK, "\""}, {3, ID, "bc"}}, 4},
      {"x // c\n", {{0, ID, "x"}, {2, UNK, "/"}, {3, 13, "/"}}, 4},
      {"x /**/", {{0, ID, "x"}, {2, UNK, "/"}, {3, 12, "*"}, {4, 12, "*"}}, 5}, {"123", {{0, NUM, "123"}}, 3},
      {"12u", {{0, UNK, "1"}, {1, UNK, "2"}}, 2}, {"12u", {{0, NUM, "12u"}}, 3},
      // "##" needs the requested offset, not the '#' itself, to leave two characters.
      {"##", {{0, 51, "#"}}, 1}, {" ##", {{1, 50, "##"}}, 2}, {"x##", {{0, ID, "x"}, {1, 51, "#"}}, 2},
      {"ab", {}, 0}, {"ab", {{0, ID, "ab"}}, 100}, {"ab\0cd", {{0, ID, "ab"}}, 5},  // clipped at the first NUL
  });
  EXPECT_TRUE(vnxTokenizer("ab\0cd", 5).getStringSize() == 2u && vnxTokenizer("ab\0cd").getStringSize() == 2u);
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

TEST(LexerTokenIterator, WalksToTheEndStaysThereRestartsOnInitAndAnswersZeroWithoutATokenizer) {
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
  // Without a tokenizer the token is left alone.
  vnxTokenIterator none, onNull(nullptr);
  for (vnxTokenIterator* idle : {&none, &onNull}) {
    token = vnxToken(text, 2, ID);
    EXPECT_TRUE(idle->getNextToken(token) == 0 && token.getStart() == text && token.getLength() == 2 && token.getKind() == ID);
    EXPECT_TRUE(idle->getString() == nullptr && idle->getCursor() == nullptr && idle->getTokenPosition() == -1);
  }
}

// Token lists: owned copies, 1-based positions, deep copies.
const char kText[] = "alpha beta gamma delta";

vnxToken word(int index) {
  static const int starts[] = {0, 6, 11, 17}, lengths[] = {5, 4, 5, 5};
  return vnxToken(kText + starts[index], static_cast<unsigned>(lengths[index]), vnxToken::kIdentifier);
}

std::string spelled(const ZELListValvnxToken& list) {
  std::string out;
  for (int i = 1; i <= list.Size(); ++i) out.append(i > 1 ? " " : "").append(list[i].getStart(), list[i].getLength());
  return out;
}

ZELListValvnxToken listOf(std::initializer_list<int> indexes) {
  ZELListValvnxToken list;
  for (int i : indexes) list.Append(word(i));
  return list;
}

TEST(LexerTokenList, AppendStoresCopiesRemovalsCloseTheGapsAndCopiesAreDeep) {
  ZELListValvnxToken list;
  vnxToken t = word(0);
  list.Append(t);
  t = word(1);  // the stored copy does not follow the original
  list.Append(t);
  list.Append(listOf({2, 3}));
  EXPECT_EQ("alpha beta gamma delta", spelled(list));
  list.Append(list);  // appending a list to itself doubles it
  EXPECT_EQ(8, list.Size());

  for (int position : {2, 7, 0, 7}) list.RemovePosition(position);  // 0 and the second 7 are out of range
  EXPECT_EQ("alpha gamma delta alpha beta gamma", spelled(list));
  list[1] = word(3);
  ZELListValvnxToken copy(list);
  ZELListValvnxToken assigned = listOf({3, 3, 3});
  assigned = list;
  ZELListValvnxToken& alias = assigned;
  assigned = alias;
  list.RemoveAll(ZELCollec::KeepMemory);
  list.Append(word(1));
  EXPECT_EQ("beta", spelled(list));
  EXPECT_EQ("delta gamma delta alpha beta gamma", spelled(copy));
  EXPECT_EQ(spelled(copy), spelled(assigned));
}

TEST(LexerTokenList, OutOfRangeAccessIsReportedAndAnswersTheNullToken) {
  StreamCapture quiet;
  ZELListValvnxToken list = listOf({0});
  const ZELListValvnxToken& constList = list;
  const int before = TAFatalErrorCount();
  EXPECT_TRUE(constList[0].getStart() == nullptr && constList[2].getStart() == nullptr);
  list[5] = word(1);  // writing through a bad position harms nothing
  EXPECT_EQ(0u, list[-1].getLength());
  EXPECT_EQ(before + 4, TAFatalErrorCount());
  EXPECT_EQ("alpha", spelled(list));
}

TEST(LexerToken, TokensAndTokenListsCompareBySpellingNotByKindOrBuffer) {
  const char* text = "abc abd ab";
  const vnxToken abc(text, 3, ID);
  EXPECT_TRUE(abc == vnxToken(text, 3, STR) && !(abc != vnxToken(text, 3, STR)));
  EXPECT_TRUE(abc != vnxToken(text + 4, 3, ID) && abc != vnxToken(text + 8, 2, ID));
  // Characters after a NUL are not compared, as strncmp does.
  const char left[] = {'a', '\0', 'x'}, right[] = {'a', '\0', 'y'};
  EXPECT_TRUE(vnxToken(left, 3, UNK) == vnxToken(right, 3, UNK));
  // The null token equals any empty token and no other.
  EXPECT_TRUE(vnxToken() == vnxToken::ZELCSCTokenNull && vnxToken(text, 0, ID) == vnxToken::ZELCSCTokenNull);
  EXPECT_TRUE(abc != vnxToken::ZELCSCTokenNull && vnxToken::ZELCSCTokenNull.getKind() == UNK);
  // Lists compare position by position.
  const char other[] = "beta alpha";
  ZELListValvnxToken a = listOf({0, 1}), b;
  b.Append(vnxToken(other + 5, 5, STR)), b.Append(vnxToken(other, 4, UNK));
  EXPECT_TRUE(a == b && !(a != b) && !(a != a));
  EXPECT_TRUE(a != listOf({1, 0}) && !(a == listOf({1, 0})) && a != listOf({0}) && !(a == listOf({0})));
  EXPECT_TRUE(ZELListValvnxToken() == ZELListValvnxToken());
}

struct Walk { size_t count = 0, kindCount[57] = {}; int lastPosition = -1; };

Walk walk(const char* text, unsigned int size = ~0u) {
  vnxTokenizer tokenizer(text, size);
  vnxTokenIterator it = tokenizer.getTokenIterator();
  vnxToken token;
  Walk w;
  for (; it.getNextToken(token); w.lastPosition = it.getTokenPosition()) ++w.count, ++w.kindCount[token.getKind()];
  return w;
}

std::string repeat(const std::string& piece, size_t n) { std::string s; while (n--) s += piece; return s; }

TEST(LexerRobustness, EveryPrefixAndSizeStaysInsideTheBufferAndAdvances) {
  const std::string nasty =
      "#a##\"x\\\"y\\\\\"'\\''/*/ */ //c\\\n\r\n'\\x41'->*::*...<<=>>=.*\xC3\xA9 1.5e3UL\t\"\\ '\\ /* // \"";
  for (size_t length = 0; length <= nasty.size(); ++length) {
    // A heap copy with no slack after the NUL, so AddressSanitizer sees any read outside it.
    const std::unique_ptr<char[]> text(new char[length + 1]());
    std::memcpy(text.get(), nasty.c_str(), length);
    for (unsigned int size = 0; size <= length + 1; ++size) {
      vnxTokenizer tokenizer(text.get(), size);
      ASSERT_LE(tokenizer.getStringSize(), length);
      vnxTokenIterator it = tokenizer.getTokenIterator();
      vnxToken token;
      const char* previousEnd = text.get();
      size_t count = 0;
      while (it.getNextToken(token)) {
        ASSERT_LE(++count, length) << "no progress on prefix " << length << " size " << size;
        ASSERT_GE(token.getStart(), previousEnd);
        ASSERT_GE(token.getLength(), 1u);
        ASSERT_LE(token.getStart() + token.getLength(), text.get() + length);
        ASSERT_EQ(token.getStart() - text.get(), it.getTokenPosition());
        previousEnd = token.getStart() + token.getLength();
      }
    }
  }
}

TEST(LexerRobustness, ATenMegabyteLineOfCodeIsTokenizedWhole) {
  // 15 tokens: x = f ( a , "s\"q" , 'c' ) /* c */ + 10U L ;
  const std::string unit = "x = f(a, \"s\\\"q\", 'c') /* c */ + 10UL; ";
  const size_t repeats = (10u << 20) / unit.size();
  const std::string line = repeat(unit, repeats);
  const Walk w = walk(line.c_str());
  EXPECT_EQ(15 * repeats, w.count);
  EXPECT_TRUE(w.kindCount[STR] == repeats && w.kindCount[CHR] == repeats && w.kindCount[BLOCK] == repeats);
  EXPECT_EQ(0u, w.kindCount[UNK]);
  EXPECT_EQ(static_cast<int>(line.size() - 2), w.lastPosition);  // the last ';'
}

// Openers that never end: searching again from each one would take hours here.
TEST(LexerRobustness, UnterminatedOpenersHugeTokensAndBlankRunsStayLinear) {
  const size_t n = 1u << 20;
  const struct { std::string text; unsigned int size; size_t count, unknown; int otherKind; size_t other; } rows[] = {
      {std::string(10 * n, 'a'), ~0u, 1, 0, ID, 1}, {std::string(10 * n, ' ') + "x", ~0u, 1, 0, ID, 1},
      {"\"" + repeat("\\\"", n), ~0u, 1 + 2 * n, 1 + 2 * n, UNK, 1 + 2 * n},  // every quote escaped
      {repeat("/* ", n), ~0u, 2 * n, n, vnxToken::kStar, n},
      {repeat("// ", n), ~0u, 2 * n, n, vnxToken::kSlash, n},  // no newline anywhere
      {std::string(2 * n, '7'), static_cast<unsigned int>(n), n, n, UNK, n},  // digits crossing the size
  };
  for (const auto& row : rows) {
    const Walk w = walk(row.text.c_str(), row.size);
    EXPECT_TRUE(w.count == row.count && w.kindCount[UNK] == row.unknown && w.kindCount[row.otherKind] == row.other)
        << row.text.substr(0, 4) << ": " << w.count << " tokens, " << w.kindCount[UNK] << " unknown";
  }
}

}  // namespace
