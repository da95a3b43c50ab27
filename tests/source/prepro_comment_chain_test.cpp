// Runs of line comments, taken one after the other without going back to the scan loop, leave the same stream,
// map and comment records as comments met one at a time.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "directive_test_support.h"
#include "vnxComment.h"
#include "vnxZELPreproDirective.h"

namespace {

struct ChainCase {
  const char* raw;
  const char* stream;
  std::vector<int> blanks;  // raw positions the stream's blanks map to
  std::vector<const char*> comments;  // "text@line:col>outputPosition", in order
  int directives;
};

std::string describe(vnxComment* c) {
  return std::string(c->getCommentString()) + "@" + std::to_string(c->getBeginLineInRawStream()) + ":" +
         std::to_string(c->getBeginColInRawStream()) + ">" + std::to_string(c->getOutputPosition());
}

TEST(PreproCommentChain, ConsecutiveLineCommentsGiveTheStreamMapAndRecordsOfSeparateOnes) {
  const ChainCase cases[] = {
      // The blank for the first newline is dropped after ';'; blank lines and indentation between comments.
      {"int a;\n// one\n  // two\n\n//three\nint b;", "int a;int b;", {3, 35},
       {"// one@2:1>6", "// two@3:3>6", "//three@5:1>6"}, 0},
      // After a word the first newline gives the one blank, mapped to that newline.
      {"int a\n// one\n\t// two\nint b;", "int a int b;", {3, 5, 24}, {"// one@2:1>6", "// two@3:2>6"}, 0},
      // A comment right after text: the newline after it gives the blank.
      {"x// one\n \t // two\ny", "x y", {7}, {"// one@1:2>1", "// two@2:4>2"}, 0},
      // No blank after a quote; `extern "C"` and its braces go as without comments.
      {"extern \"C\"// c\n// d\n{ int v; }", "int v;", {25}, {"// c@1:11>9", "// d@2:1>9"}, 0},
      // The blank for the newline completes "extern " ten characters back, which removes the keyword.
      {"extern ab// c\n// d\nint v;", "ab int v;", {13, 22}, {"// c@1:10>9", "// d@2:1>3"}, 0},
      // The text ends inside the last comment.
      {"a;\n// one\n// two", "a;", {}, {"// one@2:1>2", "// two@3:1>2"}, 0},
      // A directive or a block comment between line comments ends the run; the scan loop takes them.
      {"// one\n#define X 1\n// two\nint y;", "int y;", {29}, {"// one@1:1>0", "// two@3:1>0"}, 1},
      {"// one\n/* two */\n// three\nz", "z", {}, {"// one@1:1>0", "/* two */@2:1>0", "// three@3:1>0"}, 0},
      // A continued line comment takes the next line; the one after it still chains.
      {"q\n// one \\\n two\n// three\nr", "q r", {1}, {"// one \\\n two@2:1>2", "// three@4:1>2"}, 0},
  };
  for (const ChainCase& c : cases) {
    StreamCapture quiet;
    vnxSourceFile* source = new vnxSourceFile(ZELFileBuffer::CreateFromString(c.raw, "t.h"), nullptr, TAFileName());
    ASSERT_EQ(0, source->preProcess()) << c.raw;
    const std::string stream(source->GetStream(), static_cast<size_t>(source->GetSize()));
    EXPECT_EQ(c.stream, stream) << c.raw;
    const std::string raw(c.raw);
    std::vector<int> blanks;
    for (size_t k = 0; k < stream.size(); ++k) {
      const int at = source->getPositionMap()[k];
      if (stream[k] == ' ') blanks.push_back(at);
      else EXPECT_EQ(stream[k], raw[static_cast<size_t>(at)]) << c.raw << " @" << k;
    }
    EXPECT_EQ(c.blanks, blanks) << c.raw;
    ZELListPtr<vnxComment> comments;
    source->getCommentList(comments);
    std::vector<std::string> got;
    for (int k = 1; k <= comments.Size(); ++k) {
      got.push_back(describe(comments[k]));
      comments[k]->Release();
    }
    EXPECT_EQ(std::vector<std::string>(c.comments.begin(), c.comments.end()), got) << c.raw;
    ZELListPtr<vnxZELPreproDirective> directives;
    source->getPreproDirectiveList(directives);
    EXPECT_EQ(c.directives, directives.Size()) << c.raw;
    for (int k = 1; k <= directives.Size(); ++k) directives[k]->Release();
    source->Release();
  }
}

}  // namespace
