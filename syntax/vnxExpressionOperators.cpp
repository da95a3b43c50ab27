// The operators of expressions: how operator characters group into tokens,
// the level of each token, ExistLongerOp and the right-to-left search for the
// operator at which an expression splits.
//
// Operator characters are grouped by maximal munch over each run of them
// ("a+++b" reads "++" then "+", "x-->y" reads "--" then ">"), the way a C++
// compiler reads them, so a candidate is an operator exactly when it is one
// of those tokens. The search visits every character once: literals,
// brackets and braces are jumped as wholes, and each run of operator
// characters is read once and its tokens visited from right to left.
//
// Besides the C++ operators, ';' ranks weakest of all (190): the only
// expressions that hold one are for headers, which thus split into their
// three parts.
#include <algorithm>
#include <cstring>
#include <vector>

#include "syntax/vnxExpressionWords.h"
#include "syntax/vnxTreeByteSet.h"
#include "syntax/vnxTreeCharClass.h"
#include "vnxExpression.h"

namespace {

inline bool isDigit(char c) { return c >= '0' && c <= '9'; }
inline bool isWordChar(char c) { return vnxtreechar::isWord(c); }

// What the right-to-left walk does with a character: most characters are
// stepped over, closers of literals and brackets are jumped back, operator
// characters are read as tokens.
enum WalkClass : unsigned char { kPlain = 0, kCloser = 1, kOperatorChar = 2 };

struct WalkClasses {
  unsigned char of[256] = {};
  WalkClasses() {
    for (const char c : {'"', '\'', ')', ']', '}'}) of[static_cast<unsigned char>(c)] = kCloser;
    for (const char c : {'+', '-', '*', '/', '%', '=', '!', '<', '>', '&', '|', '^', ':', '.', '?', ',', ';'})
      of[static_cast<unsigned char>(c)] = kOperatorChar;
  }
};

const WalkClasses kWalkClasses;

inline unsigned char walkClass(char c) { return kWalkClasses.of[static_cast<unsigned char>(c)]; }

inline bool isOperatorChar(char c) { return walkClass(c) == kOperatorChar; }

// First offset of the word (letters, digits, '_') that ends at last, never
// below lowest; last + 1 when no word ends there.
int wordStart(const char* s, int lowest, int last) {
  int k = last;
  while (k >= lowest && isWordChar(s[k])) --k;
  return k + 1;
}

// Whether the operator-looking character at i is part of a number: the point
// of 1.5 or .5, the sign of the exponent of 1e-5 or 0x1p+3.
bool inNumber(const char* s, int lowest, int end, int i) {
  const char c = s[i];
  if (c == '.') {
    const int word = wordStart(s, lowest, i - 1);
    if (word <= i - 1) return isDigit(s[word]);
    return i + 1 < end && isDigit(s[i + 1]);
  }
  if ((c == '+' || c == '-') && i - 1 >= lowest) {
    const char e = s[i - 1];
    const bool decimalExponent = e == 'e' || e == 'E';
    if (!decimalExponent && e != 'p' && e != 'P') return false;
    const int word = wordStart(s, lowest, i - 1);
    if (!isDigit(s[word])) return false;
    const bool hex = s[word] == '0' && word + 1 < i && (s[word + 1] == 'x' || s[word + 1] == 'X');
    return hex != decimalExponent;
  }
  return false;
}

inline bool isOperatorAt(const char* s, int lowest, int end, int i) {
  return isOperatorChar(s[i]) && !inNumber(s, lowest, end, i);
}

// Length (1 to 3) of the token that starts at i in a run of operator
// characters ending at last: the longest operator spelled there.
int tokenLength(const char* s, int i, int last) {
  const char n1 = i + 1 <= last ? s[i + 1] : '\0';
  const char n2 = i + 2 <= last ? s[i + 2] : '\0';
  switch (s[i]) {
    case '<':
    case '>':
      if (n1 == s[i]) return n2 == '=' ? 3 : 2;
      return n1 == '=' ? 2 : 1;
    case '-':
      if (n1 == '>') return n2 == '*' ? 3 : 2;
      return n1 == '-' || n1 == '=' ? 2 : 1;
    case '+': return n1 == '+' || n1 == '=' ? 2 : 1;
    case '&':
    case '|': return n1 == s[i] || n1 == '=' ? 2 : 1;
    case '.':
      if (n1 == '.' && n2 == '.') return 3;  // an ellipsis, not an operator
      return n1 == '*' ? 2 : 1;
    case ':': return n1 == ':' ? 2 : 1;
    case '=':
    case '!':
    case '*':
    case '/':
    case '%':
    case '^': return n1 == '=' ? 2 : 1;
    default: return 1;
  }
}

constexpr int kColon = -1;  // ':' takes its level from the context

// Level of the token at i (the weaker the operator, the higher), kColon for a
// lone ':', 0 for what is not an operator.
int tokenLevel(const char* s, int i, int length) {
  const char c = s[i];
  if (length == 3) {
    if (c == '<' || c == '>') return 170;
    return c == '-' ? 50 : 0;
  }
  if (length == 2) {
    const char d = s[i + 1];
    if (d == '=') {
      if (c == '=' || c == '!') return 90;
      if (c == '<' || c == '>') return 80;
      return 170;
    }
    switch (c) {
      case '|': return 140;
      case '&': return 130;
      case '<':
      case '>': return 70;
      case '-': return d == '>' ? 30 : 20;
      case '.': return 50;
      case '+': return 20;
      case ':': return 10;
      default: return 0;
    }
  }
  switch (c) {
    case ';': return 190;
    case ',': return 180;
    case '=': return 170;
    case '?': return 160;
    case ':': return kColon;
    case '|': return 120;
    case '^': return 110;
    case '&': return 100;
    case '<':
    case '>': return 80;
    case '+':
    case '-': return 65;
    case '*':
    case '/':
    case '%': return 60;
    case '!': return 40;
    case '.': return 30;
    default: return 0;
  }
}

// "!", "?", "++" and "--" replace an operator of their own level, so that
// among them the leftmost wins; every other operator needs a higher level.
inline bool takesEqualLevel(int level) { return level == 40 || level == 160 || level == 20; }

// Whether a chain of operators of this level splits left-deep at each of them
// in turn, whatever the operand's context (':' depends on the father).
inline bool levelChains(int level) { return !takesEqualLevel(level) && level != 150 && level != 165; }

int endOfBlock(const char* s, int from, int limit) { return vnxSyntaxe::SearchEndOfTAPBloc(s, from, limit, 0); }

// Opening offset of the literal or bracket that closer at i ends, never below
// lowest; -1 when there is none. The backward scanners answer 0 both for a
// failure and for an opening at offset 0: the forward scan settles it.
int openingOf(const char* s, int i, int lowest) {
  typedef int (*Scanner)(const char*, int, int);
  Scanner backward = nullptr;
  Scanner forward = nullptr;
  char opener = s[i];
  switch (s[i]) {
    case '"':
      backward = vnxSyntaxe::SearchBeginOfString;
      forward = vnxSyntaxe::SearchEndOfString;
      break;
    case '\'':
      backward = vnxSyntaxe::SearchBeginOfString2;
      forward = vnxSyntaxe::SearchEndOfString2;
      break;
    case ')':
      backward = vnxSyntaxe::SearchBeginOfPar;
      forward = vnxSyntaxe::SearchEndOfPar;
      opener = '(';
      break;
    case ']':
      backward = vnxSyntaxe::SearchBeginOfIndex;
      forward = vnxSyntaxe::SearchEndOfIndex;
      opener = '[';
      break;
    case '}':
      backward = vnxSyntaxe::SearchBeginOfTAPBloc;
      forward = endOfBlock;
      opener = '{';
      break;
    default: return -1;
  }
  const int open = backward(s, i, lowest);
  if (open > 0) return open;
  if (lowest == 0 && s[0] == opener && forward(s, 0, i) == i) return 0;
  return -1;
}

// Token lengths of the run being visited; kept between calls so that a long
// run costs no allocation after the first.
std::vector<unsigned char>& runTokens() {
  static std::vector<unsigned char>* tokens = new std::vector<unsigned char>;
  return *tokens;
}

// Calls visit(pos, length) for every operator token of [begin, from] that
// stands outside literals and brackets, from right to left, until visit
// answers true. end bounds the text for the number test. Answers 1 when visit
// stopped the walk, 0 at its end, -1 when a closing quote or bracket has no
// opening one.
// When given, jumps receives each jump as (opener, closer) and stop the
// closer the walk stopped on.
template <class Visit>
int walkOperators(const char* s, int begin, int from, int end, Visit&& visit,
                  std::vector<std::pair<int, int>>* jumps = nullptr, int* stop = nullptr) {
  std::vector<unsigned char>& lengths = runTokens();
  for (int i = from; i >= begin;) {
    const unsigned char k = walkClass(s[i]);
    if (k == kPlain) {
      // Words and blanks, most of any text, are passed over by the chunk.
      i = vnxtreebytes::skipWordsBackwardInText(s, i - 1, begin, true);
      continue;
    }
    if (k == kCloser) {
      const int open = openingOf(s, i, begin);
      if (open < 0) {
        if (stop) *stop = i;
        return -1;
      }
      if (jumps) jumps->emplace_back(open, i);
      i = open - 1;
      continue;
    }
    if (inNumber(s, begin, end, i)) {
      --i;
      continue;
    }
    int runBegin = i;
    while (runBegin > begin && isOperatorAt(s, begin, end, runBegin - 1)) --runBegin;
    lengths.clear();
    for (int k = runBegin; k <= i;) {
      const int n = tokenLength(s, k, i);
      lengths.push_back(static_cast<unsigned char>(n));
      k += n;
    }
    int pos = i + 1;
    for (auto it = lengths.rbegin(); it != lengths.rend(); ++it) {
      pos -= *it;
      if (visit(pos, static_cast<int>(*it))) return 1;
    }
    i = runBegin - 1;
  }
  return 0;
}

// Whether the text starts with a basic-type word (then a ':' is a bit-field
// width, not an operator).
bool startsWithBasicType(const char* s, int begin, int end) {
  if (begin >= end) return false;
  for (const char* const* word = vnxSyntaxe::basicTypes; *word; ++word) {
    if (s[begin] != (*word)[0]) continue;
    const int n = static_cast<int>(std::strlen(*word));
    if (begin + n > end || std::memcmp(s + begin, *word, static_cast<size_t>(n)) != 0) continue;
    if (begin + n == end || !isWordChar(s[begin + n])) return true;
  }
  return false;
}

// The splitting context of an expression: ':' ranks 165 under a "?", 150
// elsewhere, and is no operator at all in a bit-field declaration. Worked out
// at the first ':' met, since most texts hold none.
class ColonRule {
 public:
  ColonRule(const vnxSyntaxe* father, const char* s, int begin, int end)
      : _father(father), _s(s), _begin(begin), _end(end) {}
  int level(const char* s, int pos, int length) {
    const int level = tokenLevel(s, pos, length);
    if (level != kColon) return level;
    if (_colonLevel < 0) _colonLevel = colonLevel();
    return _colonLevel;
  }

