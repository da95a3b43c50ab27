// Storage for the many small owned texts of comments and directives
// (internal).
//
// A header file holds dozens of short comments and directives, each with its
// own copy of its text, all made while the file is read and all dropped when
// it is unloaded: one malloc and one free apiece cost more than building the
// record. Texts up to kLargest bytes come instead from per-size-class free
// lists carved out of large chunks; longer ones go to malloc. A block is
// handed back with the size it was taken with, so it needs no header.
//
// Chunks are kept for the life of the process (the memory of a class stays
// at its peak use). Process-wide and unguarded, like the pools: one thread
// only.
#ifndef VNX_TEXT_STORE_H
#define VNX_TEXT_STORE_H

#include <cstddef>

#include "vnxExport.h"

namespace vnxtext {

// Blocks of up to this many bytes come from the free lists.
constexpr size_t kLargest = 512;

// Room for size bytes (size > 0); null only when memory runs out.
VNX_EXPORT char* allocate(size_t size);
// Gives back a block that allocate(size) answered, with the same size; null
// is ignored.
VNX_EXPORT void release(char* block, size_t size);

// A NUL-terminated copy of text[0, length) (length >= 0); null when memory
// runs out. Release it with release(copy, length + 1).
VNX_EXPORT char* copy(const char* text, int length);

// Blocks of the free lists handed out and not given back (for the tests).
VNX_EXPORT int liveCount();

}  // namespace vnxtext

#endif
