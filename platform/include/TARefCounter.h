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

  int AddRef();   // answers the new count
  int Release();  // answers the new count; 0 means the object is gone
  int GetRefCount() const { return _refCount; }

 private:
  int _refCount = 1;
};

#endif
