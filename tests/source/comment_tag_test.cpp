// Comment tags: which occurrences of a tag count, and what value each gives.
#include <gtest/gtest.h>

#include <cstdlib>

#include "directive_test_support.h"
#include "vnxCComment.h"
#include "vnxCommentAnalyzer.h"
#include "vnxCppComment.h"

namespace {

TEST(CommentTag, ATagGivesTheRestOfItsLineWithoutTheClosingMarker) {
  const char* const kNone = nullptr;
  struct Case {
    const char* comment;
    const char* tag;
    int status;                       // of getTagValue
    const char* value;                // of getTagValue
    std::vector<std::string> values;  // of getTagValues
  };
  const std::vector<Case> cases = {
      {"/* owner alpha */", "owner", 0, "alpha ", {"alpha "}}, {"// owner: x", "owner", 0, ": x", {": x"}},
      {"// owner: x", "owner:", 0, "x", {"x"}}, {"// ownerX y", "owner", 1, kNone, {}},
      {"// owner_y z", "owner", 1, kNone, {}}, {"// o_o o x", "o", 0, "o x", {"o x", "x"}},
      {"/* xowner v */", "owner", 0, "v ", {"v "}},  // nothing is checked before the tag
      {"/* owner\n * owner\tb */", "owner", 0, kNone, {"", "b "}}, {"/* owner v\r\n */", "owner", 0, "v\r", {"v\r"}},
      {"/* owner */", "owner", 0, "*/", {"*/"}},  // only a value longer than the marker loses it
      {"/* owner ab*/", "owner", 0, "ab", {"ab"}}, {"// owner abc*/", "owner", 0, "abc*/", {"abc*/"}},
      {"// owner \t ", "owner", 0, kNone, {""}}, {"// owner x", "", 1, kNone, {}},
      {"// owner x", nullptr, 1, kNone, {}},
  };
  for (const Case& t : cases) {
    SCOPED_TRACE(std::string(t.comment) + " / tag " + orNull(t.tag));
    vnxComment* c = t.comment[1] == '/' ? static_cast<vnxComment*>(vnxCppComment::create(nullptr))
                                        : static_cast<vnxComment*>(vnxCComment::create(nullptr));
    c->build(t.comment, 0, 1, 1, 0);
    vnxCommentAnalyzer analyzer(c);
    char* value = nullptr;
    EXPECT_EQ(t.status, analyzer.getTagValue(t.tag, value));
    EXPECT_EQ(orNull(t.value), orNull(value));
    std::free(value);
    ZELListVal<ZELString> values;
    values.Append(ZELString("kept"));
    EXPECT_EQ(t.values.empty() ? 1 : 0, analyzer.getTagValues(t.tag, values));
    std::vector<std::string> got;
    for (int i = 2; i <= values.Size(); ++i) got.push_back(values[i].str());
    EXPECT_EQ(t.values, got);
    c->Release();
  }
}

TEST(CommentTag, NoCommentOrAnEmptyOneFindsNothing) {
  char* value = nullptr;
  ZELListVal<ZELString> values;
  EXPECT_EQ(1, vnxCommentAnalyzer(nullptr).getTagValue("owner", value));
  EXPECT_EQ(1, vnxCommentAnalyzer(nullptr).getTagValues("owner", values));
  vnxComment* unbuilt = vnxCComment::create(nullptr);
  EXPECT_EQ(1, vnxCommentAnalyzer(unbuilt).getTagValue("owner", value));
  EXPECT_EQ(nullptr, value);
  EXPECT_EQ(0, values.Size());
  unbuilt->Release();
}

}  // namespace
