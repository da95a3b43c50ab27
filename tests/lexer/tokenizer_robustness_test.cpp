// Bad and large input: the tokenizer must stay inside its buffer, always make
// progress, and stay linear on input built to make naive scanners quadratic.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>

#include "LexerTestSupport.h"

namespace {

// A heap copy with no slack after the NUL, so that AddressSanitizer sees any
// read past the end (or before the start) of the text.
std::unique_ptr<char[]> exactCopy(const std::string& text) {
  std::unique_ptr<char[]> copy(new char[text.size() + 1]);
  std::memcpy(copy.get(), text.c_str(), text.size() + 1);
  return copy;
}

struct Walk {
  size_t count = 0;
  size_t kindCount[57] = {};
  int lastPosition = -1;
};

Walk walk(const char* text, unsigned int size = ~0u) {
  vnxTokenizer tokenizer(text, size);
  vnxTokenIterator it = tokenizer.getTokenIterator();
  vnxToken token;
  Walk w;
  while (it.getNextToken(token)) {
    ++w.count;
    ++w.kindCount[token.getKind()];
    w.lastPosition = it.getTokenPosition();
  }
  return w;
}

TEST(LexerRobustness, EveryPrefixAndSizeStaysInsideTheBufferAndAdvances) {
  const std::string nasty =
      "#a##\"x\\\"y\\\\\"'\\''/*/ */ //c\\\n\r\n'\\x41'->*::*...<<=>>=.*\xC3\xA9 1.5e3UL\t\"\\ '\\ /* // \"";
  for (size_t length = 0; length <= nasty.size(); ++length) {
    const std::string prefix = nasty.substr(0, length);
    const std::unique_ptr<char[]> text = exactCopy(prefix);
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
  std::string line;
  line.reserve(unit.size() * repeats);
  for (size_t i = 0; i < repeats; ++i) line += unit;
  const Walk w = walk(line.c_str());
  EXPECT_EQ(15 * repeats, w.count);
  EXPECT_EQ(repeats, w.kindCount[STR]);
  EXPECT_EQ(repeats, w.kindCount[CHR]);
  EXPECT_EQ(repeats, w.kindCount[BLOCK]);
  EXPECT_EQ(0u, w.kindCount[UNK]);
  EXPECT_EQ(static_cast<int>(line.size() - 2), w.lastPosition);  // the last ';'
}

TEST(LexerRobustness, HugeSingleTokensAndBlankRunsAreHandledInOnePass) {
  const std::string identifier(10u << 20, 'a');
  vnxTokenizer tokenizer(identifier.c_str());
  int pos = -1;
  const vnxToken t = tokenizer.getTokenAtCursor(0, pos);
  EXPECT_EQ(identifier.size(), t.getLength());
  EXPECT_EQ(ID, t.getKind());

  const std::string blanks = std::string(10u << 20, ' ') + "x";
  const Walk w = walk(blanks.c_str());
  EXPECT_EQ(1u, w.count);
  EXPECT_EQ(static_cast<int>(blanks.size() - 1), w.lastPosition);
}

// Each row repeats a piece that opens a string, comment or number that never
// ends. Looking for the end again from every opener would take hours at this
// size; the walk must finish, with every opener turned into unknown.
TEST(LexerRobustness, UnterminatedOpenersRepeatedAMillionTimesStayLinear) {
  const size_t n = 1u << 20;
  const auto repeat = [n](const std::string& piece) {
    std::string s;
    s.reserve(piece.size() * n);
    for (size_t i = 0; i < n; ++i) s += piece;
    return s;
  };

  // "\"\"\"...: every quote is escaped, so no string ever closes.
  const std::string quotes = "\"" + repeat("\\\"");
  Walk w = walk(quotes.c_str());
  EXPECT_EQ(1 + 2 * n, w.count);
  EXPECT_EQ(w.count, w.kindCount[UNK]);

  // "/* /* /* ...": unknown '/' then '*' for each.
  const std::string blocks = repeat("/* ");
  w = walk(blocks.c_str());
  EXPECT_EQ(2 * n, w.count);
  EXPECT_EQ(n, w.kindCount[UNK]);
  EXPECT_EQ(n, w.kindCount[vnxToken::kStar]);

  // "// // // ..." with no newline anywhere.
  const std::string lines = repeat("// ");
  w = walk(lines.c_str());
  EXPECT_EQ(2 * n, w.count);
  EXPECT_EQ(n, w.kindCount[UNK]);
  EXPECT_EQ(n, w.kindCount[vnxToken::kSlash]);

  // A digit run crossing the size: no number fits, every digit is unknown.
  const std::string digits(2 * n, '7');
  w = walk(digits.c_str(), static_cast<unsigned int>(n));
  EXPECT_EQ(n, w.count);
  EXPECT_EQ(n, w.kindCount[UNK]);
}

}  // namespace
