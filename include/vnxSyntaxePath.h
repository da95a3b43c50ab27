// vnxSyntaxePath: a durable address of one syntax-tree node.
//
// Carries the node's file name, its chain of 1-based positions in father from
// the root's child down to the node, and the points (line, column) of its first
// and last characters. It holds no pointer into the tree, so it outlives it;
// the symbol table resolves it back to a node. Reference-counted (count 1 at
// creation); copies are independent values.
#ifndef VNX_SYNTAXE_PATH_H
#define VNX_SYNTAXE_PATH_H

#include "TARefCounter.h"
#include "ZELLists.h"
#include "ZELString.h"
#include "vnxExport.h"
#include "vnxSyntaxePoint.h"

class vnxSyntaxe;

class VNX_EXPORT vnxSyntaxePath : public TARefCounter {
 public:
  // Empty file path, no positions, both points (0, 0).
  vnxSyntaxePath() = default;
  // The path of node; the empty path for null.
  explicit vnxSyntaxePath(vnxSyntaxe* node);
  // A copy of *other; the empty path for null.
  explicit vnxSyntaxePath(vnxSyntaxePath* other);
  vnxSyntaxePath(const vnxSyntaxePath& other);
  vnxSyntaxePath& operator=(const vnxSyntaxePath& other);
  ~vnxSyntaxePath() override;

  const char* GetFilePath() const { return _filePath.CastToCharPtr(); }
  ZELRawCollint GetPosInTree() const { return _posInTree; }
  vnxSyntaxePoint GetBeginPoint() const { return _beginPoint; }
  vnxSyntaxePoint GetEndPoint() const { return _endPoint; }

  // 1 when both name the same file and cover the same characters (begin and
  // end points equal); the position chains are not compared. Else 0.
  int IsEqual(vnxSyntaxePath& other);

 private:
  ZELString _filePath;
  ZELRawCollint _posInTree;
  vnxSyntaxePoint _beginPoint;
  vnxSyntaxePoint _endPoint;
};

#endif
