#include "vnxTokenIterator.h"

#include "vnxToken.h"
#include "vnxTokenizer.h"

vnxTokenIterator::vnxTokenIterator(vnxTokenizer* tokenizer)
    : _tokenizer(tokenizer),
      _string(tokenizer ? tokenizer->getStringToTokenize() : nullptr),
      _cursor(_string) {}

int vnxTokenIterator::getNextToken(vnxToken& token) {
  if (!_tokenizer) return 0;
  // Once the end was reached the cursor is null: ask past every size so the
  // answer stays the null token.
  const unsigned int offset = _cursor ? static_cast<unsigned int>(_cursor - _string) : ~0u;
  token = _tokenizer->getTokenAtCursor(offset, _tokenPosition);
  _cursor = token.getStart() ? token.getStart() + token.getLength() : nullptr;
  return token == vnxToken::ZELCSCTokenNull ? 0 : 1;
}

void vnxTokenIterator::init() {
  _cursor = _string;
  _tokenPosition = -1;
}
