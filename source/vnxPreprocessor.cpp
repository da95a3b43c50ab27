#include "source/vnxPreprocessor.h"

#include <climits>
#include <cstdlib>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif
#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/asan_interface.h>
#define VNX_SCRATCH_POISON(block, size) ASAN_POISON_MEMORY_REGION(block, size)
#define VNX_SCRATCH_UNPOISON(block, size) ASAN_UNPOISON_MEMORY_REGION(block, size)
#else
#define VNX_SCRATCH_POISON(block, size) ((void)(block), (void)(size))
#define VNX_SCRATCH_UNPOISON(block, size) ((void)(block), (void)(size))
#endif

#include "TAPerfoAv.h"
#include "ZELFileBuffer.h"
#include "source/vnxDiag.h"
#include "source/vnxLineIndex.h"
#include "source/vnxPreproDirectiveParser.h"
#include "vnxCComment.h"
#include "vnxCppComment.h"
#include "vnxDefinePreproDirectiveExpander.h"
#include "vnxEventGetBuffer.h"
#include "vnxPreproConditionalGroup.h"
#include "vnxPreproDirectiveConditional.h"
#include "vnxResources.h"
#include "vnxSourceFile.h"
#include "vnxSyntaxe.h"
#include "vnxZELPreproDirective.h"

namespace {

// Bytes 128 to 255 are negative as signed chars and so count as blanks, as
// control characters do: the stream is meant for ASCII code.
inline bool isBlank(char c) { return static_cast<signed char>(c) < 33; }

inline bool isAsciiAlnum(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

inline bool isWordChar(char c) { return isAsciiAlnum(c) || c == '_'; }

enum : unsigned char { kDropsBlankBefore = 1, kDropsBlankAfter = 2 };

struct PunctuationTable {
  unsigned char flags[256] = {};
  PunctuationTable() {
    for (const char* p = "(),;-}'\"*:"; *p; ++p) flags[static_cast<unsigned char>(*p)] |= kDropsBlankBefore;
    for (const char* p = "(),;>{}\"'"; *p; ++p) flags[static_cast<unsigned char>(*p)] |= kDropsBlankAfter;
  }
};
const PunctuationTable kPunctuation;

// A blank before these is dropped.
inline bool dropsBlankBefore(char c) { return kPunctuation.flags[static_cast<unsigned char>(c)] & kDropsBlankBefore; }

// No blank follows these.
inline bool dropsBlankAfter(char c) { return kPunctuation.flags[static_cast<unsigned char>(c)] & kDropsBlankAfter; }

// What the scan loop does with a character outside literals. Every kind but
// kSlow may take the fast path: kPlain ones are copied as they are,
// kSkippedBlank ones give at most one blank, kNewline is a blank that also
// ends the line (a directive may follow), kPunctuation drops the blank before
// it, and kLookAround ones ('l', ')', 'Z', 'S') are plain unless the text
// around them may be a rewritten keyword or a list macro. Every other
// character needs the full loop.
enum : unsigned char { kSlow = 0, kPlain, kPunctuationMark, kLookAround, kSkippedBlank, kNewline };

// Inside a run of ordinary characters (so never just after a blank) a
// punctuation mark has no blank to drop and is copied like them.
inline bool continuesRun(unsigned char kind) { return kind == kPlain || kind == kPunctuationMark; }

struct ScanTable {
  unsigned char kind[256] = {};
  ScanTable() {
    for (int c = 33; c < 127; ++c) kind[c] = kPlain;
    for (int c = 0; c < 256; ++c) {
      if (isBlank(static_cast<char>(c))) kind[c] = kSkippedBlank;
    }
    kind[0] = kSlow;
    kind[static_cast<unsigned char>('\n')] = kNewline;
    // Blank handling only: none of these starts anything.
    for (const char* p = "(,;-*:"; *p; ++p) kind[static_cast<unsigned char>(*p)] = kPunctuationMark;
    for (const char* p = "l)ZS"; *p; ++p) kind[static_cast<unsigned char>(*p)] = kLookAround;
    // Folds, literals, comments, directives and continuations.
    for (const char* p = "}'\"/#\\"; *p; ++p) kind[static_cast<unsigned char>(*p)] = kSlow;
  }
};
const ScanTable kScan;

inline bool endsWith(const char* out, int length, const char* word, int wordLength) {
  return length >= wordLength && std::memcmp(out + length - wordLength, word, static_cast<size_t>(wordLength)) == 0;
}

// The pass's working copy, kept from one file to the next: it is a few
// kilobytes over its file's size, and its malloc and free cost a small
// header a good part of its scan. It is lent to one pass at a time (a pass
// started while another runs gets its own), and only up to kScratchLargest
// bytes, so that one huge file does not stay in memory. (The output and the
// map become the file's own, shrunk in place: they are not kept.)
// Process-wide and unguarded, like the pools: one thread only.
struct Scratch {
  void* block = nullptr;
  size_t size = 0;
  bool lent = false;
};
constexpr size_t kScratchLargest = size_t(1) << 20;
Scratch gWorkScratch;

// Room for bytes bytes: the scratch block when it is free and the size is
// not too large (lent is then set), a malloc otherwise.
void* borrow(Scratch& s, size_t bytes, bool& lent) {
  lent = false;
  if (s.lent || bytes > kScratchLargest) return std::malloc(bytes);
  if (s.size < bytes) {
    VNX_SCRATCH_UNPOISON(s.block, s.size);
    std::free(s.block);
    s.size = 0;
    s.block = std::malloc(bytes);
    if (!s.block) return nullptr;
    s.size = bytes;
  }
  VNX_SCRATCH_UNPOISON(s.block, bytes);
  s.lent = lent = true;
  return s.block;
}

// Gives back what borrow answered.
void giveBack(Scratch& s, void* block, bool lent) {
  if (!lent) {
    std::free(block);
    return;
  }
  VNX_SCRATCH_POISON(s.block, s.size);
  s.lent = false;
}

template <class T>
T* grow(T* buffer, int oldEntries, int newEntries) {
  T* grown = static_cast<T*>(std::calloc(static_cast<size_t>(newEntries), sizeof(T)));
  if (!grown) return nullptr;
  if (buffer && oldEntries > 0) std::memcpy(grown, buffer, sizeof(T) * static_cast<size_t>(oldEntries));
  std::free(buffer);
  return grown;
}

}  // namespace

int vnxSourceFile::preProcess() {
  vnxPreprocessor pass(*this);
  return pass.run();
}

namespace {

// The branch memo's tables, kept from one pass to the next like the working
// copy: a small file's pass otherwise spends a good part of its time making
// and filling them. Lent to one pass at a time; one thread only.
struct MemoTables {
  vnxBranchMemo tables;
  bool lent = false;
};
MemoTables gMemoTables;

}  // namespace

vnxPreprocessor::vnxPreprocessor(vnxSourceFile& file) : _file(file), _parser(&file) {
  if (gMemoTables.lent) return;
  _branchMemo.swapTables(gMemoTables.tables);
  gMemoTables.lent = _memoLent = true;
}

vnxPreprocessor::~vnxPreprocessor() {
  releaseWork();
  if (!_memoLent) return;
  _branchMemo.clear();
  if (_branchMemo.tablesKeepable()) _branchMemo.swapTables(gMemoTables.tables);
  gMemoTables.lent = false;
}

void vnxPreprocessor::releaseWork() {
  delete _expander;
  _expander = nullptr;
  if (_buffer) giveBack(gWorkScratch, _buffer, _workLent);
  _buffer = nullptr;
  _work = nullptr;
  std::free(_out);
  _out = nullptr;
  std::free(_map);
  _map = nullptr;
}

// Inline: every comment and directive asks once.
inline vnxPreprocessor::Place vnxPreprocessor::placeOf(int raw) const {
  if (raw < 0 || raw >= _file._rawSize) return Place{1, 1};
  unsigned int line = 0, col = 0;
  _file._lineIndex->place(raw, line, col);
  return Place{static_cast<int>(line), static_cast<int>(col)};
}

namespace {

// Makes a pass's memo the one conditional directives use while it runs.
class MemoScope {
 public:
  explicit MemoScope(vnxBranchMemo* memo) : _previous(vnxBranchMemo::current()) { vnxBranchMemo::current() = memo; }
  ~MemoScope() { vnxBranchMemo::current() = _previous; }
  MemoScope(const MemoScope&) = delete;
  MemoScope& operator=(const MemoScope&) = delete;

