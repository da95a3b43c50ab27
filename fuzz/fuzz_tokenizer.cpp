// libFuzzer target: the tokenizer over any byte sequence, once over the whole
// buffer and once with a size taken from the input (which may be larger than
// the text, so that the NUL has to stop it). Every token must lie inside the
// text, start inside the size (or after blanks that cross it) and after the
// previous one; the walk must end.
#include <cstddef>
#include <cstdint>

#include "FuzzSupport.h"
#include "vnxToken.h"
#include "vnxTokenIterator.h"
#include "vnxTokenizer.h"

namespace {

using vnxfuzz::require;

// Walks every token and checks where it lies; answers the number of tokens.
unsigned int walk(vnxTokenizer& tokenizer, vnxTokenIterator& iterator, const char* text, size_t textLength) {
  const size_t limit = tokenizer.getStringSize();
  require(limit <= textLength, "the tokenizer's size goes past the NUL");
  vnxToken token;
  unsigned int count = 0;
  const char* previousEnd = text;
  while (iterator.getNextToken(token)) {
    const char* start = token.getStart();
    require(start != nullptr, "a token without a start before the end");
    require(token.getLength() > 0, "an empty token before the end");
    require(start >= previousEnd, "a token overlaps the previous one");
    // Blanks may run past the size, and the token after them is still read.
    for (const char* p = text + limit; p < start; ++p)
      require(*p == ' ' || *p == '\r' || *p == '\t', "a token starts past the size after something else than blanks");
    require(static_cast<size_t>(start - text) + token.getLength() <= textLength, "a token runs past the NUL");
    require(iterator.getTokenPosition() == start - text, "the token position is not the token's offset");
    previousEnd = start + token.getLength();
    ++count;
    require(count <= limit + 1, "more tokens than characters");
  }
  require(token.getStart() == nullptr && token.getLength() == 0, "the walk did not end on the null token");
  require(iterator.getNextToken(token) == 0, "the iterator went on after the end");
  return count;
}

// Random access through getTokenAtCursor must agree with the iterator: from a
// token's own offset the same token comes back.
void probeCursors(vnxTokenizer& tokenizer, const char* text) {
  vnxTokenIterator iterator(&tokenizer);
  vnxToken token;
  int probes = 0;
  while (iterator.getNextToken(token) && probes < 64) {
    int position = -1;
    const unsigned int offset = static_cast<unsigned int>(token.getStart() - text);
    if (offset >= tokenizer.getStringSize()) break;  // reached over blanks that cross the size
    vnxToken again = tokenizer.getTokenAtCursor(offset, position);
    require(position == static_cast<int>(offset), "getTokenAtCursor moved off a token start");
    // "##" depends on the cursor asked for, not on where the token starts
    // (a deliberate quirk), so a '#' may come back shorter.
    const bool hash = *token.getStart() == '#';
    require(again.getStart() == token.getStart() && (hash || again.getLength() == token.getLength()),
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
  vnxTokenIterator wholeIterator = whole.getTokenIterator();
  walk(whole, wholeIterator, text.c_str(), length);
  probeCursors(whole, text.c_str());

  // A size from the first two bytes, up to a little past the input's end.
  unsigned int sized = 0;
  if (size >= 2) sized = (static_cast<unsigned int>(data[0]) << 8 | data[1]) % static_cast<unsigned int>(size + 3);
  vnxTokenizer part(text.c_str(), sized);
  vnxTokenIterator partIterator(&part);
  const unsigned int count = walk(part, partIterator, text.c_str(), length);
  probeCursors(part, text.c_str());

  // A copy restarted with init() walks the same tokens again.
  vnxTokenIterator copy = partIterator;
  copy.init();
  require(walk(part, copy, text.c_str(), length) == count, "a restarted iterator found other tokens");

  vnxToken token;
  vnxTokenizer none(nullptr, 5);
  vnxTokenIterator empty(&none);
  require(empty.getNextToken(token) == 0, "a null text gave a token");
  return 0;
}
