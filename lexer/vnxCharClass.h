// Character classes of the C locale in one 256-entry table indexed by
// unsigned char, so that bytes of 128 and above (Latin-1, UTF-8) are plain
// "other" characters and never reach <cctype> with a negative value.
#ifndef VNX_LEXER_CHAR_CLASS_H
#define VNX_LEXER_CHAR_CLASS_H

namespace vnxchar {

enum : unsigned char {
  kBlank = 1,      // skipped between tokens: space, tab, carriage return
  kIdentHead = 2,  // A-Z a-z _
  kDigit = 4,      // 0-9
  kIdentBody = 8   // A-Z a-z 0-9 _
};

struct Table {
  unsigned char bits[256];
};

constexpr Table makeTable() {
  Table t{};
  t.bits[static_cast<unsigned char>(' ')] = kBlank;
  t.bits[static_cast<unsigned char>('\t')] = kBlank;
  t.bits[static_cast<unsigned char>('\r')] = kBlank;
  for (int c = 'a'; c <= 'z'; ++c) t.bits[c] = kIdentHead | kIdentBody;
  for (int c = 'A'; c <= 'Z'; ++c) t.bits[c] = kIdentHead | kIdentBody;
  for (int c = '0'; c <= '9'; ++c) t.bits[c] = kDigit | kIdentBody;
  t.bits[static_cast<unsigned char>('_')] = kIdentHead | kIdentBody;
  return t;
}

inline constexpr Table kTable = makeTable();

inline bool has(char c, unsigned char bit) { return (kTable.bits[static_cast<unsigned char>(c)] & bit) != 0; }
inline bool isBlank(char c) { return has(c, kBlank); }
inline bool isIdentHead(char c) { return has(c, kIdentHead); }
inline bool isIdentBody(char c) { return has(c, kIdentBody); }
inline bool isDigit(char c) { return has(c, kDigit); }

}  // namespace vnxchar

#endif