 private:
  vnxBranchMemo* _previous;
};

}  // namespace

int vnxPreprocessor::run() {
  const MemoScope memoScope(&_branchMemo);
  vnxSourceFile& f = _file;
  f._preProcessed = 1;
  if (!f._fileBuffer) return 1;
  const bool measuring = vnxResources::isPerfosMeasureActivated() && vnxSourceFile::perfoFile;
  if (measuring) vnxSourceFile::perfoFile->Add(1);
  std::free(f._preProcessedStream);
  f._preProcessedStream = nullptr;
  std::free(f._positionMap);
  f._positionMap = nullptr;
  f._preProcessedStreamSize = 0;

  const char* raw = f._fileBuffer->getBuffer();
  const int rawSize = raw ? static_cast<int>(f._fileBuffer->getBufferSize()) : 0;
  {
    vnxEventGetBuffer event(raw, &f);
    f.SendCallback(&event);
  }
  if (!raw || rawSize == 0) {
    f._fileBuffer->destroy();
    f._fileBuffer = nullptr;
    return 0;
  }
  if (measuring) vnxSourceFile::perfoByteRead->Add(rawSize);
  f._rawSize = rawSize;
  f.buildLineAndColumnTables(raw, rawSize);
  setup(raw, rawSize);
  _branchMemo.setLines(f._lineIndex);
  syncBranchMemo();

  for (int i = 0; _work[i] != '\0'; ++i) {
    if (!_stringMode && !_charMode) {
      i = copyPlainRun(i);
      if (_work[i] == '\0') break;
    }
    if (_regionActive && i - _delta >= _regionPosition + _regionLength) _regionActive = false;
    advanceCursor(i - _delta);
    char c = _work[i];
    const int r = rawPosition(i);

    if (_stringMode) {
      emit(c, r);
      if (c == '"') {
        int backslashes = 0;
        for (int k = i - 1; k > _stringStart && _work[k] == '\\'; --k) ++backslashes;
        if (i == 0 || backslashes % 2 == 0) _stringMode = false;
      }
      continue;
    }
    if (_charMode) {
      emit(c, r);
      if (c == '\'' && !(i >= 1 && _work[i - 1] == '\\' && !(i >= 2 && _work[i - 2] == '\\'))) _charMode = false;
      continue;
    }

    if (i - _delta == _cursorPosition && !_regionActive) {
      if (tryExpand(i) == kFail) {
        releaseWork();
        return 1;
      }
      c = _work[i];
      if (c == '\0') break;
    }

    if (c == '\n') {
      if (last() == '\\') removeOut(_outLength - 1, 1);
      _firstNonBlank = 0;
    } else if (!isBlank(c) && _firstNonBlank == 0) {
      _firstNonBlank = c;
    }

    if (_outLength > 0 && dropsBlankBefore(c) && isBlank(last())) removeOut(_outLength - 1, 1);

    if (isBlank(c)) {
      if (_outLength == 0 || isBlank(last()) || dropsBlankAfter(last())) continue;
    }

    if (c == '}' && foldNestedBlock()) continue;

    if (c == '/' && (_work[i + 1] == '/' || _work[i + 1] == '*')) {
      if (handleComment(i) == kStop) break;
      continue;
    }

    if (c == '#' && _firstNonBlank == '#') {
      const Next next = handleDirective(i);
      if (next == kStop) break;
      continue;
    }

    if (c == '"') {
      _stringMode = true;
      _stringStart = i;
    } else if (c == '\'') {
      _charMode = true;
    } else if (c == '\\') {
      continue;
    }
    emit(isBlank(c) ? ' ' : c, r);
    // Cheap pre-tests keep the two rewrites off the path of ordinary characters.
    if (c == ')' || c == 'l' || (_outLength >= 10 && _out[_outLength - 10] == 'e')) removeKeywords(i, c);

    if ((c == 'Z' || c == 'S') && handleListMacro(i) == kFail) {
      vnxdiag::error(ZELString("Missing end of '(' in ZELLISTP() or ZELLISTV() or SEQUENCE in ") + f._name);
      f._fileBuffer->destroy();
      f._fileBuffer = nullptr;
      releaseWork();
      return 1;
    }
  }

  removeTrailingExtern();
  finish();
  return 0;
}

void vnxPreprocessor::setup(const char* raw, int rawSize) {
  _workRoom = kGrowth;
  // Nothing reads before the text's first character; the kLookBehind bytes
  // there are zeroed all the same, so that a look back at the start of the
  // text meets a NUL (the rest of the room is only written to).
  _buffer = static_cast<char*>(
      borrow(gWorkScratch, static_cast<size_t>(_workRoom) + static_cast<size_t>(rawSize) + 1, _workLent));
  _work = _buffer + _workRoom;
  std::memset(_work - kLookBehind, 0, kLookBehind);
  std::memcpy(_work, raw, static_cast<size_t>(rawSize));
  _work[rawSize] = '\0';
  _workLength = rawSize;
  // The output is rarely longer than the text (growOut makes room for what
  // expansions add): a small file's output and map are then small blocks,
  // which malloc serves from its caches, and finish need not shrink them.
  _outCapacity = rawSize + rawSize / 16 + kSlackKept / 4 + 1;
  _out = static_cast<char*>(std::malloc(static_cast<size_t>(_outCapacity)));
  _map = static_cast<int*>(std::malloc(sizeof(int) * static_cast<size_t>(_outCapacity)));
  _macros = vnxmacro::findOccurrences(raw, rawSize);
  _macroDeleted.assign(_macros.size(), false);
  _cursor = 0;
  _cursorPosition = _macros.empty() ? -1 : _macros[0].position;
  // Only macro occurrences need an expander (it copies the macro registry).
  if (!_macros.empty()) _expander = new vnxDefinePreproDirectiveExpander(&_file);
}

void vnxPreprocessor::finish() {
  vnxSourceFile& f = _file;
  ensureOut(1);
  _out[_outLength] = '\0';
  f._preProcessedStreamSize = _outLength;
  if (vnxResources::isPerfosMeasureActivated() && vnxSourceFile::perfoLineProcessed)
    vnxSourceFile::perfoLineProcessed->Add(f._lineIndex->lastLine());
  // Shrink to what the stream needs when the pass left much room unused
  // (comments and blanks removed, a large file's headroom). A little slack is
  // kept: shrinking a small block splits it and leaves a fragment that the
  // next file's allocations must work around.
  const size_t needed = static_cast<size_t>(_outLength) + 1;
  if (static_cast<size_t>(_outCapacity) > needed + needed / 8 + kSlackKept) {
    _out = static_cast<char*>(std::realloc(_out, needed));
    _map = static_cast<int*>(std::realloc(_map, sizeof(int) * needed));
  }
  f._preProcessedStream = _out;
  f._positionMap = _map;
  _out = nullptr;
  _map = nullptr;
  f._positionMap[_outLength] = _outLength > 0 ? f._positionMap[_outLength - 1] : 0;
  f.countLines();
  f._fileBuffer->destroy();
  f._fileBuffer = nullptr;
  releaseWork();
}

// The fast path of the scan loop: copies the run of ordinary characters and
// blanks from i, doing for each exactly what the loop would, and returns where
// the loop must take over. The run stops before the next macro occurrence
// and the end of the current expansion, so that the cursor and the region
// need no care inside it.
namespace {

// Whether the look-around character c, met at from inside a run of ordinary
// characters written up to to (so never after a blank), is copied as the
// dispatch below would copy it: 'l' unless it may end "call" or "cdecl", ')'
// unless a 't' stands just before it, 'Z' and 'S' unless an 'E' follows.
// 'l' alone ends a word often enough that breaking the run there cost a
// dispatch every few words.
inline bool staysPlain(char c, const char* out, const char* to, const char* from) {
  if (c == 'l')
    return to - out < 3 || !((to[-1] == 'l' && to[-2] == 'a' && to[-3] == 'c') ||
                             (to[-1] == 'c' && to[-2] == 'e' && to[-3] == 'd'));
  if (c == ')') return to[-1] != 't' && (to - out < 2 || to[-2] != 't');
  return from[1] != 'E';
}

#if defined(__SSE2__)
// One bit per byte of chunk that may not simply continue a run of ordinary
// characters: blanks (but the single spaces kept below), control and
// non-ASCII bytes, DEL, the characters that start folds, literals, comments,
// directives and continuations. The look-around characters are not among
// them: lookAroundMarks finds those, and the run asks staysPlain about each.
// edges holds bit 0 when the character before the chunk lets a space follow
// it and bit 15 when the one after the chunk lets a space precede it: the
// spaces at the chunk's two ends then stay in the run too.
inline unsigned int runBreaks(__m128i chunk, unsigned int edges) {
  // c + 1 wraps DEL to -128: one signed compare catches DEL, the bytes above
  // it and everything up to the space.
  __m128i breaks = _mm_cmplt_epi8(_mm_add_epi8(chunk, _mm_set1_epi8(1)), _mm_set1_epi8(34));
  for (const char stop : {'}', '\'', '"', '/', '#', '\\'})
    breaks = _mm_or_si128(breaks, _mm_cmpeq_epi8(chunk, _mm_set1_epi8(stop)));
  const unsigned int stops = static_cast<unsigned int>(_mm_movemask_epi8(breaks));
  // A single space between two words stays in the run, as the full loop
  // would keep it: not after a character that drops the blank after it, nor
  // before one that drops the blank before it (a blank before ')' is left to
  // the full loop, as the scalar path does).
  const __m128i parensOrSeparates = _mm_or_si128(
      _mm_or_si128(_mm_cmpeq_epi8(chunk, _mm_set1_epi8('(')), _mm_cmpeq_epi8(chunk, _mm_set1_epi8(')'))),
      _mm_or_si128(_mm_cmpeq_epi8(chunk, _mm_set1_epi8(',')), _mm_cmpeq_epi8(chunk, _mm_set1_epi8(';'))));
  const unsigned int noBlankAfter = static_cast<unsigned int>(_mm_movemask_epi8(_mm_or_si128(
      parensOrSeparates,
      _mm_or_si128(_mm_cmpeq_epi8(chunk, _mm_set1_epi8('>')), _mm_cmpeq_epi8(chunk, _mm_set1_epi8('{'))))));
  const unsigned int noBlankBefore = static_cast<unsigned int>(_mm_movemask_epi8(_mm_or_si128(
      _mm_or_si128(parensOrSeparates, _mm_cmpeq_epi8(chunk, _mm_set1_epi8('-'))),
      _mm_or_si128(_mm_cmpeq_epi8(chunk, _mm_set1_epi8('*')), _mm_cmpeq_epi8(chunk, _mm_set1_epi8(':'))))));
  const unsigned int spaces = static_cast<unsigned int>(_mm_movemask_epi8(_mm_cmpeq_epi8(chunk, _mm_set1_epi8(' '))));
  const unsigned int keptSpaces =
      spaces & ~((stops | noBlankAfter) << 1) & ~((stops | noBlankBefore) >> 1) & (0x7FFEU | edges);
  return stops & ~keptSpaces;
}

// Whether a space may follow c (the last character written before a chunk)
// and precede d (the first one after it) without the full loop: c is no
// blank and lets a blank follow it; d neither drops the blank before it nor
// needs the full loop.
struct SpaceNeighbours {
  bool after[256] = {};
  bool before[256] = {};
  SpaceNeighbours() {
    for (int c = 0; c < 256; ++c) {
      after[c] = !isBlank(static_cast<char>(c)) && !dropsBlankAfter(static_cast<char>(c));
      before[c] = kScan.kind[c] == kPlain || (kScan.kind[c] == kLookAround && c != ')');
    }
  }
};
const SpaceNeighbours kSpaceNeighbours;

inline unsigned int spaceEdges(char before, char after) {
  return (kSpaceNeighbours.after[static_cast<unsigned char>(before)] ? 1U : 0U) |
         (kSpaceNeighbours.before[static_cast<unsigned char>(after)] ? 0x8000U : 0U);
}

// One bit per look-around character of chunk ('l', ')', 'Z', 'S').
inline unsigned int lookAroundMarks(__m128i chunk) {
  return static_cast<unsigned int>(_mm_movemask_epi8(
      _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(chunk, _mm_set1_epi8('l')), _mm_cmpeq_epi8(chunk, _mm_set1_epi8(')'))),
                   _mm_or_si128(_mm_cmpeq_epi8(chunk, _mm_set1_epi8('Z')), _mm_cmpeq_epi8(chunk, _mm_set1_epi8('S'))))));
}

