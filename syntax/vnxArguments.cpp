// The argument-list builder: the text between a call's parentheses, cut at its
// top-level commas into one expression per argument under an "Arguments" node.
#include "syntax/vnxSyntaxeAccess.h"
#include "syntax/vnxTreeByteSet.h"
#include "syntax/vnxTreeCharClass.h"
#include "vnxExpression.h"
#include "vnxInstruction.h"
#include "vnxSourceFile.h"

namespace {

inline bool isBlank(char c) { return vnxtreechar::isBlank(c); }

// The characters the walk over the arguments looks at; it steps over others.
struct ArgumentStops {
  unsigned char of[256] = {};
  ArgumentStops() {
    for (const char c : {'"', '\'', '(', '[', ',', ';'}) of[static_cast<unsigned char>(c)] = 1;
  }
};

const ArgumentStops kArgumentStops;
const vnxtreebytes::ByteSet<6> kArgumentStopSet(kArgumentStops.of, 1);

inline bool stopsArguments(char c) { return kArgumentStops.of[static_cast<unsigned char>(c)] != 0; }

int failWith(const char* message) {
  vnxSyntaxe::ErrMsg = message;
  return 1;
}

}  // namespace

// One argument over [from, to) of s, a range inside the arguments' stream: an
// expression, or a null node when it is empty.
int vnxInstruction::addArgument(vnxSyntaxe* arguments, const char* s, int from, int to) {
  while (from < to && isBlank(s[from])) ++from;
  while (to > from && isBlank(s[to - 1])) --to;
  if (to != from) return vnxExpression::addBuilt(arguments, s, from, to);
  vnxSyntaxe* child = vnxSyntaxe::CreateTAPSyntaxe(vnxSyntaxe::kSyntaxeNULL, arguments, from, 0, arguments->ChildCount() + 1);
  vnxSyntaxeAccess::attachLeaf(arguments, child);
  return 0;
}

int vnxInstruction::BuildListOfArgs(vnxSyntaxe* arguments) {
  if (!arguments) return 0;
  if (arguments->GetDepth() > kMaxDepth) {
    ErrMsg = "Depth too high when building a vnxListOfArgs : " + toString(arguments->GetDepth());
    return 1;
  }
  vnxSourceFile* source = arguments->GetTAPSourceFile();
  const char* s = source ? source->GetStream() : nullptr;
  const int begin = arguments->GetBegin();
  int end = arguments->GetEnd();
  if (!s || begin < 0 || end > source->GetSize()) return 0;

  int first = begin;
  while (first < end && isBlank(s[first])) ++first;
  if (first == end) return 0;  // f(): no argument at all

  int from = begin;
  for (int i = begin; i < end; ++i) {
    i = kArgumentStopSet.skipForward(s, i, end - 1);
    if (i >= end) break;
    if (!stopsArguments(s[i])) continue;
    switch (s[i]) {
      case '"':
        i = SearchEndOfString(s, i, end - 1);
        if (i == 0) return failWith("Missing \"");
        break;
      case '\'':
        i = SearchEndOfString2(s, i, end - 1);
        if (i == 0) return failWith("Missing '");
        break;
      case '(':
        i = SearchEndOfPar(s, i, end - 1);
        if (i == 0) return failWith("Missing )");
        break;
      case '[': {
        // A comma between brackets separates no arguments: IDL attribute
        // lists ("[in, out] long* p") and subscripts keep their commas. An
        // unclosed bracket is left for the argument's own build to report.
        const int close = SearchEndOfIndex(s, i, end - 1);
        if (close > i) i = close;
        break;
      }
      case ',':
        if (addArgument(arguments, s, from, i)) return 1;
        from = i + 1;
        break;
      case ';':
        end = i;  // the list stops here
        break;
      default:
        break;
    }
  }
  return addArgument(arguments, s, from, end);
}
