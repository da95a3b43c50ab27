#include "vnxPreproDirectiveConditional.h"

#include <cstring>

#include "lexer/vnxCharClass.h"
#include "platform/TAPool.h"
#include "vnxTokenizer.h"
#include "wbStream.h"

namespace {

TAPool<vnxPreproDirectiveConditional> gConditionalPool;

// A place in the text: offset, and the line and column of the character there.
struct Cursor {
  int k;
  unsigned int line;
  unsigned int col;

  void step(const char* text) {
    if (text[k] == '\n') {
      ++line;
      col = 1;
    } else {
      ++col;
    }
    ++k;
  }
};

// What may stand before the '#' of a directive line.
inline bool isIndent(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\f' || c == '\v'; }
using vnxchar::isIdentBody;
using vnxchar::isIdentHead;

// A backslash-newline pair (a carriage return may stand between them) at k:
// its length, 0 when there is none.
inline int continuationAt(const char* text, int k) {
  if (text[k] != '\\') return 0;
  int n = 1;
  while (text[k + n] == '\r') ++n;
  return text[k + n] == '\n' ? n + 1 : 0;
}

typedef vnxPreproDirectiveConditional::vnxPreproConditionalType ConditionalType;

ConditionalType keywordType(const char* word, size_t length) {
  struct Keyword {
    const char* text;
    ConditionalType type;
  };
  static const Keyword kKeywords[] = {{"if", vnxPreproDirectiveConditional::If},
                                      {"ifdef", vnxPreproDirectiveConditional::Ifdef},
                                      {"ifndef", vnxPreproDirectiveConditional::Ifndef},
                                      {"elif", vnxPreproDirectiveConditional::Elif},
                                      {"else", vnxPreproDirectiveConditional::Else},
                                      {"endif", vnxPreproDirectiveConditional::Endif}};
  for (const Keyword& keyword : kKeywords) {
    if (std::strlen(keyword.text) == length && std::memcmp(keyword.text, word, length) == 0) return keyword.type;
  }
  return vnxPreproDirectiveConditional::NotConditional;
}

// The conditional keyword of a line whose first non-blank character is the
// '#' at k ('#', blanks, the word); NotConditional for any other line.
ConditionalType directiveKeywordAt(const char* text, int k) {
  if (text[k] != '#') return vnxPreproDirectiveConditional::NotConditional;
  ++k;
  while (text[k] == ' ' || text[k] == '\t') ++k;
  int end = k;
  while (isIdentBody(text[end])) ++end;
  if (end == k || !isIdentHead(text[k])) return vnxPreproDirectiveConditional::NotConditional;
  return keywordType(text + k, static_cast<size_t>(end - k));
}

// Walks the logical lines of a text. Block comments may span lines (their
// newlines count as lines, and the text after them does not start a new
// line); string and character literals end at their quote or at the end of
// their line; backslash-newline continues a line.
class LineWalker {
 public:
  explicit LineWalker(const char* text) : _text(text) {}

  // Moves c to the newline that ends the logical line c is on, or to the
  // NUL. When the text ends right after a continuation, continued (if given)
  // receives the place of its backslash; otherwise its k is set to -1.
  void toLineEnd(Cursor& c, Cursor* continued = nullptr) {
    const char* t = _text;
    Cursor backslash{-1, 0, 0};
    bool justContinued = false;
    for (;;) {
      const char ch = t[c.k];
      if (ch == '\0' || ch == '\n') break;
      if (const int n = continuationAt(t, c.k)) {
        backslash = c;
        for (int i = 0; i < n; ++i) c.step(t);
        justContinued = true;
        continue;
      }
      justContinued = false;
      if (ch == '/' && t[c.k + 1] == '*' && skipBlockComment(c)) continue;
      if (ch == '/' && t[c.k + 1] == '/') {
        skipLineComment(c);
        break;
      }
      if (ch == '"' || ch == '\'') {
        skipLiteral(c);
        continue;
      }
      c.step(t);
    }
    if (continued) {
      continued->k = -1;
      if (justContinued && t[c.k] == '\0') *continued = backslash;
    }
  }

 private:
  // Steps over a block comment; false (nothing moved) when it is not closed
  // before the end of the text, in which case its "/*" is ordinary text.
  bool skipBlockComment(Cursor& c) {
    if (_noBlockCommentEnd) return false;
    // "/*/" closes already: the end is the first '/' after a '*' from the
    // comment's third character on.
    const char* end = nullptr;
    for (const char* p = _text + c.k + 2; (p = std::strchr(p, '/')) != nullptr; ++p) {
      if (p[-1] == '*') {
        end = p;
        break;
      }
    }
    if (!end) {
      // No later comment can be closed either: remember it, so that a text
      // full of unclosed openers stays linear.
      _noBlockCommentEnd = true;
      return false;
    }
    while (_text + c.k <= end) c.step(_text);
    return true;
  }

  // Moves c to the newline that ends a line comment (continuations belong
  // to it), or to the NUL.
  void skipLineComment(Cursor& c) {
    for (;;) {
      const char ch = _text[c.k];
      if (ch == '\0') return;
      if (const int n = continuationAt(_text, c.k)) {
        for (int i = 0; i < n; ++i) c.step(_text);
        continue;
      }
      if (ch == '\n') return;
      c.step(_text);
    }
  }

  void skipLiteral(Cursor& c) {
    const char quote = _text[c.k];
    c.step(_text);
    for (;;) {
      const char ch = _text[c.k];
      if (ch == '\0' || ch == '\n') return;
      if (const int n = continuationAt(_text, c.k)) {
        for (int i = 0; i < n; ++i) c.step(_text);
        continue;
      }
      if (ch == '\\') {
        c.step(_text);
        if (_text[c.k] != '\0' && _text[c.k] != '\n') c.step(_text);
        continue;
      }
      c.step(_text);
      if (ch == quote) return;
    }
  }

  const char* _text;
  bool _noBlockCommentEnd = false;
};

}  // namespace

// --- pool and life cycle ---------------------------------------------------------

vnxPreproDirectiveConditional::vnxPreproDirectiveConditional(vnxSourceFile* source) : vnxZELPreproDirective(source) {
  _preproType = Conditional;
}

vnxPreproDirectiveConditional::~vnxPreproDirectiveConditional() = default;

vnxPreproDirectiveConditional* vnxPreproDirectiveConditional::create(vnxSourceFile* source) {
  void* block = nullptr;
  vnxPreproDirectiveConditional* directive = gConditionalPool.getNew(&block, source);
  if (directive) directive->_poolBlock = block;
  return directive;
}

int vnxPreproDirectiveConditional::getPoolLiveCount() { return gConditionalPool.liveCount(); }
int vnxPreproDirectiveConditional::getPoolBlockCount() { return gConditionalPool.blockCount(); }

vnxPreproDirectiveConditional::vnxPreproConditionalType vnxPreproDirectiveConditional::getConditionalTypeAt(
    const char* text, int pos) {
  if (!text || pos < 0) return NotConditional;
  return directiveKeywordAt(text, pos);
}

int vnxPreproDirectiveConditional::Release() {
  const int count = dropReference();
  if (count == 0) gConditionalPool.release(this, _poolBlock);
  return count;
}

const char* vnxPreproDirectiveConditional::IsA() const { return "vnxPreproDirectiveConditional"; }

// --- building ----------------------------------------------------------------------

int vnxPreproDirectiveConditional::build(const char* text, int pos, int line, int col, int outPos) {
  if (vnxZELPreproDirective::build(text, pos, line, col, outPos) != 0) return 1;
  _preproType = Conditional;
  return buildConditional(text);
}

int vnxPreproDirectiveConditional::buildConditional(const char* text) {
  _controlCondition.RemoveAll();
  _preproConditionalType = NotConditional;
  _emptyText = 1;
  _beginTextPos = _endTextPos = 0;
  _beginTextLine = _endTextLine = 0;
  _beginTextCol = _endTextCol = 0;
  if (!text || !_preproString) return 1;
  int keywordEnd = 0;
  if (readKeywordAndCondition(keywordEnd) != 0) return 1;
  return _preproConditionalType == Endif ? findEndifLineEnd(text, keywordEnd) : findBranch(text);
}

// The keyword decides the type; the tokens after it, up to the end of the
// (continued) line, are the condition. The tokens point into the directive's
// own copy of its text.
int vnxPreproDirectiveConditional::readKeywordAndCondition(int& keywordEnd) {
  vnxTokenizer tokenizer(_preproString, static_cast<unsigned int>(_preproStringSize));
  vnxTokenIterator it = tokenizer.getTokenIterator();
  vnxToken token;
  if (!it.getNextToken(token) || token.getKind() != vnxToken::kHash) return 1;
  if (!it.getNextToken(token) || token.getKind() != vnxToken::kIdentifier) return 1;
  _preproConditionalType = keywordType(token.getStart(), token.getLength());
  if (_preproConditionalType == NotConditional) return 1;
  keywordEnd = static_cast<int>(token.getStart() - _preproString + token.getLength());

  while (it.getNextToken(token)) {
    const int kind = token.getKind();
    if (kind == vnxToken::kBlockComment || kind == vnxToken::kLineComment) continue;
    if (kind == vnxToken::kNewline) break;
    if (kind == vnxToken::kUnknown && token.getStart()[0] == '\\') {
      // A backslash that ends its line continues the condition on the next one.
      vnxTokenIterator peek = it;
      vnxToken next;
      if (peek.getNextToken(next) && next.getKind() == vnxToken::kNewline) {
        it = peek;
        continue;
      }
    }
    _controlCondition.Append(token);
  }
  return 0;
}

namespace {

// The place of the character after the directive's last one; false when the
// directive ran to the end of the text.
bool placeAfterDirective(const char* text, int last, unsigned int line, unsigned int col, Cursor& c) {
  if (text[last] == '\0') return false;
  c = Cursor{last, line, col};
  c.step(text);
  return true;
}

}  // namespace

// The branch runs from the line after the directive to the newline before the
// next #elif, #else or #endif of the same level; nested #if/#ifdef/#ifndef
// ... #endif groups inside it are stepped over.
int vnxPreproDirectiveConditional::findBranch(const char* text) {
  const int last = _beginPos + _preproStringSize - 1;
  Cursor c{0, 0, 0};
  if (_preproStringSize <= 0 || !placeAfterDirective(text, last, _endLine, _endCol, c)) return 1;
  LineWalker walker(text);
  walker.toLineEnd(c);  // a line comment after the directive
  if (text[c.k] == '\0') return 1;
  Cursor lastNewline = c;
  c.step(text);
  const Cursor begin = c;
  int nesting = 0;
  for (;;) {
    while (isIndent(text[c.k])) c.step(text);
    const ConditionalType type = directiveKeywordAt(text, c.k);
    if (type == If || type == Ifdef || type == Ifndef) {
      ++nesting;
    } else if (type == Endif && nesting > 0) {
      --nesting;
    } else if ((type == Elif || type == Else || type == Endif) && nesting == 0) {
      break;
    }
    walker.toLineEnd(c);
    if (text[c.k] == '\0') return 1;
    lastNewline = c;
    c.step(text);
  }
  _beginTextPos = static_cast<unsigned int>(begin.k);
  _beginTextLine = begin.line;
  _beginTextCol = begin.col;
  _endTextPos = static_cast<unsigned int>(lastNewline.k);
  _endTextLine = lastNewline.line;
  _endTextCol = lastNewline.col;
  _emptyText = lastNewline.k < begin.k ? 1 : 0;
  return 0;
}

// An #endif opens no branch; its "text" is the rest of its line after the
// keyword, up to the newline that ends the line (or the end of the text). A
// continuation with nothing after it leaves the end on its backslash, so
// that the newline it escapes is not taken for a missing one.
int vnxPreproDirectiveConditional::findEndifLineEnd(const char* text, int keywordOffset) {
  Cursor keywordEnd{_beginPos, _beginLine, _beginCol};
  while (keywordEnd.k < _beginPos + keywordOffset && text[keywordEnd.k] != '\0') keywordEnd.step(text);

  LineWalker walker(text);
  Cursor c = keywordEnd;
  Cursor continued{-1, 0, 0};
  walker.toLineEnd(c, &continued);
  const int last = _beginPos + _preproStringSize - 1;
  if (c.k < last) {
    // The directive itself ran further (a literal left open across lines).
    continued.k = -1;
    if (placeAfterDirective(text, last, _endLine, _endCol, c)) walker.toLineEnd(c, &continued);
    else c = Cursor{last, _endLine, _endCol};
  }
  if (continued.k >= 0) c = continued;

  _beginTextPos = static_cast<unsigned int>(keywordEnd.k);
  _beginTextLine = keywordEnd.line;
  _beginTextCol = keywordEnd.col;
  _endTextPos = static_cast<unsigned int>(c.k);
  _endTextLine = c.line;
  _endTextCol = c.col;
  _emptyText = 1;
  return 0;
}

// --- queries ---------------------------------------------------------------------

void vnxPreproDirectiveConditional::getControlCondition(ZELListVal<vnxToken>& condition) const {
  condition.Append(_controlCondition);
}

void vnxPreproDirectiveConditional::getBeginTextInRawStream(unsigned int& pos, unsigned int& line,
                                                            unsigned int& col) const {
  pos = _beginTextPos;
  line = _beginTextLine;
  col = _beginTextCol;
}

void vnxPreproDirectiveConditional::getEndTextInRawStream(unsigned int& pos, unsigned int& line,
                                                          unsigned int& col) const {
  pos = _endTextPos;
  line = _endTextLine;
  col = _endTextCol;
}

void vnxPreproDirectiveConditional::dump() {
  vnxZELPreproDirective::dump();
  wbStdout << "   type:" << static_cast<int>(_preproConditionalType) << endl;
  wbStdout << "   control condition:";
  for (int k = 1; k <= _controlCondition.Size(); ++k) {
    const vnxToken& token = _controlCondition[k];
    wbStdout << ' ';
    for (unsigned int i = 0; i < token.getLength(); ++i) wbStdout << token.getStart()[i];
  }
  wbStdout << endl;
  wbStdout << "   Debut. Pos:" << _beginTextPos << " Line:" << _beginTextLine << " Col:" << _beginTextCol << endl;
  wbStdout << "   Fin. Pos:" << _endTextPos << " Line:" << _endTextLine << " Col:" << _endTextCol << endl;
}
