// Lines of a raw text, kept as the offset where each line starts (internal to
// vnxSourceFile and its pass).
//
// The pass and the position queries need the line and column of raw
// positions; storing both for every raw character cost 8 bytes per byte of
// text, all written before the pass could start. The starts take 4 bytes per
// line, and a query is a look at the line it fell in last time (queries come
// mostly in text order) or a binary search. The per-character tables are
// still there for callers that want them whole: made on first request.
//
// Not thread-safe: queries move a remembered line. The text is not kept.
#ifndef VNX_SOURCE_LINE_INDEX_H
#define VNX_SOURCE_LINE_INDEX_H

#include "vnxExport.h"

class VNX_EXPORT vnxLineIndex {
 public:
  vnxLineIndex() = default;
  ~vnxLineIndex() { clear(); }
  vnxLineIndex(const vnxLineIndex&) = delete;
  vnxLineIndex& operator=(const vnxLineIndex&) = delete;

  // Indexes raw[0, size): a newline belongs to the line it ends. A size of 0
  // or less gives an index with one empty line.
  void build(const char* raw, int size);
  void clear();
  bool built() const { return _starts != nullptr; }
  int size() const { return _size; }

  // 1-based line and column of raw position pos, for 0 <= pos < size().
  unsigned int line(int pos) const { return lineIndex(pos) + 1; }
  unsigned int column(int pos) const {
    return static_cast<unsigned int>(pos) - _starts[lineIndex(pos)] + 1;
  }
  // Both at once, with one look-up.
  void place(int pos, unsigned int& line, unsigned int& col) const {
    const unsigned int index = lineIndex(pos);
    line = index + 1;
    col = static_cast<unsigned int>(pos) - _starts[index] + 1;
  }
  // Lines of positions asked mostly in text order, from a walk of one's own:
  // a position on the line answered last costs one compare, with no look at
  // the index.
  class Walker {
   public:
    explicit Walker(const vnxLineIndex& index) : _index(index) {}
    unsigned int line(int pos) {
      if (static_cast<unsigned int>(pos) - _from < _span) return _line;
      const unsigned int index = _index.lineIndex(pos);
      _from = _index._starts[index];
      _span = _index._starts[index + 1] - _from;
      _line = index + 1;
      return _line;
    }
    // The raw positions of the line answered last: [from(), from() + span()).
    unsigned int from() const { return _from; }
    unsigned int span() const { return _span; }

   private:
    const vnxLineIndex& _index;
    unsigned int _from = 0;
    unsigned int _span = 0;
    unsigned int _line = 0;
  };

  // The line of the last character; 0 for an empty text.
  unsigned int lastLine() const { return _size > 0 ? line(_size - 1) : 0; }

  // The line and column of every raw character (entry 0 is 0 for an empty
  // text), made at the first call and kept until the next build or clear.
  const unsigned int* lineTable() const;
  const unsigned int* columnTable() const;

 private:
  // 0-based line of pos: the remembered line or the next one answer most
  // queries; anything else is searched.
  unsigned int lineIndex(int pos) const {
    const unsigned int p = static_cast<unsigned int>(pos);
    const unsigned int c = _cursor;
    if (p >= _starts[c]) {
      if (p < _starts[c + 1]) return c;
      if (p < _starts[c + 2]) {
        _cursor = c + 1;
        return c + 1;
      }
    }
    return search(p);
  }
  unsigned int search(unsigned int p) const;
  void makeTables() const;

  // _starts[k] is the offset of line k + 1's first character, for k below
  // _lines; two sentinels above every offset follow, so that the two looks
  // of lineIndex never leave the array.
  unsigned int* _starts = nullptr;
  unsigned int _lines = 0;
  int _size = 0;
  mutable unsigned int _cursor = 0;
  mutable unsigned int* _lineTable = nullptr;
  mutable unsigned int* _columnTable = nullptr;
};

#endif
