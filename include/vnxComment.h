// vnxComment: one comment of a source file, kept as an object because the
// checker reads the comments placed before declarations and the tags written
// in them. It owns a copy of the comment's raw text (markers included) and
// knows where each of its characters stood in the raw text. The kinds are
// vnxCComment (block comments, and dead conditional branches) and
// vnxCppComment (line comments).
//
// Reference-counted pool objects: each kind's create() hands out an object
// with count 1, the last Release() gives it back to its kind's pool. The
// source file is borrowed and must outlive the comment.
#ifndef VNX_COMMENT_H
#define VNX_COMMENT_H

#include "vnxExport.h"

class vnxSourceFile;
template <class T, int kSlots>
class TAPool;

class VNX_EXPORT vnxComment {
 protected:
  // Declared first so that it takes the first virtual slot; only the pools
  // destroy comments (through Release).
  virtual ~vnxComment();

 public:
  // Records the comment that starts at text[pos] (its first slash), at line,
  // col, met when the preprocessed output held outPos characters. Answers 0,
  // or 1 for a null text, pos < 0, line < 1, col < 1 or outPos < 0.
  virtual int build(const char* text, int pos, int line, int col, int outPos) = 0;
  // "vnxCComment" or "vnxCppComment".
  virtual const char* IsA() const = 0;

  // The whole of string becomes the comment text, its first character at
  // (line, col) and raw position pos; the end line and column are counted over
  // the string. Answers 0, or 1 for a null or empty string, line < 1, col < 1,
  // pos < 0 or outPos < 0.
  int buildFromString(const char* string, int line, int col, int pos, int outPos);

  // Answers the new count.
  int AddRef();
  // Answers the new count; at 0 the comment goes back to its kind's pool.
  // Releasing a dead comment is reported and answers -1.
  int Release();

  vnxSourceFile* getSource() const { return _source; }
  // The comment text, markers included; null before a build.
  const char* getCommentString() const { return _commentString; }
  int getCommentStringSize() const { return _commentStringSize; }
  // 1 for a line comment (vnxCppComment), 0 for a block comment.
  int isLineComment() const { return _lineComment; }
  // Length of the preprocessed output when the comment was met.
  int getOutputPosition() const { return _outputPosition; }

  // Line and column of character k of the comment; (unsigned)-1 when k is
  // outside 0..length-1.
  unsigned int getLineOfCommentCharInRawStream(int k);
  unsigned int getColOfCommentCharInRawStream(int k);
  // Raw position of character k (begin position + k); -1 out of range.
  int getPosOfCommentCharInRawStream(int k) const;

  unsigned int getBeginLineInRawStream() const { return _beginLine; }
  unsigned int getBeginColInRawStream() const { return _beginCol; }
  int getBeginPosInRawStream() const { return _beginPos; }
  unsigned int getEndLineInRawStream() const { return _endLine; }
  unsigned int getEndColInRawStream() const { return _endCol; }

  vnxComment(const vnxComment&) = delete;
  vnxComment& operator=(const vnxComment&) = delete;

 protected:
  template <class, int>
  friend class TAPool;

  vnxComment(vnxSourceFile* source, int lineComment) : _source(source), _lineComment(lineComment) {}

  // Fill the lazy per-character line and column tables.
  virtual void internalComputeLineOfCommentCharInRawStream();
  virtual void internalComputeColOfCommentCharInRawStream();

  // Stores text[pos .. pos+size-1] as the comment and its begin and end
  // places. Answers 0, or 1 when memory runs out.
  int record(const char* text, int pos, int size, int line, int col, unsigned int endLine,
             unsigned int endCol, int outPos);
  // Frees the text and tables and clears the place fields.
  void resetComment();

  void* _poolBlock = nullptr;
  int _refCount = 1;
  vnxSourceFile* _source = nullptr;
  char* _commentString = nullptr;
  int _commentStringSize = 0;
  unsigned int* _lineTable = nullptr;
  unsigned int* _colTable = nullptr;
  int _outputPosition = 0;
  unsigned int _beginLine = 0;
  unsigned int _beginCol = 0;
  int _beginPos = 0;
  unsigned int _endLine = 0;
  unsigned int _endCol = 0;
  int _lineComment = 0;
};

#endif
