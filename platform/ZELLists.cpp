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
  // std::sort is an introsort: a quick sort that cannot degrade to quadratic time.
  std::sort(_items.begin(), _items.end(),
            [compare](const void* a, const void* b) { return compare(a, b) < 0; });
}
