// Internal: the record a chain of expressions without operators shares.
// "a b c d" splits into "a b c" and "d", then "a b" and "c", and so on ("dc");
// "f(x) g(y)" into "f(x) g" and its arguments ("mt"), "a[1] b" into "a[1]" and
// "b": every left operand is the text of its father cut at a blank or before
// a group, and would scan again, both ways, all that its father scanned. The longest text is scanned once instead, keeping
// where each scan went; a shorter operand of the chain then reads its own
// answers from that record, when they are provably the ones its own scans
// would give (see vnxExpression::buildWith).
#ifndef VNX_SYNTAX_EXPRESSION_WORDS_H
#define VNX_SYNTAX_EXPRESSION_WORDS_H

#include <climits>
#include <utility>
#include <vector>

#include "vnxExpression.h"

namespace vnxwords {

struct Group {
  char kind;  // '(', '[' or '{'
  int open;
  int close;
};

// What the left-to-right shape scan met outside literals and brackets:
// blanks, those of them before a word, and bracket groups, in order.
struct ShapeTrace {
  std::vector<int> blanks;
  std::vector<int> blanksBeforeWord;
  std::vector<Group> groups;
};

}  // namespace vnxwords

struct vnxExpression::WordChain {
  int begin = 0;  // the texts of the chain all begin here
  int end = 0;    // end of the longest one

  // The right-to-left operator scan of [begin, end): the lowest offset it
  // reached (where it stopped on a closer without opener, else begin), the
  // lowest lone ':' it read, and each jump over a literal or bracket as
  // (opener, closer), closers descending. It read no other operator that
  // splits.
  int stop = 0;
  int lowestColon = INT_MAX;
  std::vector<std::pair<int, int>> jumps;

  // The left-to-right shape scan, and its first lone ':' with the blank
  // before a word ahead of it.
  vnxwords::ShapeTrace shape;
  int colon = -1;
  int blankBeforeColon = -1;
};

#endif
