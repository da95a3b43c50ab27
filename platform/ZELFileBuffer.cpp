#include "ZELFileBuffer.h"

#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <limits>
#include <mutex>
#include <thread>

#if defined(__unix__) || defined(__APPLE__)
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#endif

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
  buffer->_state.store(kLoaded, std::memory_order_relaxed);
  return buffer;
}

ZELFileBuffer::~ZELFileBuffer() { std::free(_text); }

namespace {

// Reads in chunks rather than trusting a size: pipes and special files have
// none, or say 0. A regular file's size (known, 0 when none) plus one is the
// first capacity asked for, so that a large file is read without regrowing and
// a small one takes no more; a read that stops short at that size is the end
// of the file. read(into, wanted) answers the bytes read, 0 at the end, -1 on
// an error. False, and nothing kept, when the text cannot be read whole.
template <class Read>
bool readChunks(Read read, size_t known, char*& textOut, unsigned int& sizeOut) {
  size_t capacity = known ? known + 1 : size_t(1) << 16;
  size_t size = 0;
  char* text = static_cast<char*>(std::malloc(capacity + 1));
  if (!text) return false;
  for (;;) {
    if (size == capacity) {
      char* grown = nullptr;
      // Not past what a 32-bit size can describe.
      if (capacity < std::numeric_limits<unsigned int>::max() / 2) {
        capacity *= 2;
        grown = static_cast<char*>(std::realloc(text, capacity + 1));
      }
      if (!grown) {
        std::free(text);
        return false;
      }
      text = grown;
    }
    const long long got = read(text + size, capacity - size);
    if (got < 0) {
      std::free(text);
      return false;
    }
    if (got == 0) break;
    size += static_cast<size_t>(got);
    if (known && size == known && size < capacity) break;  // the whole regular file, as its size said
  }
  text[size] = '\0';
  textOut = text;
  sizeOut = static_cast<unsigned int>(size);
  return true;
}

// Reads the whole file; false (and nothing allocated) when it cannot be read.
// Touches no buffer, so that the reader thread can run it without a lock.
#if defined(__unix__) || defined(__APPLE__)
// Four system calls a file (open, fstat, read, close): stdio took seven (two
// seeks to learn the size, a second read to see the end), which counted on
// trees of small headers.
bool readWholeFile(const std::string& name, char*& textOut, unsigned int& sizeOut) {
  if (name.empty()) return false;
  const int fd = ::open(name.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return false;
  size_t known = 0;
  struct stat status;
  if (::fstat(fd, &status) == 0 && S_ISREG(status.st_mode) && status.st_size > 0 &&
      static_cast<unsigned long long>(status.st_size) < std::numeric_limits<unsigned int>::max() / 2)
    known = static_cast<size_t>(status.st_size);
  const bool read = readChunks(
      [fd](char* into, size_t wanted) -> long long {
        for (;;) {
          const ssize_t got = ::read(fd, into, wanted);
          if (got >= 0 || errno != EINTR) return got;  // a directory or a refusing device: -1
        }
      },
      known, textOut, sizeOut);
  ::close(fd);
  return read;
}
#else
bool readWholeFile(const std::string& name, char*& textOut, unsigned int& sizeOut) {
  if (name.empty()) return false;
  FILE* file = std::fopen(name.c_str(), "rb");
  if (!file) return false;
  // The text is read straight into its own buffer: a stream buffer would be
  // one more allocation per file.
  std::setvbuf(file, nullptr, _IONBF, 0);
  size_t known = 0;
  if (std::fseek(file, 0, SEEK_END) == 0) {
    const long end = std::ftell(file);
    if (std::fseek(file, 0, SEEK_SET) != 0) {  // a file that seeks one way only
      std::fclose(file);
      return false;
    }
    if (end > 0 && static_cast<unsigned long>(end) < std::numeric_limits<unsigned int>::max() / 2)
      known = static_cast<size_t>(end);
  } else {
    std::clearerr(file);
  }
  const bool read = readChunks(
      [file](char* into, size_t wanted) -> long long {
        const size_t got = std::fread(into, 1, wanted, file);
        if (got == 0 && std::ferror(file) != 0) return -1;
        return static_cast<long long>(got);
      },
      known, textOut, sizeOut);
  std::fclose(file);
  return read;
}
#endif

}  // namespace

// The process-wide reader: one thread that reads queued buffers in the order
// they were appended, so that the caller finds each text ready when it gets to
// it. It starts with the first buffer queued and is joined when the process
// ends. Texts it has read and their owners have not taken yet count against a
// budget; past it the reader pauses until the owners have taken half. Waking a
// sleeping thread costs more than reading a small file on a virtual machine,
// so the reader should run far ahead rather than be woken file by file.
struct ZELFileReader {
  static constexpr size_t kAheadBudget = size_t(4) << 20;

  std::mutex mutex;
  std::condition_variable queued;  // the thread waits here for work
  std::condition_variable loaded;  // the caller waits here for a buffer being read
  std::condition_variable room;    // the thread waits here while too much is read ahead
  // Buffers to read, in order; a slot whose buffer was taken back is null.
  // Slot k holds the buffer numbered frontNumber + k, so a buffer finds its
  // slot at once, wherever it stands in a long queue.
  std::deque<ZELFileBuffer*> queue;
  unsigned long long frontNumber = 0;
  std::thread thread;
  size_t aheadBytes = 0;  // read by the thread, not yet taken by the owners
  bool pausing = false;   // the thread waits for room
  bool stopping = false;

