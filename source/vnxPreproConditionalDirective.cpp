#include "vnxPreproDirectiveConditional.h"

#include <cstring>
#include <vector>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "lexer/vnxCharClass.h"
#include "platform/TAPool.h"
#include "source/vnxBranchMemo.h"
#include "vnxTokenizer.h"
#include "wbStream.h"

namespace {

TAPool<vnxPreproDirectiveConditional> gConditionalPool;

// A place in the text: offset, and the line and column of the character there.
struct Cursor {
  int k;
  unsigned int line;
  unsigned int col;

  void step(const char* text) {
    if (text[k] == '\n') {
      ++line;
      col = 1;
    } else {
      ++col;
    }
    ++k;
  }
};

// What may stand before the '#' of a directive line.
inline bool isIndent(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\f' || c == '\v'; }
using vnxchar::isIdentBody;
using vnxchar::isIdentHead;

// A backslash-newline pair (a carriage return may stand between them) at k:
// its length, 0 when there is none.
inline int continuationAt(const char* text, int k) {
  if (text[k] != '\\') return 0;
  int n = 1;
  while (text[k + n] == '\r') ++n;
  return text[k + n] == '\n' ? n + 1 : 0;
}

typedef vnxPreproDirectiveConditional::vnxPreproConditionalType ConditionalType;

ConditionalType keywordType(const char* word, size_t length) {
  struct Keyword {
    const char* text;
    ConditionalType type;
  };
  static const Keyword kKeywords[] = {{"if", vnxPreproDirectiveConditional::If},
                                      {"ifdef", vnxPreproDirectiveConditional::Ifdef},
                                      {"ifndef", vnxPreproDirectiveConditional::Ifndef},
                                      {"elif", vnxPreproDirectiveConditional::Elif},
                                      {"else", vnxPreproDirectiveConditional::Else},
                                      {"endif", vnxPreproDirectiveConditional::Endif}};
  for (const Keyword& keyword : kKeywords) {
    if (std::strlen(keyword.text) == length && std::memcmp(keyword.text, word, length) == 0) return keyword.type;
  }
  return vnxPreproDirectiveConditional::NotConditional;
}

// The conditional keyword of a line whose first non-blank character is the
// '#' at k ('#', blanks, the word); NotConditional for any other line.
ConditionalType directiveKeywordAt(const char* text, int k) {
  if (text[k] != '#') return vnxPreproDirectiveConditional::NotConditional;
  ++k;
  while (text[k] == ' ' || text[k] == '\t') ++k;
  int end = k;
  while (isIdentBody(text[end])) ++end;
  if (end == k || !isIdentHead(text[k])) return vnxPreproDirectiveConditional::NotConditional;
  return keywordType(text + k, static_cast<size_t>(end - k));
}

// The newlines where the walks of the nested branches still open would
// start; kept between calls so that a walk allocates nothing.
std::vector<int>& openBranchScratch() {
  static thread_local std::vector<int> open;
  return open;
}

// Moves c forward to offset k, counting the newlines on the way.
void advanceTo(const char* text, Cursor& c, int k) {
  if (k <= c.k) return;
  const char* p = text + c.k;
  const char* const stop = text + k;
  const char* lastNewline = nullptr;
  unsigned int newlines = 0;
  while (const void* hit = std::memchr(p, '\n', static_cast<size_t>(stop - p))) {
    lastNewline = static_cast<const char*>(hit);
    ++newlines;
    p = lastNewline + 1;
  }
  if (lastNewline) {
    c.line += newlines;
    c.col = static_cast<unsigned int>(stop - lastNewline);
  } else {
    c.col += static_cast<unsigned int>(k - c.k);
  }
  c.k = k;
}

// The characters a logical line's walk must look at; every other one is
// stepped over in a tight loop.
struct WalkStops {
  bool stop[256];
};
constexpr WalkStops makeWalkStops() {
  WalkStops t{};
  t.stop[0] = t.stop[static_cast<unsigned char>('\n')] = t.stop[static_cast<unsigned char>('\\')] = true;
  t.stop[static_cast<unsigned char>('/')] = t.stop[static_cast<unsigned char>('"')] = true;
  t.stop[static_cast<unsigned char>('\'')] = true;
  return t;
}
constexpr WalkStops kWalkStops = makeWalkStops();
inline bool isWalkStop(char c) { return kWalkStops.stop[static_cast<unsigned char>(c)]; }
// The same stops (the NUL ends strcspn anyway).
constexpr const char* kWalkStopChars = "\n\\/\"'";

// Walks the logical lines of a text. Block comments may span lines (their
// newlines count as lines, and the text after them does not start a new
// line); string and character literals end at their quote or at the end of
// their line; backslash-newline continues a line.
class LineWalker {
 public:
  explicit LineWalker(const char* text) : _text(text) {}

  // The offset of the newline that ends the logical line k is on, or of the
  // NUL. When the text ends right after a continuation, *continued (if
  // given) receives the offset of its backslash; otherwise -1.
  int toLineEnd(int k, int* continued = nullptr) {
    const char* t = _text;
    int backslash = -1;
    bool justContinued = false;
    for (;;) {
      if (!isWalkStop(t[k])) {
        justContinued = false;
        // strcspn runs many characters per step where the C library can.
        k += static_cast<int>(std::strcspn(t + k + 1, kWalkStopChars)) + 1;
      }
      const char ch = t[k];
      if (ch == '\0' || ch == '\n') break;
      if (const int n = continuationAt(t, k)) {
        backslash = k;
        k += n;
        justContinued = true;
        continue;
      }
      justContinued = false;
      if (ch == '/' && t[k + 1] == '*') {
        const int end = blockCommentEnd(k);
        if (end >= 0) {
          k = end + 1;
          continue;
        }
      }
      if (ch == '/' && t[k + 1] == '/') {
        k = lineCommentEnd(k);
        break;
      }
      if (ch == '"' || ch == '\'') {
        k = literalEnd(k);
        continue;
      }
      ++k;
    }
    if (continued) *continued = justContinued && t[k] == '\0' ? backslash : -1;
    return k;
  }

 private:
  // The offset of the '/' closing the block comment opened at k; -1 when it
  // is not closed before the end of the text, in which case its "/*" is
  // ordinary text.
  int blockCommentEnd(int k) {
    if (_noBlockCommentEnd) return -1;
    // "/*/" closes already: the end is the first '/' after a '*' from the
    // comment's third character on.
    for (const char* p = _text + k + 2; (p = std::strchr(p, '/')) != nullptr; ++p) {
      if (p[-1] == '*') return static_cast<int>(p - _text);
    }
    // No later comment can be closed either: remember it, so that a text
    // full of unclosed openers stays linear.
    _noBlockCommentEnd = true;
    return -1;
  }

  // The newline that ends a line comment (continuations belong to it), or
  // the NUL. Only a newline can end it, and only the backslash before a
  // newline (carriage returns between) can continue it: the search goes from
  // newline to newline.
  int lineCommentEnd(int k) const {
    for (;;) {
      const char* newline = std::strchr(_text + k, '\n');
      if (!newline) return k + static_cast<int>(std::strlen(_text + k));
      const int n = static_cast<int>(newline - _text);
      int b = n - 1;
      while (b >= k && _text[b] == '\r') --b;
      if (b < k || _text[b] != '\\') return n;
      k = n + 1;
    }
  }

  // The offset after a literal opened at k: after its closing quote, or at
  // the newline or NUL that cuts it.
  int literalEnd(int k) const {
    const char quote = _text[k];
    const char* const stops = quote == '"' ? "\"\\\n" : "'\\\n";
    ++k;
    for (;;) {
      k += static_cast<int>(std::strcspn(_text + k, stops));
      const char ch = _text[k];
      if (ch == '\0' || ch == '\n') return k;
      if (const int n = continuationAt(_text, k)) {
        k += n;
        continue;
      }
      if (ch == '\\') {
        ++k;
        if (_text[k] != '\0' && _text[k] != '\n') ++k;
        continue;
      }
      return k + 1;  // the closing quote
    }
  }

  const char* _text;
  bool _noBlockCommentEnd = false;
};

// What the quick walk below found.
enum QuickWalk { kQuickFound, kQuickEndless, kQuickUnsure };

// The characters the quick walk stops at: '#', and those that could make a
// newline other than a line's end ('/' of a block comment opener, '\\' of a
// continuation), and the NUL.
inline bool isQuickStop(char c) { return c == '#' || c == '/' || c == '\\' || c == '\0'; }

#if defined(__SSE2__)
// The chunk's stops, where a '/' counts only when a '*' follows it: the
// "//" lines of a documented header then cost nothing. Reads p[0, 17).
inline unsigned int quickStopBits(const char* p) {
  const __m128i chunk = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
  const __m128i next = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 1));
  const __m128i opener = _mm_and_si128(_mm_cmpeq_epi8(chunk, _mm_set1_epi8('/')), _mm_cmpeq_epi8(next, _mm_set1_epi8('*')));
  const __m128i a = _mm_or_si128(_mm_cmpeq_epi8(chunk, _mm_set1_epi8('#')), opener);
  const __m128i b = _mm_or_si128(_mm_cmpeq_epi8(chunk, _mm_set1_epi8('\\')), _mm_cmpeq_epi8(chunk, _mm_setzero_si128()));
  return static_cast<unsigned int>(_mm_movemask_epi8(_mm_or_si128(a, b)));
}
#endif

