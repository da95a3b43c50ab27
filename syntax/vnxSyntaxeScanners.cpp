// The scanners that match brackets, strings, literals and comments forward and
// backward over a stream, and the one that finds where an instruction ends.
//
// Each answers as a pure function over (text, from, limit) or (text, from,
// lowest): nothing is allocated per character, nothing is read past limit or
// below lowest, and every loop consumes at least one character. Only ErrMsg
// is touched, for the few failures that carry a message. The bracket matchers
// call one another for nested (), [] and strings; that nesting is capped so
// that a hostile file cannot exhaust the stack. While a tree is built, the
// bracket matchers keep their answers over its stream (see MatchMemo), so
// that the builders' repeated questions about one bracket cost one walk.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "ZELString.h"
#include "vnxSourceFile.h"
#include "syntax/vnxSyntaxeAccess.h"
#include "syntax/vnxSyntaxeScan.h"
#include "syntax/vnxTreeByteSet.h"
#include "vnxSyntaxe.h"
#include "wbPathFinder.h"

namespace {

// Alternations of ( and [ (each level one call) followed before giving up.
constexpr int kMaxBracketNesting = 900;

enum class Closer { Block, Par, Index };

inline bool isQuote(char c) { return c == '"' || c == '\''; }
inline bool isDigit(char c) { return c >= '0' && c <= '9'; }

// Whether text at pos starts with word, the whole word lying within limit.
bool startsWith(const char* s, int pos, int limit, const char* word, int length) {
  if (pos < 0 || pos + length - 1 > limit) return false;
  if (length > 0 && s[pos] != word[0]) return false;  // cheap rejection first
  return std::memcmp(s + pos, word, static_cast<size_t>(length)) == 0;
}

template <int N>
bool startsWith(const char* s, int pos, int limit, const char (&word)[N]) {
  return startsWith(s, pos, limit, word, N - 1);
}

int endOfMatching(Closer kind, const char* s, int from, int limit, int nesting, int withComments);
int beginOfMatching(Closer kind, const char* s, int from, int lowest, int nesting);

// Answers of the bracket matchers over the stream of the tree being built.
// Every level of the builders matches the same brackets again (an instruction
// its parentheses, then its expression, then each operand and argument, and
// each block the blocks inside it), so each answer is kept per offset of the
// bracket a walk starts from. Only walks started on their own kind of bracket
// and without comments are kept; for those a walk's answer depends on its
// bound in a simple way, which is what makes keeping them exact:
// - forward, a match r found under any limit is the answer for every limit
//   at or above r, and every limit below r fails (the walk takes the same
//   path whatever its limit, and is cut short only where it passes it); a
//   failure under limit L is the answer for every limit up to L;
// - backward, a match r is the answer for every lowest at or below r (the
//   backslash count before a quote inside the brackets stops at r's bracket);
//   backward failures are not kept.
// A walk nested in another one takes the same path as a walk started alone
// unless the nesting cap stops it somewhere below: each answer keeps how many
// nesting levels its walk went down, and is used only where the cap is that
// far away. Failures that set ErrMsg are not kept, so that the message is set
// again each time, as it was.
// A parenthesis whose forward walk met nothing but parentheses (no literal,
// no bracket) is matched by depth counting alone, which reads the same both
// ways: its closing one then gets the backward answer too, so that the
// right-to-left operator search finds it kept.
// Entries: 0 unknown, r + 1 a match at r, -(L + 1) a failure under limit L.
// Outside a build every entry is 0: a build clears the ones it set (few, one
// per bracket at most) rather than the whole table, so that starting a tree
// costs nothing per character of its stream.
struct MatchMemo {
  const char* stream = nullptr;  // the stream of the tree being built, or null
  int size = 0;
  // Per offset, room for `room` offsets. Only entries must read 0 where
  // nothing is kept; levels and plain are read only where an entry is kept,
  // and written with it, so neither is cleared nor carried over on growth.
  size_t room = 0;
  int* entries = nullptr;
  unsigned short* levels = nullptr;  // nesting levels below each kept walk
  unsigned char* plain = nullptr;    // for a kept '(': its walk met parentheses only
  std::vector<int> touched;  // offsets whose entry the build under way set
  unsigned mixed = 0;     // literals, brackets and mixed kept walks met by the walks, ever
  int deepest = 0;        // deepest nesting reached since the walk under way began
  unsigned capHits = 0;   // walks refused for their nesting, ever
  unsigned messages = 0;  // messages set by the walks, ever
  std::vector<int> openInner;  // inner brackets open in the walks under way
  std::vector<unsigned> openMixed;  // mixed at each forward inner opening
  // The macro registry had no statement macro when the build under way last
  // asked. Nothing a build does defines macros, so the (empty) answer stands
  // until the build ends, however often a Release empties the list.
  bool noStatementMacros = false;
};

MatchMemo* const gMemo = new MatchMemo;  // never destroyed: no order to mind at exit

void releaseRoom(MatchMemo& memo) {
  std::free(memo.entries);
  std::free(memo.levels);
  std::free(memo.plain);
  memo.entries = nullptr;
  memo.levels = nullptr;
  memo.plain = nullptr;
  memo.room = 0;
}

inline char openerOf(Closer kind) { return kind == Closer::Par ? '(' : kind == Closer::Index ? '[' : '{'; }
inline char closerOf(Closer kind) { return kind == Closer::Par ? ')' : kind == Closer::Index ? ']' : '}'; }

// A kept answer for a walk at this nesting, or false when there is none (or
// the cap is too close for it). end receives the answer, -1 for a failure.
inline bool keptAnswer(const MatchMemo& memo, int at, int nesting, bool forward, int bound, int& end) {
  const int entry = memo.entries[static_cast<size_t>(at)];
  if (entry == 0 || nesting + memo.levels[static_cast<size_t>(at)] > kMaxBracketNesting) return false;
  if (entry > 0) {
    const int r = entry - 1;
    if (forward) end = r <= bound ? r : -1;
    else if (r >= bound) end = r;
    else return false;
    return true;
  }
  if (!forward || bound > -entry - 1) return false;
  end = -1;
  return true;
}

// A kept answer stands for a walk that went as deep as its levels say.
inline void noteLevels(MatchMemo& memo, int at, int nesting) {
  const int reached = nesting + memo.levels[static_cast<size_t>(at)];
  if (reached > memo.deepest) memo.deepest = reached;
}

inline void setEntry(MatchMemo& memo, int at, int entry) {
  int& slot = memo.entries[static_cast<size_t>(at)];
  if (slot == 0) memo.touched.push_back(at);
  slot = entry;
}

// The answer of an inner bracket at `at`, met by a walk at this nesting: the
// levels that walk went down so far bound the inner walk's.
inline void keepInner(MatchMemo& memo, int at, int answer, int nesting) {
  setEntry(memo, at, answer + 1);
  memo.levels[static_cast<size_t>(at)] = static_cast<unsigned short>(memo.deepest - nesting);
}

// A forward answer close for the parenthesis at open: when its walk met
// parentheses only (mixed unchanged since mixedBefore), the backward answer
// of close is open.
inline void keepParenthesis(MatchMemo& memo, int open, int close, unsigned mixedBefore) {
  const bool plain = memo.mixed == mixedBefore;
  memo.plain[static_cast<size_t>(open)] = plain ? 1 : 0;
  if (!plain || memo.entries[static_cast<size_t>(close)] != 0) return;
  setEntry(memo, close, open + 1);
  memo.levels[static_cast<size_t>(close)] = 0;
}

// The characters at which each forward walk stops; it steps over all others.
enum : unsigned char { kBlockStop = 1, kParStop = 2, kIndexStop = 4 };

// Most parentheses hold nothing the parenthesis walk stops at but their
// closing one (f(x, y), Handle(Geom_Curve)): the first stop after `at` tells,
// and the walk's answers are kept without its set-up. Answers that closing
// offset as the walk would, or -1 when the text needs the whole walk.
int plainParenthesisEnd(const char* s, int at, int bound);

int walkAndKeep(Closer kind, const char* s, int at, int bound, int nesting, bool forward);

// The walk from `at` (a bracket of its kind) at this nesting, through the
// memo when the stream is the one being built. Most questions the builders
// ask have their answer kept: that path is inlined into every caller, the
// walk itself is not.
inline int memoWalk(Closer kind, const char* s, int at, int bound, int nesting, bool forward) {
  MatchMemo& memo = *gMemo;
  const bool kept = s == memo.stream && at >= 0 && at < memo.size && (forward ? bound < memo.size : bound >= 0) &&
                    s[at] == (forward ? openerOf(kind) : closerOf(kind));
  if (!kept) return forward ? endOfMatching(kind, s, at, bound, nesting, 0) : beginOfMatching(kind, s, at, bound, nesting);
  int end = -1;
  if (keptAnswer(memo, at, nesting, forward, bound, end)) {
    noteLevels(memo, at, nesting);
    return end;
  }
  return walkAndKeep(kind, s, at, bound, nesting, forward);
}

// memoWalk over the stream being built, for a bracket whose answer is not
// kept yet (or not usable at this nesting).
__attribute__((noinline)) int walkAndKeep(Closer kind, const char* s, int at, int bound, int nesting, bool forward) {
  MatchMemo& memo = *gMemo;
  int end = -1;
  if (forward && kind == Closer::Par && nesting <= kMaxBracketNesting) {
    const int close = plainParenthesisEnd(s, at, bound);
    if (close >= 0) {
      if (nesting > memo.deepest) memo.deepest = nesting;
      return close;
    }
  }
  const int outerDeepest = memo.deepest;
  const unsigned capHits = memo.capHits;
  const unsigned messages = memo.messages;
  const unsigned mixed = memo.mixed;
  memo.deepest = nesting;
  end = forward ? endOfMatching(kind, s, at, bound, nesting, 0) : beginOfMatching(kind, s, at, bound, nesting);
  const int levels = memo.deepest - nesting;
  if (memo.capHits == capHits && levels <= kMaxBracketNesting) {
    int entry = 0;
    if (end >= 0) entry = end + 1;
    else if (forward && memo.messages == messages) entry = -(bound + 1);
    if (entry != 0) {
      setEntry(memo, at, entry);
      memo.levels[static_cast<size_t>(at)] = static_cast<unsigned short>(levels);
      if (forward && kind == Closer::Par) {
        if (end >= 0) keepParenthesis(memo, at, end, mixed);
        else memo.plain[static_cast<size_t>(at)] = 0;
      }
    }
  }
  if (outerDeepest > memo.deepest) memo.deepest = outerDeepest;
  return end;
}

inline void setMessage(const char* message) {
  vnxSyntaxe::ErrMsg = message;
  ++gMemo->messages;
}

struct ForwardClasses {
  unsigned char of[256] = {};
  ForwardClasses() {
    // NUL ends a stream: the walks over the stream being built stop there.
    for (const char c : {'"', '\'', '(', '[', 'L', '\0'}) of[static_cast<unsigned char>(c)] = kBlockStop | kParStop | kIndexStop;
    for (const char c : {'{', '}', '/'}) of[static_cast<unsigned char>(c)] |= kBlockStop;
    of[static_cast<unsigned char>(')')] |= kParStop;
    // A parenthesis walk passes over ']', but stops to note it: a backward
    // walk would not pass over it.
    of[static_cast<unsigned char>(']')] |= kIndexStop | kParStop;
  }
};

const ForwardClasses kForwardClasses;

inline unsigned char forwardClass(char c) { return kForwardClasses.of[static_cast<unsigned char>(c)]; }
inline unsigned char forwardMask(Closer kind) {
  return kind == Closer::Block ? kBlockStop : kind == Closer::Par ? kParStop : kIndexStop;
}

// The same stops, sixteen characters at a time.
const vnxtreebytes::ByteSet<9, true> kBlockStops(kForwardClasses.of, kBlockStop);
const vnxtreebytes::ByteSet<8, true> kParStops(kForwardClasses.of, kParStop);
const vnxtreebytes::ByteSet<7, true> kIndexStops(kForwardClasses.of, kIndexStop);

int plainParenthesisEnd(const char* s, int at, int bound) {
  int i = at + 1;
  for (;; ++i) {
    // Past bound, the NUL that ends the stream being built stops the scan.
    i = kParStops.skipForward(s, i, bound);
    while (!(forwardClass(s[i]) & kParStop)) ++i;
    // An L is a letter here: a wide literal's quote, right after it, stops
    // the scan next.
    if (s[i] != 'L') break;
  }
  if (i > bound || s[i] != ')') return -1;
  // What the walk keeps for a parenthesis it closed without going deeper or
  // meeting a literal or bracket: the forward answer, the backward one for
  // the closing parenthesis, no nesting below either.
  MatchMemo& memo = *gMemo;
  setEntry(memo, at, i + 1);
  memo.levels[static_cast<size_t>(at)] = 0;
  keepParenthesis(memo, at, i, memo.mixed);
  return i;
}

// Skips whole chunks of [i, limit] that hold no stop of kind.
inline int skipToForwardStop(Closer kind, const char* s, int i, int limit) {
  switch (kind) {
    case Closer::Block: return kBlockStops.skipForward(s, i, limit);
    case Closer::Par: return kParStops.skipForward(s, i, limit);
    default: return kIndexStops.skipForward(s, i, limit);
  }
}

// The same for the backward walks.
struct BackwardClasses {
  unsigned char of[256] = {};
  BackwardClasses() {
    for (const char c : {'"', '\'', ')', ']'}) of[static_cast<unsigned char>(c)] = kBlockStop | kParStop | kIndexStop;
    for (const char c : {'{', '}'}) of[static_cast<unsigned char>(c)] |= kBlockStop;
    of[static_cast<unsigned char>('(')] |= kParStop;
    of[static_cast<unsigned char>('[')] |= kIndexStop;
  }
};

const BackwardClasses kBackwardClasses;

inline unsigned char backwardClass(char c) { return kBackwardClasses.of[static_cast<unsigned char>(c)]; }
inline unsigned char backwardMask(Closer kind) { return forwardMask(kind); }

// A wide literal: L followed by a quote at i + 1 (i < limit - 1). Answers the
// offset of its last character, or 0 with ErrMsg set. A character literal
// right behind a wide string is taken with it.
int skipWideLiteral(const char* s, int i, int limit) {
  if (s[i + 1] == '\'') {
    const int end = vnxSyntaxe::SearchEndOfString2(s, i + 1, limit);
    if (!end) setMessage("Missing '");
    return end;
  }
  int end = vnxSyntaxe::SearchEndOfString(s, i + 1, limit);
  if (!end) {
    setMessage("Missing \"");
    return 0;
  }
  if (end < limit && s[end + 1] == '\'') {
    end = vnxSyntaxe::SearchEndOfString2(s, end + 1, limit);
    if (!end) setMessage("Missing '");
  }
  return end;
}

// Forward scanners answer 0 on failure; a resume offset never is 0 after a
// jump, so 0 becomes the walk's failure value -1.
inline int orFail(int end) { return end ? end : -1; }

// A comment opening at i in a block search (i < limit): answers its last
// offset, -1 on failure, or i itself when no comment opens here.
int skipComment(const char* s, int i, int limit) {
  if (s[i + 1] == '*') {
    const int end = vnxSyntaxe::SearchEndOfCPPComment(s, i + 2, limit);
    if (!end) setMessage("Missing */");
    return orFail(end);
  }
  if (s[i + 1] == '/') return orFail(vnxSyntaxe::SearchEndOfCComment(s, i + 2, limit));
  return i;
}

// Handles offset i of a forward match; answers the offset where the walk
// resumes (i itself when nothing was jumped), or -1 on failure.
int stepForward(Closer kind, const char* s, int i, int limit, int& depth, int nesting, int withComments) {
  const char c = s[i];
  if (kind == Closer::Block && (c < '"' || c > '}')) return i;
  switch (c) {
    case '"': return orFail(vnxSyntaxe::SearchEndOfString(s, i, limit));
    case '\'': return orFail(vnxSyntaxe::SearchEndOfString2(s, i, limit));
    case '(':
      if (kind == Closer::Par) ++depth;
      else return memoWalk(Closer::Par, s, i, limit, nesting + 1, true);
      return i;
    case ')':
      if (kind == Closer::Par) --depth;
      return i;
    case '[':
      if (kind == Closer::Index) ++depth;
      else return memoWalk(Closer::Index, s, i, limit, nesting + 1, true);
      return i;
    case ']':
      if (kind == Closer::Index) --depth;
      return i;
    case '{':
      if (kind == Closer::Block) ++depth;
      return i;
    case '}':
      if (kind == Closer::Block) --depth;
      return i;
    case '/':
      if (kind != Closer::Block) return i;
      if (withComments && i < limit && (s[i + 1] == '*' || s[i + 1] == '/')) return skipComment(s, i, limit);
      // A slash that opens no comment gets the wide-literal test of 'L' in
      // the block search, as the original scanner did.
      [[fallthrough]];
    case 'L':
      if (i < limit - 1 && isQuote(s[i + 1])) return orFail(skipWideLiteral(s, i, limit));
      return i;
    default:
      return i;
  }
}

// The walk shared by the three forward matchers; -1 on failure. Over the
// stream being built, past an inner bracket of its own kind it walks exactly
// as a walk started there would, until the bracket that brings it back to its
// own depth: that is the inner bracket's answer, kept for later; an inner
// bracket already answered is jumped at once.
int endOfMatching(Closer kind, const char* s, int from, int limit, int nesting, int withComments) {
  if (!s || from < 0 || limit <= from) return -1;
  MatchMemo& memo = *gMemo;
  if (nesting > kMaxBracketNesting) {
    ++memo.capHits;
    return -1;
  }
  if (nesting > memo.deepest) memo.deepest = nesting;
  const bool keep = !withComments && s == memo.stream && limit < memo.size;
  const char opener = openerOf(kind);
  const char closer = closerOf(kind);
  const unsigned char mask = forwardMask(kind);
  const unsigned capHits = memo.capHits;
  std::vector<int>& open = memo.openInner;  // shared by nested walks, each above its base
  std::vector<unsigned>& openMixed = memo.openMixed;
  const size_t base = open.size();
  const size_t mixedBase = openMixed.size();
  int depth = 0;
  int result = -1;
  for (int i = from; i <= limit; ++i) {
    // Started on a character it passes over, a walk answers its start.
    if (i > from) {
      // Over the stream being built, its NUL stops the skip (limit lies
      // before it); any other text is walked within limit.
      i = skipToForwardStop(kind, s, i, limit);
      if (i > limit) break;
      if (keep) {
        while (!(forwardClass(s[i]) & mask)) ++i;
      } else {
        while (!(forwardClass(s[i]) & mask)) {
          if (++i > limit) break;
        }
      }
      if (i > limit) break;
    }
    const char c = s[i];
    if (keep) {
      if (c == '"' || c == '\'' || c == '[' || c == ']' || (c == 'L' && i < limit && isQuote(s[i + 1]))) ++memo.mixed;
      if (c == opener && i != from) {
        int end = -1;
        if (keptAnswer(memo, i, nesting, true, limit, end) && end >= 0) {
          noteLevels(memo, i, nesting);
          if (kind != Closer::Par || !memo.plain[static_cast<size_t>(i)]) ++memo.mixed;
          i = end;
          continue;
        }
        open.push_back(i);
        openMixed.push_back(memo.mixed);
      }
    }
    i = stepForward(kind, s, i, limit, depth, nesting, withComments);
    if (i < 0) break;
    if (keep && c == closer && open.size() > base) {
      if (memo.capHits == capHits) {
        keepInner(memo, open.back(), i, nesting);
        if (kind == Closer::Par) keepParenthesis(memo, open.back(), i, openMixed.back());
      }
      open.pop_back();
      openMixed.pop_back();
    }
    if (depth == 0) {
      if (i <= limit) result = i;
      break;
    }
  }
  open.resize(base);
  openMixed.resize(mixedBase);
  return result;
}

// Whether an opening quote at i is unescaped: preceded by an even number of
// backslashes, counted down to lowest.
bool unescapedAt(const char* s, int i, int lowest) {
  int backslashes = 0;
  for (int k = i - 1; k >= lowest && s[k] == '\\'; --k) ++backslashes;
  return backslashes % 2 == 0;
}

// The backward helpers answer -1 on failure, since 0 is a valid opening.
int beginOfString(const char* s, int from, int lowest) {
  if (!s || lowest < 0 || from <= lowest) return -1;
  for (int i = from - 1; i >= lowest; --i) {
    if (s[i] != '"' || !unescapedAt(s, i, lowest)) continue;
    // A pair of adjacent quotes joins two literals into one string.
    if (i > lowest && s[i - 1] == '"') {
      --i;
      continue;
    }
    return i;
  }
  return -1;
}

int beginOfString2(const char* s, int from, int lowest) {
  if (!s || lowest < 0 || from <= lowest) return -1;
  for (int i = from - 1; i >= lowest; --i)
    if (s[i] == '\'' && unescapedAt(s, i, lowest)) return i;
  return -1;
}

// Handles offset i of a backward match; answers where the walk resumes (i when
// nothing was jumped), or -1 on failure.
int stepBackward(Closer kind, const char* s, int i, int lowest, int& depth, int nesting) {
  switch (s[i]) {
    case '"': return beginOfString(s, i, lowest);
    case '\'': return beginOfString2(s, i, lowest);
    case ')':
      if (kind == Closer::Par) ++depth;
      else if (kind == Closer::Block) return memoWalk(Closer::Par, s, i, lowest, nesting + 1, false);
      return i;
    case '(':
      if (kind == Closer::Par) --depth;
      return i;
    case ']':
      if (kind == Closer::Index) ++depth;
      else return memoWalk(Closer::Index, s, i, lowest, nesting + 1, false);
      return i;
    case '[':
      if (kind == Closer::Index) --depth;
      return i;
    case '}':
      if (kind == Closer::Block) ++depth;
      return i;
    case '{':
      if (kind == Closer::Block) --depth;
      return i;
    default:
      return i;
  }
}

// The walk shared by the three backward matchers; -1 on failure. Keeps and
// uses the answers of inner brackets of its own kind as endOfMatching does.
int beginOfMatching(Closer kind, const char* s, int from, int lowest, int nesting) {
  if (!s || lowest < 0 || from < lowest) return -1;
  MatchMemo& memo = *gMemo;
  if (nesting > kMaxBracketNesting) {
    ++memo.capHits;
    return -1;
  }
  if (nesting > memo.deepest) memo.deepest = nesting;
  const bool keep = s == memo.stream && from < memo.size;
  const char opener = openerOf(kind);
  const char closer = closerOf(kind);
  const unsigned char mask = backwardMask(kind);
  const unsigned capHits = memo.capHits;
  std::vector<int>& open = memo.openInner;
  const size_t base = open.size();
  int depth = 0;
  int result = -1;
  for (int i = from; i >= lowest; --i) {
    while (i < from && !(backwardClass(s[i]) & mask)) {
      if (--i < lowest) break;
    }
    if (i < lowest) break;
    const char c = s[i];
    if (keep && c == closer && i != from) {
      int begin = -1;
      if (keptAnswer(memo, i, nesting, false, lowest, begin)) {
        noteLevels(memo, i, nesting);
        i = begin;
        continue;
      }
      open.push_back(i);
    }
    i = stepBackward(kind, s, i, lowest, depth, nesting);
    if (i < 0) break;
    if (keep && c == opener && open.size() > base) {
      if (memo.capHits == capHits) keepInner(memo, open.back(), i, nesting);
      open.pop_back();
    }
    if (depth == 0) {
      result = i;
      break;
    }
  }
  open.resize(base);
  return result;
}

}  // namespace