 private:
  int colonLevel() const {
    const char* op = _father && _father->GetType() == vnxSyntaxe::kExpression ? _father->GetOperator() : nullptr;
    if (op && op[0] == '?' && op[1] == '\0') return 165;
    return startsWithBasicType(_s, _begin, _end) ? 0 : 150;
  }

  const vnxSyntaxe* _father;
  const char* _s;
  int _begin;
  int _end;
  int _colonLevel = -1;
};

}  // namespace

int vnxExpression::GetOperatorLevel(const char* op) {
  if (!op || !*op) return 0;
  const int length = static_cast<int>(std::strlen(op));
  if (length > 3 || tokenLength(op, 0, length - 1) != length) return 0;
  const int level = tokenLevel(op, 0, length);
  return level == kColon ? 150 : level;
}

int vnxExpression::findSplit(const char* s, int begin, int end, Split& split) const {
  split = Split();
  if (!s || begin < 0 || end <= begin) return 0;
  ColonRule rule(_father, s, begin, end);
  // Tokens read, and how many of them lie right of the split: the walk reads
  // every token of the text, right to left, so those read after the split
  // are all of its left operand's.
  int tokens = 0;
  int rightOfSplit = 0;
  const int walked = walkOperators(s, begin, end - 1, end, [&](int pos, int length) {
    ++tokens;
    const int level = rule.level(s, pos, length);
    if (level <= 0) return false;
    if (level > split.level || (level == split.level && takesEqualLevel(level))) {
      split.pos = pos;
      split.length = length;
      split.level = level;
      split.nextPos = -1;
      rightOfSplit = tokens - 1;
    } else if (level == split.level && split.nextPos < 0) {
      split.nextPos = pos;
      split.nextLength = length;
    }
    return false;
  });
  if (walked < 0) {
    split = Split();
    return -1;
  }
  if (!levelChains(split.level)) split.nextPos = -1;
  if (split.pos >= 0) {
    split.bareRight = rightOfSplit == 0;
    split.bareLeft = tokens - rightOfSplit == 1;
  }
  return 0;
}

