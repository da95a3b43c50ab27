// vnxDefinePreproDirectiveExpander: expands a registered macro at a position
// of a file's text into its replacement (tokens joined by blanks, arguments
// substituted, '#' and '##' applied, registered macros inside expanded in
// turn; a macro never expands inside itself). It changes no text and bounds
// every expansion (depth, passes, size), and the work of failed expansions
// over its life (one per preprocessing pass). It copies the macro registry when
// made and borrows the source file, which must outlive it.
#ifndef VNX_DEFINE_PREPRO_DIRECTIVE_EXPANDER_H
#define VNX_DEFINE_PREPRO_DIRECTIVE_EXPANDER_H

#include <string>

#include "TAIndex.h"
#include "vnxExport.h"

class vnxSourceFile;
class vnxZELPreproDirective;
class vnxPreproDirectiveDefineSimple;
class vnxPreproDirectiveDefineFunction;

class VNX_EXPORT vnxDefinePreproDirectiveExpander {
 public:
  // Limits of one expansion.
  enum {
    kMaxDepth = 64,                     // macros expanded inside one another
    kMaxArgumentPasses = 16,            // re-expansion passes over one argument
    kMaxOutputSize = 16 * 1024 * 1024,  // characters of any replacement
    kMaxWork = 16 * 1024 * 1024,        // characters produced in all, nested levels included
    // Once expansions that failed have spent this much work, each later one
    // may spend only kReducedWork: a text calling a runaway macro many times
    // (its calls nested in one another's arguments fail one after the other)
    // costs a bounded amount, while one runaway call leaves the next
    // expansions their whole bound.
    kMaxFailedWork = 16 * 1024 * 1024,
    kReducedWork = 64 * 1024
  };

  explicit vnxDefinePreproDirectiveExpander(vnxSourceFile* source);
  ~vnxDefinePreproDirectiveExpander();
  vnxDefinePreproDirectiveExpander(const vnxDefinePreproDirectiveExpander&) = delete;
  vnxDefinePreproDirectiveExpander& operator=(const vnxDefinePreproDirectiveExpander&) = delete;

  // text points at a macro name inside a NUL-terminated text. Answers 0 with
  // replacement set to a malloc'ed, NUL-terminated replacement (the caller
  // frees it with free()) and replacedLength to the characters of text it
  // stands for: the name, and for a function-like macro the whole argument
  // list up to its ')'. Missing arguments are empty. Answers 1 when the name
  // cannot be expanded here (not a registered macro, being expanded already,
  // no define, a function-like macro without its argument list, with an
  // unclosed one, with more arguments than parameters or with a parameter
  // list that cannot be read, a bound reached): replacement is then null and
  // replacedLength 0.
  int expand(const char* text, char*& replacement, int& replacedLength);

 private:
  enum Status { kExpanded, kNotExpanded, kAbort };
  struct Argument;

  Status expandLocal(const char* text, int depth, std::string& out, int& replacedLength);
  Status expandObject(vnxPreproDirectiveDefineSimple* define, std::string& body);
  Status expandFunction(vnxPreproDirectiveDefineFunction* define, const char* text, int nameLength, int depth,
                        std::string& body, int& replacedLength);
  Status expandText(const char* text, int depth, std::string& out, int& replacements);
  Status expandArgument(Argument& argument, int depth);
  bool append(std::string& out, const char* text, size_t length);

  // Position of name in the registry copy when it may expand now, else -1.
  int activePosition(const char* name, size_t length);
  void setActive(int position, bool active);

  vnxSourceFile* _source;
  // The registry copy; an entry's value is non-null while its macro is being
  // expanded (it is out of the set for that time).
  TAIndex _macros;
  size_t _shortestName = 0;
  size_t _longestName = 0;
  std::string _nameScratch;
  long long _work = 0;
  long long _workLimit = kMaxWork;
  long long _failedWork = 0;  // spent by the expansions that failed, over this expander's life
};

#endif
