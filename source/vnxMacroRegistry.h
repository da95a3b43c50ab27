// Process-wide registry of the macros to expand, and the whole-word searches
// over a raw text that find where they (and "include") occur (internal).
//
// Each registered name carries a Horspool skip table so that a search over a
// file costs about size / name length comparisons instead of size * names.
#ifndef VNX_MACRO_REGISTRY_H
#define VNX_MACRO_REGISTRY_H

#include <cstdint>
#include <vector>

#include "TAIndex.h"
#include "ZELLists.h"
#include "ZELString.h"

namespace vnxmacro {

struct Pattern {
  ZELString name;
  int length = 0;
  uint32_t skip[256];
  uint32_t guardShift = 0;
};

// Builds the skip table of a name: skip = n for every byte, then n-1-k for the
// k-th character (k < n-1); the last character's entry becomes the guard
// shift and is set to 0 so that the skip loop stops there.
void buildPattern(Pattern& pattern, const char* name, int length);

// Calls found(position) for every occurrence of pattern in text[0, size), in
// ascending order. With wholeWord, an occurrence counts only when the
// characters around it (where they exist) are not letters, digits, '_' or '$'.
template <class Found>
void searchAll(const Pattern& pattern, const char* text, int size, bool wholeWord, Found found);

// --- registry --------------------------------------------------------------

// Registers name; null, empty and already registered names are ignored.
void add(const char* name);
int count();
const Pattern& at(int index);  // 0-based, in registration order
// Appends every registered name to out.
void names(TAIndex& out);
// Longest registered name, at least 7 (the length of "include").
int maxLength();

void setMacrosWithSemicolon(ZELListVal<ZELString>* list);
ZELListVal<ZELString>* macrosWithSemicolon();

// The pattern of "include", built on first use and kept for the process.
const Pattern& includePattern();

// One occurrence of a registered macro in a file.
struct Occurrence {
  int position;
  int nameIndex;  // into the registry
};
// Every occurrence of every registered name in text, ascending by position.
// Two names found at the same position keep the one met first (names are
// searched from the last registered to the first) and report the other.
std::vector<Occurrence> findOccurrences(const char* text, int size);

// --- inline implementation -------------------------------------------------

inline bool isWordChar(unsigned char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
         c == '$';
}

template <class Found>
void searchAll(const Pattern& pattern, const char* text, int size, bool wholeWord, Found found) {
  const int n = pattern.length;
  if (n <= 0 || size < n) return;
  const unsigned char* t = reinterpret_cast<const unsigned char*>(text);
  const unsigned char last = static_cast<unsigned char>(pattern.name.CastToCharPtr()[n - 1]);
  const char* name = pattern.name.CastToCharPtr();
  int pos = 0;
  const int lastStart = size - n;
  while (pos <= lastStart) {
    // Skip loop: jump while the character under the pattern's end is not
    // the pattern's last character (its entry is 0).
    uint32_t s;
    while ((s = pattern.skip[t[pos + n - 1]]) != 0) {
      pos += static_cast<int>(s);
      if (pos > lastStart) return;
    }
    if (t[pos + n - 1] == last && (n == 1 || __builtin_memcmp(t + pos, name, static_cast<size_t>(n - 1)) == 0)) {
      const bool before = pos == 0 || !isWordChar(t[pos - 1]);
      const bool after = pos + n >= size || !isWordChar(t[pos + n]);
      if (!wholeWord || (before && after)) found(pos);
    }
    pos += static_cast<int>(pattern.guardShift);
  }
}

}  // namespace vnxmacro

#endif
