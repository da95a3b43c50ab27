// TAPool<T>: per-class object pool in blocks of kSlots slots (internal).
//
// Bump allocation: a block hands out each slot once, in order; a released slot
// is destroyed but never reused. A block is recycled as a whole when every
// slot it handed out has been released, which keeps allocation cheap and
// release O(1). A few recycled blocks are kept aside for the next allocations:
// blocks are large enough to be mapped and unmapped by the allocator, and a
// tree built and released per file would otherwise pay for that every time.
// Each object records the block it came from (the caller stores the pointer
// getNew gives back) and passes it to release.
//
// Pools are process-wide and unguarded: one thread only.
#ifndef TA_POOL_H
#define TA_POOL_H

#include <cstddef>
#include <new>
#include <utility>

#include "TAFatalError.h"

template <class T, int kSlots = 1024>
class TAPool {
 public:
  struct Block {
    int freeCount;  // kSlots minus the slots handed out and still alive
    int nextSlot;   // next slot never handed out
    Block* next;
    Block* prev;
    alignas(T) unsigned char storage[sizeof(T) * kSlots];
  };

  // Constructs a T in the next free slot; *block receives the slot's block,
  // before T's constructor runs (which may thus read it). Answers null only
  // when memory runs out.
  template <class... Args>
  T* getNew(void** block, Args&&... args) {
    if (!_last || _last->nextSlot >= kSlots) {
      Block* b = _spare;
      if (b) {
        _spare = b->next;
        --_spareCount;
      } else {
        b = static_cast<Block*>(::operator new(sizeof(Block), std::nothrow));
      }
      if (!b) return nullptr;
      b->freeCount = kSlots;
      b->nextSlot = 0;
      b->next = nullptr;
      b->prev = _last;
      if (_last) _last->next = b;
      else _first = b;
      _last = b;
      ++_blocks;
    }
    Block* b = _last;
    void* slot = b->storage + sizeof(T) * static_cast<size_t>(b->nextSlot);
    ++b->nextSlot;
    --b->freeCount;
    ++_live;
    if (block) *block = b;
    return new (slot) T(std::forward<Args>(args)...);
  }

  // Destroys the object and frees its block once every slot of it is dead.
  void release(T* object, void* block) {
    if (Block* b = blockOf(object, block)) {
      object->~T();
      slotFreed(b);
    }
  }

  // The same for a caller that knows the object is a T itself, not of a class
  // derived from T: the destructor is called without a virtual call, which
  // counts when whole trees of small objects are released.
  void releaseExact(T* object, void* block) {
    if (Block* b = blockOf(object, block)) {
      object->T::~T();
      slotFreed(b);
    }
  }

  int liveCount() const { return _live; }
  int blockCount() const { return _blocks; }
  static constexpr int slotsPerBlock() { return kSlots; }

 private:
  // The block of a live object; null for a null object, and reported for an
  // object without one.
  static Block* blockOf(T* object, void* block) {
    if (!object) return nullptr;
    if (!block) TAFatalError(1, "TAPool::release of an object without a block");
    return static_cast<Block*>(block);
  }

  // One slot of b is dead; b is recycled when it was its last live one.
  void slotFreed(Block* b) {
    --_live;
    if (++b->freeCount < kSlots) return;
    if (b->prev) b->prev->next = b->next;
    else _first = b->next;
    if (b->next) b->next->prev = b->prev;
    else _last = b->prev;
    --_blocks;
    if (_spareCount >= kMaxSpares) {
      ::operator delete(b);
      return;
    }
    b->next = _spare;
    _spare = b;
    ++_spareCount;
  }

  Block* _first = nullptr;
  Block* _last = nullptr;
  // Emptied blocks kept for reuse, linked through next: a tree is built and
  // released per file, and fresh blocks would cost the allocator and the
  // kernel their pages each time. Bounded, so memory stays flat.
  static constexpr int kMaxSpares = 32;
  Block* _spare = nullptr;
  int _spareCount = 0;
  int _live = 0;
  int _blocks = 0;
};

#endif
