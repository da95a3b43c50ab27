#include "ZELFileBuffer.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace {
bool gMultiThreadDisabled = false;
}

ZELFileBuffer* ZELFileBuffer::CreateFromFile(const char* fileName) {
  ZELFileBuffer* buffer = new ZELFileBuffer();
  buffer->_fileName = fileName ? fileName : "";
  buffer->_fromFile = true;
  return buffer;
}

ZELFileBuffer* ZELFileBuffer::CreateFromString(const char* text, const char* name) {
  ZELFileBuffer* buffer = new ZELFileBuffer();
  buffer->_fileName = name ? name : "";
  const size_t n = text ? std::strlen(text) : 0;
  buffer->_text = static_cast<char*>(std::malloc(n + 1));
  if (n) std::memcpy(buffer->_text, text, n);
  buffer->_text[n] = '\0';
  buffer->_size = static_cast<unsigned int>(n);
  buffer->_loaded = true;
  return buffer;
}

ZELFileBuffer::~ZELFileBuffer() { std::free(_text); }

void ZELFileBuffer::load() {
  if (_loaded) return;
  _loaded = true;
  if (!_fromFile || _fileName.empty()) return;
  FILE* file = std::fopen(_fileName.c_str(), "rb");
  if (!file) return;
  // The text is read straight into its own buffer: a stream buffer would be
  // one more allocation per file, and seeking to the end would fill it with
  // the file's last block for nothing.
  std::setvbuf(file, nullptr, _IONBF, 0);
  // Read in chunks rather than trusting a size from seek/tell: pipes and
  // special files have none, or say 0. A regular file's size (plus one, to
  // see its end in the same read) is the first capacity asked for, so that a
  // large file is read without regrowing and a small one takes no more.
  size_t capacity = 1 << 16;
  if (std::fseek(file, 0, SEEK_END) == 0) {
    const long end = std::ftell(file);
    if (std::fseek(file, 0, SEEK_SET) != 0) {  // a file that seeks one way only
      std::fclose(file);
      return;
    }
    if (end > 0 && static_cast<unsigned long>(end) < std::numeric_limits<unsigned int>::max() / 2)
      capacity = static_cast<size_t>(end) + 1;
  } else {
    std::clearerr(file);
  }
  size_t size = 0;
  char* text = static_cast<char*>(std::malloc(capacity + 1));
  if (!text) {
    std::fclose(file);
    return;
  }
  bool failed = false;
  for (;;) {
    if (size == capacity) {
      if (capacity >= std::numeric_limits<unsigned int>::max() / 2) {
        failed = true;  // larger than a 32-bit size can describe
        break;
      }
      capacity *= 2;
      char* grown = static_cast<char*>(std::realloc(text, capacity + 1));
      if (!grown) {
        failed = true;
        break;
      }
      text = grown;
    }
    const size_t wanted = capacity - size;
    const size_t got = std::fread(text + size, 1, wanted, file);
    size += got;
    if (got < wanted) {
      // A short read is the end of the file or an error: no need to ask again.
      if (std::ferror(file) != 0) {
        failed = true;
        break;
      }
      if (std::feof(file) != 0 || got == 0) break;
    }
  }
  std::fclose(file);
  if (failed) {
    std::free(text);
    return;
  }
  text[size] = '\0';
  _text = text;
  _size = static_cast<unsigned int>(size);
}

const char* ZELFileBuffer::getBuffer() {
  load();
  return _text;
}

unsigned int ZELFileBuffer::getBufferSize() {
  load();
  return _size;
}

int ZELFileBuffer::isReadable() {
  load();
  return _text ? 1 : 0;
}

void ZELFileBuffer::destroy() { delete this; }

void ZELFileBufferPool::append(ZELFileBuffer* buffer) {
  if (!buffer) return;
  _buffers.push_back(buffer);
  if (!gMultiThreadDisabled) buffer->isReadable();  // read ahead, on this thread
}

void ZELFileBufferPool::disableMultiThread() { gMultiThreadDisabled = true; }

int ZELFileBufferPool::isMultiThreadDisabled() { return gMultiThreadDisabled ? 1 : 0; }
