// TAIndex: an ordered index of C-string keys with one untyped value each.
// Keys are copied and owned; values are not. Duplicate keys are allowed:
// IsIn answers the first position of a key. Look-ups are expected O(1)
// (hashed past a few entries; a handful is compared in place, since many
// indexes are short-lived and hold one or two keys); RemovePosition is O(n) and defers the rehash to the next look-up,
// so a run of removals costs one rebuild.
#ifndef TA_INDEX_H
#define TA_INDEX_H

#include <string_view>
#include <unordered_map>
#include <vector>

#include "vnxExport.h"

class VNX_EXPORT TAIndex {
 public:
  TAIndex() = default;
  TAIndex(const TAIndex& other);
  TAIndex& operator=(const TAIndex& other);
  ~TAIndex();

  // 0-based position of the first entry with this key, or -1. A null key is never in.
  int IsIn(const char* key) const;
  // Adds an entry at the end, duplicates included; answers its 0-based position
  // (-1 for a null key, which is refused).
  int Append(const char* key, void* value);
  // Removes the entry at a 0-based position; others move down. Out of range: nothing.
  void RemovePosition(int position);
  void Reset();
  int Size() const { return static_cast<int>(_entries.size()); }
  // Key and value at a 0-based position; null out of range.
  const char* GetKey(int position) const;
  void* GetValue(int position) const;
  void SetValue(int position, void* value);

 private:
  struct Entry {
    char* key;
    void* value;
  };
  void rebuild() const;

  static constexpr size_t kLinearLimit = 8;

  std::vector<Entry> _entries;
  mutable std::unordered_map<std::string_view, int> _first;
  mutable bool _stale = false;
};

#endif
