// Internal: a small set of byte values that the tree scanners stop at, tested
// sixteen characters at a time where the machine allows it. A scanner first
// skips whole chunks holding none of its stops, then looks at the stop with
// its usual per-character rules; the set must therefore hold every character
// at which that scalar walk would stop (it is built from the walk's own class
// table for that reason). Loads never pass the bound the caller gives.
#ifndef VNX_SYNTAX_TREE_BYTE_SET_H
#define VNX_SYNTAX_TREE_BYTE_SET_H

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace vnxtreebytes {

// N values exactly: a fixed count lets the compiler unroll the tests.
// With WideL, one of them must be 'L', and an 'L' counts only when a quote
// follows it: the scanners that stop at 'L' look for a wide literal there and
// step over any other 'L', which is frequent in identifiers (QList, HANDLE).
// Such a scanner then meets a lone 'L' only in its scalar tail.
template <int N, bool WideL = false>
class ByteSet {
 public:
  // The values c for which (classes[c] & mask) != 0. Unless there are exactly
  // N of them (one being 'L' with WideL) the set stays unusable, and the
  // scanner walks as before.
  explicit ByteSet(const unsigned char (&classes)[256], unsigned char mask) {
    int count = 0;
    int others = 0;  // values stored so far apart from a WideL 'L'
    bool hasL = false;
    for (int c = 0; c < 256; ++c) {
      if (!(classes[c] & mask)) continue;
      if (count == N) return;
      ++count;
      // With WideL, 'L' goes last: hitsAt tests it apart from the others.
      if (WideL && c == 'L') {
        hasL = true;
        continue;
      }
#if defined(__SSE2__)
      _values[others] = _mm_set1_epi8(static_cast<char>(c));
#endif
      ++others;
    }
    if (WideL && !hasL) return;
#if defined(__SSE2__)
    if (WideL) _values[N - 1] = _mm_set1_epi8('L');
#else
    (void)others;
#endif
    _usable = count == N;
  }

  // Skips whole chunks of [i, limit] that hold no stop: the first stop of
  // the first chunk that holds one, or the offset (up to limit + 1) from
  // which the scalar walk goes on. Never below i.
  int skipForward(const char* s, int i, int limit) const {
#if defined(__SSE2__)
    if (!_usable) return i;
    // With WideL the character after the chunk is read too.
    while (i + (WideL ? 16 : 15) <= limit) {
      const unsigned hits = hitsAt(s + i);
      if (hits) return i + __builtin_ctz(hits);
      i += 16;
    }
#else
    (void)s;
    (void)limit;
#endif
    return i;
  }

  // The same backwards, down to lowest - 1. Never above i.
  int skipBackward(const char* s, int i, int lowest) const {
    static_assert(!WideL, "a wide literal's L is found walking forward");
#if defined(__SSE2__)
    if (!_usable) return i;
    while (i - 15 >= lowest) {
      const unsigned hits = hitsAt(s + i - 15);
      if (hits) return i - 15 + (31 - __builtin_clz(hits));
      i -= 16;
    }
#else
    (void)s;
    (void)lowest;
#endif
    return i;
  }

 private:
#if defined(__SSE2__)
  unsigned hitsAt(const char* p) const {
    const __m128i chunk = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    __m128i any = _mm_cmpeq_epi8(chunk, _values[0]);
    for (int k = 1; k < (WideL ? N - 1 : N); ++k) any = _mm_or_si128(any, _mm_cmpeq_epi8(chunk, _values[k]));
    unsigned hits = static_cast<unsigned>(_mm_movemask_epi8(any));
    if (WideL) {
      // The character after each 'L' is looked at only in chunks holding one.
      unsigned letters = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(chunk, _values[N - 1])));
      if (letters) {
        const __m128i next = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 1));
        const __m128i quote =
            _mm_or_si128(_mm_cmpeq_epi8(next, _mm_set1_epi8('"')), _mm_cmpeq_epi8(next, _mm_set1_epi8('\'')));
        hits |= letters & static_cast<unsigned>(_mm_movemask_epi8(quote));
      }
    }
    return hits;
  }
  __m128i _values[N];
#endif
  bool _usable = false;
};

// Word characters (ASCII letters, digits, '_') and, when withSpace, ' ':
// the characters most scanners pass over. One bit per byte of the sixteen at
// p that is none of them.
#if defined(__SSE2__)
inline unsigned otherThanWordsAt(const char* p, bool withSpace) {
  const __m128i chunk = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
  const __m128i letter = _mm_sub_epi8(_mm_or_si128(chunk, _mm_set1_epi8(0x20)), _mm_set1_epi8('a'));
  const __m128i isLetter = _mm_cmpeq_epi8(_mm_min_epu8(letter, _mm_set1_epi8(25)), letter);
  const __m128i digit = _mm_sub_epi8(chunk, _mm_set1_epi8('0'));
  const __m128i isDigit = _mm_cmpeq_epi8(_mm_min_epu8(digit, _mm_set1_epi8(9)), digit);
  __m128i word = _mm_or_si128(_mm_or_si128(isLetter, isDigit), _mm_cmpeq_epi8(chunk, _mm_set1_epi8('_')));
  if (withSpace) word = _mm_or_si128(word, _mm_cmpeq_epi8(chunk, _mm_set1_epi8(' ')));
  return ~static_cast<unsigned>(_mm_movemask_epi8(word)) & 0xFFFFu;
}
#endif