// The branch walk of findBranch for the common text where no block comment
// opens and no line is continued: there every newline ends a logical line,
// so only the lines whose first non-blank character is '#' can matter, and
// those are found by a chunked scan for '#' instead of line by line. The scan
// also looks at every '/' and '\\' on the way and gives up (kQuickUnsure) at
// the first "/*" or continuation: the lines before it were read right, so
// the line walker reads that line, from lastNewline and the open branches as
// they stood at its start (what was recorded in the memo holds, since it
// depends only on the text before), and the quick walk goes on after it. It
// starts at lastNewline, the newline before the first line to read, with
// the branches open there; length is where the text's NUL stands (chunks are
// read up to it, never beyond).
QuickWalk quickBranchEnd(const char* text, int length, vnxBranchMemo* memo, std::vector<int>& open,
                         int& lastNewline) {
  typedef vnxPreproDirectiveConditional D;
  const int start = lastNewline;
  // The last directive line read: the newline before it, and the open
  // branches before it (their count, and the one it closed or -1).
  int directiveLine = -1;
  size_t openBefore = 0;
  int closed = -1;
  // The last offset a chunk and the byte after it may be read from.
  const int chunkEnd = length + 1 - 17;
  int k = start + 1;
  for (;;) {
    unsigned int bits;
    int base;
#if defined(__SSE2__)
    if (k <= chunkEnd) {
      base = k;
      bits = quickStopBits(text + k);
      k += 16;
      if (bits == 0) continue;
    } else
#endif
    {
      while (!isQuickStop(text[k])) ++k;
      base = k;
      bits = 1;
      ++k;
    }
    for (; bits != 0; bits &= bits - 1) {
      const int j = base + __builtin_ctz(bits);
      const char ch = text[j];
      if (ch == '\0') return kQuickEndless;
      if (ch == '/' ? text[j + 1] == '*' : ch == '\\' && continuationAt(text, j)) {
        int lineStart = j - 1;
        while (text[lineStart] != '\n') --lineStart;  // stops at start at the latest
        if (lineStart == directiveLine) {
          open.resize(closed >= 0 ? openBefore - 1 : openBefore);
          if (closed >= 0) open.push_back(closed);
        }
        lastNewline = lineStart;
        return kQuickUnsure;
      }
      if (ch != '#') continue;
      int p = j - 1;  // text[start] is a newline: the look back stops there at the latest
      while (isIndent(text[p])) --p;
      if (text[p] != '\n') continue;
      const ConditionalType type = directiveKeywordAt(text, j);
      directiveLine = p;
      openBefore = open.size();
      closed = -1;
      if (type == D::Elif || type == D::Else || type == D::Endif) {
        if (open.empty()) {
          lastNewline = p;
          return kQuickFound;
        }
        closed = open.back();
        if (memo) memo->record(closed, p);
        open.pop_back();
        if (type == D::Endif) continue;
      } else if (type != D::If && type != D::Ifdef && type != D::Ifndef) {
        continue;
      }
      // The directive's line opens a branch: its walk starts at the line's end.
      const char* newline = static_cast<const char*>(std::memchr(text + j, '\n', static_cast<size_t>(length - j)));
      const void* nul = std::memchr(text + j, '\0', static_cast<size_t>((newline ? newline - text : length) - j));
      if (!newline || nul) return kQuickEndless;
      open.push_back(static_cast<int>(newline - text));
    }
  }
}

}  // namespace

