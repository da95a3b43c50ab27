// vnxEventGetBuffer: sent by a source file to its subscribers when its
// preprocessing pass starts, so that they can read the raw text before it is
// dropped. A value built on the sender's stack: receivers never keep it, and
// the text is valid only during delivery.
#ifndef VNX_EVENT_GET_BUFFER_H
#define VNX_EVENT_GET_BUFFER_H

#include "TAEvents.h"
#include "vnxExport.h"

class vnxSourceFile;

class VNX_EXPORT vnxEventGetBuffer : public TAEvent {
 public:
  vnxEventGetBuffer() = default;
  vnxEventGetBuffer(const char* buffer, vnxSourceFile* source) : _buffer(buffer), _source(source) {}
  const char* isA() const override;  // "EventGetBuffer"

  // The whole raw text, NUL-terminated (not owned).
  const char* getBuffer() const { return _buffer; }
  vnxSourceFile* getSourceFile() const { return _source; }

 private:
  const char* _buffer = nullptr;
  vnxSourceFile* _source = nullptr;
};

#endif