// One bit per output place to, to + 1, ... to + 15 that has "ex" nine places
// before it, where the full loop must look for "extern". The sixteen bytes
// from to are already written; out[to - 9] must exist.
inline unsigned int externBreaks(const char* to) {
  const __m128i e = _mm_cmpeq_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(to - 9)), _mm_set1_epi8('e'));
  const __m128i x = _mm_cmpeq_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(to - 8)), _mm_set1_epi8('x'));
  return static_cast<unsigned int>(_mm_movemask_epi8(_mm_and_si128(e, x)));
}
#endif

// Offset of the first character from i on (before end) that is not a
// skipped blank. Indentation and alignment are long runs of spaces: they are
// stepped over sixteen at a time where the machine has 128-bit vectors.
int skipBlanks(const char* work, int i, int end) {
#if defined(__SSE2__)
  const __m128i space = _mm_set1_epi8(' ');
  while (i + 16 <= end) {
    const __m128i chunk = _mm_loadu_si128(reinterpret_cast<const __m128i*>(work + i));
    const unsigned int spaces = static_cast<unsigned int>(_mm_movemask_epi8(_mm_cmpeq_epi8(chunk, space)));
    if (spaces != 0xFFFF) {
      i += __builtin_ctz(~spaces);
      break;
    }
    i += 16;
  }
#endif
  while (i < end && kScan.kind[static_cast<unsigned char>(work[i])] == kSkippedBlank) ++i;
  return i;
}

}  // namespace

