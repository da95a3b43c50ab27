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
  for (char c : t.text) out << (c == '\n' ? "\\n" : c == '\r' ? "\\r" : c == '\t' ? "\\t" : std::string(1, c));
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

inline std::vector<Tok> tokenize(const char* text) { vnxTokenizer t(text); return drain(t); }
inline std::vector<Tok> tokenize(const char* text, unsigned int size) { vnxTokenizer t(text, size); return drain(t); }

// Short kind names for the expectation tables.
constexpr int ID = vnxToken::kIdentifier, NUM = vnxToken::kNumber, STR = vnxToken::kString, CHR = vnxToken::kCharacter;
constexpr int NL = vnxToken::kNewline, UNK = vnxToken::kUnknown, BLOCK = vnxToken::kBlockComment, LINE = vnxToken::kLineComment;

#endif
