// ZELFileBuffer: the whole text of one file (or of an in-memory string) in a
// NUL-terminated buffer. A file is read on first need (getBuffer, or the pool
// reading ahead). An unreadable file gives a null buffer and size 0, with
// isReadable() 0. The buffer is owned; destroy() frees the object itself.
//
// ZELFileBufferPool: a group of buffers to be read together. It may read them
// ahead; here it reads them at once when appended, unless multi-threading is
// disabled, in which case each buffer reads itself on first need. It never
// owns the buffers.
#ifndef ZEL_FILE_BUFFER_H
#define ZEL_FILE_BUFFER_H

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
  ZELFileBuffer() = default;
  ~ZELFileBuffer();
  void load();

  std::string _fileName;
  char* _text = nullptr;
  unsigned int _size = 0;
  bool _fromFile = false;
  bool _loaded = false;
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
  static int isMultiThreadDisabled();

 private:
  std::vector<ZELFileBuffer*> _buffers;
};

#endif