int vnxPreprocessor::copyPlainRun(int i) {
  long long limit = _cursorPosition >= 0 ? _cursorPosition : (1LL << 40);
  if (_regionActive && _regionPosition + _regionLength < limit) limit = _regionPosition + _regionLength;
  limit += _delta;
  if (limit > _workLength) limit = _workLength;
  if (i >= limit) return i;
  // The run writes at most one character per character read.
  ensureOut(static_cast<int>(limit) - i + 1);
  return _regionActive ? copyRun<true>(i, static_cast<int>(limit)) : copyRun<false>(i, static_cast<int>(limit));
}

template <bool kInExpansion>
int vnxPreprocessor::copyRun(int i, const int end) {
  const char* const work = _work;
  char* const out = _out;
  int* const map = _map;
  int length = _outLength;
  // Inside an expansion every character maps to the macro name's place,
  // elsewhere to its own.
  const int base = kInExpansion ? _regionPosition : -_delta;
  char firstNonBlank = _firstNonBlank;
  // At "extern" ten characters back, the full loop looks at the keyword.
  const auto atExtern = [out](int at) { return at >= 9 && out[at - 9] == 'e' && out[at - 8] == 'x'; };
  while (i < end) {
    char c = work[i];
    const unsigned char kind = kScan.kind[static_cast<unsigned char>(c)];
    // Ordinary characters first, in a loop of their own: they are most of
    // the text.
    if (kind == kPlain) {
      if (atExtern(length)) break;
      if (firstNonBlank == 0) firstNonBlank = c;
      // Pointers rather than offsets: this loop is a fifth of the pass.
      const char* from = work + i;
      const char* const stop = work + end;
      char* to = out + length;
      int* mapTo = map + length;
      int position = i + base;
      for (;;) {
        *to++ = c;
        *mapTo++ = kInExpansion ? base : position;
        ++position;
        if (++from == stop) break;
#if defined(__SSE2__)
        // Sixteen characters at a time: copy the chunk and its map whole,
        // then keep only the part before the first character that needs a
        // look. The room is there: the run writes at most one character per
        // character read, and sixteen remain to be read.
        while (stop - from >= 16 && to - out >= 9) {
          const __m128i chunk = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
          _mm_storeu_si128(reinterpret_cast<__m128i*>(to), chunk);
          const __m128i first = kInExpansion ? _mm_set1_epi32(base) : _mm_add_epi32(_mm_set1_epi32(position),
                                                                                    _mm_set_epi32(3, 2, 1, 0));
          const __m128i four = kInExpansion ? _mm_setzero_si128() : _mm_set1_epi32(4);
          __m128i places = first;
          for (int q = 0; q < 16; q += 4) {
            _mm_storeu_si128(reinterpret_cast<__m128i*>(mapTo + q), places);
            places = _mm_add_epi32(places, four);
          }
          unsigned int cut = runBreaks(chunk, spaceEdges(to[-1], from[16])) | externBreaks(to) | 0x10000U;
          // 'l' and 'S' are common in identifiers: each one met before the
          // first break is decided here, on the output just written, so that
          // only a real "call", "decl", "t)", "SE" or "ZE" ends the run.
          for (unsigned int look = lookAroundMarks(chunk) & ((cut & (0U - cut)) - 1U); look; look &= look - 1U) {
            const int at = __builtin_ctz(look);
            if (!staysPlain(from[at], out, to + at, from + at)) {
              cut = 1U << at;
              break;
            }
          }
          const int kept = __builtin_ctz(cut);
          from += kept;
          to += kept;
          mapTo += kept;
          position += kept;
          if (kept < 16) break;
        }
        if (from == stop) break;
#endif
        c = *from;
        unsigned char next = kScan.kind[static_cast<unsigned char>(c)];
        if (next == kSkippedBlank || next == kNewline) {
          // Blanks between words (a line's end and the next one's indent,
          // the blank after a comma): the run goes on past them when the
          // loop below would give the same output, at most one blank.
          const char* word = from;
          bool newline = false;
          while (word != stop && (next == kSkippedBlank || next == kNewline)) {
            newline |= next == kNewline;
            next = kScan.kind[static_cast<unsigned char>(*++word)];
          }
          if (word == stop) break;
          const char previous = to[-1];
          const char w = *word;
          if (isBlank(previous) || previous == '\\') break;
          if (dropsBlankAfter(previous)) {
            // Every blank vanishes; the word goes on the non-blank before,
            // where it must not complete "extern".
            if (!(continuesRun(next) || (next == kLookAround && staysPlain(w, out, to, word))) ||
                (to - out >= 9 && to[-9] == 'e' && to[-8] == 'x'))
              break;
          } else if (next == kPunctuationMark) {
            // The blank the loop would write goes again before the mark.
            if (to - out >= 9 && to[-9] == 'e' && to[-8] == 'x') break;
            if (to - out <= _foldClose) _foldClose = -1;
          } else {
            // One blank, then an ordinary character: neither may complete
            // "extern".
            if (next != kPlain || to - out < 9 || (to[-9] == 'e' && to[-8] == 'x') ||
                (to[-8] == 'e' && to[-7] == 'x'))
              break;
            *to++ = ' ';
            *mapTo++ = kInExpansion ? base : position;
          }
          if (newline) firstNonBlank = w;
          position += static_cast<int>(word - from);
          from = word;
          c = w;
          continue;
        }
        if (!((continuesRun(next) || (next == kLookAround && staysPlain(c, out, to, from))) &&
              !(to >= out + 9 && to[-9] == 'e' && to[-8] == 'x')))
          break;
      }
      i = static_cast<int>(from - work);
      length = static_cast<int>(to - out);
      continue;
    }
    if (kind == kSlow) break;
    bool dropBlank = false;
    if (kind == kSkippedBlank || kind == kNewline) {
      if (kind == kNewline) {
        // A continuation's backslash leaves the output first.
        if (length > 0 && out[length - 1] == '\\') break;
        firstNonBlank = 0;
      }
      if (length == 0) {
        ++i;
        continue;
      }
      const char previous = out[length - 1];
      if (isBlank(previous) || dropsBlankAfter(previous)) {
        // The blanks that follow (an indentation) are dropped as well.
        i = skipBlanks(work, i + 1, end);
        continue;
      }
    } else if (kind == kPunctuationMark) {
      dropBlank = length > 0 && isBlank(out[length - 1]);
    } else if (kind == kLookAround) {
      // What follows may be "__stdcall", "_cdecl", "__declspec(dllexport)"
      // and the like, or ZELLISTP / SEQUENCE: the full loop decides.
      if (c == 'l') {
        if (length >= 3 && ((out[length - 1] == 'l' && out[length - 2] == 'a' && out[length - 3] == 'c') ||
                            (out[length - 1] == 'c' && out[length - 2] == 'e' && out[length - 3] == 'd')))
          break;
      } else if (c == ')') {
        // The blank before it is dropped by the full loop, rarely needed.
        if (length > 0 && isBlank(out[length - 1])) break;
        if (length >= 2 && (out[length - 1] == 't' || out[length - 2] == 't')) break;
      } else if (work[i + 1] == 'E') {
        break;
      }
    }
    const int at = dropBlank ? length - 1 : length;
    if (atExtern(at)) break;
    if (dropBlank) {
      if (at <= _foldClose) _foldClose = -1;
      length = at;
    }
    const bool blank = kind == kSkippedBlank || kind == kNewline;
    if (!blank && firstNonBlank == 0) firstNonBlank = c;
    out[length] = blank ? ' ' : c;
    map[length] = kInExpansion ? base : i + base;
    ++length;
    ++i;
  }
  _firstNonBlank = firstNonBlank;
  _outLength = length;
  return i;
}