  static ZELFileReader& instance() {
    static ZELFileReader reader;
    return reader;
  }

  ~ZELFileReader() {
    {
      std::lock_guard<std::mutex> lock(mutex);
      stopping = true;
    }
    queued.notify_all();
    room.notify_all();
    if (thread.joinable()) thread.join();
  }

  void enqueue(ZELFileBuffer* buffer) {
    bool wake;
    {
      std::lock_guard<std::mutex> lock(mutex);
      buffer->_state.store(ZELFileBuffer::kQueued, std::memory_order_relaxed);
      wake = queue.empty();  // only then may the thread be asleep for want of work
      buffer->_queueNumber = frontNumber + queue.size();
      queue.push_back(buffer);
      if (!thread.joinable()) thread = std::thread([this] { run(); });
    }
    if (wake) queued.notify_one();
  }

  void popFront() {
    queue.pop_front();
    ++frontNumber;
  }

  // The owner has taken (or dropped) a text the thread read: its bytes leave
  // the budget.
  void release(size_t bytes) {
    bool wake;
    {
      std::lock_guard<std::mutex> lock(mutex);
      aheadBytes -= bytes;
      wake = pausing && aheadBytes <= kAheadBudget / 2;
    }
    if (wake) room.notify_one();
  }

  void run() {
    std::unique_lock<std::mutex> lock(mutex);
    for (;;) {
      queued.wait(lock, [this] { return stopping || !queue.empty(); });
      if (stopping) return;
      if (!queue.front()) {  // taken back by its owner
        popFront();
        continue;
      }
      if (aheadBytes >= kAheadBudget) {
        // The buffers stay queued while the thread pauses, so that an owner
        // asking for one reads it at once instead of waiting.
        pausing = true;
        room.wait(lock, [this] { return stopping || aheadBytes <= kAheadBudget / 2; });
        pausing = false;
        continue;
      }
      ZELFileBuffer* buffer = queue.front();
      popFront();
      buffer->_state.store(ZELFileBuffer::kReading, std::memory_order_relaxed);
      lock.unlock();
      // The name never changes and the buffer cannot die while it is being
      // read (destroy waits), so neither needs the lock.
      char* text = nullptr;
      unsigned int size = 0;
      readWholeFile(buffer->_fileName, text, size);
      lock.lock();
      buffer->_text = text;
      buffer->_size = size;
      buffer->_charge = size;
      aheadBytes += size;
      buffer->_state.store(ZELFileBuffer::kLoaded, std::memory_order_release);
      loaded.notify_all();
    }
  }
};

bool ZELFileBuffer::settle() {
  ZELFileReader& reader = ZELFileReader::instance();
  std::unique_lock<std::mutex> lock(reader.mutex);
  if (_state.load(std::memory_order_relaxed) == kQueued) {
    // Not taken yet: the caller reads it now rather than wait its turn.
    reader.queue[static_cast<size_t>(_queueNumber - reader.frontNumber)] = nullptr;
    _state.store(kIdle, std::memory_order_relaxed);
    return true;
  }
  if (_state.load(std::memory_order_relaxed) == kIdle) return true;
  reader.loaded.wait(lock, [this] { return _state.load(std::memory_order_relaxed) == kLoaded; });
  return false;
}

void ZELFileBuffer::takeCharge() {
  ZELFileReader::instance().release(_charge);
  _charge = 0;
}

void ZELFileBuffer::load() {
  const int state = _state.load(std::memory_order_acquire);
  // Not loaded yet, and not left to the reader (settle false: it has read it).
  if (state != kLoaded && (state == kIdle || settle())) {
    if (_fromFile) readWholeFile(_fileName, _text, _size);
    _state.store(kLoaded, std::memory_order_relaxed);
  }
  // A text the reader read leaves its budget when first asked for.
  if (_charge) takeCharge();
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

void ZELFileBuffer::destroy() {
  // The reader must not be left holding it.
  const int state = _state.load(std::memory_order_acquire);
  if (state == kQueued || state == kReading) settle();
  if (_charge) takeCharge();
  delete this;
}

void ZELFileBufferPool::append(ZELFileBuffer* buffer) {
  if (!buffer) return;
  _buffers.push_back(buffer);
  if (!gMultiThreadDisabled && buffer->_fromFile && buffer->_state.load(std::memory_order_relaxed) == ZELFileBuffer::kIdle)
    ZELFileReader::instance().enqueue(buffer);
}

void ZELFileBufferPool::disableMultiThread() { gMultiThreadDisabled = true; }

const size_t ZELFileBufferPool::kReadAheadBudget = ZELFileReader::kAheadBudget;

size_t ZELFileBufferPool::bytesReadAhead() {
  ZELFileReader& reader = ZELFileReader::instance();
  std::lock_guard<std::mutex> lock(reader.mutex);
  return reader.aheadBytes;
}

int ZELFileBufferPool::isMultiThreadDisabled() { return gMultiThreadDisabled ? 1 : 0; }