// --- pool and life cycle ---------------------------------------------------------

vnxPreproDirectiveConditional::vnxPreproDirectiveConditional(vnxSourceFile* source) : vnxZELPreproDirective(source) {
  _preproType = Conditional;
}

vnxPreproDirectiveConditional::~vnxPreproDirectiveConditional() = default;

vnxPreproDirectiveConditional* vnxPreproDirectiveConditional::create(vnxSourceFile* source) {
  void* block = nullptr;
  vnxPreproDirectiveConditional* directive = gConditionalPool.getNew(&block, source);
  if (directive) directive->_poolBlock = block;
  return directive;
}

int vnxPreproDirectiveConditional::getPoolLiveCount() { return gConditionalPool.liveCount(); }
int vnxPreproDirectiveConditional::getPoolBlockCount() { return gConditionalPool.blockCount(); }

vnxPreproDirectiveConditional::vnxPreproConditionalType vnxPreproDirectiveConditional::getConditionalTypeAt(
    const char* text, int pos) {
  if (!text || pos < 0) return NotConditional;
  return directiveKeywordAt(text, pos);
}

int vnxPreproDirectiveConditional::Release() {
  const int count = dropReference();
  if (count == 0) gConditionalPool.release(this, _poolBlock);
  return count;
}

const char* vnxPreproDirectiveConditional::IsA() const { return "vnxPreproDirectiveConditional"; }