// --- output ------------------------------------------------------------------

void vnxPreprocessor::growOut(int extra) {
  // Geometric growth: a text that many expansions lengthen is copied a
  // bounded number of times.
  long long capacity = static_cast<long long>(_outLength) + extra + kGrowth + 1;
  if (capacity < _outCapacity + _outCapacity / 2LL) capacity = _outCapacity + _outCapacity / 2LL;
  if (capacity > INT_MAX) capacity = INT_MAX;
  _out = grow(_out, _outLength, static_cast<int>(capacity));
  _map = grow(_map, _outLength, static_cast<int>(capacity));
  _outCapacity = static_cast<int>(capacity);
}

void vnxPreprocessor::emit(char c, int raw) {
  ensureOut(1);
  _out[_outLength] = c;
  _map[_outLength] = raw;
  ++_outLength;
}

void vnxPreprocessor::removeOut(int from, int count) {
  if (from < 0 || count <= 0 || from + count > _outLength) return;
  if (from <= _foldClose) _foldClose = -1;
  const int tail = _outLength - from - count;
  if (tail > 0) {
    std::memmove(_out + from, _out + from + count, static_cast<size_t>(tail));
    std::memmove(_map + from, _map + from + count, sizeof(int) * static_cast<size_t>(tail));
  }
  _outLength -= count;
}

