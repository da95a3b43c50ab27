#include "ZELListValvnxToken.h"

#include "TAFatalError.h"

ZELListVal<vnxToken>::ZELListVal(const ZELListVal& other) { Append(other); }

ZELListVal<vnxToken>& ZELListVal<vnxToken>::operator=(const ZELListVal& other) {
  if (this == &other) return *this;
  RemoveAll();
  Append(other);
  return *this;
}

ZELListVal<vnxToken>::~ZELListVal() { RemoveAll(); }

void ZELListVal<vnxToken>::Append(const vnxToken& token) { _tokens.Append(new vnxToken(token)); }

void ZELListVal<vnxToken>::Append(const ZELListVal& other) {
  // The size is read once, so appending a list to itself doubles it.
  const int count = other.Size();
  for (int pos = 1; pos <= count; ++pos) Append(*other.at(pos));
}

vnxToken& ZELListVal<vnxToken>::operator[](int pos) {
  if (TAFatalError(pos < 1 || pos > Size(), "ZELListValvnxToken: position out of range")) {
    // A scratch token, reset on every bad access, so a caller that writes
    // through it does no harm.
    static vnxToken scratch;
    scratch = vnxToken::ZELCSCTokenNull;
    return scratch;
  }
  return *at(pos);
}

const vnxToken& ZELListVal<vnxToken>::operator[](int pos) const {
  if (TAFatalError(pos < 1 || pos > Size(), "ZELListValvnxToken: position out of range"))
    return vnxToken::ZELCSCTokenNull;
  return *at(pos);
}

void ZELListVal<vnxToken>::RemovePosition(int pos) {
  if (pos < 1 || pos > Size()) return;
  delete at(pos);
  _tokens.RemovePosition(pos);
}

void ZELListVal<vnxToken>::RemoveAll(ZELCollec::MemoryHandling handling) {
  for (int pos = Size(); pos >= 1; --pos) delete at(pos);
  _tokens.RemoveAll(handling);
}

int ZELListVal<vnxToken>::operator==(const ZELListVal& other) const {
  if (Size() != other.Size()) return 0;
  for (int pos = 1; pos <= Size(); ++pos)
    if (*at(pos) != *other.at(pos)) return 0;
  return 1;
}

int ZELListVal<vnxToken>::operator!=(const ZELListVal& other) const {
  if (this == &other) return 0;
  return operator==(other) ? 0 : 1;
}
