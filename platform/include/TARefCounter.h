// TARefCounter: intrusive reference count. The count is 1 at creation;
// Release at 0 deletes the object. Releasing an object whose count is already 0
// is a caller bug and is reported, not executed.
#ifndef TA_REF_COUNTER_H
#define TA_REF_COUNTER_H

#include "vnxExport.h"

class VNX_EXPORT TARefCounter {
 public:
  TARefCounter() = default;
  TARefCounter(const TARefCounter&) : _refCount(1) {}
  TARefCounter& operator=(const TARefCounter&) { return *this; }
  virtual ~TARefCounter();

  // Inline: every tree node holds its source, so these run once per node.
  int AddRef() {  // answers the new count
    if (_refCount <= 0) reportDead("TARefCounter::AddRef on a dead object");
    return ++_refCount;
  }
  int Release() {  // answers the new count; 0 means the object is gone
    if (_refCount <= 0) {
      reportDead("TARefCounter::Release on a dead object");
      return 0;
    }
    const int count = --_refCount;
    if (count == 0) delete this;
    return count;
  }
  int GetRefCount() const { return _refCount; }

 private:
  static void reportDead(const char* message);

  int _refCount = 1;
};

#endif
