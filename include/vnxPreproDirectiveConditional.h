// vnxPreproDirectiveConditional: one directive of a conditional group (#if,
// #ifdef, #ifndef, #elif, #else, #endif): its condition's tokens and where
// the branch after it lies (offsets in the text given to build()). It
// evaluates nothing; vnxPreproConditionalGroup does. Pool object: create(),
// then Release(); the condition's tokens point into the directive's own text.
#ifndef VNX_PREPRO_DIRECTIVE_CONDITIONAL_H
#define VNX_PREPRO_DIRECTIVE_CONDITIONAL_H

#include "vnxExport.h"
#include "vnxToken.h"
#include "vnxZELPreproDirective.h"

class VNX_EXPORT vnxPreproDirectiveConditional : public vnxZELPreproDirective {
 public:
  // What getConditionalDirectiveType() answers; NotConditional before a
  // successful build.
  enum vnxPreproConditionalType { NotConditional = 0, Ifdef = 1, Ifndef = 2, If = 3, Elif = 4, Else = 5, Endif = 6 };

  // A new directive from this class's pool, count 1; null only when memory runs out.
  static vnxPreproDirectiveConditional* create(vnxSourceFile* source);
  static int getPoolLiveCount();
  static int getPoolBlockCount();
  // The conditional keyword of a directive line whose '#' stands at
  // text[pos] ('#', blanks or tabs, the word); NotConditional for any other
  // line (or a null text).
  static vnxPreproConditionalType getConditionalTypeAt(const char* text, int pos);

  // The base build from pos, then buildConditional. 0, or 1 when the base
  // build fails, the line is not a conditional directive, or (for every kind
  // but #endif) the text ends before the branch does.
  int build(const char* text, int pos, int line, int col, int outPos) override;
  // "vnxPreproDirectiveConditional".
  const char* IsA() const override;
  int Release() override;
  // The base dump, then "   type:", "   control condition:" and the begin
  // ("   Debut. Pos:") and end ("   Fin. Pos:") of the branch text.
  void dump() override;

  // Appends copies of the condition's tokens (comments and line continuations
  // left out) to condition.
  void getControlCondition(ZELListVal<vnxToken>& condition) const;
  vnxPreproConditionalType getConditionalDirectiveType() const { return _preproConditionalType; }
  // 1 when the branch after this directive holds no character (always 1 for
  // #endif, which opens no branch), 0 otherwise.
  int isEmptyText() const { return _emptyText; }

  // First character of the branch text: the one after the directive's line.
  // For #endif, the rest of its own line, after the keyword.
  void getBeginTextInRawStream(unsigned int& pos, unsigned int& line, unsigned int& col) const;
  // Last character of the branch text: the newline that ends the line before
  // the group's next directive (before the first character when the branch is
  // empty). For #endif, the newline ending its line, or the end of the text.
  void getEndTextInRawStream(unsigned int& pos, unsigned int& line, unsigned int& col) const;
  unsigned int getBeginTextPosInRawStream() const { return _beginTextPos; }
  unsigned int getEndTextPosInRawStream() const { return _endTextPos; }
  unsigned int getBeginTextLineInRawStream() const { return _beginTextLine; }
  unsigned int getEndTextLineInRawStream() const { return _endTextLine; }
  unsigned int getBeginTextColInRawStream() const { return _beginTextCol; }
  unsigned int getEndTextColInRawStream() const { return _endTextCol; }

 protected:
  template <class, int>
  friend class TAPool;
  // The group evaluates the condition where it is kept, without a copy.
  friend class vnxPreproConditionalGroup;

  explicit vnxPreproDirectiveConditional(vnxSourceFile* source);
  ~vnxPreproDirectiveConditional() override;

  // Reads the keyword and the condition out of the directive text, then finds
  // the branch in text (which holds the directive at the base's begin
  // position). 0, or 1 as build() says.
  int buildConditional(const char* text);

 private:
  int readKeywordAndCondition(int& keywordEnd);
  int findBranch(const char* text);
  int findEndifLineEnd(const char* text, int keywordOffset);

  ZELListVal<vnxToken> _controlCondition;
  vnxPreproConditionalType _preproConditionalType = NotConditional;
  int _emptyText = 1;
  unsigned int _beginTextPos = 0;
  unsigned int _endTextPos = 0;
  unsigned int _beginTextLine = 0;
  unsigned int _endTextLine = 0;
  unsigned int _beginTextCol = 0;
  unsigned int _endTextCol = 0;
};

#endif