// --- building ----------------------------------------------------------------------

int vnxPreproDirectiveConditional::build(const char* text, int pos, int line, int col, int outPos) {
  if (vnxZELPreproDirective::build(text, pos, line, col, outPos) != 0) return 1;
  _preproType = Conditional;
  return buildConditional(text);
}

int vnxPreproDirectiveConditional::buildConditional(const char* text) {
  _controlCondition.RemoveAll();
  _preproConditionalType = NotConditional;
  _emptyText = 1;
  _beginTextPos = _endTextPos = 0;
  _beginTextLine = _endTextLine = 0;
  _beginTextCol = _endTextCol = 0;
  if (!text || !_preproString) return 1;
  int keywordEnd = 0;
  if (readKeywordAndCondition(keywordEnd) != 0) return 1;
  return _preproConditionalType == Endif ? findEndifLineEnd(text, keywordEnd) : findBranch(text);
}

namespace {

// The tokens of a directive made only of a '#', identifiers and blanks, up
// to its first newline or its end: most conditions ("#ifndef GUARD",
// "#endif", "#else") are no more, and reading them needs no tokenizer.
// Answers the count of tokens (the newline not counted), or -1 when the text
// holds anything else or more than room tokens; then the tokenizer reads it.
// Where the tokenizer stops (at its size, or at a NUL before it), so does
// this. The tokens are kept as spans: only the condition's become tokens.
struct PlainSpan {
  int start;
  int length;
};
int readPlainDirective(const char* text, int size, PlainSpan* tokens, int room) {
  int count = 0;
  int cursor = 0;
  while (cursor < size && text[cursor] != '\0') {
    int pos = cursor;
    while (vnxchar::isBlank(text[pos])) ++pos;
    const char c = text[pos];
    if (c == '\0' || c == '\n') return count;
    if (count == room) return -1;
    // The first token is the hash, every other one an identifier.
    int length = 1;
    const bool hash = c == '#' && count == 0 && text[pos + 1] != '#';
    if (!hash) {
      if (!vnxchar::isIdentHead(c) || count == 0) return -1;
      while (vnxchar::isIdentBody(text[pos + length])) ++length;
    }
    tokens[count++] = PlainSpan{pos, length};
    cursor = pos + length;
  }
  return count;
}

}  // namespace

