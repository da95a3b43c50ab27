// The store of small owned texts: blocks never overlap, keep what is written
// in them, are handed out again once given back, and records built over it
// give every block back when they die.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "../../source/vnxTextStore.h"
#include "vnxCppComment.h"
#include "vnxSourceFile.h"
#include "vnxZELPreproDirective.h"

namespace {

TEST(TextStore, BlocksOfEverySizeAreDistinctAndKeepTheirBytes) {
  const int before = vnxtext::liveCount();
  struct Taken { char* block; size_t size; };
  std::vector<Taken> taken;
  // Every size up to past the largest class, twice, so that classes hold
  // several blocks side by side and large texts take the other road.
  for (int round = 0; round < 2; ++round)
    for (size_t size = 1; size <= vnxtext::kLargest + 40; ++size) taken.push_back({vnxtext::allocate(size), size});
  for (size_t i = 0; i < taken.size(); ++i) {
    ASSERT_NE(nullptr, taken[i].block);
    std::memset(taken[i].block, static_cast<int>(i % 251), taken[i].size);
  }
  for (size_t i = 0; i < taken.size(); ++i) {
    for (size_t b = 0; b < taken[i].size; ++b)
      ASSERT_EQ(static_cast<char>(i % 251), taken[i].block[b]) << "block " << i << " was overwritten at " << b;
  }
  for (const Taken& t : taken) vnxtext::release(t.block, t.size);
  EXPECT_EQ(before, vnxtext::liveCount());
}

TEST(TextStore, AGivenBackBlockServesTheNextTextOfItsClass) {
  char* first = vnxtext::allocate(20);
  vnxtext::release(first, 20);
  char* again = vnxtext::allocate(30);  // the same sixteen-byte class
  EXPECT_EQ(first, again);
  char* other = vnxtext::allocate(40);  // the next class
  EXPECT_NE(again, other);
  vnxtext::release(again, 30);
  vnxtext::release(other, 40);
  vnxtext::release(nullptr, 10);  // ignored
}

TEST(TextStore, CopiesAreTerminatedAndEmptyTextsGetABlock) {
  const struct { const char* text; int length; } rows[] = {{"", 0}, {"abc", 3}, {"abcdef", 2}};
  for (const auto& row : rows) {
    char* copy = vnxtext::copy(row.text, row.length);
    ASSERT_NE(nullptr, copy);
    EXPECT_EQ(std::string(row.text, static_cast<size_t>(row.length)), copy);
    vnxtext::release(copy, static_cast<size_t>(row.length) + 1);
  }
  const std::string longText(vnxtext::kLargest * 3, 'x');
  char* copy = vnxtext::copy(longText.c_str(), static_cast<int>(longText.size()));
  EXPECT_EQ(longText, copy);
  vnxtext::release(copy, longText.size() + 1);
}

TEST(TextStore, CommentsAndDirectivesGiveTheirTextsBackWhenReleasedOrRebuilt) {
  const int before = vnxtext::liveCount();
  vnxSourceFile* source = new vnxSourceFile(
      "// one\n#include \"a.h\"\n#define A 1 /* two */\n#pragma once\nint x; // three \\\n more\n", nullptr,
      TAFileName());
  ASSERT_EQ(0, source->preProcess());
  EXPECT_GT(vnxtext::liveCount(), before);
  source->Release();
  EXPECT_EQ(before, vnxtext::liveCount());

  // A record built twice keeps one text.
  vnxCppComment* comment = vnxCppComment::create(nullptr);
  ASSERT_EQ(0, comment->build("// a\n", 0, 1, 1, 0));
  ASSERT_EQ(0, comment->build("// longer text here\n", 0, 1, 1, 0));
  EXPECT_STREQ("// longer text here", comment->getCommentString());
  vnxZELPreproDirective* directive = vnxZELPreproDirective::create(nullptr);
  ASSERT_EQ(0, directive->build("#pragma a\n", 0, 1, 1, 0));
  ASSERT_EQ(0, directive->build("#pragma bb\n", 0, 1, 1, 0));
  EXPECT_STREQ("#pragma bb", directive->getPreproString());
  EXPECT_EQ(before + 2, vnxtext::liveCount());
  comment->Release();
  directive->Release();
  EXPECT_EQ(before, vnxtext::liveCount());
}

}  // namespace
