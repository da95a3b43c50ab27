// Remembered branch ends of conditional directives, for one preprocessing
// pass (internal).
//
// Reading a branch to the #elif/#else/#endif that ends it walks over the
// nested groups inside it; the branches of those groups end where that walk
// saw their own #elif/#else/#endif. The walk records them here, so that when
// the pass reaches a nested group its branches are not read a second time:
// without this every character is read once per enclosing group (a file
// under an include guard twice, hostile nesting quadratically).
//
// A branch end depends only on where its walk starts (the newline ending the
// directive's line) and on the text from there to the end. Entries are kept
// in raw-text positions; the pass tells the memo how working positions map
// to raw ones and which parts of the text ahead it has blanked, and an entry
// whose text may have changed is never answered.
#ifndef VNX_SOURCE_BRANCH_MEMO_H
#define VNX_SOURCE_BRANCH_MEMO_H

#include <cstddef>
#include <utility>
#include <vector>

#include "vnxLineIndex.h"

class vnxBranchMemo {
 public:
  // The working text the walks run over, and the mapping of its positions to
  // raw ones: a working position w at or after rawFrom is raw position
  // w - delta; positions before it may lie in expanded text. length, when
  // known, is where the text's terminating NUL stands (the walks read up to
  // it by whole chunks); -1 when unknown.
  void setText(const char* text, int delta, int rawFrom, int length = -1) {
    _text = text;
    _delta = delta;
    _rawFrom = rawFrom;
    _length = length;
  }
  const char* text() const { return _text; }
  int length() const { return _length; }

  // The raw text's lines, to place recorded ends without reading the text
  // again.
  void setLines(const vnxLineIndex* lines) { _lines = lines; }

  // The number of newlines from working position `from` to `to` and the
  // column of `to`, from the raw tables; false when either position is not
  // a raw one, or when the pass blanked part of the text between (its
  // newlines are gone from the working text).
  bool rawLinesBetween(int from, int to, unsigned int& lines, unsigned int& column) const {
    const int a = from - _delta, b = to - _delta;
    if (from < _rawFrom || !_lines || a < 0 || b < a || b >= _lines->size() || blankedWithin(a, b)) return false;
    lines = _lines->line(b) - _lines->line(a);
    column = _lines->column(b);
    return true;
  }

  // Records that the branch whose walk starts at the newline `start` ends at
  // the newline `end` (both working positions).
  void record(int start, int end) {
    if (start < _rawFrom || end < start) return;
    _ends.put(start - _delta, end - _delta);
  }

  // The working position of the end recorded for a walk starting at the
  // newline `start`, or -1.
  int lookup(int start) {
    if (start < _rawFrom || _ends.empty()) return -1;
    const int rawStart = start - _delta;
    const int rawEnd = _ends.get(rawStart);
    if (rawEnd < 0) return -1;
    // A text blanked ahead of the scan after the walk was recorded: the
    // entry holds if its walk stayed clear of every such stretch.
    if (blankedWithin(rawStart, rawEnd)) return -1;
    return rawEnd + _delta;
  }

  // The pass blanked raw positions [from, to] ahead of its scan; stretches
  // the scan has passed (ending before `scanRaw`) are dropped. The list runs
  // from the furthest stretch to the nearest; a stretch that would break that
  // order is merged with the ones it meets, which only answers less.
  void blanked(int from, int to, int scanRaw) {
    while (!_blanked.empty() && _blanked.back().second < scanRaw) _blanked.pop_back();
    if (from > to) return;
    while (!_blanked.empty() && _blanked.back().first <= to) {
      if (_blanked.back().first < from) from = _blanked.back().first;
      if (_blanked.back().second > to) to = _blanked.back().second;
      _blanked.pop_back();
    }
    _blanked.emplace_back(from, to);
  }

  // Forgets every entry (the text changed in a way the memo cannot follow).
  void clear() {
    _ends.clear();
    _blanked.clear();
  }

  // Trades the entry and stretch tables with other's (both empty): a pass
  // takes over tables kept from an earlier one instead of allocating and
  // filling its own for every file.
  void swapTables(vnxBranchMemo& other) {
    _ends.swap(other._ends);
    _blanked.swap(other._blanked);
  }

  // Whether the tables are small enough to be kept between passes (a huge
  // file's would stay in memory for nothing).
  bool tablesKeepable() const { return _ends.capacity() <= kKeptSlots && _blanked.capacity() <= kKeptSlots; }

  // The memo of the pass running on this thread, or null outside a pass.
  static vnxBranchMemo*& current() {
    static thread_local vnxBranchMemo* memo = nullptr;
    return memo;
  }

 private:
  enum { kKeptSlots = 4096 };
  const char* _text = nullptr;
  int _delta = 0;
  int _rawFrom = 0;
  int _length = -1;
  const vnxLineIndex* _lines = nullptr;
  // Raw start newline -> raw end newline, both never negative: an open
  // addressing table in one array, since a pass records thousands of ends
  // and a node per entry cost more than the walks it saves.
  class Ends {
   public:
    bool empty() const { return _count == 0; }
    void put(int key, int value) {
      if (2 * (_count + 1) > static_cast<int>(_slots.size())) grow();
      const std::size_t i = indexOf(key);
      Slot& slot = _slots[i];
      if (slot.key < 0) {
        slot.key = key;
        ++_count;
        _used.push_back(i);
      }
      slot.value = value;
    }
    int get(int key) const {
      if (_slots.empty()) return -1;
      const Slot& slot = _slots[indexOf(key)];
      return slot.key < 0 ? -1 : slot.value;
    }
    void swap(Ends& other) {
      _slots.swap(other._slots);
      _used.swap(other._used);
      std::swap(_count, other._count);
    }
    std::size_t capacity() const { return _slots.size(); }
    // Empties the slots in use only: a pass may clear often.
    void clear() {
      for (const std::size_t i : _used) _slots[i].key = -1;
      _used.clear();
      _count = 0;
    }

   private:
    struct Slot {
      int key = -1;
      int value = 0;
    };
    // The slot holding key, or the empty one where it would go.
    std::size_t indexOf(int key) const {
      const std::size_t mask = _slots.size() - 1;
      std::size_t i = (static_cast<unsigned int>(key) * 2654435761u) & mask;
      while (_slots[i].key >= 0 && _slots[i].key != key) i = (i + 1) & mask;
      return i;
    }
    void grow() {
      std::vector<Slot> old;
      old.swap(_slots);
      _slots.assign(old.empty() ? 64 : 2 * old.size(), Slot());
      _used.clear();
      _count = 0;
      for (const Slot& slot : old)
        if (slot.key >= 0) put(slot.key, slot.value);
    }
    std::vector<Slot> _slots;  // a power of two of them, at most half in use
    std::vector<std::size_t> _used;  // indexes of the slots in use
    int _count = 0;
  };
  Ends _ends;
  std::vector<std::pair<int, int>> _blanked;  // raw stretches blanked ahead, furthest first

  // Whether a stretch blanked ahead of the scan meets raw positions [a, b].
  bool blankedWithin(int a, int b) const {
    for (auto it = _blanked.rbegin(); it != _blanked.rend(); ++it) {
      if (it->second < a) continue;
      return it->first <= b;  // the stretches further on lie beyond this one
    }
    return false;
  }
};

#endif
