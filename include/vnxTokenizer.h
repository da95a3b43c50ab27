// vnxTokenizer: cuts a NUL-terminated character buffer into tokens (vnxToken)
// that point back into it. It never copies or allocates, and never fails:
// a character it cannot classify becomes a one-character token of kind
// vnxToken::kUnknown. The buffer is borrowed and must outlive the tokenizer,
// its iterators and every token taken from it.
//
// The size limits where tokens may start and where strings, comments and
// numbers may end; identifiers, operators and character literals that start
// inside it run to their natural end. Nothing is ever read past the NUL.
#ifndef VNX_TOKENIZER_H
#define VNX_TOKENIZER_H

#include "vnxExport.h"
#include "vnxToken.h"
#include "vnxTokenIterator.h"

class VNX_EXPORT vnxTokenizer {
 public:
  // The whole buffer (up to its NUL); null text tokenizes as empty.
  explicit vnxTokenizer(const char* text);
  // At most size characters, never beyond the NUL; null text tokenizes as empty.
  vnxTokenizer(const char* text, unsigned int size);
  ~vnxTokenizer();

  const char* getStringToTokenize() const { return _text; }
  unsigned int getStringSize() const { return _size; }

  // An iterator at the start of this tokenizer's buffer.
  vnxTokenIterator getTokenIterator();

  // The token that starts at offset cursor or after it (blanks, carriage
  // returns and tabs are skipped; newlines are tokens), with tokenPosition set
  // to its offset. At the end of the buffer the null token is answered; when
  // cursor is not below the size, tokenPosition is left untouched.
  vnxToken getTokenAtCursor(unsigned int cursor, int& tokenPosition) const;

 private:
  const char* _text;
  unsigned int _size;
  // For each kind of token whose end is searched for (string, character
  // literal, line comment, block comment, number): the lowest offset from
  // which that search is known to fail. Whether a given character ends such a
  // token does not depend on where the token began, so any later search from
  // at or beyond that offset fails too; remembering it keeps a buffer full of
  // unterminated openers linear instead of quadratic.
  mutable unsigned int _failedEndSearchFrom[5];
};

#endif
