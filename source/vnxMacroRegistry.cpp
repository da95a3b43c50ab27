#include "source/vnxMacroRegistry.h"

#include <algorithm>
#include <cstring>
#include <deque>

#include "source/vnxDiag.h"

namespace vnxmacro {
namespace {

struct Registry {
  std::deque<Pattern> patterns;  // deque: references stay valid as names are added
  TAIndex index;                 // name -> position in patterns
  int maxLength = 7;
  ZELListVal<ZELString>* withSemicolon = nullptr;
};

Registry& registry() {
  static Registry* r = new Registry();  // process-wide, never destroyed
  return *r;
}

}  // namespace

void buildPattern(Pattern& pattern, const char* name, int length) {
  pattern.name = ZELString(name, length);
  pattern.length = length;
  for (uint32_t& entry : pattern.skip) entry = static_cast<uint32_t>(length);
  for (int k = 0; k < length - 1; ++k)
    pattern.skip[static_cast<unsigned char>(name[k])] = static_cast<uint32_t>(length - 1 - k);
  const unsigned char last = static_cast<unsigned char>(name[length - 1]);
  pattern.guardShift = pattern.skip[last];
  pattern.skip[last] = 0;
}

void add(const char* name) {
  if (!name || !*name) return;
  Registry& r = registry();
  if (r.index.IsIn(name) >= 0) return;
  const int length = static_cast<int>(std::strlen(name));
  r.patterns.emplace_back();
  buildPattern(r.patterns.back(), name, length);
  r.index.Append(name, reinterpret_cast<void*>(static_cast<intptr_t>(r.patterns.size() - 1)));
  if (length > r.maxLength) r.maxLength = length;
}

int count() { return static_cast<int>(registry().patterns.size()); }

const Pattern& at(int index) { return registry().patterns[static_cast<size_t>(index)]; }

void names(TAIndex& out) {
  for (const Pattern& p : registry().patterns) out.Append(p.name, nullptr);
}

int maxLength() { return registry().maxLength; }

void setMacrosWithSemicolon(ZELListVal<ZELString>* list) { registry().withSemicolon = list; }

ZELListVal<ZELString>* macrosWithSemicolon() { return registry().withSemicolon; }

const Pattern& includePattern() {
  static Pattern* p = [] {
    Pattern* made = new Pattern();
    buildPattern(*made, "include", 7);
    return made;
  }();
  return *p;
}

std::vector<Occurrence> findOccurrences(const char* text, int size) {
  std::vector<Occurrence> found;
  const int names = count();
  if (!text || size <= 0 || names == 0) return found;
  for (int k = names - 1; k >= 0; --k) {
    searchAll(at(k), text, size, true, [&](int pos) { found.push_back(Occurrence{pos, k}); });
  }
  std::stable_sort(found.begin(), found.end(),
                   [](const Occurrence& a, const Occurrence& b) { return a.position < b.position; });
  // Equal positions: the first one met stays, the others are reported.
  size_t kept = 0;
  for (size_t i = 0; i < found.size(); ++i) {
    if (kept > 0 && found[kept - 1].position == found[i].position) {
      vnxdiag::error(ZELString("2 Macros to expand found at same position ") + toString(found[i].position));
      continue;
    }
    found[kept++] = found[i];
  }
  found.resize(kept);
  return found;
}

}  // namespace vnxmacro
