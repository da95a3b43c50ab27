// ZELFileBuffer: the whole text of one file (or of an in-memory string) in a
// NUL-terminated buffer. A file is read on first need (getBuffer, or the pool
// reading ahead). An unreadable file gives a null buffer and size 0, with
// isReadable() 0. The buffer is owned; destroy() frees the object itself.
//
// ZELFileBufferPool: a group of buffers to be read together. Unless
// multi-threading is disabled, appended buffers are read ahead, in order, by
// one process-wide reader thread; a buffer asked for before the reader took
// it is read by the caller at once, and one the reader is reading is waited
// for. Otherwise each buffer reads itself on first need. The pool never owns
// the buffers; destroying a buffer that is queued or being read is safe.
// Buffers are used by one thread (the reader only fills them).
#ifndef ZEL_FILE_BUFFER_H
#define ZEL_FILE_BUFFER_H

#include <atomic>
#include <cstddef>
#include <string>
#include <vector>
#include "vnxExport.h"

class VNX_EXPORT ZELFileBuffer {
 public:
  // A buffer for the file name; nothing is read yet.
  static ZELFileBuffer* CreateFromFile(const char* fileName);
  // A buffer holding a copy of text (null gives ""), with the given name (null gives "").
  static ZELFileBuffer* CreateFromString(const char* text, const char* name = nullptr);

  // The text, NUL-terminated; null when the file could not be read.
  const char* getBuffer();
  // Characters in the text, the NUL excluded.
  unsigned int getBufferSize();
  const char* getFileName() const { return _fileName.c_str(); }
  // 1 when the text is (or could be) loaded; reads the file if needed.
  int isReadable();
  // Frees the text and the object.
  void destroy();

  ZELFileBuffer(const ZELFileBuffer&) = delete;
  ZELFileBuffer& operator=(const ZELFileBuffer&) = delete;

 private:
  friend class ZELFileBufferPool;
  friend struct ZELFileReader;
  // Where the text stands: not read (and not queued), queued for the reader,
  // being read by the reader, loaded (or found unreadable).
  enum State { kIdle, kQueued, kReading, kLoaded };

  ZELFileBuffer() = default;
  ~ZELFileBuffer();
  void load();
  // Takes the buffer back from the reader: out of its queue, or waited for.
  // Returns whether the caller must still read the file.
  bool settle();
  // Gives the bytes the reader read for this buffer back to its budget.
  void takeCharge();

  std::string _fileName;
  char* _text = nullptr;
  unsigned int _size = 0;
  bool _fromFile = false;
  // Bytes the reader read for this buffer that still count against its
  // budget; set by the reader before kLoaded, cleared by the owner.
  unsigned int _charge = 0;
  // Its number in the reader's queue while it is queued.
  unsigned long long _queueNumber = 0;
  // Written by the reader thread under its lock; read without it only once
  // kLoaded has been seen.
  std::atomic<int> _state{kIdle};
};

class VNX_EXPORT ZELFileBufferPool {
 public:
  ZELFileBufferPool() = default;
  // Adds a buffer to the group (not owned); may read it ahead.
  void append(ZELFileBuffer* buffer);
  int size() const { return static_cast<int>(_buffers.size()); }
  // Forgets the buffers (they are not destroyed).
  void reset() { _buffers.clear(); }
  // Process-wide: stop reading ahead; buffers read themselves on first need.
  static void disableMultiThread();
  // Process-wide: how far the reader may run ahead of the buffers' owners, in
  // bytes it has read that they have not taken (asked for or destroyed) yet.
  // Past it, the reader pauses until half is taken.
  static const size_t kReadAheadBudget;
  static size_t bytesReadAhead();
  static int isMultiThreadDisabled();

 private:
  std::vector<ZELFileBuffer*> _buffers;
};

#endif
