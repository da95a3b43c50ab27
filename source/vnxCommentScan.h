// Small scanning helpers shared by the comment and directive records
// (internal). Pure functions over NUL-terminated text: they never read past
// the terminating NUL and never allocate.
#ifndef VNX_COMMENT_SCAN_H
#define VNX_COMMENT_SCAN_H

#include <cstdlib>

namespace vnxscan {

// Character classes on the byte value, so that bytes of 128 and above are
// never letters (the C library's classifiers would be undefined on a negative
// char).
inline bool isLetter(char c) {
  const unsigned char u = static_cast<unsigned char>(c);
  return (u >= 'a' && u <= 'z') || (u >= 'A' && u <= 'Z');
}
inline bool isDigit(char c) {
  const unsigned char u = static_cast<unsigned char>(c);
  return u >= '0' && u <= '9';
}
// Letters, digits and '_' (what may follow a tag without extending it).
inline bool isWordChar(char c) { return isLetter(c) || isDigit(c) || c == '_'; }
// Letters, digits, '_' and '$' (a macro name).
inline bool isMacroNameChar(char c) { return isWordChar(c) || c == '$'; }
inline bool isBlankOrTab(char c) { return c == ' ' || c == '\t'; }
inline bool isLayout(char c) { return c == ' ' || c == '\t' || c == '\r'; }

// Skips blanks, tabs, carriage returns and backslash-newline pairs from k;
// answers the first other position (possibly the NUL).
inline int skipLayoutAndContinuations(const char* text, int k) {
  for (;;) {
    if (isLayout(text[k])) ++k;
    else if (text[k] == '\\' && text[k + 1] == '\n') k += 2;
    else return k;
  }
}

// The position after a character c that stood at (line, col).
inline void stepPosition(char c, unsigned int& line, unsigned int& col) {
  if (c == '\n') {
    ++line;
    col = 1;
  } else {
    ++col;
  }
}

// Line of each of the size characters of text, the first one on beginLine.
inline void fillLineTable(const char* text, int size, unsigned int beginLine, unsigned int* table) {
  unsigned int line = beginLine;
  for (int k = 0; k < size; ++k) {
    table[k] = line;
    if (text[k] == '\n') ++line;
  }
}

// Column of each of the size characters of text, the first one at beginCol.
inline void fillColumnTable(const char* text, int size, unsigned int beginCol, unsigned int* table) {
  unsigned int col = beginCol;
  for (int k = 0; k < size; ++k) {
    table[k] = col;
    col = text[k] == '\n' ? 1 : col + 1;
  }
}

// Builds, when it does not exist yet, the per-character line (lines true) or
// column table of the size characters of text, starting from first.
inline void buildPlaceTable(const char* text, int size, unsigned int first, bool lines, unsigned int*& table) {
  if (table || !text || size <= 0) return;
  table = static_cast<unsigned int*>(std::malloc(sizeof(unsigned int) * static_cast<size_t>(size)));
  if (!table) return;
  if (lines) fillLineTable(text, size, first, table);
  else fillColumnTable(text, size, first, table);
}

// Line or column of character k: the two ends are stored, the characters
// between come from the table; -1 out of range or without a table.
inline unsigned int placeAt(int k, int size, unsigned int first, unsigned int last, const unsigned int* table) {
  if (k < 0 || k > size - 1) return static_cast<unsigned int>(-1);
  if (k == 0) return first;
  if (k == size - 1) return last;
  return table ? table[k] : static_cast<unsigned int>(-1);
}

}  // namespace vnxscan

#endif
