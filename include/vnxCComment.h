// vnxCComment: a block comment ("/* ... */") of a source file, or the text of
// a dead conditional branch recorded as a comment (buildFromString).
//
// Pool object (see vnxComment): get one with create(), drop it with Release().
#ifndef VNX_C_COMMENT_H
#define VNX_C_COMMENT_H

#include "vnxComment.h"
#include "vnxExport.h"

class VNX_EXPORT vnxCComment : public vnxComment {
 public:
  // A new empty block comment, count 1; null only when memory runs out.
  static vnxCComment* create(vnxSourceFile* source);
  // Block comments alive in the pool, and the pool's blocks.
  static int getPoolLiveCount();
  static int getPoolBlockCount();

  // The comment runs from text[pos] to the first '/' that follows a '*' and
  // stands more than two characters after pos (so "/*/" does not close
  // itself); an unterminated comment runs to the end of the text. 0, or 1 on
  // bad arguments (see vnxComment::build).
  int build(const char* text, int pos, int line, int col, int outPos) override;
  const char* IsA() const override { return "vnxCComment"; }

 protected:
  template <class, int>
  friend class TAPool;

  explicit vnxCComment(vnxSourceFile* source) : vnxComment(source, 0) {}
  ~vnxCComment() override = default;
};

#endif
