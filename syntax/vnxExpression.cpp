// Expression nodes: pool, creation and Build. Build narrows the node to its
// text without outer blanks and parentheses, splits it at its weakest
// operator (vnxExpressionOperators.cpp) and, when there is none, recognises a
// cast, a call, an index, a declaration of several words or a single word.
#include "vnxExpression.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "syntax/vnxExpressionWords.h"
#include "syntax/vnxSyntaxeAccess.h"
#include "syntax/vnxSyntaxePools.h"
#include "syntax/vnxTreeByteSet.h"
#include "syntax/vnxTreeCharClass.h"
#include "vnxInstruction.h"
#include "vnxSourceFile.h"

namespace {

inline bool isBlank(char c) { return vnxtreechar::isBlank(c); }
inline bool isWordChar(char c) { return vnxtreechar::isWord(c); }

// The word's length is known at compile time: the comparison is a few
// inline byte tests, the first of which rejects most texts.
template <int N>
bool startsWith(const char* s, int pos, int end, const char (&word)[N]) {
  if (pos >= end || s[pos] != word[0] || pos + (N - 1) > end) return false;
  for (int k = 1; k < N - 1; ++k)
    if (s[pos + k] != word[k]) return false;
  return true;
}

// Whether [begin, end) holds word characters only (true when it is empty).
// s may be read up to readable, at or past end: whole chunks are tested at
// once, the last few characters one by one.
inline bool onlyWordChars(const char* s, int begin, int end, int readable) {
  int i = vnxtreebytes::skipWordsInText(s, begin, end - 1, readable);
  while (i < end && isWordChar(s[i])) ++i;
  return i == end;
}

// Whether [from, end) holds word characters and ' ' only (s may be read up
// to readable, at or past end).
inline bool onlyWordsAndSpaces(const char* s, int from, int end, int readable) {
  int i = vnxtreebytes::skipWordsAndSpacesInText(s, from, end - 1, readable);
  while (i < end && (isWordChar(s[i]) || s[i] == ' ')) ++i;
  return i == end;
}

int failWith(const char* message) {
  vnxSyntaxe::ErrMsg = message;
  return 1;
}

// A whole literal: one character literal, or one or more string literals
// (blanks between them allowed), each with or without a leading L.
bool isLiteral(const char* s, int begin, int end) {
  const int last = end - 1;
  int i = begin;
  if (s[i] == 'L' && i < last && s[i + 1] == '\'') ++i;
  if (s[i] == '\'') return i < last && vnxSyntaxe::SearchEndOfString2(s, i, last) == last;
  bool found = false;
  while (i <= last) {
    if (s[i] == 'L' && i < last) ++i;
    if (s[i] != '"') return false;
    const int close = vnxSyntaxe::SearchEndOfString(s, i, last);
    if (close == 0) return false;
    found = true;
    i = close + 1;
    while (i <= last && isBlank(s[i])) ++i;
  }
  return found;
}

// What the text is made of at its top level (outside literals and brackets):
// the last bracket group, the last blank, and the first lone ':' with the
// last blank before a word ahead of it (a ':' left there is a bit-field
// width, and that word the field's name).
struct Shape {
  char groupKind = 0;  // '(', '[' or '{' of the last group, 0 when there is none
  int groupOpen = -1;
  int groupClose = -1;
  int lastBlank = -1;
  int lastBlankBeforeWord = -1;
  int colon = -1;
  int blankBeforeColon = -1;
};

// Offset of the bracket that closes the one opening at i, 0 when none does.
int closingOf(const char* s, int i, int last) {
  switch (s[i]) {
    case '(': return vnxSyntaxe::SearchEndOfPar(s, i, last);
    case '[': return vnxSyntaxe::SearchEndOfIndex(s, i, last);
    default: return vnxSyntaxe::SearchEndOfTAPBloc(s, i, last, 0);
  }
}

// Walks [begin, last] once; 0, or 1 with ErrMsg set for a literal, a
// parenthesis or a bracket that is not closed (or closed without being
// opened). Braces are taken as groups when they match and ignored otherwise.
// When trace is given, every blank and group is kept in it too.
// s may be read up to readable (at or past last).
int readShape(const char* s, int begin, int last, int readable, Shape& shape,
              vnxwords::ShapeTrace* trace = nullptr) {
  for (int i = begin; i <= last; ++i) {
    i = vnxtreebytes::skipToShapeStop(s, i, last, readable);
    if (i > last) break;
    const char c = s[i];
    if (!vnxtreechar::isBlankOrGroup(c)) continue;
    switch (c) {
      case '"':
        i = vnxSyntaxe::SearchEndOfString(s, i, last);
        if (i == 0) return failWith("Missing \"");
        break;
      case '\'':
        i = vnxSyntaxe::SearchEndOfString2(s, i, last);
        if (i == 0) return failWith("Missing '");
        break;
      case '(':
      case '[':
      case '{': {
        const int close = closingOf(s, i, last);
        if (close == 0) {
          if (c == '{') break;
          return failWith(c == '(' ? "Missing )" : "Missing ]");
        }
        shape.groupKind = c;
        shape.groupOpen = i;
        shape.groupClose = close;
        if (trace) trace->groups.push_back(vnxwords::Group{c, i, close});
        i = close;
        break;
      }
      case ')': return failWith("Missing )");
      case ']': return failWith("Missing ]");
      case ':':
        if (i < last && s[i + 1] == ':') {
          ++i;
        } else if (shape.colon < 0) {
          shape.colon = i;
          shape.blankBeforeColon = shape.lastBlankBeforeWord;
        }
        break;
      default:
        if (!isBlank(c)) break;
        shape.lastBlank = i;
        if (trace) trace->blanks.push_back(i);
        if (i < last && isWordChar(s[i + 1])) {
          shape.lastBlankBeforeWord = i;
          if (trace) trace->blanksBeforeWord.push_back(i);
        }
        break;
    }
  }
  return 0;
}

// The shape of [begin, end), a shorter text of chain (wordChainHolds): what
// the chain's shape scan had seen when it reached end.
void shapeFromChain(const vnxwords::ShapeTrace& trace, int chainColon, int chainBlankBeforeColon, int end,
                    Shape& shape) {
  const auto before = [end](const std::vector<int>& offsets) {
    const auto it = std::lower_bound(offsets.begin(), offsets.end(), end);
    return it == offsets.begin() ? -1 : *std::prev(it);
  };
  shape.lastBlank = before(trace.blanks);
  shape.lastBlankBeforeWord = before(trace.blanksBeforeWord);
  if (chainColon >= 0 && chainColon < end) {
    shape.colon = chainColon;
    shape.blankBeforeColon = chainBlankBeforeColon;
  }
  const auto group = std::lower_bound(trace.groups.begin(), trace.groups.end(), end,
                                      [](const vnxwords::Group& g, int at) { return g.close < at; });
  if (group != trace.groups.begin()) {
    const vnxwords::Group& last = *std::prev(group);
    shape.groupKind = last.kind;
    shape.groupOpen = last.open;
    shape.groupClose = last.close;
  }
}

// Below this length a chain of "dc" is cheap enough scanned level by level.
constexpr int kWordChainMinLength = 256;

}  // namespace

