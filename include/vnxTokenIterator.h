// vnxTokenIterator: walks the tokens of a vnxTokenizer from the start of its
// buffer to its end. It borrows the tokenizer (which must outlive it) and
// copies freely. getTokenPosition() tells the offset of the last token
// returned, so callers can relate tokens to their buffer.
#ifndef VNX_TOKEN_ITERATOR_H
#define VNX_TOKEN_ITERATOR_H

#include "vnxExport.h"

class vnxToken;
class vnxTokenizer;

class VNX_EXPORT vnxTokenIterator {
 public:
  // An iterator on nothing: getNextToken answers 0.
  vnxTokenIterator() = default;
  // An iterator at the start of the tokenizer's buffer (a null tokenizer gives
  // an iterator on nothing).
  explicit vnxTokenIterator(vnxTokenizer* tokenizer);
  vnxTokenIterator(const vnxTokenIterator& other) = default;
  vnxTokenIterator& operator=(const vnxTokenIterator& other) = default;

  // Puts the next token in token and answers 1; answers 0 at the end of the
  // buffer (token then holds the null token) or without a tokenizer (token is
  // left alone). Unknown characters come back as tokens: they never end the walk.
  int getNextToken(vnxToken& token);
  // Back to the start of the buffer.
  void init();

  // Where the next token will be searched; null once the end was reached.
  const char* getCursor() const { return _cursor; }
  // The tokenizer's buffer.
  const char* getString() const { return _string; }
  // Offset in the buffer of the last token returned; -1 before the first. At
  // the end it holds the offset where the search stopped.
  int getTokenPosition() const { return _tokenPosition; }

 private:
  vnxTokenizer* _tokenizer = nullptr;
  const char* _string = nullptr;
  const char* _cursor = nullptr;
  int _tokenPosition = -1;
};

#endif