// --- macros ------------------------------------------------------------------

void vnxPreprocessor::advanceCursor(int rawPos) {
  while (_cursor < _macros.size() && (_macroDeleted[_cursor] || _macros[_cursor].position < rawPos)) ++_cursor;
  _cursorPosition = _cursor < _macros.size() ? _macros[_cursor].position : -1;
}

// Puts the replacement of the text at [i, i + replaced) in place. The text
// after it never moves: the start of the working text moves instead, by as
// much as the text grows, into the room kept before it. The text before i
// has been read and is never read again, except for its last characters
// (a literal's opening quote, a backslash before a directive), which are
// copied along. When the room runs out, a buffer with twice the room takes
// the text from i - kLookBehind on.
bool vnxPreprocessor::replaceWork(int i, int replaced, const char* replacement, int length) {
  const int change = length - replaced;
  const int keep = i < kLookBehind ? i : kLookBehind;
  if (change <= _work - _buffer) {
    char* const work = _work - change;
    std::memmove(work + i - keep, _work + i - keep, static_cast<size_t>(keep));
    std::memcpy(work + i, replacement, static_cast<size_t>(length));
    if (i < kLookBehind && change > 0) {
      // The text moved down near its start: a NUL stays before it.
      char* const zeros = work - _buffer < kLookBehind ? _buffer : work - kLookBehind;
      std::memset(zeros, 0, static_cast<size_t>(work - zeros));
    }
    _work = work;
  } else {
    const long long room = 2LL * (static_cast<long long>(_workRoom) + change);
    const long long size = room + static_cast<long long>(_workLength) + change + 1;
    if (size > INT_MAX) return false;
    char* const buffer = static_cast<char*>(std::malloc(static_cast<size_t>(size)));
    if (!buffer) return false;
    char* const work = buffer + room;
    std::memcpy(work + i - keep, _work + i - keep, static_cast<size_t>(keep));
    std::memcpy(work + i, replacement, static_cast<size_t>(length));
    std::memcpy(work + i + length, _work + i + replaced, static_cast<size_t>(_workLength - i - replaced) + 1);
    giveBack(gWorkScratch, _buffer, _workLent);
    _workLent = false;
    _buffer = buffer;
    _work = work;
    _workRoom = static_cast<int>(room);
  }
  _workLength += change;
  ensureOut(_workLength - _outLength + 1);
  return true;
}

vnxPreprocessor::Next vnxPreprocessor::tryExpand(int& i) {
  char* replacement = nullptr;
  int replaced = 0;
  const int status = _expander->expand(_work + i, replacement, replaced);
  if (status != 0 || !replacement || replaced <= 0 || i + replaced > _workLength) {
    std::free(replacement);
    ++_cursor;
    advanceCursor(i - _delta);
    return kContinue;
  }
  const int length = static_cast<int>(std::strlen(replacement));
  const int change = length - replaced;
  const bool placed = replaceWork(i, replaced, replacement, length);
  std::free(replacement);
  if (!placed) return kFail;
  // The replacement, and whatever earlier replacement text is still ahead,
  // is not raw text.
  if (_rawFrom > i + replaced) _rawFrom += change;
  else _rawFrom = i + length;
  _regionActive = true;
  _regionPosition = i - _delta;
  _regionLength = replaced;
  _delta += change;
  syncBranchMemo();
  return kProceed;
}

// --- comments ------------------------------------------------------------------

// Comments leave no trace in the stream, not even a blank: the text on both
// sides joins. A line comment followed, past the newline and indentation, by
// another one is chained here: runs of "//" lines are most of a documented
// header, and the scan loop would take each newline, each indentation and
// each comment start through its full dispatch.
vnxPreprocessor::Next vnxPreprocessor::handleComment(int& i) {
  for (;;) {
    const int r = rawPosition(i);
    const bool block = _work[i + 1] == '*';
    vnxComment* comment = block ? static_cast<vnxComment*>(vnxCComment::create(&_file))
                                : static_cast<vnxComment*>(vnxCppComment::create(&_file));
    if (!comment) return kContinue;
    const Place place = placeOf(r);
    if (comment->build(_work, i, place.line, place.col, _outLength) != 0) {
      comment->Release();
      return kContinue;
    }
    // The raw position of the comment's last character (-1 for an empty one).
    const int size = comment->getCommentStringSize();
    const int end = size > 0 ? comment->getBeginPosInRawStream() + size - 1 : -1;
    _file.addComment(comment);
    if (end < i) {
      if (block) vnxdiag::error(ZELString("File ") + _file._name + " is too long.");
      return kContinue;
    }
    i = end;
    if (_work[i] == '\0' || _work[i + 1] == '\0') return kStop;
    if (block || !toNextLineComment(i)) return kContinue;
  }
}