// --- pool ---------------------------------------------------------------------------

vnxExpression* vnxExpression::CreateTAPExpression(vnxSyntaxe* father, int begin, int size, int posInFather) {
  return vnxSyntaxeAccess::placeNew<vnxExpression>(vnxpools::expressions, vnxpools::kExpressions, kExpression, father,
                                                   begin, size, posInFather);
}

void vnxExpression::Reset() {
  vnxSyntaxe::Reset();
  std::memset(_operator, 0, sizeof(_operator));
}

void vnxExpression::ReturnToPool() { vnxpools::expressions.release(this, _ownerBlock); }

int vnxExpression::GetPoolLiveCount() { return vnxpools::expressions.liveCount(); }
int vnxExpression::GetPoolBlockCount() { return vnxpools::expressions.blockCount(); }

// --- build --------------------------------------------------------------------------

int vnxExpression::Build(int) { return buildWith(nullptr); }

int vnxExpression::buildWith(const Split* hint) {
  if (_depth > kMaxDepth) return depthFailure();
  if (!_source || !_streamAtBegin || !_source->GetStream()) return 0;
  if (_begin < 0 || _begin + _size > _source->GetSize()) return 0;
  return buildText(_source->GetStream(), hint);
}

int vnxExpression::depthFailure() const {
  ErrMsg = "Depth too high when building a vnxExpression : " + toString(_depth);
  return 1;
}

