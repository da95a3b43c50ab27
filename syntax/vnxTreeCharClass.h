// Internal: character classes of the tree builders, one table look-up each.
// The builders ask these of every character they walk; the exported
// vnxSyntaxe::isAlphaNumOrUnderScoreChar answers the same for word characters.
#ifndef VNX_SYNTAX_TREE_CHAR_CLASS_H
#define VNX_SYNTAX_TREE_CHAR_CLASS_H

namespace vnxtreechar {

enum : unsigned char {
  kWord = 1,   // ASCII letter, digit or '_'
  kBlank = 2,  // ' ', '\t', '\n', '\r'
  kGroup = 4,  // quotes, brackets and ':', where a text's shape changes
};

struct Table {
  unsigned char of[256] = {};
  constexpr Table() {
    for (int c = 'a'; c <= 'z'; ++c) of[c] = kWord;
    for (int c = 'A'; c <= 'Z'; ++c) of[c] = kWord;
    for (int c = '0'; c <= '9'; ++c) of[c] = kWord;
    of[static_cast<unsigned char>('_')] = kWord;
    of[static_cast<unsigned char>(' ')] = kBlank;
    of[static_cast<unsigned char>('\t')] = kBlank;
    of[static_cast<unsigned char>('\n')] = kBlank;
    of[static_cast<unsigned char>('\r')] = kBlank;
    const char groups[] = "\"'()[]{}:";
    for (int i = 0; groups[i]; ++i) of[static_cast<unsigned char>(groups[i])] = kGroup;
  }
};

inline constexpr Table kTable{};

inline bool isWord(char c) { return kTable.of[static_cast<unsigned char>(c)] & kWord; }
inline bool isBlank(char c) { return kTable.of[static_cast<unsigned char>(c)] & kBlank; }
inline bool isBlankOrGroup(char c) { return kTable.of[static_cast<unsigned char>(c)] & (kBlank | kGroup); }

}  // namespace vnxtreechar

#endif
