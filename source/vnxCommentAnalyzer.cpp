#include "vnxCommentAnalyzer.h"

#include <cstdlib>
#include <cstring>

#include "source/vnxCommentScan.h"
#include "vnxComment.h"

namespace {

// A tag's value inside a comment text: [begin, begin + length), or length -1
// when nothing follows the tag on its line.
struct TagValue {
  int begin;
  int length;
};

// First occurrence of tag at or after from that is not followed by a letter,
// digit or '_' (the character before it is not looked at); -1 when none.
int findTag(const char* text, const char* tag, size_t tagLength, int from) {
  const char* hit = std::strstr(text + from, tag);
  while (hit && vnxscan::isWordChar(hit[tagLength])) hit = std::strstr(hit + 1, tag);
  return hit ? static_cast<int>(hit - text) : -1;
}

// The value after a tag that ends at k: the rest of the line, blanks and tabs
// after the tag skipped. A value that runs to the end of a block comment loses
// the closing marker (when it is longer than the marker itself).
TagValue valueAfter(const char* text, int k, bool blockComment) {
  while (vnxscan::isBlankOrTab(text[k])) ++k;
  if (text[k] == '\n' || text[k] == '\0') return {k, -1};
  int end = k;
  while (text[end] != '\0' && text[end] != '\n') ++end;
  int length = end - k;
  if (text[end] == '\0' && blockComment && length > 2) length -= 2;
  return {k, length};
}

bool usable(vnxComment* comment, const char* tag) {
  return comment && tag && *tag && comment->getCommentString() && comment->getCommentStringSize() > 0;
}

}  // namespace

int vnxCommentAnalyzer::getTagValue(const char* tag, char*& value) {
  value = nullptr;
  if (!usable(_comment, tag)) return 1;
  const char* text = _comment->getCommentString();
  const size_t tagLength = std::strlen(tag);
  const int at = findTag(text, tag, tagLength, 0);
  if (at < 0) return 1;
  const TagValue v = valueAfter(text, at + static_cast<int>(tagLength), !_comment->isLineComment());
  if (v.length < 0) return 0;
  value = static_cast<char*>(std::malloc(static_cast<size_t>(v.length) + 1));
  if (!value) return 1;
  std::memcpy(value, text + v.begin, static_cast<size_t>(v.length));
  value[v.length] = '\0';
  return 0;
}

int vnxCommentAnalyzer::getTagValues(const char* tag, ZELListVal<ZELString>& values) {
  if (!usable(_comment, tag)) return 1;
  const char* text = _comment->getCommentString();
  const size_t tagLength = std::strlen(tag);
  const bool blockComment = !_comment->isLineComment();
  int found = 0;
  for (int at = findTag(text, tag, tagLength, 0); at >= 0;
       at = findTag(text, tag, tagLength, at + static_cast<int>(tagLength))) {
    const TagValue v = valueAfter(text, at + static_cast<int>(tagLength), blockComment);
    values.Append(v.length < 0 ? ZELString() : ZELString(text + v.begin, v.length));
    ++found;
  }
  return found ? 0 : 1;
}