void vnxExpression::chainSplit(const char* s, int begin, const Split& hint, Split& split) const {
  split = Split();
  split.pos = hint.nextPos;
  split.length = hint.nextLength;
  split.level = hint.level;
  // Nothing weaker than this level stands in the text (the father's scan saw
  // it all): the next split is the first operator of the level to the left.
  const int end = hint.nextPos + hint.nextLength;
  ColonRule rule(_father, s, begin, end);
  walkOperators(s, begin, hint.nextPos - 1, end, [&](int pos, int length) {
    if (rule.level(s, pos, length) != hint.level) return false;
    split.nextPos = pos;
    split.nextLength = length;
    return true;
  });
}

bool vnxExpression::leadingSplit(const char* s, int begin, int end, const Split& hint, Split& split) const {
  if (!isOperatorAt(s, begin, end, begin)) return false;
  // A token is at most three characters long: no need to see the run's end.
  int runLast = begin;
  while (runLast < begin + 2 && runLast + 1 < end && isOperatorAt(s, begin, end, runLast + 1)) ++runLast;
  const int length = tokenLength(s, begin, runLast);
  if (tokenLevel(s, begin, length) != hint.level) return false;
  split = Split();
  split.pos = begin;
  split.length = length;
  split.level = hint.level;
  return true;
}

