#include "TARefCounter.h"

#include "TAFatalError.h"

TARefCounter::~TARefCounter() = default;

int TARefCounter::AddRef() {
  TAFatalError(_refCount <= 0, "TARefCounter::AddRef on a dead object");
  return ++_refCount;
}

int TARefCounter::Release() {
  if (TAFatalError(_refCount <= 0, "TARefCounter::Release on a dead object")) return 0;
  const int count = --_refCount;
  if (count == 0) delete this;
  return count;
}
