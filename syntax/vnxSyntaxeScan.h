// Internal forms of the scanners for the builders of this directory, where an
// offset of 0 is a valid answer and failure needs a value of its own.
#ifndef VNX_SYNTAX_SYNTAXE_SCAN_H
#define VNX_SYNTAX_SYNTAXE_SCAN_H

#include <climits>

namespace vnxscan {

constexpr int kFailed = INT_MIN;

// vnxSyntaxe::SearchEndOfTAPInstruction(s, from, limit, 0, 0), answering
// kFailed instead of 0 on failure (an instruction may end at offset 0).
int endOfInstruction(const char* s, int from, int limit);

// While alive, the bracket matchers keep their answers over stream (the
// stream of the tree being built, which must not change meanwhile). Scopes
// nest: an inner one over any stream leaves the outer one in place.
class MatchMemoScope {
 public:
  MatchMemoScope(const char* stream, int size);
  ~MatchMemoScope();
  MatchMemoScope(const MatchMemoScope&) = delete;
  MatchMemoScope& operator=(const MatchMemoScope&) = delete;

 private:
  bool _active = false;
};

}  // namespace vnxscan

#endif
