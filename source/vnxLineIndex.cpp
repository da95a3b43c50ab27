#include "source/vnxLineIndex.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace {

constexpr unsigned int kAbove = std::numeric_limits<unsigned int>::max();

}  // namespace

void vnxLineIndex::clear() {
  std::free(_starts);
  std::free(_lineTable);
  std::free(_columnTable);
  _starts = nullptr;
  _lineTable = nullptr;
  _columnTable = nullptr;
  _lines = 0;
  _size = 0;
  _cursor = 0;
}

void vnxLineIndex::build(const char* raw, int size) {
  clear();
  if (size < 0) size = 0;
  _size = size;
  // Room for a line per 32 characters to begin with (code lines are longer),
  // grown by doubling; the check is made once per chunk of sixteen, with
  // room for the chunk's newlines and the two sentinels.
  size_t capacity = static_cast<size_t>(size) / 32 + 32;
  unsigned int* starts = static_cast<unsigned int*>(std::malloc(capacity * sizeof(unsigned int)));
  size_t count = 0;
  starts[count++] = 0;
  const auto reserve = [&](size_t more) {
    if (count + more + 2 <= capacity) return;
    capacity = std::max(capacity * 2, count + more + 2);
    starts = static_cast<unsigned int*>(std::realloc(starts, capacity * sizeof(unsigned int)));
  };
  int k = 0;
#if defined(__SSE2__)
  const __m128i newline = _mm_set1_epi8('\n');
  for (; k + 16 <= size; k += 16) {
    unsigned int newlines = static_cast<unsigned int>(
        _mm_movemask_epi8(_mm_cmpeq_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(raw + k)), newline)));
    if (newlines == 0) continue;
    reserve(16);
    do {
      starts[count++] = static_cast<unsigned int>(k + __builtin_ctz(newlines) + 1);
      newlines &= newlines - 1;
    } while (newlines != 0);
  }
#endif
  reserve(16);
  for (; k < size; ++k)
    if (raw[k] == '\n') starts[count++] = static_cast<unsigned int>(k + 1);
  // A newline that ends the text starts no line of its own: no character
  // lies on it.
  if (count > 1 && starts[count - 1] == static_cast<unsigned int>(size)) --count;
  _lines = static_cast<unsigned int>(count);
  starts[count] = kAbove;
  starts[count + 1] = kAbove;
  _starts = starts;
}

unsigned int vnxLineIndex::search(unsigned int p) const {
  // The last line whose start is at or before p (line 0 starts at 0). A
  // query past the remembered line usually lands a few lines further (a
  // comment after blank lines, the next stretch of the stream): the bounds
  // grow by doubling from the remembered line before the binary search.
  unsigned int low = 0, high = _lines;
  const unsigned int c = _cursor;
  if (p >= _starts[c]) {
    low = c;
    for (unsigned int step = 2; c + step < _lines; step *= 2) {
      if (_starts[c + step] > p) {
        high = c + step;
        break;
      }
      low = c + step;
    }
  } else {
    high = c;
  }
  const unsigned int* const after = std::upper_bound(_starts + low, _starts + high, p);
  const unsigned int found = static_cast<unsigned int>(after - _starts) - 1;
  _cursor = found;
  return found;
}

void vnxLineIndex::makeTables() const {
  const size_t entries = static_cast<size_t>(_size > 0 ? _size : 1);
  _lineTable = static_cast<unsigned int*>(std::malloc(sizeof(unsigned int) * entries));
  _columnTable = static_cast<unsigned int*>(std::malloc(sizeof(unsigned int) * entries));
  if (_size <= 0) {
    _lineTable[0] = 0;
    _columnTable[0] = 0;
    return;
  }
  for (unsigned int l = 0; l < _lines; ++l) {
    const unsigned int from = _starts[l];
    const unsigned int to = l + 1 < _lines ? _starts[l + 1] : static_cast<unsigned int>(_size);
    for (unsigned int p = from; p < to; ++p) {
      _lineTable[p] = l + 1;
      _columnTable[p] = p - from + 1;
    }
  }
}

const unsigned int* vnxLineIndex::lineTable() const {
  if (!_starts) return nullptr;
  if (!_lineTable) makeTables();
  return _lineTable;
}

const unsigned int* vnxLineIndex::columnTable() const {
  if (!_starts) return nullptr;
  if (!_columnTable) makeTables();
  return _columnTable;
}
