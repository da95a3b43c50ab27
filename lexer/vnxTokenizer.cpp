#include "vnxTokenizer.h"

#include <cstddef>
#include <cstring>

#include "lexer/vnxCharClass.h"

// Every scanner below works on the buffer in place. The buffer is
// NUL-terminated and holds no NUL before the size (the constructors clip the
// size at the first NUL), so a character at an offset below the size, or the
// one right after a non-NUL character, may always be read.

namespace {

using vnxchar::isBlank;
using vnxchar::isDigit;
using vnxchar::isIdentBody;
using vnxchar::isIdentHead;

// Length and kind of the token found at some offset.
struct Lexeme {
  unsigned int length;
  int kind;
};

constexpr Lexeme kUnknownChar = {1, vnxToken::kUnknown};

// What the scanners of one call share: the buffer, its size, and the
// tokenizer's record of end searches already known to fail.
struct ScanContext {
  const char* text;
  size_t size;
  unsigned int* failedFrom;

  bool knownToFail(int search, size_t from) const { return from >= failedFrom[search]; }
  Lexeme fail(int search, size_t from) const {
    if (from < failedFrom[search]) failedFrom[search] = static_cast<unsigned int>(from);
    return kUnknownChar;
  }
};

// The end searches whose failures the tokenizer remembers.
enum { kStringEnd, kCharacterEnd, kLineCommentEnd, kBlockCommentEnd, kNumberEnd, kEndSearchCount };

Lexeme lexeme(size_t length, int kind) { return Lexeme{static_cast<unsigned int>(length), kind}; }

// Operators spelled with the characters ! % & * + - < = > ^ | : and '.'; the
// longest spelling wins, looking at most two characters ahead.
Lexeme scanOperator(const char* p) {
  const char next = p[1];
  switch (p[0]) {
    case '!': return next == '=' ? lexeme(2, vnxToken::kNotEqual) : lexeme(1, vnxToken::kNot);
    case '%': return next == '=' ? lexeme(2, vnxToken::kPercentAssign) : lexeme(1, vnxToken::kPercent);
    case '*': return next == '=' ? lexeme(2, vnxToken::kStarAssign) : lexeme(1, vnxToken::kStar);
    case '=': return next == '=' ? lexeme(2, vnxToken::kEqualEqual) : lexeme(1, vnxToken::kAssign);
    case '^': return next == '=' ? lexeme(2, vnxToken::kCaretAssign) : lexeme(1, vnxToken::kCaret);
    case '&':
      if (next == '&') return lexeme(2, vnxToken::kAmpAmp);
      return next == '=' ? lexeme(2, vnxToken::kAmpAssign) : lexeme(1, vnxToken::kAmp);
    case '|':
      if (next == '|') return lexeme(2, vnxToken::kPipePipe);
      return next == '=' ? lexeme(2, vnxToken::kPipeAssign) : lexeme(1, vnxToken::kPipe);
    case '+':
      if (next == '+') return lexeme(2, vnxToken::kPlusPlus);
      return next == '=' ? lexeme(2, vnxToken::kPlusAssign) : lexeme(1, vnxToken::kPlus);
    case '-':
      if (next == '-') return lexeme(2, vnxToken::kMinusMinus);
      if (next == '=') return lexeme(2, vnxToken::kMinusAssign);
      if (next == '>') return p[2] == '*' ? lexeme(3, vnxToken::kArrowStar) : lexeme(2, vnxToken::kArrow);
      return lexeme(1, vnxToken::kMinus);
    case '<':
    case '>':
      // "<=" and ">=", "<<" and ">>", "<<=" and ">>=" share their kinds.
      if (next == p[0]) return p[2] == '=' ? lexeme(3, vnxToken::kShiftAssign) : lexeme(2, vnxToken::kShift);
      if (next == '=') return lexeme(2, vnxToken::kLessGreaterEqual);
      return lexeme(1, p[0] == '<' ? vnxToken::kLess : vnxToken::kGreater);
    case ':':
      if (next != ':') return kUnknownChar;
      return p[2] == '*' ? lexeme(3, vnxToken::kColonColonStar) : lexeme(2, vnxToken::kColonColon);
    case '.':
      // A lone '.' is no token of its own, so "1.5" reads as 1 . 5.
      if (next == '*') return lexeme(2, vnxToken::kDotStar);
      if (next == '.' && p[2] == '.') return lexeme(3, vnxToken::kEllipsis);
      return kUnknownChar;
    default:
      return kUnknownChar;
  }
}

// "##" only when the offset the caller asked for leaves room for two
// characters; the blanks skipped before the '#' are not counted.
Lexeme scanHash(const char* p, size_t cursor, size_t size) {
  if (p[1] == '#' && cursor + 1 < size) return lexeme(2, vnxToken::kHashHash);
  return lexeme(1, vnxToken::kHash);
}

// A double-quoted string. A quote closes it when an even number of
// backslashes precedes it; skipping the character after each backslash
// counts them implicitly.
Lexeme scanString(const ScanContext& ctx, size_t pos) {
  const size_t from = pos + 1;
  if (ctx.knownToFail(kStringEnd, from)) return kUnknownChar;
  size_t i = from;
  while (i < ctx.size) {
    const char c = ctx.text[i];
    if (c == '"') return lexeme(i - pos + 1, vnxToken::kString);
    i += c == '\\' ? 2 : 1;
  }
  return ctx.fail(kStringEnd, from);
}

// A character literal: 'x', or a backslash escape running to the next quote
// after the escaped character (so '\'' is one literal). The escape form is
// not clipped at the size, like identifiers.
Lexeme scanCharacter(const ScanContext& ctx, size_t pos) {
  const char* p = ctx.text + pos;
  if (p[1] == '\0') return kUnknownChar;
  if (p[1] != '\\') return p[2] == '\'' ? lexeme(3, vnxToken::kCharacter) : kUnknownChar;
  if (p[2] == '\0') return kUnknownChar;
  const size_t from = pos + 3;
  if (ctx.knownToFail(kCharacterEnd, from)) return kUnknownChar;
  const char* quote = std::strchr(ctx.text + from, '\'');
  if (!quote) return ctx.fail(kCharacterEnd, from);
  return lexeme(static_cast<size_t>(quote - p) + 1, vnxToken::kCharacter);
}

// A line comment ends with the first newline not preceded by a backslash
// (continued lines belong to it). A comment left open on the last line is
// rejected, except a bare "//" at the very end.
Lexeme scanLineComment(const ScanContext& ctx, size_t pos) {
  if (ctx.text[pos + 2] == '\0') return lexeme(2, vnxToken::kLineComment);
  const size_t from = pos + 2;
  if (ctx.knownToFail(kLineCommentEnd, from)) return kUnknownChar;
  size_t i = from;
  while (i < ctx.size) {
    const void* found = std::memchr(ctx.text + i, '\n', ctx.size - i);
    if (!found) break;
    i = static_cast<size_t>(static_cast<const char*>(found) - ctx.text);
    if (ctx.text[i - 1] != '\\') return lexeme(i - pos + 1, vnxToken::kLineComment);
    ++i;
  }
  return ctx.fail(kLineCommentEnd, from);
}

// A block comment ends at the first '/' preceded by '*' from its third
// character on, so "/*/" is already complete.
Lexeme scanBlockComment(const ScanContext& ctx, size_t pos) {
  const size_t from = pos + 2;
  if (ctx.knownToFail(kBlockCommentEnd, from)) return kUnknownChar;
  size_t i = from;
  while (i < ctx.size) {
    const void* found = std::memchr(ctx.text + i, '/', ctx.size - i);
    if (!found) break;
    i = static_cast<size_t>(static_cast<const char*>(found) - ctx.text);
    if (ctx.text[i - 1] == '*') return lexeme(i - pos + 1, vnxToken::kBlockComment);
    ++i;
  }
  return ctx.fail(kBlockCommentEnd, from);
}

Lexeme scanSlash(const ScanContext& ctx, size_t pos) {
  const char next = ctx.text[pos + 1];
  if (next == '/') return scanLineComment(ctx, pos);
  if (next == '*') {
    // After a backslash, "/*" is not taken as a comment opener.
    const bool escaped = pos > 0 && ctx.text[pos - 1] == '\\';
    return escaped ? lexeme(1, vnxToken::kSlash) : scanBlockComment(ctx, pos);
  }
  return next == '=' ? lexeme(2, vnxToken::kSlashAssign) : lexeme(1, vnxToken::kSlash);
}

// Letters, digits and underscores; not clipped at the size.
Lexeme scanIdentifier(const char* p) {
  size_t n = 1;
  while (isIdentBody(p[n])) ++n;
  return lexeme(n, vnxToken::kIdentifier);
}

// Decimal digits and at most one suffix letter u, U, l or L; a number that
// would end beyond the size is rejected.
Lexeme scanNumber(const ScanContext& ctx, size_t pos) {
  if (ctx.knownToFail(kNumberEnd, pos)) return kUnknownChar;
  size_t end = pos;
  while (end < ctx.size && isDigit(ctx.text[end])) ++end;
  // Reading text[size] is safe: it is at worst the terminating NUL.
  if (end == ctx.size && isDigit(ctx.text[end])) return ctx.fail(kNumberEnd, pos);
  const char suffix = ctx.text[end];
  if (suffix == 'u' || suffix == 'U' || suffix == 'l' || suffix == 'L') ++end;
  if (end > ctx.size) return ctx.fail(kNumberEnd, pos);
  return lexeme(end - pos, vnxToken::kNumber);
}

// The token at pos (a non-blank, non-NUL character); cursor is the offset the
// caller asked for.
Lexeme scanToken(const ScanContext& ctx, size_t pos, size_t cursor) {
  const char* p = ctx.text + pos;
  switch (*p) {
    case ',': return lexeme(1, vnxToken::kComma);
    case '{': return lexeme(1, vnxToken::kOpenBrace);
    case '(': return lexeme(1, vnxToken::kOpenParen);
    case '[': return lexeme(1, vnxToken::kOpenBracket);
    case '}': return lexeme(1, vnxToken::kCloseBrace);
    case ')': return lexeme(1, vnxToken::kCloseParen);
    case ']': return lexeme(1, vnxToken::kCloseBracket);
    case ';': return lexeme(1, vnxToken::kSemicolon);
    case '~': return lexeme(1, vnxToken::kTilde);
    case '\n': return lexeme(1, vnxToken::kNewline);
    case '#': return scanHash(p, cursor, ctx.size);
    case '"': return scanString(ctx, pos);
    case '\'': return scanCharacter(ctx, pos);
    case '/': return scanSlash(ctx, pos);
    case '!': case '%': case '&': case '*': case '+': case '-': case '<':
    case '=': case '>': case '^': case '|': case ':': case '.':
      return scanOperator(p);
    default:
      if (isIdentHead(*p)) return scanIdentifier(p);
      if (isDigit(*p)) return scanNumber(ctx, pos);
      return kUnknownChar;
  }
}

// Characters before the first NUL, at most limit.
unsigned int clippedLength(const char* text, unsigned int limit) {
  unsigned int n = 0;
  while (n < limit && text[n] != '\0') ++n;
  return n;
}

}  // namespace

