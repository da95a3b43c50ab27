// vnxSyntaxePoint: a place in a source text as the user sees it, a line and a
// column (both from 1 as the source file maps them; (0, 0) means "unknown").
// A plain value.
#ifndef VNX_SYNTAXE_POINT_H
#define VNX_SYNTAXE_POINT_H

#include "vnxExport.h"

class VNX_EXPORT vnxSyntaxePoint {
 public:
  vnxSyntaxePoint() = default;
  vnxSyntaxePoint(int line, int col) : _line(line), _col(col) {}
  vnxSyntaxePoint(const vnxSyntaxePoint&) = default;
  vnxSyntaxePoint& operator=(const vnxSyntaxePoint& other) {
    if (this != &other) {
      _line = other._line;
      _col = other._col;
    }
    return *this;
  }

  int GetLine() const { return _line; }
  int GetCol() const { return _col; }
  void SetLine(int line) { _line = line; }
  void SetCol(int col) { _col = col; }

 private:
  int _line = 0;
  int _col = 0;
};

#endif
