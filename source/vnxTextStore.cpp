#include "source/vnxTextStore.h"

#include <cstdlib>
#include <cstring>
#include <new>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/asan_interface.h>
#define VNX_POISON(block, size) ASAN_POISON_MEMORY_REGION(block, size)
#define VNX_UNPOISON(block, size) ASAN_UNPOISON_MEMORY_REGION(block, size)
#else
#define VNX_POISON(block, size) ((void)(block), (void)(size))
#define VNX_UNPOISON(block, size) ((void)(block), (void)(size))
#endif

namespace vnxtext {
namespace {

constexpr size_t kGrain = 16;  // sizes are rounded up to this
constexpr size_t kClasses = kLargest / kGrain;
constexpr size_t kChunk = 64 * 1024;

// A free block holds the link to the next free block of its class.
struct FreeBlock {
  FreeBlock* next;
};

struct Store {
  FreeBlock* free[kClasses] = {};
  // Every chunk, linked through its first bytes: the store keeps them all
  // reachable (they are never given back).
  void* chunks = nullptr;
  char* chunkNext = nullptr;  // the unused end of the current chunk
  char* chunkEnd = nullptr;
  int live = 0;
};

// Constant-initialised: usable from any static constructor, and no guard on
// the hot path.
Store gStore;
inline Store& store() { return gStore; }

inline size_t classOf(size_t size) { return (size - 1) / kGrain; }

// A block of class c cut from the current chunk, a new chunk when the rest is
// too short (the rest is left unused: at most kLargest bytes a chunk).
char* carve(Store& s, size_t c) {
  const size_t bytes = (c + 1) * kGrain;
  if (static_cast<size_t>(s.chunkEnd - s.chunkNext) < bytes) {
    char* chunk = static_cast<char*>(std::malloc(kChunk));
    if (!chunk) return nullptr;
    *reinterpret_cast<void**>(chunk) = s.chunks;
    s.chunks = chunk;
    s.chunkNext = chunk + kGrain;  // the link keeps the blocks 16-byte aligned
    s.chunkEnd = chunk + kChunk;
  }
  char* block = s.chunkNext;
  s.chunkNext += bytes;
  return block;
}

}  // namespace

char* allocate(size_t size) {
  if (size == 0) size = 1;
  if (size > kLargest) return static_cast<char*>(std::malloc(size));
  Store& s = store();
  const size_t c = classOf(size);
  char* block;
  if (FreeBlock* head = s.free[c]) {
    VNX_UNPOISON(head, (c + 1) * kGrain);
    s.free[c] = head->next;
    block = reinterpret_cast<char*>(head);
  } else {
    block = carve(s, c);
    if (!block) return nullptr;
  }
  ++s.live;
  return block;
}

void release(char* block, size_t size) {
  if (!block) return;
  if (size == 0) size = 1;
  if (size > kLargest) {
    std::free(block);
    return;
  }
  Store& s = store();
  const size_t c = classOf(size);
  FreeBlock* freed = new (block) FreeBlock{s.free[c]};
  s.free[c] = freed;
  --s.live;
  // A stale pointer into a given-back text is reported by the sanitizer.
  VNX_POISON(block, (c + 1) * kGrain);
}

char* copy(const char* text, int length) {
  if (length < 0) length = 0;  // a caller's slip costs an empty text, not a write before the block
  const size_t size = static_cast<size_t>(length) + 1;
  char* block = allocate(size);
  if (!block) return nullptr;
  if (length > 0) std::memcpy(block, text, static_cast<size_t>(length));
  block[length] = '\0';
  return block;
}

int liveCount() { return store().live; }

}  // namespace vnxtext
