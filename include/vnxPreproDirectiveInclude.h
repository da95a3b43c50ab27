// vnxPreproDirectiveInclude: an "#include" line. It extracts the include
// string: the name between quotes or angle brackets (either closer ends
// either form), or the whole rest of the line for a macro-named include.
// Nothing is included textually; the symbol table resolves the name.
//
// Pool object (see vnxZELPreproDirective): create(), then Release().
#ifndef VNX_PREPRO_DIRECTIVE_INCLUDE_H
#define VNX_PREPRO_DIRECTIVE_INCLUDE_H

#include "vnxExport.h"
#include "vnxZELPreproDirective.h"

class VNX_EXPORT vnxPreproDirectiveInclude : public vnxZELPreproDirective {
 public:
  // A new include from this class's pool, count 1; null only when memory runs out.
  static vnxPreproDirectiveInclude* create(vnxSourceFile* source);
  static int getPoolLiveCount();
  static int getPoolBlockCount();

  // The base build, then buildIncludeString. 0, or 1 when either fails.
  int build(const char* text, int pos, int line, int col, int outPos) override;
  // "vnxPreproDirectiveInclude".
  const char* IsA() const override;
  int Release() override;
  // The base dump, then "## IncludeString :" followed by the string.
  void dump() override;

  // Reads the include string out of the directive text. Answers 0, or 1 (with
  // a " -> !! " line) when the text is missing or empty, does not start with
  // '#', or holds nothing after it. An unclosed name is written as a
  // " !! include syntax in invalid" line and taken to the end of the text. A
  // keyword with nothing after it on its line leaves the string null.
  int buildIncludeString();

  // The included name; null when the line names nothing.
  const char* getIncludeString() const { return _includeString; }

 protected:
  template <class, int>
  friend class TAPool;

  explicit vnxPreproDirectiveInclude(vnxSourceFile* source);
  ~vnxPreproDirectiveInclude() override;

  char* _includeString = nullptr;
};

#endif