// The keyword decides the type; the tokens after it, up to the end of the
// (continued) line, are the condition. The tokens point into the directive's
// own copy of its text.
int vnxPreproDirectiveConditional::readKeywordAndCondition(int& keywordEnd) {
  PlainSpan plain[8];
  const int count = readPlainDirective(_preproString, _preproStringSize, plain, 8);
  if (count >= 0) {
    if (count < 2) return 1;
    _preproConditionalType = keywordType(_preproString + plain[1].start, static_cast<size_t>(plain[1].length));
    if (_preproConditionalType == NotConditional) return 1;
    keywordEnd = plain[1].start + plain[1].length;
    for (int k = 2; k < count; ++k)
      _controlCondition.Append(
          vnxToken(_preproString + plain[k].start, static_cast<unsigned int>(plain[k].length), vnxToken::kIdentifier));
    return 0;
  }
  vnxTokenizer tokenizer(_preproString, static_cast<unsigned int>(_preproStringSize));
  vnxTokenIterator it = tokenizer.getTokenIterator();
  vnxToken token;
  if (!it.getNextToken(token) || token.getKind() != vnxToken::kHash) return 1;
  if (!it.getNextToken(token) || token.getKind() != vnxToken::kIdentifier) return 1;
  _preproConditionalType = keywordType(token.getStart(), token.getLength());
  if (_preproConditionalType == NotConditional) return 1;
  keywordEnd = static_cast<int>(token.getStart() - _preproString + token.getLength());

  while (it.getNextToken(token)) {
    const int kind = token.getKind();
    if (kind == vnxToken::kBlockComment || kind == vnxToken::kLineComment) continue;
    if (kind == vnxToken::kNewline) break;
    if (kind == vnxToken::kUnknown && token.getStart()[0] == '\\') {
      // A backslash that ends its line continues the condition on the next one.
      vnxTokenIterator peek = it;
      vnxToken next;
      if (peek.getNextToken(next) && next.getKind() == vnxToken::kNewline) {
        it = peek;
        continue;
      }
    }
    _controlCondition.Append(token);
  }
  return 0;
}

namespace {

// The place of the character after the directive's last one; false when the
// directive ran to the end of the text.
bool placeAfterDirective(const char* text, int last, unsigned int line, unsigned int col, Cursor& c) {
  if (text[last] == '\0') return false;
  c = Cursor{last, line, col};
  c.step(text);
  return true;
}

}  // namespace

// The branch runs from the line after the directive to the newline before the
// next #elif, #else or #endif of the same level; nested #if/#ifdef/#ifndef
// ... #endif groups inside it are stepped over, and the branch ends seen on
// the way are left in the pass's memo for when it reaches those groups.
int vnxPreproDirectiveConditional::findBranch(const char* text) {
  const int last = _beginPos + _preproStringSize - 1;
  Cursor c{0, 0, 0};
  if (_preproStringSize <= 0 || !placeAfterDirective(text, last, _endLine, _endCol, c)) return 1;
  LineWalker walker(text);
  advanceTo(text, c, walker.toLineEnd(c.k));  // a line comment after the directive
  if (text[c.k] == '\0') return 1;
  const Cursor afterDirective = c;
  vnxBranchMemo* memo = vnxBranchMemo::current();
  if (memo && memo->text() != text) memo = nullptr;

  int lastNewline = memo ? memo->lookup(c.k) : -1;
  const bool remembered = lastNewline >= 0;
  if (!remembered) {
    // Each open nested branch: the newline where its walk would start.
    std::vector<int>& open = openBranchScratch();
    open.clear();
    lastNewline = c.k;
    // Inside the pass the text's length is known: quick stretches then take
    // most of the walk, and the line walker reads the lines they leave.
    const int length = memo ? memo->length() : -1;
    const bool quick = length > c.k;
    for (;;) {
      if (quick) {
        const QuickWalk found = quickBranchEnd(text, length, memo, open, lastNewline);
        if (found == kQuickEndless) return 1;
        if (found == kQuickFound) break;
      }
      int k = lastNewline + 1;
      while (text[k] == ' ') ++k;  // most indentation, with one test a character
      while (isIndent(text[k])) ++k;
      const ConditionalType type = directiveKeywordAt(text, k);
      bool opens = false;
      if (type == If || type == Ifdef || type == Ifndef) {
        opens = true;
      } else if (type == Elif || type == Else || type == Endif) {
        if (open.empty()) break;
        if (memo) memo->record(open.back(), lastNewline);
        open.pop_back();
        opens = type != Endif;
      }
      k = walker.toLineEnd(k);
      if (text[k] == '\0') return 1;
      if (opens) open.push_back(k);
      lastNewline = k;
    }
  }
  if (memo && !remembered) memo->record(afterDirective.k, lastNewline);

  Cursor begin = afterDirective;
  begin.step(text);
  Cursor end = afterDirective;
  unsigned int lines = 0, col = 0;
  if (memo && memo->rawLinesBetween(end.k, lastNewline, lines, col) && lines > 0) {
    // From the raw text's tables: the branch is not read a second time.
    end = Cursor{lastNewline, end.line + lines, col};
  } else {
    advanceTo(text, end, lastNewline);
  }
  _beginTextPos = static_cast<unsigned int>(begin.k);
  _beginTextLine = begin.line;
  _beginTextCol = begin.col;
  _endTextPos = static_cast<unsigned int>(end.k);
  _endTextLine = end.line;
  _endTextCol = end.col;
  _emptyText = end.k < begin.k ? 1 : 0;
  return 0;
}

