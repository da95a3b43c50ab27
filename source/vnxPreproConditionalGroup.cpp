#include "vnxPreproConditionalGroup.h"

#include <cstring>
#include <string>

#include "source/vnxDiag.h"
#include "vnxPreproDirectiveConditional.h"
#include "vnxPreproDirectiveDefineSimple.h"
#include "vnxSourceFile.h"
#include "vnxTokenizer.h"
#include "wbStream.h"

namespace {

typedef vnxPreproDirectiveConditional Directive;

// Names that count as defined in every file, whether a define exists or not.
const char* const kAlwaysDefined[] = {"HARBO_CLIENT", "_ZEL_ANSI_STREAMS", "STDMETHOD"};

// Deeper nesting of '!', '(' and '&&'/'||' chains than this gives false.
const int kMaxConditionDepth = 256;

inline bool isIndent(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\f' || c == '\v'; }

bool spells(const vnxToken& token, const char* text) {
  const size_t length = std::strlen(text);
  return token.getLength() == length && std::memcmp(token.getStart(), text, length) == 0;
}

std::string spelling(const vnxToken& token) { return std::string(token.getStart(), token.getLength()); }

const char* sourceName(const vnxSourceFile* source) { return source ? source->GetName() : ""; }

// The object-like define of name visible from source, or null.
vnxPreproDirectiveDefineSimple* objectDefine(vnxSourceFile* source, const vnxToken& name) {
  if (!source) return nullptr;
  vnxZELPreproDirective* define = source->getDefineDirective(spelling(name).c_str());
  if (!define || define->getPreproType() != vnxZELPreproDirective::DefineSimple) return nullptr;
  return static_cast<vnxPreproDirectiveDefineSimple*>(define);
}

// Recursive descent over a condition's tokens, consuming them from the front.
// Each rule takes an evaluate flag: when it is off the rule consumes the same
// tokens but looks nothing up and gives false, which is how && and ||
// short-circuit.
class ConditionEvaluator {
 public:
  ConditionEvaluator(const vnxPreproConditionalGroup& group, const ZELListVal<vnxToken>& tokens)
      : _group(group), _tokens(tokens), _size(tokens.Size()) {}

  int computeConditionO(bool evaluate) {
    if (!enter()) return 0;
    const int n = computeConditionN(evaluate);
    const int andTail = computeConditionA2(evaluate && n);
    int result = evaluate && n && andTail ? 1 : 0;
    const int orTail = computeConditionO2(evaluate && !result);
    if (evaluate && orTail) result = 1;
    leave();
    return evaluate ? result : 0;
  }

  // True once the nesting bound was passed: the whole condition is false.
  bool aborted() const { return _aborted; }

 private:
  int remaining() const { return _size - _next; }
  // The k-th token still to consume (0 is the front).
  const vnxToken& at(int k) const { return _tokens[_next + 1 + k]; }
  int kindAt(int k) const { return at(k).getKind(); }
  void drop(int count) { _next += count; }

  // Bounds the recursion; past the bound every remaining token is consumed
  // and the condition reads as false.
  bool enter() {
    if (++_depth <= kMaxConditionDepth) return true;
    _next = _size;
    _aborted = true;
    --_depth;
    return false;
  }
  void leave() { --_depth; }

  int computeConditionO2(bool evaluate) {
    if (remaining() > 0 && kindAt(0) == vnxToken::kPipePipe) {
      drop(1);
      return computeConditionO(evaluate);
    }
    return 0;
  }

  int computeConditionA(bool evaluate) {
    if (!enter()) return 0;
    const int n = computeConditionN(evaluate);
    int result = 0;
    if (n && evaluate) result = computeConditionA2(true);
    else computeConditionA2(false);
    leave();
    return result;
  }

  int computeConditionA2(bool evaluate) {
    if (remaining() > 0 && kindAt(0) == vnxToken::kAmpAmp) {
      drop(1);
      return computeConditionA(evaluate);
    }
    return 1;
  }

  int computeConditionN(bool evaluate) {
    if (remaining() == 0) {
      emptyCondition("N");
      return 0;
    }
    if (kindAt(0) == vnxToken::kNot) {
      drop(1);
      if (!enter()) return 0;
      const int n = computeConditionN(evaluate);
      leave();
      return 1 - n;
    }
    return computeConditionP(evaluate);
  }

  int computeConditionP(bool evaluate) {
    if (remaining() == 0) {
      emptyCondition("P");
      return 0;
    }
    const int left = remaining();
    const bool isDefined = kindAt(0) == vnxToken::kIdentifier && spells(at(0), "defined");
    if (isDefined && left >= 2 && kindAt(1) == vnxToken::kIdentifier) {
      const int value = evaluate ? _group.isMacroDefined(at(1)) : 0;
      drop(2);
      return value;
    }
    if (isDefined && left >= 4 && kindAt(1) == vnxToken::kOpenParen && kindAt(2) == vnxToken::kIdentifier &&
        kindAt(3) == vnxToken::kCloseParen) {
      const int value = evaluate ? _group.isMacroDefined(at(2)) : 0;
      drop(4);
      return value;
    }
    if (kindAt(0) == vnxToken::kOpenParen && left >= 3) {
      drop(1);
      const int value = computeConditionO(evaluate);
      if (remaining() == 0 || kindAt(0) != vnxToken::kCloseParen) return 0;
      drop(1);
      return value;
    }
    if (left == 1) return lastToken(evaluate);
    if (kindAt(0) == vnxToken::kIdentifier && kindAt(1) == vnxToken::kIdentifier) {
      const int value = evaluate ? sameReplacement(at(0), at(1)) : 0;
      drop(2);
      return value;
    }
    return 0;
  }

  // The literals 0 and 1 and bare names count only as the very last token.
  int lastToken(bool evaluate) {
    const vnxToken& token = at(0);
    if (token.getKind() == vnxToken::kNumber && (spells(token, "0") || spells(token, "1"))) {
      drop(1);
      return spells(token, "1") ? 1 : 0;
    }
    if (token.getKind() != vnxToken::kIdentifier) return 0;
    int value = 0;
    if (evaluate && _group.isMacroDefined(token)) {
      vnxPreproDirectiveDefineSimple* define = objectDefine(_group.getSource(), token);
      value = define && !replacementIsZero(define) ? 1 : 0;
    }
    drop(1);
    return value;
  }

  // Replacements are compared token by token, so that blanks and comments
  // around them do not matter. A define without replacement is not "0".
  static bool replacementIsZero(vnxPreproDirectiveDefineSimple* define) {
    ZELListVal<vnxToken> replacement;
    define->getReplacementTokenList(replacement);
    return replacement.Size() == 1 && spells(replacement[1], "0");
  }

  // "A B": true when A is defined and its replacement spells the same as B's
  // object-like replacement, or as B itself when B has none.
  int sameReplacement(const vnxToken& first, const vnxToken& second) const {
    if (!_group.isMacroDefined(first) || !_group.getSource()) return 0;
    vnxZELPreproDirective* define = _group.getSource()->getDefineDirective(spelling(first).c_str());
    if (!define || (define->getPreproType() != vnxZELPreproDirective::DefineSimple &&
                    define->getPreproType() != vnxZELPreproDirective::DefineFunction)) {
      return 0;
    }
    ZELListVal<vnxToken> left;
    static_cast<vnxPreproDirectiveDefineSimple*>(define)->getReplacementTokenList(left);
    ZELListVal<vnxToken> right;
    if (vnxPreproDirectiveDefineSimple* other = objectDefine(_group.getSource(), second)) {
      other->getReplacementTokenList(right);
    } else {
      right.Append(second);
    }
    return left == right ? 1 : 0;
  }

  void emptyCondition(const char* rule) const {
    vnxdiag::error(ZELString("Problem in ") + rule +
                   " condition in conditional preprocessing directive in source " + sourceName(_group.getSource()));
    vnxdiag::error("\tEmpty condition.");
  }

  const vnxPreproConditionalGroup& _group;
  const ZELListVal<vnxToken>& _tokens;
  const int _size;
  int _next = 0;  // tokens consumed so far
  int _depth = 0;
  bool _aborted = false;
};

}  // namespace

// --- life cycle ------------------------------------------------------------------

vnxPreproConditionalGroup::vnxPreproConditionalGroup(vnxSourceFile* source) : _source(source) {}

vnxPreproConditionalGroup::~vnxPreproConditionalGroup() {
  for (int k = 1; k <= _directives.Size(); ++k) _directives[k]->Release();
  _directives.RemoveAll();
  _succeedingDirective = nullptr;
}

vnxPreproConditionalGroup* vnxPreproConditionalGroup::create(vnxSourceFile* source, const char* text, int pos,
                                                             int line, int col, int outPos) {
  if (!text || pos < 0 || line < 1 || col < 1 || outPos < 0) return nullptr;
  vnxPreproConditionalGroup* group = new vnxPreproConditionalGroup(source);
  if (group->buildDirectives(text, pos, line, col, outPos) != 0 || group->computeSucceedingDirective() != 0) {
    group->Release();
    return nullptr;
  }
  return group;
}

// Reads directive after directive, each one starting on the line after the
// previous one's branch, until the #endif.
int vnxPreproConditionalGroup::buildDirectives(const char* text, int pos, int line, int col, int outPos) {
  _beginGroupPos = static_cast<unsigned int>(pos);
  _beginGroupLine = static_cast<unsigned int>(line);
  _beginGroupCol = static_cast<unsigned int>(col);
  bool closed = false;
  for (;;) {
    Directive* directive = Directive::create(_source);
    if (!directive) break;
    if (directive->build(text, pos, line, col, outPos) != 0) {
      directive->Release();
      break;
    }
    _directives.Append(directive);
    _count = _directives.Size();
    if (directive->getConditionalDirectiveType() == Directive::Endif) {
      directive->getEndTextInRawStream(_endGroupPos, _endGroupLine, _endGroupCol);
      closed = true;
      break;
    }
    // A branch ends with the newline before the next directive's line.
    pos = static_cast<int>(directive->getEndTextPosInRawStream()) + 1;
    line = static_cast<int>(directive->getEndTextLineInRawStream()) + 1;
    col = 1;
    while (isIndent(text[pos])) {
      ++pos;
      ++col;
    }
  }
  if (closed) return 0;
  // A line whose word is no conditional keyword at all (an "#endregion", say)
  // opens no group, so nothing is missing.
  if (_count > 0 || Directive::getConditionalTypeAt(text, static_cast<int>(_beginGroupPos)) != Directive::NotConditional) {
    vnxdiag::error(ZELString("Missing #endif directive for begin in line ") + toString(static_cast<int>(_beginGroupLine)) +
                   " in source " + sourceName(_source));
  }
  return 1;
}

int vnxPreproConditionalGroup::computeSucceedingDirective() {
  _succeedingDirective = nullptr;
  if (_directives.Size() == 0) return -1;
  Directive* first = _directives[1];
  const ZELListVal<vnxToken>& condition = first->_controlCondition;
  switch (first->getConditionalDirectiveType()) {
    case Directive::Ifdef:
    case Directive::Ifndef: {
      if (condition.Size() != 1) return -1;
      const int defined = isMacroDefined(condition[1]);
      const bool wanted = first->getConditionalDirectiveType() == Directive::Ifdef;
      if ((defined != 0) == wanted) {
        _succeedingDirective = first;
        return 0;
      }
      break;
    }
    case Directive::If:
      if (computeCondition(condition, first->getBeginLineInRawStream())) {
        _succeedingDirective = first;
        return 0;
      }
      break;
    default:
      break;
  }
  for (int k = 2; k < _directives.Size(); ++k) {
    Directive* directive = _directives[k];
    const Directive::vnxPreproConditionalType type = directive->getConditionalDirectiveType();
    if (type == Directive::Else) {
      _succeedingDirective = directive;
      return 0;
    }
    if (type == Directive::Elif) {
      if (computeCondition(directive->_controlCondition, directive->getBeginLineInRawStream())) {
        _succeedingDirective = directive;
        return 0;
      }
    }
  }
  return 0;
}

// --- evaluation ------------------------------------------------------------------

int vnxPreproConditionalGroup::computeCondition(const ZELListVal<vnxToken>& condition, unsigned int line) const {
  if (condition.Size() == 0) {
    vnxdiag::error(ZELString("Missing condition in conditional preprocessing directive beginning line ") +
                   toString(static_cast<int>(line)) + " in source " + sourceName(_source));
    return 0;
  }
  ConditionEvaluator evaluator(*this, condition);
  const int value = evaluator.computeConditionO(true);
  return evaluator.aborted() ? 0 : value;
}

int vnxPreproConditionalGroup::isMacroDefined(const vnxToken& name) const {
  if (!name.getStart() || name.getLength() == 0) return 0;
  for (const char* always : kAlwaysDefined) {
    if (spells(name, always)) return 1;
  }
  if (!_source) return 0;
  vnxZELPreproDirective* define = _source->getDefineDirective(spelling(name).c_str());
  if (!define) return 0;
  const vnxZELPreproDirective::vnxPreproType type = define->getPreproType();
  return type == vnxZELPreproDirective::DefineSimple || type == vnxZELPreproDirective::DefineFunction ? 1 : 0;
}

// --- access and dump -------------------------------------------------------------

void vnxPreproConditionalGroup::getConditionalDirectives(ZELListPtr<vnxPreproDirectiveConditional>& out) const {
  for (int k = 1; k <= _directives.Size(); ++k) {
    _directives[k]->AddRef();
    out.Append(_directives[k]);
  }
}

void vnxPreproConditionalGroup::dump() const {
  wbStdout << "************* Groupe de directives ***************" << endl;
  for (int k = 1; k <= _directives.Size(); ++k) _directives[k]->dump();
  wbStdout << "************* Fin groupe de directives ***************" << endl;
}
