// vnxCppComment: a line comment ("// ...") of a source file. The comment
// stops before the newline that ends it; a backslash-newline continues it on
// the next line.
//
// Pool object (see vnxComment): get one with create(), drop it with Release().
#ifndef VNX_CPP_COMMENT_H
#define VNX_CPP_COMMENT_H

#include "vnxComment.h"
#include "vnxExport.h"

class VNX_EXPORT vnxCppComment : public vnxComment {
 public:
  // A new empty line comment, count 1; null only when memory runs out.
  static vnxCppComment* create(vnxSourceFile* source);
  // Line comments alive in the pool, and the pool's blocks.
  static int getPoolLiveCount();
  static int getPoolBlockCount();

  // The comment runs from text[pos] to just before the first newline that no
  // backslash precedes, or to the end of the text. 0, or 1 on bad arguments
  // (see vnxComment::build).
  int build(const char* text, int pos, int line, int col, int outPos) override;
  const char* IsA() const override { return "vnxCppComment"; }

 protected:
  template <class, int>
  friend class TAPool;

  explicit vnxCppComment(vnxSourceFile* source) : vnxComment(source, 1) {}
  ~vnxCppComment() override = default;
};

#endif