// From the last character i of a line comment: when only blanks and at least
// one newline stand between it and the next "//", does to them what the scan
// loop would (at most one blank reaches the output, the line's first
// non-blank character becomes that slash) and moves i to the slash. Anything
// else is left untouched for the scan loop.
bool vnxPreprocessor::toNextLineComment(int& i) {
  const int from = i + 1;
  if (_regionActive || _work[from] != '\n') return false;
  int k = from + 1;
  while (_work[k] != '\0' && isBlank(_work[k])) ++k;
  if (_work[k] != '/' || _work[k + 1] != '/') return false;
  // A macro occurrence in the stretch, or on the slash, needs the loop.
  advanceCursor(from - _delta);
  if (_cursorPosition >= 0 && _cursorPosition <= k - _delta) return false;
  // A continuation's backslash before the newline leaves the output there.
  if (last() == '\\') return false;
  if (_outLength > 0 && !isBlank(last()) && !dropsBlankAfter(last())) {
    // The blank written for the newline could complete "extern": the loop
    // decides.
    if (_outLength >= 9 && _out[_outLength - 9] == 'e' && _out[_outLength - 8] == 'x') return false;
    emit(' ', from - _delta);
  }
  _firstNonBlank = '/';
  i = k;
  return true;
}

// --- directives ------------------------------------------------------------------

vnxPreprocessor::Next vnxPreprocessor::handleDirective(int& i) {
  int j = i + 1;
  if (_work[j] == ' ') ++j;
  if (i < _workLength - 4 && ((_work[j] == 'i' && _work[j + 1] == 'f') ||
                              (_work[j] == 'e' && (_work[j + 1] == 'l' || _work[j + 1] == 'n')))) {
    const Next next = handleConditionalGroup(i);
    if (next != kProceed) return next;
  }
  const int r = rawPosition(i);
  const Place place = placeOf(r);
  vnxZELPreproDirective* directive = _parser.parse(_work, i, place.line, place.col, _outLength);
  if (!directive) return kContinue;
  const int end = directive->getPosOfPreproCharInRawStream(directive->getPreproStringSize() - 1);
  _file.addPreproDirective(directive);
  if (end > i) i = end;
  // A directive that runs to the end of the text counts the NUL in its length.
  if (i >= _workLength || _work[i + 1] == '\0') return kStop;
  return kContinue;
}

// Keeps the selected branch of a conditional group in the working text and
// blanks everything else of the group; the kept branch is then scanned again
// as ordinary text, so nested groups are met in their turn.
vnxPreprocessor::Next vnxPreprocessor::handleConditionalGroup(int& i) {
  const Place place = placeOf(rawPosition(i));
  vnxPreproConditionalGroup* group =
      vnxPreproConditionalGroup::create(&_file, _work, i, place.line, place.col, _outLength);
  if (!group) return kProceed;

  vnxPreproDirectiveConditional* selected = group->getSucceedingDirective();
  const ZELListPtr<vnxPreproDirectiveConditional>& directives = group->_directives;
  for (int k = 1; k <= directives.Size(); ++k) {
    vnxPreproDirectiveConditional* d = directives[k];
    if (d != selected && !d->isEmptyText()) {
      const int begin = static_cast<int>(d->getBeginTextPosInRawStream());
      const int end = static_cast<int>(d->getEndTextPosInRawStream());
      if (begin >= 0 && end >= begin && end < _workLength) {
        // Dead branches are reported as comments, so checkers still see their text.
        vnxCComment* dead = vnxCComment::create(&_file);
        if (dead) {
          ZELString text(_work + begin, end - begin + 1);
          if (dead->buildFromString(text, 1, 1, 0, _outLength) == 0) _file.addComment(dead);
          else dead->Release();
        }
      }
    }
    d->AddRef();
    _file.addPreproDirective(d);  // takes over that reference
  }
  _file.addPreproConditionalGroup(group);

  const int size = static_cast<int>(group->getInitialGroupSize());
  int keptBegin = i + size;
  int keptEnd = i + size - 1;
  if (selected && !selected->isEmptyText()) {
    keptBegin = static_cast<int>(selected->getBeginTextPosInRawStream());
    keptEnd = static_cast<int>(selected->getEndTextPosInRawStream());
  }
  int groupEnd = i + size - 1;
  if (groupEnd >= _workLength) {
    vnxdiag::error(ZELString("Problem in processing file ") + _file._name);
    vnxdiag::error("\tMaybe missing final newline character in file.");
    groupEnd = _workLength - 1;
  }
  if (keptBegin < i) keptBegin = i;
  if (keptEnd > groupEnd) keptEnd = groupEnd;
  const int headEnd = keptBegin < groupEnd + 1 ? keptBegin : groupEnd + 1;
  if (headEnd > i) std::memset(_work + i, ' ', static_cast<size_t>(headEnd - i));
  if (groupEnd > keptEnd) std::memset(_work + keptEnd + 1, ' ', static_cast<size_t>(groupEnd - keptEnd));
  noteBlankedAhead(keptEnd + 1, groupEnd, i);

  // Macro names in the blanked tail are gone; those before the kept text are skipped.
  for (size_t m = _cursor; m < _macros.size(); ++m) {
    const int at = _macros[m].position + _delta;
    if (at > groupEnd) break;
    if (at > keptEnd || at < keptBegin) _macroDeleted[m] = true;
  }
  advanceCursor(i - _delta);
  if (_work[i] == '\0') return kStop;
  --i;  // the loop's step brings the scan back to i
  return kContinue;
}