vnxTokenizer::vnxTokenizer(const char* text) : vnxTokenizer(text, ~0u) {}

vnxTokenizer::vnxTokenizer(const char* text, unsigned int size)
    : _text(text), _size(text ? clippedLength(text, size) : 0) {
  static_assert(sizeof(_failedEndSearchFrom) == kEndSearchCount * sizeof(_failedEndSearchFrom[0]),
                "one remembered failure per end search");
  for (unsigned int& from : _failedEndSearchFrom) from = ~0u;
}

vnxTokenizer::~vnxTokenizer() {
  _text = nullptr;
  _size = 0;
}

vnxTokenIterator vnxTokenizer::getTokenIterator() { return vnxTokenIterator(this); }

vnxToken vnxTokenizer::getTokenAtCursor(unsigned int cursor, int& tokenPosition) const {
  if (!_text || cursor >= _size) return vnxToken();
  // Blanks may run past the size: the token after them is still looked at.
  size_t pos = cursor;
  while (isBlank(_text[pos])) ++pos;
  tokenPosition = static_cast<int>(pos);
  if (_text[pos] == '\0') return vnxToken();
  const ScanContext ctx{_text, _size, _failedEndSearchFrom};
  const Lexeme found = scanToken(ctx, pos, cursor);
  return vnxToken(_text + pos, found.length, found.kind);
}