// An #endif opens no branch; its "text" is the rest of its line after the
// keyword, up to the newline that ends the line (or the end of the text). A
// continuation with nothing after it leaves the end on its backslash, so
// that the newline it escapes is not taken for a missing one.
int vnxPreproDirectiveConditional::findEndifLineEnd(const char* text, int keywordOffset) {
  Cursor keywordEnd{_beginPos, _beginLine, _beginCol};
  while (keywordEnd.k < _beginPos + keywordOffset && text[keywordEnd.k] != '\0') keywordEnd.step(text);

  LineWalker walker(text);
  Cursor c = keywordEnd;
  int continued = -1;
  int end = walker.toLineEnd(c.k, &continued);
  const int last = _beginPos + _preproStringSize - 1;
  if (end < last) {
    // The directive itself ran further (a literal left open across lines).
    if (placeAfterDirective(text, last, _endLine, _endCol, c)) {
      end = walker.toLineEnd(c.k, &continued);
    } else {
      c = Cursor{last, _endLine, _endCol};
      end = last;
      continued = -1;
    }
  }
  advanceTo(text, c, continued >= 0 ? continued : end);

  _beginTextPos = static_cast<unsigned int>(keywordEnd.k);
  _beginTextLine = keywordEnd.line;
  _beginTextCol = keywordEnd.col;
  _endTextPos = static_cast<unsigned int>(c.k);
  _endTextLine = c.line;
  _endTextCol = c.col;
  _emptyText = 1;
  return 0;
}

// --- queries ---------------------------------------------------------------------

void vnxPreproDirectiveConditional::getControlCondition(ZELListVal<vnxToken>& condition) const {
  condition.Append(_controlCondition);
}

void vnxPreproDirectiveConditional::getBeginTextInRawStream(unsigned int& pos, unsigned int& line,
                                                            unsigned int& col) const {
  pos = _beginTextPos;
  line = _beginTextLine;
  col = _beginTextCol;
}

void vnxPreproDirectiveConditional::getEndTextInRawStream(unsigned int& pos, unsigned int& line,
                                                          unsigned int& col) const {
  pos = _endTextPos;
  line = _endTextLine;
  col = _endTextCol;
}

void vnxPreproDirectiveConditional::dump() {
  vnxZELPreproDirective::dump();
  wbStdout << "   type:" << static_cast<int>(_preproConditionalType) << endl;
  wbStdout << "   control condition:";
  for (int k = 1; k <= _controlCondition.Size(); ++k) {
    const vnxToken& token = _controlCondition[k];
    wbStdout << ' ';
    for (unsigned int i = 0; i < token.getLength(); ++i) wbStdout << token.getStart()[i];
  }
  wbStdout << endl;
  wbStdout << "   Debut. Pos:" << _beginTextPos << " Line:" << _beginTextLine << " Col:" << _beginTextCol << endl;
  wbStdout << "   Fin. Pos:" << _endTextPos << " Line:" << _endTextLine << " Col:" << _endTextCol << endl;
}