void vnxExpression::walkWordChain(const char* s, int begin, int end, WordChain& chain) {
  chain.begin = begin;
  chain.end = end;
  chain.stop = begin;
  chain.lowestColon = INT_MAX;
  chain.jumps.clear();
  walkOperators(
      s, begin, end - 1, end,
      [&](int pos, int length) {
        if (tokenLevel(s, pos, length) == kColon && pos < chain.lowestColon) chain.lowestColon = pos;
        return false;
      },
      &chain.jumps, &chain.stop);
}

bool vnxExpression::wordChainHolds(const WordChain& chain, const char* s, int begin, int end) {
  // A shorter text of the chain, ending before one of the blanks or groups
  // its shape scan walked over: that scan went through [begin, end) exactly
  // as one of this text alone would.
  if (begin != chain.begin || end <= begin || end >= chain.end) return false;
  const std::vector<int>& blanks = chain.shape.blanks;
  if (!std::binary_search(blanks.begin(), blanks.end(), end)) {
    const std::vector<vnxwords::Group>& groups = chain.shape.groups;
    const auto group = std::lower_bound(groups.begin(), groups.end(), end,
                                        [](const vnxwords::Group& g, int at) { return g.open < at; });
    if (group == groups.end() || group->open != end) return false;
  }
  // The operator scan of this text starts at end - 1: the chain's went
  // through that offset (it did not stop above it nor jump over it), and
  // from there on both read the same characters the same way.
  const int last = end - 1;
  if (last < chain.stop) return false;
  const auto jump = std::lower_bound(chain.jumps.begin(), chain.jumps.end(), last,
                                     [](const std::pair<int, int>& j, int at) { return j.second > at; });
  if (jump != chain.jumps.begin() && std::prev(jump)->first <= last) return false;
  // The only operator the chain's scan read is ':', which splits this text
  // unless it declares a bit-field (its father, a "dc", is no "?").
  return chain.lowestColon >= end || startsWithBasicType(s, begin, end);
}

int vnxExpression::SearchOperator(const char* text, int begin, int end, int& length) {
  Split split;
  findSplit(text, begin, end, split);
  length = split.pos >= 0 ? split.length : 0;
  return split.pos;
}

int vnxExpression::SearchOperator_old(const char* text, int begin, int end, int& length) {
  return SearchOperator(text, begin, end, length);
}

int vnxSyntaxe::ExistLongerOp(const char* text, int begin, int end, int pos, int length) {
  if (!text || length >= 3 || pos < begin || pos >= end) return 0;
  if (!isOperatorAt(text, begin, end, pos)) return 1;
  int runBegin = pos;
  while (runBegin > begin && isOperatorAt(text, begin, end, runBegin - 1)) --runBegin;
  int runLast = pos;
  while (runLast + 1 < end && isOperatorAt(text, begin, end, runLast + 1)) ++runLast;
  for (int k = runBegin; k <= runLast;) {
    const int n = tokenLength(text, k, runLast);
    if (k + n > pos) return k == pos && n == length ? 0 : n;
    k += n;
  }
  return 0;
}
