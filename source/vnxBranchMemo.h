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

#include <unordered_map>
#include <utility>
#include <vector>

class vnxBranchMemo {
 public:
  // The working text the walks run over, and the mapping of its positions to
  // raw ones: a working position w at or after rawFrom is raw position
  // w - delta; positions before it may lie in expanded text.
  void setText(const char* text, int delta, int rawFrom) {
    _text = text;
    _delta = delta;
    _rawFrom = rawFrom;
  }
  const char* text() const { return _text; }

  // The raw text's line and column of every character, to place recorded
  // ends without reading the text again.
  void setTables(const unsigned int* lines, const unsigned int* columns, int rawSize) {
    _lines = lines;
    _columns = columns;
    _rawSize = rawSize;
  }

  // The number of newlines from working position `from` to `to` and the
  // column of `to`, from the raw tables; false when either position is not
  // a raw one.
  bool rawLinesBetween(int from, int to, unsigned int& lines, unsigned int& column) const {
    const int a = from - _delta, b = to - _delta;
    if (from < _rawFrom || !_lines || a < 0 || b < a || b >= _rawSize) return false;
    lines = _lines[b] - _lines[a];
    column = _columns[b];
    return true;
  }

  // Records that the branch whose walk starts at the newline `start` ends at
  // the newline `end` (both working positions).
  void record(int start, int end) {
    if (start < _rawFrom || end < start) return;
    _ends[start - _delta] = end - _delta;
  }

  // The working position of the end recorded for a walk starting at the
  // newline `start`, or -1.
  int lookup(int start) {
    if (start < _rawFrom || _ends.empty()) return -1;
    const auto found = _ends.find(start - _delta);
    if (found == _ends.end()) return -1;
    const int rawStart = found->first;
    const int rawEnd = found->second;
    // A text blanked ahead of the scan after the walk was recorded: the
    // entry holds if its walk stayed clear of every such stretch.
    for (auto it = _blanked.rbegin(); it != _blanked.rend(); ++it) {
      if (it->second < rawStart) continue;
      if (it->first <= rawEnd) return -1;
      break;  // the stretches further on lie beyond this one
    }
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

  // The memo of the pass running on this thread, or null outside a pass.
  static vnxBranchMemo*& current() {
    static thread_local vnxBranchMemo* memo = nullptr;
    return memo;
  }

 private:
  const char* _text = nullptr;
  int _delta = 0;
  int _rawFrom = 0;
  const unsigned int* _lines = nullptr;
  const unsigned int* _columns = nullptr;
  int _rawSize = 0;
  std::unordered_map<int, int> _ends;           // raw start newline -> raw end newline
  std::vector<std::pair<int, int>> _blanked;  // raw stretches blanked ahead, furthest first
};

#endif
