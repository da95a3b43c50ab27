// vnxPreproDirectiveDefineSimple: an object-like macro definition
// ("#define NAME replacement"). It keeps the macro name (an owned copy) and a
// pointer to the replacement text inside the directive text, and cuts the
// replacement into tokens on first request. It expands nothing itself.
//
// Pool object (see vnxZELPreproDirective): create(), then Release(). The
// tokens point into the directive's text and live as long as the directive.
#ifndef VNX_PREPRO_DIRECTIVE_DEFINE_SIMPLE_H
#define VNX_PREPRO_DIRECTIVE_DEFINE_SIMPLE_H

#include "vnxExport.h"
#include "vnxToken.h"
#include "vnxZELPreproDirective.h"

class VNX_EXPORT vnxPreproDirectiveDefineSimple : public vnxZELPreproDirective {
 public:
  // A new define from this class's pool, count 1; null only when memory runs out.
  static vnxPreproDirectiveDefineSimple* create(vnxSourceFile* source);
  static int getPoolLiveCount();
  static int getPoolBlockCount();

  // The base build, then buildDefine. 0, or 1 when either fails.
  int build(const char* text, int pos, int line, int col, int outPos) override;
  // "vnxPreproDirectiveDefineSimple".
  const char* IsA() const override;
  int Release() override;
  // The base dump, then "## definedIdentifier : " and "## replacementString : "
  // lines for the values that are set.
  void dump() override;

  // Reads the macro name and finds the replacement in the directive text.
  // Answers 0, or 1 (with a " -> !! " line on the error stream) when the text
  // is missing, does not start with '#', or holds no name. A name followed by
  // a character that cannot follow a name is taken with a warning.
  virtual int buildDefine();

  // The macro name; null before a successful build.
  const char* getDefinedIdentifier() const { return _definedIdentifier; }
  // The text after the name (and the blanks after it) up to the end of the
  // directive, inside the directive text; null when nothing follows.
  const char* getReplacementString() const { return _replacementString; }
  // Appends the tokens of the replacement (comments, newlines and line
  // continuations left out) to tokens; they are computed on the first call.
  // Answers 0.
  int getReplacementTokenList(ZELListVal<vnxToken>& tokens);

 protected:
  template <class, int>
  friend class TAPool;

  vnxPreproDirectiveDefineSimple(vnxSourceFile* source, vnxPreproType type = DefineSimple);
  ~vnxPreproDirectiveDefineSimple() override;

  // Cuts the replacement string into tokens (once). Answers 0.
  int computeReplacementTokens();
  // Frees the define's own fields.
  void resetDefine();

  char* _definedIdentifier = nullptr;
  const char* _replacementString = nullptr;
  ZELListVal<vnxToken> _replacementTokens;
  int _tokensComputed = 0;
};

#endif
