#include "ZELLists.h"

#include <cstdlib>

void ZELRawCollint::InsertAt(int pos, int value) {
  if (pos < 1) pos = 1;
  if (pos > Size() + 1) pos = Size() + 1;
  _items.insert(_items.begin() + (pos - 1), value);
}

int ZELRawCollint::operator[](int pos) const {
  if (pos < 1 || pos > Size()) return 0;
  return _items[static_cast<size_t>(pos - 1)];
}

int& ZELRawCollint::operator[](int pos) {
  TAFatalError(pos < 1 || pos > Size(), "ZELRawCollint: position out of range");
  if (pos < 1 || pos > Size()) std::abort();
  return _items[static_cast<size_t>(pos - 1)];
}

int ZELRawCollint::Locate(int value) const {
  for (size_t i = 0; i < _items.size(); ++i)
    if (_items[i] == value) return static_cast<int>(i) + 1;
  return 0;
}

void ZELRawCollint::RemovePosition(int pos) {
  if (pos < 1 || pos > Size()) return;
  _items.erase(_items.begin() + (pos - 1));
}

void ZELRawCollPV::InsertAt(int pos, void* value) {
  if (pos < 1) pos = 1;
  if (pos > Size() + 1) pos = Size() + 1;
  _items.insert(_items.begin() + (pos - 1), value);
}

void* ZELRawCollPV::operator[](int pos) const {
  if (pos < 1 || pos > Size()) return nullptr;
  return _items[static_cast<size_t>(pos - 1)];
}

void ZELRawCollPV::Set(int pos, void* value) {
  if (pos < 1 || pos > Size()) return;
  _items[static_cast<size_t>(pos - 1)] = value;
}

int ZELRawCollPV::Locate(const void* value) const {
  for (size_t i = 0; i < _items.size(); ++i)
    if (_items[i] == value) return static_cast<int>(i) + 1;
  return 0;
}

void ZELRawCollPV::RemovePosition(int pos) {
  if (pos < 1 || pos > Size()) return;
  _items.erase(_items.begin() + (pos - 1));
}

void ZELRawCollPV::RemoveAll(ZELCollec::MemoryHandling handling) {
  _items.clear();
  if (handling == ZELCollec::FreeMemory) _items.shrink_to_fit();
}

void ZELRawCollPV::QuickSort(CompareFunction compare) {
  if (!compare || _items.size() < 2) return;
  // A bottom-up merge sort rather than std::sort: O(n log n) on any input,
  // and every loop is bounded by the ranges alone. std::sort walks off the
  // array when a caller's compare function is not a consistent order (say,
  // one that answers -1 for equal elements); here such a function only gives
  // an odd order.
  const size_t n = _items.size();
  std::vector<void*> scratch(n);
  std::vector<void*>* from = &_items;
  std::vector<void*>* to = &scratch;
  for (size_t width = 1; width < n; width *= 2) {
    for (size_t lo = 0; lo < n; lo += 2 * width) {
      const size_t mid = std::min(lo + width, n);
      const size_t hi = std::min(lo + 2 * width, n);
      size_t i = lo, j = mid, k = lo;
      while (i < mid && j < hi) (*to)[k++] = compare((*from)[j], (*from)[i]) < 0 ? (*from)[j++] : (*from)[i++];
      while (i < mid) (*to)[k++] = (*from)[i++];
      while (j < hi) (*to)[k++] = (*from)[j++];
    }
    std::swap(from, to);
  }
  if (from != &_items) _items.swap(scratch);
}
