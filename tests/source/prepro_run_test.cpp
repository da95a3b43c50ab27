// Ordinary text copied in chunks gives the same stream and map as a plain character-by-character squeeze.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "directive_test_support.h"

namespace {

// The squeeze the pass applies to text made only of letters, digits and blank-handling punctuation: blanks give
// one space, none at the start, none after "(),;>{", and a space before "(),;-*:" goes.
std::pair<std::string, std::vector<int>> squeezed(const std::string& raw) {
  std::string out;
  std::vector<int> map;
  for (size_t i = 0; i < raw.size(); ++i) {
    const char c = raw[i];
    if (c == ' ' || c == '\t' || c == '\n') {
      if (out.empty() || out.back() == ' ' || std::strchr("(),;>{", out.back())) continue;
      out += ' ';
      map.push_back(static_cast<int>(i));
      continue;
    }
    if (!out.empty() && out.back() == ' ' && std::strchr("(),;-*:", c)) {
      out.pop_back();
      map.pop_back();
    }
    out += c;
    map.push_back(static_cast<int>(i));
  }
  return {out, map};
}

void expectSqueezed(const std::string& raw) {
  StreamCapture quiet;
  vnxSourceFile* source = new vnxSourceFile(ZELFileBuffer::CreateFromString(raw.c_str(), "t.h"), nullptr, TAFileName());
  ASSERT_EQ(0, source->preProcess()) << raw;
  const auto expected = squeezed(raw);
  ASSERT_EQ(expected.first, std::string(source->GetStream(), static_cast<size_t>(source->GetSize()))) << raw;
  const std::vector<int> map(source->getPositionMap(), source->getPositionMap() + source->GetSize());
  EXPECT_EQ(expected.second, map) << raw;
  source->Release();
}

// "ex" (where the pass looks for "extern"), single and double spaces, and punctuation that drops a blank, at
// every offset around the sixteen-character chunks a run is copied in. No "n", so no word is "extern".
TEST(PreproRun, RunsCopiedInChunksSqueezeLikeTheCharacterLoopAtEveryOffset) {
  const char* const pieces[] = {"ex",   " ",    "  ",   " (",   "( ",   ", ",   " ;",   "x -y", "a *b", " :",
                                "> a",  "{ b",  "\tq",  "\n r", "vertex", "index", "E1",  "_0",   "x)",   "(y)"};
  for (const char* piece : pieces) {
    for (int offset = 0; offset < 40; ++offset) {
      std::string raw(static_cast<size_t>(offset), 'a');
      for (int k = 0; k < offset; k += 7) raw[static_cast<size_t>(k)] = 'e';
      raw += piece;
      raw += " bcd efg hij kmo pqr stu vwx yz0 ABCD EFGH";
      expectSqueezed(raw);
    }
  }
}

std::string streamOf(const std::string& raw) {
  StreamCapture quiet;
  vnxSourceFile* source = new vnxSourceFile(ZELFileBuffer::CreateFromString(raw.c_str(), "t.h"), nullptr, TAFileName());
  EXPECT_EQ(0, source->preProcess()) << raw;
  std::string stream = source->GetStream() ? std::string(source->GetStream(), static_cast<size_t>(source->GetSize())) : "";
  source->Release();
  return stream;
}

// The word "extern" goes wherever a chunk boundary falls around it; words that only contain "ex" stay.
TEST(PreproRun, ExternGoesAtEveryOffsetInsideALongRun) {
  const struct { const char* with; const char* without; } cases[] = {
      {" extern int y; vertex next", " int y; vertex next"},
      {" index extern  int y;", " index int y;"},
      {";extern int z;", ";int z;"},
      {" externals exam;", " externals exam;"},
  };
  for (const auto& c : cases) {
    for (int offset = 0; offset < 40; ++offset) {
      const std::string pad = std::string(static_cast<size_t>(offset), 'b') + "q";
      EXPECT_EQ(streamOf(pad + c.without + " tail_of_the_text_here"), streamOf(pad + c.with + " tail_of_the_text_here"))
          << "offset " << offset << ": " << c.with;
    }
  }
}

// Longer texts mixing the same characters at random, each a few hundred characters.
TEST(PreproRun, RandomOrdinaryTextSqueezesLikeTheCharacterLoop) {
  const char alphabet[] = "abcdexxeeEtx_09()   ,;-*:>{\t\n";
  unsigned int seed = 12345;
  for (int text = 0; text < 300; ++text) {
    std::string raw;
    const int length = 20 + text % 280;
    for (int k = 0; k < length; ++k) {
      seed = seed * 1103515245u + 12345u;
      raw += alphabet[(seed >> 16) % (sizeof(alphabet) - 1)];
    }
    expectSqueezed(raw);
  }
}

}  // namespace