inline int vnxExpression::buildPlaced(const char* s, const Split* hint) {
  if (_depth > kMaxDepth) return depthFailure();
  if (_size > 0) {
    // A single word, by far the most common text, holds no operator, no
    // bracket and no blank: narrowing leaves it as it is, and every rule of
    // buildPhrase ends at "id". Told here, it costs its builder no call.
    const int end = _begin + _size;
    const int readable = _source->GetSize();
    int i = vnxtreebytes::skipWordsInText(s, _begin, end - 1, readable);
    while (i < end && isWordChar(s[i])) ++i;
    if (i == end) {
      setMarker("id");
      addLeaf(kTAPIdentifiant, _begin, _size);
      return 0;
    }
    // Words and spaces only (const Standard_Real U, Standard_EXPORT static
    // void D0): no operator, literal or group, so every level of the "dc"
    // chain would scan its text four times only to cut off its last word.
    if (s[i] == ' ' && i > _begin && isWordChar(s[end - 1]) && onlyWordsAndSpaces(s, i, end, readable) &&
        !(_size > 4 && startsWith(s, _begin, end, "new ")))
      return buildWords(s, i);
  }
  return buildPhrase(s, hint);
}

int vnxExpression::buildWords(const char* s, int firstBlank) {
  const int begin = _begin;
  const int end = _begin + _size;
  if (firstBlank >= end) {
    setMarker("id");
    addLeaf(kTAPIdentifiant, begin, _size);
    return 0;
  }
  // The text opens and ends with a word: its last blank lies strictly
  // inside, and so does the end of the word before it.
  int blank = vnxtreebytes::skipWordsBackwardInText(s, end - 1, begin, false);
  while (isWordChar(s[blank])) --blank;
  int leftEnd = blank;
  while (s[leftEnd - 1] == ' ') --leftEnd;
  setMarker("dc");
  if (addWords(s, begin, leftEnd, firstBlank)) return 1;
  return addWords(s, blank + 1, end, end);
}

int vnxExpression::addWords(const char* s, int from, int to, int firstBlank) {
  vnxExpression* child = vnxSyntaxeAccess::placeUnder<vnxExpression>(vnxpools::expressions, vnxpools::kExpressions,
                                                                     kExpression, this, s, from, to - from);
  if (!child) return 0;
  vnxSyntaxeAccess::adopt(this, child);
  const int status = child->_depth > kMaxDepth ? child->depthFailure() : child->buildWords(s, firstBlank);
  vnxSyntaxeAccess::builtByBuilder();
  return status;
}

int vnxExpression::buildText(const char* s, const Split* hint) { return buildPlaced(s, hint); }

int vnxExpression::buildPhrase(const char* s, const Split* hint) {
  const int givenBegin = _begin;
  const int givenEnd = _begin + _size;
  const int readable = _source->GetSize();
  const int narrowed = narrow(s);
  if (narrowed <= 0) return narrowed < 0 ? 1 : 0;
  const int begin = _begin;
  const int end = _begin + _size;
  if (begin != givenBegin || end != givenEnd) {
    // Narrowing may have left a single word.
    if (onlyWordChars(s, begin, end, readable)) {
      setMarker("id");
      addLeaf(kTAPIdentifiant, begin, _size);
      return 0;
    }
  }

  if (_size > 4 && (startsWith(s, begin, end, "new ") || startsWith(s, begin, end, "new("))) {
    setMarker("nw");
    return addOperand(begin + (s[begin + 3] == ' ' ? 4 : 3), end, nullptr);
  }
  if (isLiteral(s, begin, end)) {
    setMarker("st");
    return 0;
  }
  Split split;
  // In a chain of words the chain's scan answers: no operator here either.
  const WordChain* words = hint && hint->words && wordChainHolds(*hint->words, s, begin, end) ? hint->words : nullptr;
  const bool leading = hint && hint->leading && leadingSplit(s, begin, end, *hint, split);
  if (!leading && !words) {
    if (hint && hint->nextPos >= begin && hint->nextPos < end) chainSplit(s, begin, *hint, split);
    // The father's scan read this text as it stands, operators and all;
    // parentheses dropped by narrowing open text it jumped over.
    else if (!(hint && hint->bare && begin == givenBegin && end == givenEnd)) findSplit(s, begin, end, split);
  }
  return split.pos >= 0 ? buildOperands(s, split) : buildWithoutOperator(s, words);
}

