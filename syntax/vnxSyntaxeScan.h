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

}  // namespace vnxscan

#endif
