// Branch ends and line counts read from the raw tables are answered only over text the pass has not blanked.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "../../source/vnxBranchMemo.h"

namespace {

TEST(BranchMemo, LinesAndEndsAreAnsweredOnlyOverTextNotBlankedAhead) {
  const char* text = "a\nbb\nc\ndd\ne\n";  // newlines at 1, 4, 6, 9, 11
  const int size = static_cast<int>(std::strlen(text));
  std::vector<unsigned int> lines(static_cast<size_t>(size)), columns(static_cast<size_t>(size));
  unsigned int line = 1, column = 1;
  for (int k = 0; k < size; ++k) {
    lines[static_cast<size_t>(k)] = line;
    columns[static_cast<size_t>(k)] = column;
    column = text[k] == '\n' ? (++line, 1) : column + 1;
  }
  const struct { int blankFrom, blankTo, from, to; bool answered; unsigned int lines, column; } cases[] = {
      {-1, -2, 1, 9, true, 3, 3},  // nothing blanked
      {5, 6, 1, 9, false, 0, 0},   // a stretch inside
      {0, 1, 1, 9, false, 0, 0},   // one meeting the start
      {9, 10, 1, 9, false, 0, 0},  // one meeting the end
      {2, 3, 4, 9, true, 2, 3},    // one before
      {10, 11, 1, 9, true, 3, 3},  // one after
  };
  for (const auto& c : cases) {
    vnxBranchMemo memo;
    memo.setText(text, 0, 0);
    memo.setTables(lines.data(), columns.data(), size);
    memo.record(c.from, c.to);
    memo.blanked(c.blankFrom, c.blankTo, 0);
    unsigned int counted = 0, col = 0;
    EXPECT_EQ(c.answered, memo.rawLinesBetween(c.from, c.to, counted, col)) << c.blankFrom << ".." << c.blankTo;
    EXPECT_EQ(c.answered ? c.to : -1, memo.lookup(c.from)) << c.blankFrom << ".." << c.blankTo;
    if (c.answered) {
      EXPECT_EQ(c.lines, counted);
      EXPECT_EQ(c.column, col);
    }
  }
}

}  // namespace
