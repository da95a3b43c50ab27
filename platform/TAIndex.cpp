#include "TAIndex.h"

#include <cstdlib>
#include <cstring>

namespace {

char* copyKey(const char* key) {
  const size_t n = std::strlen(key);
  char* copy = static_cast<char*>(std::malloc(n + 1));
  std::memcpy(copy, key, n + 1);
  return copy;
}

}  // namespace

TAIndex::TAIndex(const TAIndex& other) { *this = other; }

TAIndex& TAIndex::operator=(const TAIndex& other) {
  if (this == &other) return *this;
  Reset();
  _entries.reserve(other._entries.size());
  for (const Entry& e : other._entries) Append(e.key, e.value);
  return *this;
}

TAIndex::~TAIndex() { Reset(); }

int TAIndex::IsIn(const char* key) const {
  if (!key) return -1;
  if (_entries.size() <= kLinearLimit) {
    for (size_t i = 0; i < _entries.size(); ++i) {
      if (std::strcmp(_entries[i].key, key) == 0) return static_cast<int>(i);
    }
    return -1;
  }
  if (_stale) rebuild();
  auto it = _first.find(std::string_view(key));
  return it == _first.end() ? -1 : it->second;
}

int TAIndex::Append(const char* key, void* value) {
  if (!key) return -1;
  const int position = static_cast<int>(_entries.size());
  char* owned = copyKey(key);
  _entries.push_back(Entry{owned, value});
  // Small indexes have no table; the first look-up past the limit builds it.
  // While stale, the next look-up rebuilds everything anyway.
  if (_entries.size() == kLinearLimit + 1) _stale = true;
  else if (_entries.size() > kLinearLimit && !_stale) _first.emplace(std::string_view(owned), position);
  return position;
}

void TAIndex::RemovePosition(int position) {
  if (position < 0 || position >= Size()) return;
  std::free(_entries[static_cast<size_t>(position)].key);
  _entries.erase(_entries.begin() + position);
  _first.clear();
  _stale = true;
}

void TAIndex::Reset() {
  for (Entry& e : _entries) std::free(e.key);
  _entries.clear();
  _first.clear();
  _stale = false;
}

const char* TAIndex::GetKey(int position) const {
  if (position < 0 || position >= Size()) return nullptr;
  return _entries[static_cast<size_t>(position)].key;
}

void* TAIndex::GetValue(int position) const {
  if (position < 0 || position >= Size()) return nullptr;
  return _entries[static_cast<size_t>(position)].value;
}

void TAIndex::SetValue(int position, void* value) {
  if (position < 0 || position >= Size()) return;
  _entries[static_cast<size_t>(position)].value = value;
}

void TAIndex::rebuild() const {
  _first.clear();
  _first.reserve(_entries.size());
  for (size_t i = 0; i < _entries.size(); ++i)
    _first.emplace(std::string_view(_entries[i].key), static_cast<int>(i));  // keeps the first
  _stale = false;
}
