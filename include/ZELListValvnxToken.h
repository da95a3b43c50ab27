// ZELListValvnxToken: an ordered list of token values, positions 1..Size().
// It is the list type ZELListVal<vnxToken> itself (a specialization kept on a
// pointer collection): each Append stores a heap copy of the token, which the
// list owns and destroys. The tokens still point into their tokenized buffer,
// which must outlive them. Equality compares spellings position by position.
#ifndef ZEL_LIST_VAL_VNX_TOKEN_H
#define ZEL_LIST_VAL_VNX_TOKEN_H

#include "ZELLists.h"
#include "vnxExport.h"
#include "vnxToken.h"

template <>
class VNX_EXPORT ZELListVal<vnxToken> {
 public:
  ZELListVal() = default;
  // Deep copies.
  ZELListVal(const ZELListVal& other);
  ZELListVal& operator=(const ZELListVal& other);
  ~ZELListVal();

  int Size() const { return _tokens.Size(); }
  // Stores a copy of token at the end.
  void Append(const vnxToken& token);
  // Appends copies of every token of other, in order (other may be this list).
  void Append(const ZELListVal& other);

  // The token at pos (1..Size()). Out of range is a caller bug: it is reported
  // through TAFatalError and a null token is answered.
  vnxToken& operator[](int pos);
  const vnxToken& operator[](int pos) const;

  // Destroys the token at pos and closes the gap; out of range does nothing.
  void RemovePosition(int pos);
  // Destroys every token, last first, and empties the list.
  void RemoveAll(ZELCollec::MemoryHandling handling = ZELCollec::FreeMemory);

  // 1 when both lists have the same size and equal tokens (vnxToken::operator==)
  // at every position.
  int operator==(const ZELListVal& other) const;
  // 0 for the same object or equal lists, 1 on the first difference.
  int operator!=(const ZELListVal& other) const;

 private:
  vnxToken* at(int pos) const { return static_cast<vnxToken*>(_tokens[pos]); }
  ZELRawCollPV _tokens;
};

typedef ZELListVal<vnxToken> ZELListValvnxToken;

#endif