vnxscan::MatchMemoScope::MatchMemoScope(const char* stream, int size) {
  MatchMemo& memo = *gMemo;
  if (memo.stream || !stream || size <= 0) return;  // an outer build keeps its own
  // Entries left by earlier builds are all 0 already. New room comes zeroed
  // from calloc, and nothing of the old room is worth copying.
  if (memo.room < static_cast<size_t>(size)) {
    const size_t room = std::max(static_cast<size_t>(size), memo.room + memo.room / 2);
    releaseRoom(memo);
    memo.entries = static_cast<int*>(std::calloc(room, sizeof(int)));
    memo.levels = static_cast<unsigned short*>(std::malloc(room * sizeof(unsigned short)));
    memo.plain = static_cast<unsigned char*>(std::malloc(room));
    if (!memo.entries || !memo.levels || !memo.plain) {
      releaseRoom(memo);  // out of memory: this build goes without the memo
      return;
    }
    memo.room = room;
  }
  memo.stream = stream;
  memo.size = size;
  memo.noStatementMacros = false;
  _active = true;
}

vnxscan::MatchMemoScope::~MatchMemoScope() {
  if (!_active) return;
  MatchMemo& memo = *gMemo;
  memo.stream = nullptr;
  memo.size = 0;
  memo.noStatementMacros = false;
  for (const int at : memo.touched) memo.entries[static_cast<size_t>(at)] = 0;
  memo.touched.clear();
  // Kept for the next tree, unless a very large stream made them big.
  constexpr size_t kKeptOffsets = size_t{1} << 20;
  if (memo.room > kKeptOffsets) releaseRoom(memo);
  if (memo.touched.capacity() > kKeptOffsets) std::vector<int>().swap(memo.touched);
}

