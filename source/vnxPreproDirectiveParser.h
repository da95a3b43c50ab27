// vnxPreproDirectiveParser: decides which kind of directive record a
// directive line makes (define, function-like define, include, or a record of
// unknown kind for anything else) and builds it (internal to the library, but
// exported for the tests). One parser per file, made by the preprocessing pass.
//
// The source file is borrowed and must outlive the parser; the directives it
// answers belong to the caller (one reference each).
#ifndef VNX_PREPRO_DIRECTIVE_PARSER_H
#define VNX_PREPRO_DIRECTIVE_PARSER_H

#include "vnxExport.h"

class vnxSourceFile;
class vnxZELPreproDirective;

class VNX_EXPORT vnxPreproDirectiveParser {
 public:
  // source may be null (directives then belong to no file).
  explicit vnxPreproDirectiveParser(vnxSourceFile* source) : _source(source) {}

  // The directive whose '#' stands at text[pos], at line, col, met when the
  // preprocessed output held outPos characters; null for a null text, pos < 0,
  // line < 1 or col < 1, when text[pos] is not '#' (an error line is written),
  // or when the record cannot be built. A malformed directive word still gives
  // a record of unknown kind (after an error line) so that its line is consumed.
  vnxZELPreproDirective* parse(const char* text, int pos, int line, int col, int outPos);

 private:
  vnxSourceFile* _source;
};

#endif
