// Bad and large input: the tokenizer must stay inside its buffer, always make
// progress, and stay linear on input built to make naive scanners quadratic.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>

#include "LexerTestSupport.h"

namespace {

struct Walk { size_t count = 0, kindCount[57] = {}; int lastPosition = -1; };

Walk walk(const char* text, unsigned int size = ~0u) {
  vnxTokenizer tokenizer(text, size);
  vnxTokenIterator it = tokenizer.getTokenIterator();
  vnxToken token;
  Walk w;
  for (; it.getNextToken(token); w.lastPosition = it.getTokenPosition()) ++w.count, ++w.kindCount[token.getKind()];
  return w;
}

std::string repeat(const std::string& piece, size_t n) {
  std::string s;
  while (n--) s += piece;
  return s;
}

TEST(LexerRobustness, EveryPrefixAndSizeStaysInsideTheBufferAndAdvances) {
  const std::string nasty =
      "#a##\"x\\\"y\\\\\"'\\''/*/ */ //c\\\n\r\n'\\x41'->*::*...<<=>>=.*\xC3\xA9 1.5e3UL\t\"\\ '\\ /* // \"";
  for (size_t length = 0; length <= nasty.size(); ++length) {
    // A heap copy with no slack after the NUL, so AddressSanitizer sees any read outside it.
    const std::unique_ptr<char[]> text(new char[length + 1]);
    std::memcpy(text.get(), nasty.c_str(), length);
    text[length] = '\0';
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

// Most rows repeat an opener that never ends; searching for the end again from
// every opener would take hours at this size. Every opener must become unknown.
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
