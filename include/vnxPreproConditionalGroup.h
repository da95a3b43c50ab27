// vnxPreproConditionalGroup: one #if/#ifdef/#ifndef ... #elif/#else ...
// #endif construct: its directives, and the one whose branch is kept, chosen
// against the defines visible from the source file. It changes no text and
// does not read the nested groups of a branch. Conditions are not C
// expressions: only defined, !, &&, || and parentheses count, and bare names
// and the literals 0 and 1 only as a condition's last token.
// Reference-counted (count 1 at creation); it holds one reference to each
// directive and borrows the source file, which must outlive it.
#ifndef VNX_PREPRO_CONDITIONAL_GROUP_H
#define VNX_PREPRO_CONDITIONAL_GROUP_H

#include "TARefCounter.h"
#include "ZELLists.h"
#include "vnxExport.h"
#include "vnxToken.h"

class vnxSourceFile;
class vnxPreproDirectiveConditional;

class VNX_EXPORT vnxPreproConditionalGroup : public TARefCounter {
 public:
  // Reads the group whose first directive starts at text[pos] (its '#', at
  // line and col; outPos is the length of the preprocessed output so far),
  // then selects its succeeding directive. Positions are offsets in text.
  // Null when the line at pos is no conditional directive, when no #endif
  // closes the group (the "Missing #endif directive" error is written), or
  // when #ifdef or #ifndef is not followed by exactly one token. source may
  // be null: then only the three always-defined names count as defined.
  static vnxPreproConditionalGroup* create(vnxSourceFile* source, const char* text, int pos, int line, int col,
                                           int outPos);

  // The directive whose branch is kept; null when every branch is dead.
  vnxPreproDirectiveConditional* getSucceedingDirective() const { return _succeedingDirective; }
  // Appends the directives in text order (#endif last), one reference each:
  // the caller releases them.
  void getConditionalDirectives(ZELListPtr<vnxPreproDirectiveConditional>& out) const;
  int getConditionalDirectiveCount() const { return _count; }

  // Characters from the first directive's '#' to the end of the #endif line
  // (its newline, or the end of the text when the file ends on that line).
  int getInitialGroupSize() const { return static_cast<int>(_endGroupPos) - static_cast<int>(_beginGroupPos) + 1; }
  unsigned int getBeginGroupPosInRawStream() const { return _beginGroupPos; }
  unsigned int getBeginGroupLineInRawStream() const { return _beginGroupLine; }
  unsigned int getBeginGroupColInRawStream() const { return _beginGroupCol; }
  unsigned int getEndGroupPosInRawStream() const { return _endGroupPos; }
  unsigned int getEndGroupLineInRawStream() const { return _endGroupLine; }
  unsigned int getEndGroupColInRawStream() const { return _endGroupCol; }
  vnxSourceFile* getSource() const { return _source; }

  // 1 when the condition (tokens after #if or #elif) holds, 0 otherwise. An
  // empty condition writes the "Missing condition" error; line is the
  // directive's, for that message.
  int computeCondition(const ZELListVal<vnxToken>& condition, unsigned int line) const;
  // 1 for "HARBO_CLIENT", "_ZEL_ANSI_STREAMS" and "STDMETHOD", and for any
  // name the source file's define look-up finds; 0 otherwise.
  int isMacroDefined(const vnxToken& name) const;

  // Writes the group and its directives on wbStdout between the banners
  // "************* Groupe de directives ***************" and
  // "************* Fin groupe de directives ***************".
  void dump() const;

  vnxPreproConditionalGroup(const vnxPreproConditionalGroup&) = delete;
  vnxPreproConditionalGroup& operator=(const vnxPreproConditionalGroup&) = delete;

 protected:
  ~vnxPreproConditionalGroup() override;

 private:
  // The pass hands the directives over to the file without a list between.
  friend class vnxPreprocessor;

  explicit vnxPreproConditionalGroup(vnxSourceFile* source);

  // 0 when the directives up to an #endif were read, 1 otherwise.
  int buildDirectives(const char* text, int pos, int line, int col, int outPos);
  // 0 (the succeeding directive set, possibly null) or -1.
  int computeSucceedingDirective();

  vnxPreproDirectiveConditional* _succeedingDirective = nullptr;
  ZELListPtr<vnxPreproDirectiveConditional> _directives;
  int _count = 0;
  unsigned int _beginGroupPos = 0;
  unsigned int _beginGroupLine = 0;
  unsigned int _beginGroupCol = 0;
  unsigned int _endGroupPos = 0;
  unsigned int _endGroupLine = 0;
  unsigned int _endGroupCol = 0;
  vnxSourceFile* _source = nullptr;
};

#endif