// --- forward matching ---------------------------------------------------------------

int vnxSyntaxe::SearchEndOfTAPBloc(const char* s, int from, int limit, int withComments) {
  const int end = withComments ? endOfMatching(Closer::Block, s, from, limit, 0, withComments)
                               : memoWalk(Closer::Block, s, from, limit, 0, true);
  return end < 0 ? 0 : end;
}

int vnxSyntaxe::SearchEndOfPar(const char* s, int from, int limit) {
  const int end = memoWalk(Closer::Par, s, from, limit, 0, true);
  return end < 0 ? 0 : end;
}

int vnxSyntaxe::SearchEndOfIndex(const char* s, int from, int limit) {
  const int end = memoWalk(Closer::Index, s, from, limit, 0, true);
  return end < 0 ? 0 : end;
}

int vnxSyntaxe::SearchEndOfString(const char* s, int from, int limit) {
  if (!s || from < 0 || limit <= from) return 0;
  for (int i = from + 1; i <= limit; ++i) {
    const char c = s[i];
    if (c == '\\') {
      ++i;
    } else if (c == '"') {
      if (i == limit) return i;
      // Two literals written against each other read as one string.
      if (s[i + 1] == '"') ++i;
      else return i;
    }
  }
  return 0;
}

int vnxSyntaxe::SearchEndOfString2(const char* s, int from, int limit) {
  if (!s || from < 0) return 0;
  for (int i = from + 1; i <= limit; ++i) {
    if (s[i] == '\\') ++i;
    else if (s[i] == '\'') return i;
  }
  return 0;
}

