// vnxToken: one token of a tokenized buffer, as a view (start, length) into
// that buffer plus a kind number. The token owns nothing: the buffer must
// outlive it. Two tokens compare equal when they spell the same characters;
// their kinds are not compared. The null token (null start, length 0, kind
// kUnknown) marks the end of a buffer.
#ifndef VNX_TOKEN_H
#define VNX_TOKEN_H

#include "vnxExport.h"

class VNX_EXPORT vnxToken {
 public:
  // Token kinds. The values are fixed: callers store and compare plain integers.
  // kLessGreaterEqual, kShift and kShiftAssign each stand for two spellings
  // ("<=" and ">=", "<<" and ">>", "<<=" and ">>="); look at the characters to
  // tell them apart. kFree30, kFree41 and kFree42 are never produced.
  enum Kind {
    kComma = 0,             // ,
    kOpenBrace = 1,         // {
    kOpenParen = 2,         // (
    kOpenBracket = 3,       // [
    kCloseBrace = 4,        // }
    kCloseParen = 5,        // )
    kCloseBracket = 6,      // ]
    kSemicolon = 7,         // ;
    kNot = 8,               // !
    kTilde = 9,             // ~
    kPlus = 10,             // +
    kMinus = 11,            // -
    kStar = 12,             // *
    kSlash = 13,            // /
    kPercent = 14,          // %
    kAmp = 15,              // &
    kPipe = 16,             // |
    kCaret = 17,            // ^
    kAssign = 18,           // =
    kLess = 19,             // <
    kGreater = 20,          // >
    kAmpAmp = 21,           // &&
    kAmpAssign = 22,        // &=
    kPipeAssign = 23,       // |=
    kCaretAssign = 24,      // ^=
    kSlashAssign = 25,      // /=
    kDotStar = 26,          // .*
    kEllipsis = 27,         // ...
    kEqualEqual = 28,       // ==
    kLessGreaterEqual = 29, // <= and >=
    kFree30 = 30,
    kMinusAssign = 31,      // -=
    kMinusMinus = 32,       // --
    kPercentAssign = 33,    // %=
    kNotEqual = 34,         // !=
    kPipePipe = 35,         // ||
    kPlusAssign = 36,       // +=
    kPlusPlus = 37,         // ++
    kArrow = 38,            // ->
    kArrowStar = 39,        // ->*
    kColonColon = 40,       // ::
    kFree41 = 41,
    kFree42 = 42,
    kShift = 43,            // << and >>
    kShiftAssign = 44,      // <<= and >>=
    kStarAssign = 45,       // *=
    kColonColonStar = 46,   // ::*
    kIdentifier = 47,
    kString = 48,           // "...", quotes included
    kCharacter = 49,        // '...', quotes included
    kHashHash = 50,         // ##
    kHash = 51,             // #
    kNewline = 52,          // one '\n'
    kBlockComment = 53,     // /* ... */
    kLineComment = 54,      // // ... up to and including its newline
    kNumber = 55,           // decimal integer, with at most one u/U/l/L suffix
    kUnknown = 56           // any other character (length 1), and the null token
  };

  // The null token.
  constexpr vnxToken() = default;
  constexpr vnxToken(const char* start, unsigned int length, int kind) : _start(start), _length(length), _kind(kind) {}
  vnxToken(const vnxToken& other) = default;
  vnxToken& operator=(const vnxToken& other) = default;
  // Resets the fields to the null token's, so that a dangling copy reads as empty.
  virtual ~vnxToken();

  // First character in the tokenized buffer; null for the null token.
  const char* getStart() const { return _start; }
  unsigned int getLength() const { return _length; }
  int getKind() const { return _kind; }

  // 1 when both tokens have the same length and the same characters (compared
  // with strncmp, so a NUL inside ends the comparison); kinds are ignored.
  // Two tokens of length 0 are equal.
  int operator==(const vnxToken& other) const;
  int operator!=(const vnxToken& other) const { return operator==(other) ? 0 : 1; }

  // (null, 0, kUnknown): what the tokenizer answers at the end of its buffer.
  static const vnxToken ZELCSCTokenNull;

 private:
  const char* _start = nullptr;
  unsigned int _length = 0;
  int _kind = kUnknown;
};

// Lists of tokens are declared with the token so that ZELListVal<vnxToken>
// never names the generic list by mistake.
#include "ZELListValvnxToken.h"

#endif
