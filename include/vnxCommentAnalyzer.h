// vnxCommentAnalyzer: reads the values of tags written in one comment. A tag
// is a word of the comment (the character after it must not be a letter,
// digit or '_'); its value is the rest of its line, blanks after the tag
// skipped, without the closing "*/" of a block comment.
//
// Borrows the comment, which must outlive the analyzer; holds no reference.
#ifndef VNX_COMMENT_ANALYZER_H
#define VNX_COMMENT_ANALYZER_H

#include "ZELLists.h"
#include "ZELString.h"
#include "vnxExport.h"

class vnxComment;

class VNX_EXPORT vnxCommentAnalyzer {
 public:
  explicit vnxCommentAnalyzer(vnxComment* comment) : _comment(comment) {}

  // Value of the first occurrence of tag. Answers 0 when the tag is found:
  // value is then a malloc'ed string the caller frees with free(), or null
  // when nothing follows the tag on its line. Answers 1 (value null) when the
  // tag does not occur, or the comment or tag is null or empty.
  int getTagValue(const char* tag, char*& value);
  // Appends the value of every occurrence of tag, in order ("" when nothing
  // follows an occurrence). Answers 0 when at least one was appended, else 1.
  int getTagValues(const char* tag, ZELListVal<ZELString>& values);

 private:
  vnxComment* _comment;
};

#endif