// Branch ends remembered across the stretch [from, to] of the working text,
// just blanked ahead of the scan at i, no longer hold. Only raw text holds
// remembered walks.
void vnxPreprocessor::noteBlankedAhead(int from, int to, int i) {
  if (from < _rawFrom) from = _rawFrom;
  const int scan = i < _rawFrom ? _rawFrom : i;
  _branchMemo.blanked(from - _delta, to - _delta, scan - _delta);
}

// --- stream shaping ------------------------------------------------------------------

// A block whose only content is another block, "{{ ... }}", becomes one block.
// After a fold the same closing brace matches the brace just before the one
// blanked (the block between is balanced, and that brace was the reason for
// the fold), so a run of closing braces folds without searching back through
// the block once per level.
bool vnxPreprocessor::foldNestedBlock() {
  int k = _outLength - 1;
  while (k >= 0 && (_out[k] == ';' || isBlank(_out[k]))) --k;
  if (k < 1 || _out[k] != '}') return false;
  const int open = k == _foldClose ? _foldOpen - 1 : vnxSyntaxe::SearchBeginOfTAPBloc(_out, k, 0);
  if (open <= 0 || _out[open] != '{' || _out[open - 1] != '{') return false;
  _out[open] = ' ';
  _foldClose = k;
  _foldOpen = open;
  return true;
}

void vnxPreprocessor::removeKeywords(int i, char c) {
  int o = _outLength;
  if (o >= 10) {
    const char* p = _out + o - 10;
    if (p[0] == 'e' && p[1] == 'x' && (o == 10 || !isAsciiAlnum(_out[o - 11]))) {
      if (std::memcmp(p, "extern\"C\"", 9) == 0) {
        if (c == '{') {
          const int close = vnxSyntaxe::SearchEndOfTAPBloc(_work, i, _workLength - 1, 1);
          if (close > i) {
            _work[close] = ' ';
            noteBlankedAhead(close, close, i);
          }
          removeOut(o - 10, 10);
        } else {
          removeOut(o - 10, isBlank(c) ? 10 : 9);
        }
      } else if (std::memcmp(p, "extern", 6) == 0 && !isAsciiAlnum(_out[o - 4])) {
        removeOut(o - 10, _out[o - 4] == ' ' ? 7 : 6);
      }
    }
  }
  static const struct {
    const char* word;
    int length;
    int minimum;
  } kNoise[] = {
      {"__declspec(dllimport)", 21, 21}, {"__declspec(dllexport)", 21, 21}, {"_declspec(dllimport)", 20, 20},
      {"_declspec(dllexport)", 20, 20},  {"__stdcall", 9, 9},             {"_stdcall", 8, 9},
      {"__cdecl", 7, 9},                 {"_cdecl", 6, 9},
  };
  // Every noise word ends with ')' or 'l': most characters need no comparison.
  if (c != ')' && c != 'l') return;
  for (const auto& noise : kNoise) {
    o = _outLength;
    if (o >= noise.minimum && endsWith(_out, o, noise.word, noise.length)) removeOut(o - noise.length, noise.length);
  }
}

// ZELLISTP(T), ZELLISTV(T) and SEQUENCE(T) become the single identifier
// "ZELLISTP_T_", so that declarations using them read as "type name".
vnxPreprocessor::Next vnxPreprocessor::handleListMacro(int& i) {
  if ((_work[i] != 'Z' && _work[i] != 'S') || i >= _workLength - 10) return kContinue;
  const char* at = _work + i;
  const bool list = std::memcmp(at, "ZELLISTP", 8) == 0 || std::memcmp(at, "ZELLISTV", 8) == 0;
  const bool sequence = std::memcmp(at, "SEQUENCE", 8) == 0 && (i == 0 || !isWordChar(_work[i - 1]));
  if (!list && !sequence) return kContinue;
  int k = i + 8;
  while (_work[k] == ' ' || _work[k] == '\t') ++k;
  if (_work[k] != '(') return kContinue;
  // A list macro's argument is one type name: its parenthesis closes within a
  // short window or not at all. The window keeps a run of unclosed
  // "ZELLISTP(" from searching to the end of the text once per macro.
  const int window = k + kListMacroWindow < _workLength - 1 ? k + kListMacroWindow : _workLength - 1;
  const int close = vnxSyntaxe::SearchEndOfPar(_work, k, window);
  if (close <= k) return kContinue;
  if (std::memchr(_work + k, ',', static_cast<size_t>(close - k)) != nullptr) return kContinue;

  const int r = rawPosition(i);
  int a = k + 1;
  while (a < close && isBlank(_work[a])) ++a;
  int argEnd = a;
  while (argEnd < close && !isBlank(_work[argEnd])) ++argEnd;
  int rest = argEnd;
  while (rest < close && isBlank(_work[rest])) ++rest;
  if (rest != close) return kFail;

  removeOut(_outLength - 1, 1);  // the first letter, copied before the macro was recognised
  ensureOut(8 + 1 + (argEnd - a) + 2);
  for (int n = 0; n < 8; ++n) emit(at[n], r);
  emit('_', r);
  for (int n = a; n < argEnd; ++n) emit(_work[n], r);
  emit('_', r);
  emit(' ', r);
  i = close;
  return kContinue;
}

void vnxPreprocessor::removeTrailingExtern() {
  if (_outLength < 10) return;
  // "extern" ending in the last three positions or right at the end: the
  // in-scan removal needs four characters after the word and never saw it.
  for (int back = 0; back <= 3; ++back) {
    const int e = _outLength - 6 - back;
    if (_out[e] != 'e') continue;
    if (e > 0 && isAsciiAlnum(_out[e - 1])) return;
    if (std::memcmp(_out + e, "extern", 6) != 0) continue;
    removeOut(e, e + 6 < _outLength && _out[e + 6] == ' ' ? 7 : 6);
    return;
  }
}