int vnxExpression::narrow(const char* s) {
  int begin = _begin;
  int end = _begin + _size;
  int dropped = 0;
  int status = 1;
  for (;;) {
    while (begin < end && isBlank(s[begin])) ++begin;
    while (end > begin && isBlank(s[end - 1])) --end;
    if (end - begin < 2 || s[begin] != '(' || SearchEndOfPar(s, begin, end - 1) != end - 1) break;
    // Each pair costs a scan of the text: nesting beyond the depth limit is
    // refused like any other too deep construct.
    if (_depth + ++dropped > kMaxDepth) {
      ErrMsg = "Depth too high when building a vnxExpression : " + toString(_depth + dropped);
      status = -1;
      break;
    }
    ++begin;
    --end;
  }
  _begin = begin;
  _size = end - begin;
  _streamAtBegin = s + begin;
  return _size > 0 ? status : (status < 0 ? -1 : 0);
}

int vnxExpression::buildOperands(const char* s, const Split& split) {
  setOperator(s + split.pos, split.length);
  const int begin = _begin;
  const int end = _begin + _size;
  const int after = split.pos + split.length;
  // An operator in first place is unary (-x, !x, *p, &x, ++i, ::f); "++" and
  // "--" in last place are too (i++). Any other operator takes both sides,
  // an empty side becoming a null node.
  Split bare;
  bare.bare = true;
  if (split.pos == begin) {
    // Nothing in the operand of a prefix "!", "++" or "--" is weaker than
    // it, and the leftmost of its level wins: in a run of them (!!!a) the
    // next one, opening the operand, is the operand's split.
    Split prefix;
    prefix.level = split.level;
    prefix.leading = split.level == 40 || split.level == 20;
    prefix.bare = split.bareRight;
    return addOperand(after, end, prefix.leading || prefix.bare ? &prefix : nullptr);
  }
  const Split* left = split.nextPos >= 0 ? &split : split.bareLeft ? &bare : nullptr;
  if (split.level == 20 && after == end) return addOperand(begin, split.pos, left);
  if (addOperand(begin, split.pos, left)) return 1;
  return addOperand(after, end, split.bareRight ? &bare : nullptr);
}

