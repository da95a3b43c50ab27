// Reduced inputs the fuzz targets found, kept so what broke once stays fixed. The slow ones are sized so a
// linear pass takes milliseconds and a relapse into repeated reading runs past the test's time limit.
#include <gtest/gtest.h>

#include <algorithm>

#include "directive_test_support.h"

namespace {

std::string repeat(const std::string& text, int count) {
  std::string out;
  for (int i = 0; i < count; ++i) out += text;
  return out;
}

std::string tail(const std::string& text, size_t n) { return text.substr(text.size() - std::min(n, text.size())); }

// A self-doubling macro nested in its own argument: every nested call used to spend the expander's full
// work limit (seconds per line); once failures have spent one full limit, later calls get a small one.
TEST(SourceFuzzRegress, SelfDoublingMacroNestedInItsArgumentsIsGivenUpQuickly) {
  vnxSourceFile::addMacroToExpand("FUZZ_TWICE");
  const std::string call = repeat("FUZZ_TWICE(", 30) + "1" + repeat(")", 30) + ";\n";
  const Preprocessed pass =
      preprocess("#define FUZZ_TWICE(x) FUZZ_TWICE(x)FUZZ_TWICE(x)\n" + repeat(call, 6) + "int after;\n");
  EXPECT_EQ(0, pass.status);
  EXPECT_EQ("int after;", tail(pass.stream, 10));
}

// A scrambled sample full of unclosed, nested macro calls inside conditional groups: every call fails on the
// expander's bounds at bounded total cost, and the pass still reaches the end.
TEST(SourceFuzzRegress, RunawayMacroCallsInADamagedFileSpendABoundedAmountOfWork) {
  for (const char* name : {"GEO_SQUARE", "GEO_SAMPLES_MIN", "MAX", "A", "M"}) vnxSourceFile::addMacroToExpand(name);
  const Preprocessed pass =
      preprocess(readTextFile(std::string(VNX_TEST_DATA_DIR) + "/prepro/fuzz-runaway-macro-calls.h"));
  EXPECT_EQ(0, pass.status);
  EXPECT_EQ("i]nt x=17UL;", tail(pass.stream, 12));
}

constexpr int kDepth = 200000;  // deep nesting the pass used to search again for every level (seconds at this size)

// Each closing brace looked back for its opening brace (to fold doubled blocks).
TEST(SourceFuzzRegress, DeeplyNestedBracesArePreprocessedInLinearTime) {
  const Preprocessed pass = preprocess(std::string(kDepth, '{') + "int kept;" + std::string(kDepth, '}') + "\n");
  EXPECT_EQ(0, pass.status);
  // Every level folds into the outermost block.
  EXPECT_EQ("{" + std::string(kDepth - 1, ' ') + "int kept;}", pass.stream);
}

// Each group read to its #endif, through every group nested in it.
TEST(SourceFuzzRegress, DeeplyNestedConditionalGroupsArePreprocessedInLinearTime) {
  const Preprocessed pass = preprocess(repeat("#if 1\n", kDepth / 5) + "int kept;\n" + repeat("#endif\n", kDepth / 5));
  EXPECT_EQ(0, pass.status);
  EXPECT_EQ("int kept;", pass.stream);
}

// Each list macro searched to the end of the text for its closing parenthesis.
TEST(SourceFuzzRegress, UnclosedListMacrosArePreprocessedInLinearTime) {
  const Preprocessed pass = preprocess(repeat("ZELLISTP(", kDepth / 4) + "int kept;\n");
  EXPECT_EQ(0, pass.status);
  EXPECT_EQ("int kept;", tail(pass.stream, 9));
}

}  // namespace
