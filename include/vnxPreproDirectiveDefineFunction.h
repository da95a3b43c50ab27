// vnxPreproDirectiveDefineFunction: a function-like macro definition
// ("#define NAME(a, b) replacement"). Besides what an object-like define
// keeps, it owns the text between the parentheses and reads the parameter
// names out of it on first request. Its replacement starts after the ')'.
//
// Pool object (see vnxZELPreproDirective): create(), then Release().
#ifndef VNX_PREPRO_DIRECTIVE_DEFINE_FUNCTION_H
#define VNX_PREPRO_DIRECTIVE_DEFINE_FUNCTION_H

#include "ZELLists.h"
#include "ZELString.h"
#include "vnxExport.h"
#include "vnxPreproDirectiveDefineSimple.h"

class VNX_EXPORT vnxPreproDirectiveDefineFunction : public vnxPreproDirectiveDefineSimple {
 public:
  // A new define from this class's pool, count 1; null only when memory runs out.
  static vnxPreproDirectiveDefineFunction* create(vnxSourceFile* source);
  static int getPoolLiveCount();
  static int getPoolBlockCount();

  // "vnxPreproDirectiveDefineFunction".
  const char* IsA() const override;
  int Release() override;

  // As for an object-like define, then the argument string up to the first
  // ')'. A name without '(' right after it, or a '(' without ')', is written
  // as a " -> !! " line and the define is kept (without parameters, or with
  // the rest of the text as argument string and no replacement). 0, or 1 as
  // for an object-like define.
  int buildDefine() override;

  // The text between the parentheses; null when there were none.
  const char* getArgumentString() const { return _argumentString; }
  // Appends the parameter names, in order, to arguments (computed on the first
  // call). Answers 0, or 1 when the argument string is malformed (the names
  // read before the fault are still given).
  int getArgumentList(ZELListVal<ZELString>& arguments);
  // Number of parameter names (computes them when needed).
  int getArgumentCount();

  // Reads the parameter names out of the argument string: identifiers and
  // commas alternating, starting with an identifier; comments and line
  // continuations are allowed. A fault is written as a " -> !! " line and
  // ends the reading. Answers 0, or 1 on a fault. Done once.
  int compute();

 protected:
  template <class, int>
  friend class TAPool;

  explicit vnxPreproDirectiveDefineFunction(vnxSourceFile* source);
  ~vnxPreproDirectiveDefineFunction() override;

  char* _argumentString = nullptr;
  ZELListVal<ZELString> _argumentList;
  int _argumentsComputed = 0;
  int _argumentsStatus = 0;
};

#endif
