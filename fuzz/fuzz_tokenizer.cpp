// libFuzzer target: the tokenizer over any byte sequence, once over the whole
// buffer and once with a size taken from the input (which may be larger than
// the text, so that the NUL has to stop it). Every token must lie inside the
// text, start inside the size and after the previous one; the walk must end.
#include <cstddef>
#include <cstdint>

#include "FuzzSupport.h"
#include "vnxToken.h"
#include "vnxTokenIterator.h"
#include "vnxTokenizer.h"

namespace {

using vnxfuzz::require;

// Walks every token and checks where it lies; answers the number of tokens.
unsigned int walk(vnxTokenizer& tokenizer, const char* text, size_t textLength) {
  const size_t limit = tokenizer.getStringSize();
  require(limit <= textLength, "the tokenizer's size goes past the NUL");
  vnxTokenIterator iterator(&tokenizer);
  vnxToken token;
  unsigned int count = 0;
  const char* previousEnd = text;
  while (iterator.getNextToken(token)) {
    const char* start = token.getStart();
    require(start != nullptr, "a token without a start before the end");
    require(token.getLength() > 0, "an empty token before the end");
    require(start >= previousEnd, "a token overlaps the previous one");
    require(static_cast<size_t>(start - text) < limit, "a token starts outside the size");
    require(static_cast<size_t>(start - text) + token.getLength() <= textLength, "a token runs past the NUL");
    require(iterator.getTokenPosition() == start - text, "the token position is not the token's offset");
    previousEnd = start + token.getLength();
    ++count;
    require(count <= limit, "more tokens than characters");
  }
  require(token.getStart() == nullptr && token.getLength() == 0, "the walk did not end on the null token");
  require(iterator.getNextToken(token) == 0, "the iterator went on after the end");
  return count;
}

// Random access through getTokenAtCursor must agree with the iterator on
// where tokens start: from a token's own offset the same token comes back.
void probeCursors(vnxTokenizer& tokenizer, const char* text) {
  vnxTokenIterator iterator(&tokenizer);
  vnxToken token;
  int probes = 0;
  while (iterator.getNextToken(token) && probes < 64) {
    int position = -1;
    const unsigned int offset = static_cast<unsigned int>(token.getStart() - text);
    vnxToken again = tokenizer.getTokenAtCursor(offset, position);
    require(position == static_cast<int>(offset), "getTokenAtCursor moved off a token start");
    require(again.getStart() == token.getStart() && again.getLength() == token.getLength(),
            "getTokenAtCursor disagrees with the iterator");
    ++probes;
  }
  int position = -7;
  tokenizer.getTokenAtCursor(tokenizer.getStringSize() + 1, position);
  require(position == -7, "a cursor past the size moved the position");
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  vnxfuzz::setUpProcess();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const vnxfuzz::Text text(data, size);
  const size_t length = text.length();

  vnxTokenizer whole(text.c_str());
  require(whole.getStringSize() == length, "the whole-buffer tokenizer does not stop at the NUL");
  walk(whole, text.c_str(), length);
  probeCursors(whole, text.c_str());

  // A size from the first two bytes, up to a little past the input's end.
  unsigned int sized = 0;
  if (size >= 2) sized = (static_cast<unsigned int>(data[0]) << 8 | data[1]) % static_cast<unsigned int>(size + 3);
  vnxTokenizer part(text.c_str(), sized);
  walk(part, text.c_str(), length);
  probeCursors(part, text.c_str());

  // Iterators copy freely and restart with init().
  vnxTokenIterator first(&part);
  vnxToken token;
  first.getNextToken(token);
  vnxTokenIterator copy = first;
  copy.init();
  walk(part, text.c_str(), length);

  vnxTokenizer none(nullptr, 5);
  vnxTokenIterator empty(&none);
  require(empty.getNextToken(token) == 0, "a null text gave a token");
  return 0;
}
