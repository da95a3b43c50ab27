// vnxExpression: an operand, condition or declaration split at its weakest
// operator (node type 4).
//
// Build splits the node's text at the operator of highest level into operand
// expressions, down to single words, and names what it found with a short
// operator text ("+", "=", "->"...) or a marker ("mt" call, "id" word, "dc"
// words without operator, "ct" cast, "in" index, "st" literal, "nw" new, "mc"
// malloc, "cc" calloc). It knows no grammar of declarations and checks no
// types. Nodes come from the expression pool, reference-counted like every
// node. Not thread-safe (pool and ErrMsg are shared).
#ifndef VNX_EXPRESSION_H
#define VNX_EXPRESSION_H

#include "vnxExport.h"
#include "vnxSyntaxe.h"

template <class T, int kSlots>
class TAPool;

class VNX_EXPORT vnxExpression : public vnxSyntaxe {
 public:
  // A node of type 4 with an empty operator text under father, not yet
  // appended. A null father gives an unplaced, sourceless node; null only
  // when memory runs out.
  static vnxExpression* CreateTAPExpression(vnxSyntaxe* father, int begin, int size, int posInFather);

  // Trims the node to its text without outer blanks and parentheses, sets the
  // operator text and builds the operands (flag is not used). 0, or 1 with
  // ErrMsg set ("Missing )", "Missing ]" or the depth message); operands built
  // before a failure stay attached.
  int Build(int flag) override;
  // The operator text: up to three characters, NUL-terminated, "" before Build
  // or for an empty expression. Never null.
  const char* GetOperator() const override { return _operator; }

  // Offset in text of the operator at which [begin, end) splits (end is one
  // past the last character), its length in length; -1 when there is none or
  // a closing quote or bracket has no opening one. The level of ':' depends on
  // this node's father (level 165 under a "?").
  int SearchOperator(const char* text, int begin, int end, int& length);
  // Former name, kept for old callers: the same as SearchOperator.
  int SearchOperator_old(const char* text, int begin, int end, int& length);
  // Level of an operator text (10 "::" up to 180 "," and 190 ";", which
  // separates the parts of a for header); 0 for anything else.
  // ':' answers 150; the search raises it to 165 under a "?".
  static int GetOperatorLevel(const char* op);

  // Expressions alive, and blocks held, in the expression pool.
  static int GetPoolLiveCount();
  static int GetPoolBlockCount();

 protected:
  void Reset() override;
  void ReturnToPool() override;

 private:
  template <class T, int kSlots>
  friend class TAPool;
  friend class vnxInstruction;  // builds its expressions through addBuilt

  struct Split;
  // Appends to father, whose source's stream is s, an expression over
  // [from, to) (from <= to, inside the stream), builds it and leaves it held
  // by father alone: the build status (0 when the pool is exhausted). hint,
  // when given, is what the father's scan already knows of the text.
  static int addBuilt(vnxSyntaxe* father, const char* s, int from, int to, const Split* hint = nullptr);

  // Where a text splits: the operator's offset, length and level, and the
  // next operator of the same level further left (nextPos -1 when there is
  // none or the level does not chain). A left-associative chain a+b+c+...
  // hands nextPos down to its left operand, which then splits there without
  // scanning its whole text again. A prefix chain !!!a or ----b hands down
  // `leading`: an operator of the same level opening the operand is its split.
  // A chain of texts without operators, each the left operand of the one
  // before ("dc" peels off the last word, "mt" the arguments, "in" the
  // index), hands down `words`: what one scan of the longest text saw, from
  // which each shorter one reads its own split and shape.
  struct WordChain;
  struct Split {
    int pos = -1;
    int length = 0;
    int level = 0;
    int nextPos = -1;
    int nextLength = 0;
    bool leading = false;
    const WordChain* words = nullptr;
    // Set by findSplit: the left (right) operand holds no operator token at
    // all, the scan having read every one of them. As a hint, bare tells a
    // text that holds none: unless narrowing opens parentheses, it splits
    // nowhere.
    bool bareLeft = false;
    bool bareRight = false;
    bool bare = false;
  };

  vnxExpression() {}  // not defaulted: see vnxSyntaxe()
  explicit vnxExpression(const Placement& at) : vnxSyntaxe(at) {}
  ~vnxExpression() override = default;

  // The split of [begin, end): the full right-to-left scan. 0, or -1 when a
  // closing quote or bracket has no opening one (split.pos is then -1).
  int findSplit(const char* s, int begin, int end, Split& split) const;
  // The split of a left operand that starts at begin: the father's next
  // operator (hint.nextPos), and the one of the same level before it.
  void chainSplit(const char* s, int begin, const Split& hint, Split& split) const;
  // The split at begin when an operator of hint's level opens [begin, end);
  // false (split untouched) otherwise.
  bool leadingSplit(const char* s, int begin, int end, const Split& hint, Split& split) const;
  // Build with the split handed down by the father, when there is one.
  int buildWith(const Split* hint);
  // The same for a node whose text is known to lie inside its source's
  // stream s (a child placed by a builder of this class).
  int buildText(const char* s, const Split* hint);
  // buildText for a child placed by this class: a single word is told
  // without a call; any other text goes on to buildPhrase.
  int buildPlaced(const char* s, const Split* hint);
  // buildText for a text that is not a single word, within the depth limit.
  int buildPhrase(const char* s, const Split* hint);
  // buildText for a text of words separated by spaces (' ' only), a word at
  // each end, not opening with "new ", whose first blank is at firstBlank
  // (at or past its end for a single word): a chain of "dc" down to its
  // first word, each level peeling off the last word ("id" for one word).
  int buildWords(const char* s, int firstBlank);
  // A child of this node over such a text [from, to), placed and built with
  // buildWords; the build status.
  int addWords(const char* s, int from, int to, int firstBlank);
  // Sets the depth message; 1.
  int depthFailure() const;
  // Trims blanks and outer parentheses off the node: 1, 0 when nothing is
  // left, -1 (ErrMsg set) when the parentheses nest too deep.
  int narrow(const char* s);
  int buildOperands(const char* s, const Split& split);
  // words: the chain this text belongs to, when it holds for the text.
  int buildWithoutOperator(const char* s, const WordChain* words);
  // The right-to-left scan of [begin, end) as the chain needs it, and
  // whether the chain answers for the text [begin, end) (both defined with
  // the operator search).
  static void walkWordChain(const char* s, int begin, int end, WordChain& chain);
  static bool wordChainHolds(const WordChain& chain, const char* s, int begin, int end);
  // calleeHint: the hint for the callee, the text before open.
  int buildCall(const char* marker, int open, int close, const Split* calleeHint = nullptr);
  // A child over [from, to): an expression built with hint, or a SyntaxeNULL
  // when the text is empty (size 0) or a lone ';' (size 1).
  int addOperand(int from, int to, const Split* hint);
  void addLeaf(int type, int begin, int size);
  void setOperator(const char* text, int length);
  // A two-letter marker ("id", "dc"...): the operator text zero-padded.
  void setMarker(const char (&marker)[3]) {
    _operator[0] = marker[0];
    _operator[1] = marker[1];
    _operator[2] = _operator[3] = 0;
  }

  char _operator[4] = {0, 0, 0, 0};
};

#endif