int vnxExpression::buildWithoutOperator(const char* s, const WordChain* words) {
  const int begin = _begin;
  const int end = _begin + _size;
  const int last = end - 1;

  if (s[begin] == '(') {
    const int close = SearchEndOfPar(s, begin, last);
    if (close == 0) return failWith("Missing )");
    int inner = begin + 1;
    int innerEnd = close;
    while (inner < innerEnd && isBlank(s[inner])) ++inner;
    while (innerEnd > inner && isBlank(s[innerEnd - 1])) --innerEnd;
    int rest = close + 1;
    while (rest < end && isBlank(s[rest])) ++rest;
    // (*f)(x) calls through a pointer; any other (type)operand is a cast.
    if (s[rest] == '(' && (s[inner] == '*' || s[inner] == '&') && SearchEndOfPar(s, rest, last) == last)
      return buildCall("mt", rest, last);
    setMarker("ct");
    addLeaf(kTAPIdentifiant, inner, innerEnd - inner);
    return addOperand(close + 1, end, nullptr);
  }
  if (startsWith(s, begin, end, "malloc(") || startsWith(s, begin, end, "calloc(")) {
    if (SearchEndOfPar(s, begin + 6, last) == last) return buildCall(s[begin] == 'm' ? "mc" : "cc", begin + 6, last);
  }

  Shape shape;
  if (words) shapeFromChain(words->shape, words->colon, words->blankBeforeColon, end, shape);
  else if (readShape(s, begin, last, _source->GetSize(), shape)) return 1;
  // The left operand of "mt", "in" and "dc" is this text cut short: it and
  // its own left operands read their scans from one record of this text's.
  Split chained;
  WordChain chain;
  const auto prefixHint = [&]() -> const Split* {
    if (words) {
      chained.words = words;
    } else if (_size >= kWordChainMinLength) {
      Shape traced;
      walkWordChain(s, begin, end, chain);
      readShape(s, begin, last, _source->GetSize(), traced, &chain.shape);
      chain.colon = traced.colon;
      chain.blankBeforeColon = traced.blankBeforeColon;
      chained.words = &chain;
    }
    return chained.words ? &chained : nullptr;
  };
  if (shape.groupClose == last && shape.groupKind == '(') return buildCall("mt", shape.groupOpen, last, prefixHint());
  if (shape.groupClose == last && shape.groupKind == '[') {
    setMarker("in");
    if (addOperand(begin, shape.groupOpen, prefixHint())) return 1;
    return addOperand(shape.groupOpen + 1, last, nullptr);
  }
  // Words without an operator: a type part and the declared name after the
  // last blank. A ':' that is no operator is a bit-field width, which goes
  // with the name (int x : 3 is int, then x : 3).
  const int blank = shape.colon >= 0 && shape.blankBeforeColon >= 0 ? shape.blankBeforeColon : shape.lastBlank;
  if (blank >= 0) {
    setMarker("dc");
    if (addOperand(begin, blank, prefixHint())) return 1;
    return addOperand(blank + 1, end, nullptr);
  }
  setMarker("id");
  addLeaf(kTAPIdentifiant, begin, _size);
  return 0;
}

int vnxExpression::buildCall(const char* marker, int open, int close, const Split* calleeHint) {
  setOperator(marker, 2);
  if (addOperand(_begin, open, calleeHint)) return 1;
  vnxSyntaxe* arguments = vnxSyntaxeAccess::placeUnder<vnxSyntaxe>(vnxpools::nodes, vnxpools::kNodes, kArguments, this,
                                                                    _source->GetStream(), open + 1, close - open - 1);
  if (!arguments) return 0;
  vnxSyntaxeAccess::adopt(this, arguments);
  const int status = vnxInstruction::BuildListOfArgs(arguments);
  vnxSyntaxeAccess::builtByBuilder();
  return status;
}

int vnxExpression::addOperand(int from, int to, const Split* hint) {
  const char* s = _source->GetStream();
  while (from < to && isBlank(s[from])) ++from;
  while (to > from && isBlank(s[to - 1])) --to;
  if (to == from || (to - from == 1 && s[from] == ';')) {
    addLeaf(kSyntaxeNULL, from, to - from);
    return 0;
  }
  return addBuilt(this, s, from, to, hint);
}

// The father's text lies inside its stream, and so does the child's: the
// child is placed and built without checking it again.
int vnxExpression::addBuilt(vnxSyntaxe* father, const char* s, int from, int to, const Split* hint) {
  vnxExpression* child = vnxSyntaxeAccess::placeUnder<vnxExpression>(vnxpools::expressions, vnxpools::kExpressions,
                                                                     kExpression, father, s, from, to - from);
  if (!child) return 0;
  vnxSyntaxeAccess::adopt(father, child);
  const int status = child->buildPlaced(s, hint);
  vnxSyntaxeAccess::builtByBuilder();
  return status;
}

void vnxExpression::addLeaf(int type, int begin, int size) {
  vnxSyntaxe* leaf = vnxSyntaxeAccess::placeUnder<vnxSyntaxe>(vnxpools::nodes, vnxpools::kNodes, type, this,
                                                               _source->GetStream(), begin, size);
  vnxSyntaxeAccess::attachLeaf(this, leaf);
}

void vnxExpression::setOperator(const char* text, int length) {
  // strncpy's rule: at most three characters, stopping at a NUL, zero-padded.
  char op[4] = {0, 0, 0, 0};
  const int n = length < 3 ? length : 3;
  for (int i = 0; i < n && text[i]; ++i) op[i] = text[i];
  std::memcpy(_operator, op, sizeof(_operator));
}
