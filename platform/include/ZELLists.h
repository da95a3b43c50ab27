// The framework's collections. Every list is 1-based: positions run from 1 to
// Size(). A position outside that range is a caller bug; accessors check it
// with the fatal-error report and answer a harmless default where they can.
//
//   ZELListVal<T>   owns copies of values            (ZELListValZELString ...)
//   ZELListPtr<T>   holds pointers, owns nothing     (ZELListPtrvnxSyntaxe ...)
//   ZELRawCollint   integers
//   ZELRawCollPV    untyped pointers, with quick sort
#ifndef ZEL_LISTS_H
#define ZEL_LISTS_H

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "TAFatalError.h"
#include "ZELString.h"
#include "vnxExport.h"

struct ZELCollec {
  // How RemoveAll treats the collection's storage; both forms empty the list.
  enum MemoryHandling { KeepMemory = 0, FreeMemory = 1 };
  // Room the pointer collections take at their first element.
  static constexpr size_t kFirstCapacity = 4;
};

template <class T>
class ZELListVal {
 public:
  int Size() const { return static_cast<int>(_items.size()); }
  void Append(const T& value) { _items.push_back(value); }
  void Append(const ZELListVal<T>& other) {
    if (&other == this) {
      std::vector<T> copy(_items);
      _items.insert(_items.end(), copy.begin(), copy.end());
    } else {
      _items.insert(_items.end(), other._items.begin(), other._items.end());
    }
  }
  // Inserts so that the value ends up at position pos (1..Size()+1).
  void InsertAt(int pos, const T& value) {
    if (pos < 1) pos = 1;
    if (pos > Size() + 1) pos = Size() + 1;
    _items.insert(_items.begin() + (pos - 1), value);
  }
  T& operator[](int pos) { check(pos); return _items[pos - 1]; }
  const T& operator[](int pos) const { check(pos); return _items[pos - 1]; }
  // Position of the first value equal to value, 0 when absent.
  int Locate(const T& value) const {
    for (size_t i = 0; i < _items.size(); ++i)
      if (_items[i] == value) return static_cast<int>(i) + 1;
    return 0;
  }
  void RemovePosition(int pos) {
    if (pos < 1 || pos > Size()) return;
    _items.erase(_items.begin() + (pos - 1));
  }
  void RemoveAll(ZELCollec::MemoryHandling handling = ZELCollec::FreeMemory) {
    _items.clear();
    if (handling == ZELCollec::FreeMemory) _items.shrink_to_fit();
  }

 private:
  void check(int pos) const {
    TAFatalError(pos < 1 || pos > Size(), "ZELListVal: position out of range");
    if (pos < 1 || pos > Size()) std::abort();
  }
  std::vector<T> _items;
};

typedef ZELListVal<ZELString> ZELListValZELString;

template <class T>
class ZELListPtr {
 public:
  int Size() const { return static_cast<int>(_items.size()); }
  void Append(T* value) {
    // Most lists stay short: one allocation for the first few elements
    // rather than one per doubling from one.
    if (_items.capacity() == 0) _items.reserve(ZELCollec::kFirstCapacity);
    _items.push_back(value);
  }
  void Append(const ZELListPtr<T>& other) {
    std::vector<T*> copy(other._items);
    _items.insert(_items.end(), copy.begin(), copy.end());
  }
  void InsertAt(int pos, T* value) {
    if (pos < 1) pos = 1;
    if (pos > Size() + 1) pos = Size() + 1;
    _items.insert(_items.begin() + (pos - 1), value);
  }
  // Null outside 1..Size().
  T* operator[](int pos) const {
    if (pos < 1 || pos > Size()) return nullptr;
    return _items[pos - 1];
  }
  int Locate(const T* value) const {
    for (size_t i = 0; i < _items.size(); ++i)
      if (_items[i] == value) return static_cast<int>(i) + 1;
    return 0;
  }
  void RemovePosition(int pos) {
    if (pos < 1 || pos > Size()) return;
    _items.erase(_items.begin() + (pos - 1));
  }
  // Empties the list; the pointed objects are not touched.
  void RemoveAll(ZELCollec::MemoryHandling handling = ZELCollec::FreeMemory) {
    _items.clear();
    if (handling == ZELCollec::FreeMemory) _items.shrink_to_fit();
  }

 private:
  std::vector<T*> _items;
};

class VNX_EXPORT ZELRawCollint {
 public:
  int Size() const { return static_cast<int>(_items.size()); }
  void Append(int value) { _items.push_back(value); }
  void InsertAt(int pos, int value);
  int operator[](int pos) const;  // 0 outside 1..Size()
  int& operator[](int pos);
  int Locate(int value) const;    // 0 when absent
  void RemovePosition(int pos);
  void RemoveAll() { _items.clear(); }
  bool operator==(const ZELRawCollint& other) const { return _items == other._items; }
  bool operator!=(const ZELRawCollint& other) const { return _items != other._items; }

 private:
  std::vector<int> _items;
};

class VNX_EXPORT ZELRawCollPV {
 public:
  typedef int (*CompareFunction)(const void* a, const void* b);

  int Size() const { return static_cast<int>(_items.size()); }
  void Append(void* value) {
    if (_items.capacity() == 0) _items.reserve(ZELCollec::kFirstCapacity);
    _items.push_back(value);
  }
  void InsertAt(int pos, void* value);
  void* operator[](int pos) const;  // null outside 1..Size()
  void Set(int pos, void* value);
  int Locate(const void* value) const;
  void RemovePosition(int pos);
  void RemoveAll(ZELCollec::MemoryHandling handling = ZELCollec::FreeMemory);
  // Sorts the elements in ascending order of compare(a, b) (strcmp-like).
  void QuickSort(CompareFunction compare);

 private:
  std::vector<void*> _items;
};

#endif