// The first offset of [i, last] whose byte the mask of its chunk marks
// (marks(p) gives one bit per byte of the sixteen at p), reading chunks while
// they end at or before readable (an offset of s that may be read, at or past
// last) and ignoring what lies past last: last + 1 when the range holds none,
// otherwise the offset from which the scalar walk must go on.
template <class Marks>
inline int firstMarkedInText(const char* s, int i, int last, int readable, Marks marks) {
#if defined(__SSE2__)
  while (i <= last && i + 15 <= readable) {
    unsigned hits = marks(s + i);
    if (i + 15 >= last) {
      if (i + 15 > last) hits &= (1u << (last - i + 1)) - 1;
      return hits ? i + __builtin_ctz(hits) : last + 1;
    }
    if (hits) return i + __builtin_ctz(hits);
    i += 16;
  }
#else
  (void)s;
  (void)last;
  (void)readable;
  (void)marks;
#endif
  return i;
}

#if defined(__SSE2__)
// Blanks, quotes, brackets and ':' (what a text's shape scan stops at), among
// a few others the scan then steps over: controls and ' ', '"' to ')', ':',
// '[', ']', '{', '}'.
inline unsigned shapeStopsAt(const char* p) {
  const __m128i chunk = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
  const __m128i control = _mm_cmpeq_epi8(_mm_min_epu8(chunk, _mm_set1_epi8(0x20)), chunk);
  const __m128i quoteToParen = _mm_sub_epi8(chunk, _mm_set1_epi8('"'));
  const __m128i inQuoteToParen = _mm_cmpeq_epi8(_mm_min_epu8(quoteToParen, _mm_set1_epi8(')' - '"')), quoteToParen);
  // '[' and ']' differ from '{' and '}' by the 0x20 bit only.
  const __m128i folded = _mm_or_si128(chunk, _mm_set1_epi8(0x20));
  const __m128i bracket =
      _mm_or_si128(_mm_cmpeq_epi8(folded, _mm_set1_epi8('{')), _mm_cmpeq_epi8(folded, _mm_set1_epi8('}')));
  const __m128i colon = _mm_cmpeq_epi8(chunk, _mm_set1_epi8(':'));
  return static_cast<unsigned>(
      _mm_movemask_epi8(_mm_or_si128(_mm_or_si128(control, inQuoteToParen), _mm_or_si128(bracket, colon))));
}
#else
// Without vectors the chunk walks never run; these only keep the callers whole.
inline unsigned otherThanWordsAt(const char*, bool) { return 0; }
inline unsigned shapeStopsAt(const char*) { return 0; }
#endif

// Skips whole chunks of [i, last] holding no shape stop. May answer last + 1.
inline int skipToShapeStop(const char* s, int i, int last, int readable) {
  return firstMarkedInText(s, i, last, readable, shapeStopsAt);
}

// The first offset of [i, last] that is no word character, or where the scalar walk goes on (last + 1 when the
// whole range was words).
inline int skipWordsInText(const char* s, int i, int last, int readable) {
  return firstMarkedInText(s, i, last, readable, [](const char* p) { return otherThanWordsAt(p, false); });
}

// The same with ' ' passed over as well: the first offset of [i, last] that
// is neither a word character nor ' ', or where the scalar walk goes on.
inline int skipWordsAndSpacesInText(const char* s, int i, int last, int readable) {
  return firstMarkedInText(s, i, last, readable, [](const char* p) { return otherThanWordsAt(p, true); });
}

// Backwards from i: the last offset of [lowest, i] that is no word character
// (nor ' ' with withSpace), lowest - 1 when there is none, or where the scalar
// walk goes on. Reads whole chunks below lowest, down to offset 0 of s (which
// must be readable from 0 to i), and ignores what lies below lowest.
inline int skipWordsBackwardInText(const char* s, int i, int lowest, bool withSpace) {
#if defined(__SSE2__)
  while (i >= lowest && i >= 15) {
    const int base = i - 15;
    unsigned others = otherThanWordsAt(s + base, withSpace);
    if (base < lowest) others &= 0xFFFFu << (lowest - base);
    if (others) return base + (31 - __builtin_clz(others));
    if (base <= lowest) return lowest - 1;
    i -= 16;
  }
#else
  (void)s;
  (void)lowest;
  (void)withSpace;
#endif
  return i;
}

}  // namespace vnxtreebytes

#endif
