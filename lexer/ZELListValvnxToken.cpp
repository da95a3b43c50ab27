#include "ZELListValvnxToken.h"

#include <new>

#include "TAFatalError.h"

namespace {

// Every list's tokens come from one free list of slots, carved from blocks
// that are kept for the next lists: the pass makes and drops condition lists
// by the thousand per file, and a malloc and a free per token cost more than
// the token. Like the other pools, it serves one thread.
union TokenSlot {
  TokenSlot* next;
  alignas(vnxToken) unsigned char storage[sizeof(vnxToken)];
};

struct TokenSlots {
  static constexpr int kPerBlock = 256;
  TokenSlot* free = nullptr;
  TokenSlot* blocks = nullptr;  // linked through each block's first slot, which is never handed out

  void* take() {
    if (!free) {
      auto* block = static_cast<TokenSlot*>(::operator new(sizeof(TokenSlot) * kPerBlock));
      block[0].next = blocks;
      blocks = block;
      for (int i = kPerBlock - 1; i >= 1; --i) {
        block[i].next = free;
        free = &block[i];
      }
    }
    TokenSlot* slot = free;
    free = slot->next;
    return slot->storage;
  }

  void give(vnxToken* token) {
    token->~vnxToken();
    auto* slot = reinterpret_cast<TokenSlot*>(token);
    slot->next = free;
    free = slot;
  }
};

// Never destroyed: lists in static storage may release tokens at exit.
TokenSlots& tokenSlots() {
  static TokenSlots* slots = new TokenSlots;
  return *slots;
}

}  // namespace

ZELListVal<vnxToken>::ZELListVal(const ZELListVal& other) { Append(other); }

ZELListVal<vnxToken>& ZELListVal<vnxToken>::operator=(const ZELListVal& other) {
  if (this == &other) return *this;
  RemoveAll();
  Append(other);
  return *this;
}

// The collection frees its own storage: only the tokens go back.
ZELListVal<vnxToken>::~ZELListVal() {
  for (int pos = Size(); pos >= 1; --pos) tokenSlots().give(at(pos));
}

void ZELListVal<vnxToken>::Append(const vnxToken& token) { _tokens.Append(new (tokenSlots().take()) vnxToken(token)); }

void ZELListVal<vnxToken>::Append(const ZELListVal& other) {
  // The size is read once, so appending a list to itself doubles it.
  const int count = other.Size();
  for (int pos = 1; pos <= count; ++pos) Append(*other.at(pos));
}

vnxToken& ZELListVal<vnxToken>::operator[](int pos) {
  if (TAFatalError(pos < 1 || pos > Size(), "ZELListValvnxToken: position out of range")) {
    // A scratch token, reset on every bad access, so a caller that writes
    // through it does no harm.
    static vnxToken scratch;
    scratch = vnxToken::ZELCSCTokenNull;
    return scratch;
  }
  return *at(pos);
}

const vnxToken& ZELListVal<vnxToken>::operator[](int pos) const {
  if (TAFatalError(pos < 1 || pos > Size(), "ZELListValvnxToken: position out of range"))
    return vnxToken::ZELCSCTokenNull;
  return *at(pos);
}

void ZELListVal<vnxToken>::RemovePosition(int pos) {
  if (pos < 1 || pos > Size()) return;
  tokenSlots().give(at(pos));
  _tokens.RemovePosition(pos);
}

void ZELListVal<vnxToken>::RemoveAll(ZELCollec::MemoryHandling handling) {
  // Most lists emptied are empty already (a directive's condition before it
  // is read): they skip the collection's call.
  if (Size() == 0) return;
  for (int pos = Size(); pos >= 1; --pos) tokenSlots().give(at(pos));
  _tokens.RemoveAll(handling);
}

int ZELListVal<vnxToken>::operator==(const ZELListVal& other) const {
  if (Size() != other.Size()) return 0;
  for (int pos = 1; pos <= Size(); ++pos)
    if (*at(pos) != *other.at(pos)) return 0;
  return 1;
}

int ZELListVal<vnxToken>::operator!=(const ZELListVal& other) const {
  if (this == &other) return 0;
  return operator==(other) ? 0 : 1;
}
