// The dump of every directive of a sample header, compared with the dump kept
// beside it.
#include <gtest/gtest.h>

#include <string>

#include "../../source/vnxPreproDirectiveParser.h"
#include "TestSupport.h"
#include "vnxZELPreproDirective.h"

namespace {

// Parses the directive of every line whose first non-blank is '#', dumps it
// and goes on after its last character, as the preprocessing pass does.
std::string dumpDirectivesOf(const std::string& text) {
  StreamCapture out(wbStdout);
  vnxPreproDirectiveParser parser(nullptr);
  int line = 1;
  size_t lineStart = 0;
  while (lineStart < text.size()) {
    size_t k = lineStart;
    while (k < text.size() && (text[k] == ' ' || text[k] == '\t')) ++k;
    size_t next = text.find('\n', k);
    if (k < text.size() && text[k] == '#') {
      const int col = static_cast<int>(k - lineStart) + 1;
      vnxZELPreproDirective* d = parser.parse(text.c_str(), static_cast<int>(k), line, col, 0);
      if (d) {
        d->dump();
        line = static_cast<int>(d->getEndLineInRawStream());
        next = text.find('\n', static_cast<size_t>(d->getPosOfPreproCharInRawStream(d->getPreproStringSize() - 1)));
        d->Release();
      }
    }
    if (next == std::string::npos) break;
    lineStart = next + 1;
    ++line;
  }
  return out.text();
}

TEST(DirectiveDump, EveryKindOfDirectiveDumpsItsOwnLines) {
  const std::string dir = std::string(VNX_TEST_DATA_DIR) + "/directives/";
  const std::string sample = readTextFile(dir + "directives.h");
  ASSERT_FALSE(sample.empty());
  StreamCapture errors;
  EXPECT_EQ(readTextFile(dir + "directives.dump"), dumpDirectivesOf(sample));
  EXPECT_EQ("", errors.text());
}

}  // namespace
