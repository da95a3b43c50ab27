// The path of a node: its file, its chain of positions and its two points.
#include "vnxSyntaxePath.h"

#include "vnxSourceFile.h"
#include "vnxSyntaxe.h"

vnxSyntaxePath::vnxSyntaxePath(vnxSyntaxe* node) {
  if (!node) return;
  _filePath = node->GetSource();
  node->GetTAPSyntaxePath(_posInTree);
  vnxSourceFile* source = node->GetTAPSourceFile();
  if (!source) return;
  // A block's own extent leaves its braces out; its path covers them.
  int first = node->GetBegin();
  int last = node->GetSize() > 0 ? node->GetBegin() - 1 + node->GetSize() : node->GetBegin();
  if (node->GetType() == vnxSyntaxe::kTAPBloc) {
    first = node->GetBegin() - 1;
    last = node->GetBegin() + node->GetSize();
  }
  // An empty node can stand one past the last character (an operand missing
  // at the end of a file): it is placed on the last character, since the
  // source stops the process for any offset outside its stream.
  const int size = source->GetSize();
  if (size > 0) {
    if (first >= size) first = size - 1;
    if (last >= size) last = size - 1;
    if (first < 0) first = 0;
    if (last < 0) last = 0;
  } else {
    first = last = 0;
  }
  _beginPoint = source->GetPoint(first);
  _endPoint = source->GetPoint(last);
}

vnxSyntaxePath::vnxSyntaxePath(vnxSyntaxePath* other) {
  if (other) *this = *other;
}

vnxSyntaxePath::vnxSyntaxePath(const vnxSyntaxePath& other)
    : TARefCounter(other),
      _filePath(other._filePath),
      _posInTree(other._posInTree),
      _beginPoint(other._beginPoint),
      _endPoint(other._endPoint) {}

vnxSyntaxePath& vnxSyntaxePath::operator=(const vnxSyntaxePath& other) {
  if (this == &other) return *this;
  _filePath = other._filePath;
  _posInTree = other._posInTree;
  _beginPoint = other._beginPoint;
  _endPoint = other._endPoint;
  return *this;
}

vnxSyntaxePath::~vnxSyntaxePath() = default;

int vnxSyntaxePath::IsEqual(vnxSyntaxePath& other) {
  if (_filePath != other._filePath) return 0;
  if (_beginPoint.GetCol() != other._beginPoint.GetCol()) return 0;
  if (_beginPoint.GetLine() != other._beginPoint.GetLine()) return 0;
  if (_endPoint.GetCol() != other._endPoint.GetCol()) return 0;
  if (_endPoint.GetLine() != other._endPoint.GetLine()) return 0;
  return 1;
}
