#include "wbStream.h"

#include <iostream>

#include "ZELString.h"

wbOutStream wbStderr(&std::cerr);
wbOutStream wbStdout(&std::cout);

std::ostream* wbOutStream::setTarget(std::ostream* target) {
  if (!_default) _default = _target;
  std::ostream* previous = _target;
  _target = target ? target : _default;
  return previous;
}

wbOutStream& wbOutStream::operator<<(const char* text) {
  if (text) *_target << text;
  return *this;
}
wbOutStream& wbOutStream::operator<<(const ZELString& text) {
  *_target << text.str();
  return *this;
}
wbOutStream& wbOutStream::operator<<(char c) {
  *_target << c;
  return *this;
}
wbOutStream& wbOutStream::operator<<(int value) {
  *_target << value;
  return *this;
}
wbOutStream& wbOutStream::operator<<(unsigned int value) {
  *_target << value;
  return *this;
}
wbOutStream& wbOutStream::operator<<(long value) {
  *_target << value;
  return *this;
}
wbOutStream& wbOutStream::operator<<(unsigned long value) {
  *_target << value;
  return *this;
}
wbOutStream& wbOutStream::operator<<(long long value) {
  *_target << value;
  return *this;
}
wbOutStream& wbOutStream::operator<<(double value) {
  *_target << value;
  return *this;
}

void wbOutStream::flush() { _target->flush(); }

wbOutStream& endl(wbOutStream& stream) {
  *stream._target << '\n';
  stream._target->flush();
  return stream;
}
