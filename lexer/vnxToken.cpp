#include "vnxToken.h"

#include <cstring>

const vnxToken vnxToken::ZELCSCTokenNull;

vnxToken::~vnxToken() {
  _start = nullptr;
  _length = 0;
  _kind = kUnknown;
}

int vnxToken::operator==(const vnxToken& other) const {
  if (_length != other._length) return 0;
  if (_length == 0) return 1;
  // A hand-made token may carry a length without characters; it equals only itself.
  if (!_start || !other._start) return _start == other._start ? 1 : 0;
  return std::strncmp(_start, other._start, _length) == 0 ? 1 : 0;
}
