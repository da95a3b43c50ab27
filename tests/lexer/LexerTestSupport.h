// Helpers of the lexer tests: a token as (offset, kind, text) and the whole
// token sequence of a buffer, as the iterator gives it.
#ifndef VNX_LEXER_TEST_SUPPORT_H
#define VNX_LEXER_TEST_SUPPORT_H

#include <ostream>
#include <string>
#include <vector>

#include "vnxToken.h"
#include "vnxTokenizer.h"

struct Tok {
  int pos;
  int kind;
  std::string text;
  bool operator==(const Tok& o) const { return pos == o.pos && kind == o.kind && text == o.text; }
};

inline std::ostream& operator<<(std::ostream& out, const Tok& t) {
  out << "{" << t.pos << ", " << t.kind << ", \"";
  for (char c : t.text) {
    if (c == '\n') out << "\\n";
    else if (c == '\r') out << "\\r";
    else if (c == '\t') out << "\\t";
    else out << c;
  }
  return out << "\"}";
}

inline std::vector<Tok> drain(vnxTokenizer& tokenizer) {
  std::vector<Tok> out;
  vnxTokenIterator it = tokenizer.getTokenIterator();
  vnxToken token;
  while (it.getNextToken(token))
    out.push_back(Tok{it.getTokenPosition(), token.getKind(), std::string(token.getStart(), token.getLength())});
  return out;
}

inline std::vector<Tok> tokenize(const char* text) {
  vnxTokenizer tokenizer(text);
  return drain(tokenizer);
}

inline std::vector<Tok> tokenize(const char* text, unsigned int size) {
  vnxTokenizer tokenizer(text, size);
  return drain(tokenizer);
}

// Short kind names for the expectation tables.
constexpr int ID = vnxToken::kIdentifier;
constexpr int NUM = vnxToken::kNumber;
constexpr int STR = vnxToken::kString;
constexpr int CHR = vnxToken::kCharacter;
constexpr int NL = vnxToken::kNewline;
constexpr int UNK = vnxToken::kUnknown;
constexpr int BLOCK = vnxToken::kBlockComment;
constexpr int LINE = vnxToken::kLineComment;

#endif
