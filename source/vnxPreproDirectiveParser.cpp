#include "source/vnxPreproDirectiveParser.h"

#include <cstring>

#include "source/vnxCommentScan.h"
#include "source/vnxDiag.h"
#include "vnxPreproDirectiveDefineFunction.h"
#include "vnxPreproDirectiveDefineSimple.h"
#include "vnxPreproDirectiveInclude.h"
#include "vnxZELPreproDirective.h"

namespace {

bool wordIs(const char* word, int length, const char* keyword) {
  return static_cast<size_t>(length) == std::strlen(keyword) && std::strncmp(word, keyword, length) == 0;
}

// The kind of define that the name after "#define" makes: function-like when
// '(' touches the name. Null (after the error line) when no name follows.
vnxZELPreproDirective* createDefine(vnxSourceFile* source, const char* text, int afterKeyword) {
  const int name = vnxscan::skipLayoutAndContinuations(text, afterKeyword);
  if (!vnxscan::isMacroNameChar(text[name])) {  // also a newline or the end of the text
    vnxdiag::error("'#define' is not followed by an identifier");
    return nullptr;
  }
  int end = name;
  while (vnxscan::isMacroNameChar(text[end])) ++end;
  if (text[end] == '(') return vnxPreproDirectiveDefineFunction::create(source);
  return vnxPreproDirectiveDefineSimple::create(source);
}

// Builds directive; a directive that cannot be built is released.
vnxZELPreproDirective* buildOrDrop(vnxZELPreproDirective* directive, const char* text, int pos, int line, int col,
                                   int outPos) {
  if (!directive) return nullptr;
  if (directive->build(text, pos, line, col, outPos) == 0) return directive;
  directive->Release();
  return nullptr;
}

}  // namespace

vnxZELPreproDirective* vnxPreproDirectiveParser::parse(const char* text, int pos, int line, int col, int outPos) {
  if (!text || pos < 0 || line < 1 || col < 1) return nullptr;
  if (text[pos] != '#') {
    if (text[pos] == '\0') vnxdiag::error("Directive found does not begin with '#'");
    else vnxdiag::error(ZELString("Directive found begins with ") + text[pos] + " instead of '#'");
    return nullptr;
  }
  int k = pos + 1;
  while (vnxscan::isLayout(text[k])) ++k;
  if (text[k] == '\n')  // the empty directive
    return buildOrDrop(vnxZELPreproDirective::create(_source), text, pos, line, col, outPos);
  if (!vnxscan::isLetter(text[k])) {
    if (text[k] == '\0') vnxdiag::error("Directive identifier is not alphabetic.");
    else vnxdiag::error(ZELString("Directive identifier is not alphabetic: ") + text[k]);
    return buildOrDrop(vnxZELPreproDirective::create(_source), text, pos, line, col, outPos);
  }
  int end = k;
  while (vnxscan::isLetter(text[end])) ++end;
  const char* word = text + k;
  const int length = end - k;

  vnxZELPreproDirective* directive = nullptr;
  bool named = true;  // a record of unknown kind keeps its word
  if (wordIs(word, length, "define")) {
    directive = createDefine(_source, text, end);
    named = directive == nullptr;
    if (!directive) directive = vnxZELPreproDirective::create(_source);
  } else if (wordIs(word, length, "include")) {
    directive = vnxPreproDirectiveInclude::create(_source);
    named = false;
  } else {
    directive = vnxZELPreproDirective::create(_source);
  }
  directive = buildOrDrop(directive, text, pos, line, col, outPos);
  if (directive && named) directive->setDirectiveIdentifier(ZELString(word, length));
  return directive;
}