int vnxSyntaxe::SearchEndOfCComment(const char* s, int from, int limit) {
  if (!s || from < 0 || from >= limit) return 0;
  for (int i = from; i <= limit; ++i) {
    if (s[i] == '\n') return i;
    // A continued comment line hands back to the caller right after the
    // backslash, as the original scanner did.
    if (s[i] == '\\') return i + 1;
  }
  return 0;
}

int vnxSyntaxe::SearchEndOfCPPComment(const char* s, int from, int limit) {
  if (!s || from < 0 || from >= limit) return 0;
  for (int i = from; i < limit; ++i)
    if (s[i] == '*' && s[i + 1] == '/') return i + 1;
  return 0;
}

// --- backward matching --------------------------------------------------------------

int vnxSyntaxe::SearchBeginOfTAPBloc(const char* s, int from, int lowest) {
  const int begin = memoWalk(Closer::Block, s, from, lowest, 0, false);
  return begin < 0 ? 0 : begin;
}

int vnxSyntaxe::SearchBeginOfPar(const char* s, int from, int lowest) {
  const int begin = memoWalk(Closer::Par, s, from, lowest, 0, false);
  return begin < 0 ? 0 : begin;
}

int vnxSyntaxe::SearchBeginOfIndex(const char* s, int from, int lowest) {
  const int begin = memoWalk(Closer::Index, s, from, lowest, 0, false);
  return begin < 0 ? 0 : begin;
}

