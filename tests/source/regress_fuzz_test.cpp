// Inputs the fuzz targets found (fuzz/), reduced, kept so that what broke
// once stays fixed. The slow ones are sized so that a linear pass takes
// milliseconds and a relapse into repeated reading takes minutes, past the
// test's time limit; their results are checked here.
#include <gtest/gtest.h>

#include <string>

#include "TAFileName.h"
#include "TestSupport.h"
#include "vnxSourceFile.h"

namespace {

struct Pass {
  int status = -1;
  std::string stream;
};

Pass preprocess(const std::string& raw) {
  StreamCapture quiet;
  vnxSourceFile* source = new vnxSourceFile(raw.c_str(), nullptr, TAFileName());
  Pass pass;
  pass.status = source->preProcess();
  if (source->GetStream()) pass.stream.assign(source->GetStream(), static_cast<size_t>(source->GetSize()));
  source->Release();
  return pass;
}

std::string repeat(const std::string& text, int count) {
  std::string out;
  out.reserve(text.size() * static_cast<size_t>(count));
  for (int i = 0; i < count; ++i) out += text;
  return out;
}

// A macro whose replacement calls it twice, called inside its own argument:
// the argument's expansion passes never settle (each one doubles the text),
// so every call used to run into the expander's full work limit, and so did
// every call nested inside it when the pass reached it in turn (30 levels on a
// line took about two seconds per line in an optimised build). Once failures
// have spent one full limit, later calls get a small one.
TEST(SourceFuzzRegress, SelfDoublingMacroNestedInItsArgumentsIsGivenUpQuickly) {
  vnxSourceFile::addMacroToExpand("FUZZ_TWICE");
  const std::string call = repeat("FUZZ_TWICE(", 30) + "1" + repeat(")", 30) + ";\n";
  const Pass pass = preprocess("#define FUZZ_TWICE(x) FUZZ_TWICE(x)FUZZ_TWICE(x)\n" + repeat(call, 6) + "int after;\n");
  EXPECT_EQ(0, pass.status);
  ASSERT_GE(pass.stream.size(), 10u);
  EXPECT_EQ("int after;", pass.stream.substr(pass.stream.size() - 10));
}

// A sample file cut and scrambled by the tree fuzzer: calls of function-like
// macros whose parentheses never close, nested in one another and in
// conditional groups. Every call fails on the expander's bounds; together
// they took about a second in an optimised build (13 s under the
// sanitizers), now a fraction of that. The pass still reaches the end.
TEST(SourceFuzzRegress, RunawayMacroCallsInADamagedFileSpendABoundedAmountOfWork) {
  for (const char* name : {"GEO_SQUARE", "GEO_SAMPLES_MIN", "MAX", "A", "M"}) vnxSourceFile::addMacroToExpand(name);
  const Pass pass = preprocess(readTextFile(std::string(VNX_TEST_DATA_DIR) + "/prepro/fuzz-runaway-macro-calls.h"));
  EXPECT_EQ(0, pass.status);
  const std::string end = "i]nt x=17UL;";
  ASSERT_GE(pass.stream.size(), end.size());
  EXPECT_EQ(end, pass.stream.substr(pass.stream.size() - end.size()));
}

// Deep nesting that the pass searched through again for every level. Each
// took 4 to 8 seconds at 200 KB in an optimised build, and four times that at
// the 400 KB used here.
constexpr int kDepth = 200000;

// Each closing brace looked back for its opening brace (to fold doubled blocks).
TEST(SourceFuzzRegress, DeeplyNestedBracesArePreprocessedInLinearTime) {
  const Pass pass = preprocess(std::string(kDepth, '{') + "int kept;" + std::string(kDepth, '}') + "\n");
  EXPECT_EQ(0, pass.status);
  // Every level folds into the outermost block.
  EXPECT_EQ("{" + std::string(kDepth - 1, ' ') + "int kept;}", pass.stream);
}

// Each group read to its #endif, through every group nested in it.
TEST(SourceFuzzRegress, DeeplyNestedConditionalGroupsArePreprocessedInLinearTime) {
  const Pass pass = preprocess(repeat("#if 1\n", kDepth / 5) + "int kept;\n" + repeat("#endif\n", kDepth / 5));
  EXPECT_EQ(0, pass.status);
  EXPECT_EQ("int kept;", pass.stream);
}

// Each list macro searched to the end of the text for its closing parenthesis.
TEST(SourceFuzzRegress, UnclosedListMacrosArePreprocessedInLinearTime) {
  const Pass pass = preprocess(repeat("ZELLISTP(", kDepth / 4) + "int kept;\n");
  EXPECT_EQ(0, pass.status);
  ASSERT_GE(pass.stream.size(), 9u);
  EXPECT_EQ("int kept;", pass.stream.substr(pass.stream.size() - 9));
}

}  // namespace