int vnxSyntaxe::SearchBeginOfString(const char* s, int from, int lowest) {
  const int begin = beginOfString(s, from, lowest);
  return begin < 0 ? 0 : begin;
}

int vnxSyntaxe::SearchBeginOfString2(const char* s, int from, int lowest) {
  const int begin = beginOfString2(s, from, lowest);
  return begin < 0 ? 0 : begin;
}

int vnxSyntaxe::isAlphaNumOrUnderScoreChar(const char& c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || isDigit(c) || c == '_' ? 1 : 0;
}

// --- end of an instruction ----------------------------------------------------------

namespace {

using vnxscan::kFailed;
// Below any offset, and distinct from kFailed.
constexpr int kNoMacro = kFailed + 1;

int endOfInstruction(const char* s, int from, int limit, int nested, int pending, int nesting);

inline int capAt(int end, int limit) { return end > limit ? limit : end; }

int firstNonBlank(const char* s, int from, int limit) {
  while (from <= limit && s[from] == ' ') ++from;
  return from;
}

// The keyword of a controlled statement written against its parenthesis at i,
// as the preprocessed stream spells it: its length up to the '(' included, or 0.
int controlKeywordAt(const char* s, int i, int limit) {
  // Most instructions start with none of the keywords' first letters.
  if (i > limit - 3) return 0;
  switch (s[i]) {
    case 'i': case 'w': case 's': case 'f': case '_': break;
    default: return 0;
  }
  if (i < limit - 2 && startsWith(s, i, limit, "if(")) return 3;
  if (i < limit - 5 && startsWith(s, i, limit, "while(")) return 6;
  if (i < limit - 6 && startsWith(s, i, limit, "switch(")) return 7;
  if (i < limit - 3 && startsWith(s, i, limit, "for(")) return 4;
  if (i < limit - 8 && startsWith(s, i, limit, "__except(")) return 9;
  return 0;
}

bool startsElse(const char* s, int i, int limit) {
  return startsWith(s, i, limit, "else ") || startsWith(s, i, limit, "else{");
}

bool startsDo(const char* s, int i, int limit) {
  return startsWith(s, i, limit, "do ") || startsWith(s, i, limit, "do{");
}

// The statement controlled by an if, while, for, switch, __except, else or do,
// starting at q: its end, with an else that belongs to an inner if and the
// while(...) tail of an inner do taken along.
int endOfControlledStatement(const char* s, int q, int limit, int pending, int nesting) {
  const int r = endOfInstruction(s, q, limit, 1, pending, nesting + 1);
  if (r == kFailed) return kFailed;
  if (r >= limit - 1) return limit;
  const int k = firstNonBlank(s, r + 1, limit);
  if (k < limit - 3 && startsElse(s, k, limit) && startsWith(s, q, limit, "if(")) {
    const int end = endOfInstruction(s, k, limit, 1, pending, nesting + 1);
    return end == kFailed ? kFailed : capAt(end, limit);
  }
  if (k < limit - 3 && startsWith(s, k, limit, "while(") && startsDo(s, q, limit)) {
    const int close = vnxSyntaxe::SearchEndOfPar(s, k + 5, limit);
    return close ? capAt(close + 1, limit) : kFailed;
  }
  return r;
}

// if( while( switch( for( __except( at i (keyword length given).
int endOfControl(const char* s, int i, int keyword, int limit, int pending, int nesting) {
  const int p = vnxSyntaxe::SearchEndOfPar(s, i + keyword - 1, limit);
  if (p == 0) return kFailed;
  if (p >= limit) return limit;
  if (s[p + 1] == '{') {
    const int end = vnxSyntaxe::SearchEndOfTAPBloc(s, p + 1, limit, 0);
    return end ? capAt(end, limit) : kFailed;
  }
  return endOfControlledStatement(s, p + 1, limit, pending, nesting);
}

// else / do at i: the keywords are stepped over, then a block or a statement.
int endOfElseOrDo(const char* s, int i, int limit, int pending, int nesting) {
  int j = i;
  if (startsWith(s, j, limit, "else")) j += 4;
  if (startsWith(s, j, limit, "do")) j += 2;
  j = firstNonBlank(s, j, limit);
  if (j >= limit) return limit;
  if (s[j] == '{') {
    const int end = vnxSyntaxe::SearchEndOfTAPBloc(s, j, limit, 0);
    return end ? capAt(end, limit) : kFailed;
  }
  return endOfControlledStatement(s, j, limit, pending, nesting);
}

// How a statement-macro name compares with the text at i.
enum class MacroOrder { Before, After, Match };

// The leading characters decide first (up to four, as far as name and text
// go): the list being sorted, a name after the text ends the search. Then the
// whole name must match.
MacroOrder compareMacroName(const char* s, int i, int limit, const ZELString& name) {
  const unsigned char* n = reinterpret_cast<const unsigned char*>(name.CastToCharPtr());
  const int length = name.GetLengthInChar();
  if (length == 0) return MacroOrder::Before;
  for (int k = 0; k < 4 && k < length && i + k <= limit; ++k) {
    const unsigned char t = static_cast<unsigned char>(s[i + k]);
    if (n[k] != t) return n[k] < t ? MacroOrder::Before : MacroOrder::After;
  }
  if (i + length - 1 > limit || std::memcmp(n, s + i, static_cast<size_t>(length)) != 0) return MacroOrder::Before;
  return MacroOrder::Match;
}

ZELListValZELString& statementMacros();

// A statement macro (its definition ends with ';') used at i: the end of its
// use, or kNoMacro when no macro of the list starts here.
int endOfStatementMacro(const char* s, int i, int limit, const ZELListValZELString& macros) {
  for (int m = 1; m <= macros.Size(); ++m) {
    const ZELString& name = macros[m];
    const MacroOrder order = compareMacroName(s, i, limit, name);
    if (order == MacroOrder::After) break;
    if (order == MacroOrder::Before) continue;
    const int after = i + name.GetLengthInChar();
    if (after > limit) return limit;
    const char c = s[after];
    if (c == '(') {
      const int close = vnxSyntaxe::SearchEndOfPar(s, after, limit);
      return close ? close : kFailed;
    }
    if (vnxSyntaxe::isAlphaNumOrUnderScoreChar(c)) continue;  // a longer identifier
    return c == ' ' ? after : after - 1;
  }
  return kNoMacro;
}

int endOfAccessLabel(const char* s, int from, int limit) {
  const int n = limit - from;
  if (n < 7 || s[from] != 'p') return -1;
  if (n >= 7 && startsWith(s, from, limit, "public:")) return from + 6;
  if (n >= 10 && startsWith(s, from, limit, "protected:")) return from + 9;
  if (n >= 8 && startsWith(s, from, limit, "private:")) return from + 7;
  return -1;
}

bool startsWithAny(const char* s, int i, int limit, const char* const* words) {
  if (i < 0 || i > limit) return false;
  for (; *words; ++words) {
    if ((*words)[0] != s[i]) continue;  // most words differ at once: no length needed
    if (startsWith(s, i, limit, *words, static_cast<int>(std::strlen(*words)))) return true;
  }
  return false;
}

// A colon at k that belongs to a scope operator "::" (the first of a run of
// three colons does not).
bool isScopeColon(const char* s, int from, int k, int limit) {
  const bool before = k > from && s[k - 1] == ':';
  const bool after = k < limit && s[k + 1] == ':';
  if (!before && after && k + 2 <= limit && s[k + 2] == ':') return false;
  return before || after;
}

// A colon at k outside a conditional: whether it ends the instruction that
// starts at i (a label, case, access label or initialiser list) rather than
// introducing a base list or a bit-field width.
bool colonEndsInstruction(const char* s, int i, int k, int limit) {
  static const char* const kTypeDeclarations[] = {"class ", "struct ", "interface ", nullptr};
  if (startsWithAny(s, i, limit, kTypeDeclarations)) return false;
  if (k == limit || !isDigit(s[k + 1])) return true;
  return !startsWithAny(s, i, limit, vnxSyntaxe::basicTypes);
}

// The characters the general walk looks at; it steps over all others.
struct InstructionStops {
  unsigned char of[256] = {};
  InstructionStops() {
    for (const char c : {'?', ':', ';', '{', '"', '\'', '(', '[', 'L'}) of[static_cast<unsigned char>(c)] = 1;
  }
};

const InstructionStops kInstructionStops;
const vnxtreebytes::ByteSet<9, true> kInstructionStopSet(kInstructionStops.of, 1);

inline bool stopsInstruction(char c) { return kInstructionStops.of[static_cast<unsigned char>(c)] != 0; }

// The general walk from `from`: the first ';', a ':' that ends, a block.
int scanInstruction(const char* s, int from, int i, int limit, int nested, int pending) {
  for (int k = from; k <= limit; ++k) {
    k = kInstructionStopSet.skipForward(s, k, limit);
    if (k > limit) break;
    if (!stopsInstruction(s[k])) continue;
    int jump = -1;  // end of a construct jumped over; 0 when it is not closed
    switch (s[k]) {
      case '?': ++pending; break;
      case ':':
        if (isScopeColon(s, from, k, limit)) break;
        if (pending > 0) --pending;
        else if (colonEndsInstruction(s, i, k, limit)) return k;
        break;
      case ';': return k;
      case '{':
        if (!nested) return k - 1;
        jump = vnxSyntaxe::SearchEndOfTAPBloc(s, k, limit, 0);
        return jump ? capAt(jump, limit) : kFailed;
      case '"': jump = vnxSyntaxe::SearchEndOfString(s, k, limit); break;
      case '\'': jump = vnxSyntaxe::SearchEndOfString2(s, k, limit); break;
      case '(': jump = vnxSyntaxe::SearchEndOfPar(s, k, limit); break;
      case '[': jump = vnxSyntaxe::SearchEndOfIndex(s, k, limit); break;
      case 'L':
        if (k < limit - 1 && isQuote(s[k + 1])) jump = skipWideLiteral(s, k, limit);
        break;
      default: break;
    }
    if (jump == 0) return kFailed;
    if (jump > 0) k = jump;
  }
  return limit;
}

int endOfInstruction(const char* s, int from, int limit, int nested, int pending, int nesting) {
  if (!s || from < 0 || limit < from) return kFailed;
  // Each level is one controlled statement (if(a)if(b)...): beyond the cap the
  // text is refused rather than followed down the stack.
  if (nesting > vnxSyntaxe::kMaxInstructionNesting) return kFailed;
  const int i = firstNonBlank(s, from, limit);

  if (const int keyword = controlKeywordAt(s, i, limit)) return endOfControl(s, i, keyword, limit, pending, nesting);
  if ((i < limit - 4 && startsElse(s, i, limit)) || (i < limit - 2 && startsDo(s, i, limit)))
    return endOfElseOrDo(s, i, limit, pending, nesting);

  if (s[from] != '(' && i <= limit) {
    const ZELListValZELString& macros = statementMacros();
    if (macros.Size() > 0) {
      const int end = endOfStatementMacro(s, i, limit, macros);
      if (end != kNoMacro) return end;
    }
  }
  const int label = endOfAccessLabel(s, from, limit);
  if (label >= 0) return label;
  return scanInstruction(s, from, i, limit, nested, pending);
}

}  // namespace

// The class-wide list, refilled from the macro registry whenever a Release has
// emptied it.
namespace {
ZELListValZELString& statementMacros() {
  ZELListValZELString& list = vnxSyntaxeAccess::listMacro();
  if (list.Size() == 0) {
    MatchMemo& memo = *gMemo;
    if (memo.noStatementMacros) return list;
    vnxSourceFile::getMacroWithSemicolon(list);
    if (list.Size() == 0 && memo.stream) memo.noStatementMacros = true;
    if (list.Size() > 1) wbUsefull::QuickSortZELString(list);
  }
  return list;
}
}  // namespace

int vnxSyntaxe::SearchEndOfTAPInstruction(const char* s, int from, int limit, int nested, int pendingQuestion) {
  const int end = endOfInstruction(s, from, limit, nested, pendingQuestion, 0);
  return end == kFailed ? 0 : end;
}

int vnxscan::endOfInstruction(const char* s, int from, int limit) {
  return ::endOfInstruction(s, from, limit, 0, 0, 0);
}
