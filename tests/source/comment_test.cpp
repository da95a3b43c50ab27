// Comments: where they end, each character's place, comments from a string, tags, pools, the text store.
#include <gtest/gtest.h>

#include <cstdlib>

#include "../../source/vnxTextStore.h"
#include "directive_test_support.h"
#include "vnxCComment.h"
#include "vnxCommentAnalyzer.h"
#include "vnxCppComment.h"
#include "vnxZELPreproDirective.h"

namespace {

void expectPlacesCountedOverText(vnxComment* c) {
  ::expectPlacesCountedOverText(c, c->getCommentString(), c->getCommentStringSize(), c->getBeginLineInRawStream(),
                                c->getBeginColInRawStream(), c->getBeginPosInRawStream(),
                                &vnxComment::getLineOfCommentCharInRawStream,
                                &vnxComment::getColOfCommentCharInRawStream,
                                &vnxComment::getPosOfCommentCharInRawStream);
}

TEST(CommentSpan, CommentsEndWhereTheirKindSaysAndKnowEveryCharactersPlace) {
  // expected null: the build fails.
  struct Case { bool lineComment; const char* text; int pos, line, col; const char* expected; unsigned endLn, endCol; };
  const Case cases[] = {
      {false, "/* a */ int x;", 0, 1, 1, "/* a */", 1, 7}, {false, "/* a\n  b */x", 0, 1, 1, "/* a\n  b */", 2, 6},
      {false, "/**/", 0, 1, 1, "/**/", 1, 4}, {false, "/* open\nto the end", 0, 1, 1, "/* open\nto the end", 2, 10},
      {false, "/*/ x */y", 0, 1, 1, "/*/ x */", 1, 8},  // a slash right after the opening star does not close
      {false, "x = 1; /* c */", 7, 3, 8, "/* c */", 3, 14}, {true, "// a\nb", 0, 1, 1, "// a", 1, 4},
      {true, "// a \\\n b\nc", 0, 1, 1, "// a \\\n b", 2, 2}, {true, "//", 0, 1, 1, "//", 1, 2},
      {true, "// a\\\n\\\nb\nc", 0, 1, 1, "// a\\\n\\\nb", 3, 1},
      {true, "x // to \\\n the end", 2, 1, 3, "// to \\\n the end", 2, 8},
      {true, "int y; // c\r\nz", 7, 5, 8, "// c\r", 5, 12}, {true, "// a /* b\n */", 0, 1, 1, "// a /* b", 1, 9},
      {false, nullptr, 0, 1, 1, nullptr, 0, 0}, {true, "//", -1, 1, 1, nullptr, 0, 0},
      {false, "/**/", 0, 0, 1, nullptr, 0, 0}, {true, "//", 0, 1, 0, nullptr, 0, 0},
  };
  for (const Case& t : cases) {
    SCOPED_TRACE(t.text ? t.text : "<null>");
    auto text = exactCopy(t.text ? t.text : "");
    vnxComment* c = t.lineComment ? static_cast<vnxComment*>(vnxCppComment::create(nullptr))
                                  : static_cast<vnxComment*>(vnxCComment::create(nullptr));
    const int status = c->build(t.text ? text.get() : nullptr, t.pos, t.line, t.col, 4);
    EXPECT_EQ(t.expected ? 0 : 1, status);
    EXPECT_STREQ(t.lineComment ? "vnxCppComment" : "vnxCComment", c->IsA());
    EXPECT_EQ(t.lineComment ? 1 : 0, c->isLineComment());
    if (t.expected) {
      EXPECT_EQ(std::string(t.expected), c->getCommentString());
      EXPECT_EQ(4, c->getOutputPosition());
      EXPECT_EQ(t.endLn, c->getEndLineInRawStream());
      EXPECT_EQ(t.endCol, c->getEndColInRawStream());
    }
    expectPlacesCountedOverText(c);
    EXPECT_EQ(0, c->Release());
  }
}

TEST(CommentFromString, TheWholeStringBecomesTheCommentAtTheGivenPlace) {
  struct Case { const char* text; int line, col, pos; int status; unsigned endLine, endCol; };
  const Case cases[] = {
      {"int a;\n", 1, 1, 0, 0, 1, 7}, {"a\nbc", 1, 1, 0, 0, 2, 2}, {"a\nbc", 3, 5, 40, 0, 4, 2},
      {nullptr, 1, 1, 0, 1, 0, 0},    {"", 1, 1, 0, 1, 0, 0},      {"x", 1, 1, -1, 1, 0, 0},
  };
  for (const Case& t : cases) {
    SCOPED_TRACE(t.text ? t.text : "<null>");
    vnxCComment* c = vnxCComment::create(nullptr);
    ASSERT_EQ(t.status, c->buildFromString(t.text, t.line, t.col, t.pos, 3));
    if (t.status == 0) {
      EXPECT_EQ(std::string(t.text), c->getCommentString());
      EXPECT_EQ(t.pos, c->getPosOfCommentCharInRawStream(0));
      EXPECT_EQ(t.endLine, c->getEndLineInRawStream());
      EXPECT_EQ(t.endCol, c->getEndColInRawStream());
    }
    expectPlacesCountedOverText(c);
    c->Release();
  }
}

TEST(CommentPool, EachKindTakesItsOwnBlocksAndGivesThemBackWhenAllAreReleased) {
  ASSERT_EQ(0, vnxCComment::getPoolLiveCount());
  vnxComment* line = vnxCppComment::create(nullptr);
  expectPoolBlocksOf1024FreedWithTheirLast<vnxCComment>();
  EXPECT_EQ(1, vnxCppComment::getPoolLiveCount());
  line->Release();
  EXPECT_EQ(0, vnxCppComment::getPoolLiveCount() + vnxCppComment::getPoolBlockCount());
}

TEST(CommentTag, ATagGivesTheRestOfItsLineWithoutTheClosingMarker) {
  const char* const kNone = nullptr;
  // status and value: of getTagValue; values: of getTagValues.
  struct Case { const char* comment; const char* tag; int status; const char* value; std::vector<std::string> values; };
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
  vnxComment* unbuilt = vnxCComment::create(nullptr);
  for (vnxComment* c : {static_cast<vnxComment*>(nullptr), unbuilt}) {
    char* value = nullptr;
    ZELListVal<ZELString> values;
    EXPECT_EQ(1, vnxCommentAnalyzer(c).getTagValue("owner", value));
    EXPECT_EQ(nullptr, value);
    EXPECT_EQ(1, vnxCommentAnalyzer(c).getTagValues("owner", values));
    EXPECT_EQ(0, values.Size());
  }
  unbuilt->Release();
}

TEST(TextStore, BlocksOfEverySizeAreDistinctAndKeepTheirBytes) {
  const int before = vnxtext::liveCount();
  struct Taken { char* block; size_t size; };
  std::vector<Taken> taken;
  // Every size past the largest class, twice: classes hold blocks side by side, large texts take the other road.
  for (int round = 0; round < 2; ++round)
    for (size_t size = 1; size <= vnxtext::kLargest + 40; ++size) taken.push_back({vnxtext::allocate(size), size});
  for (size_t i = 0; i < taken.size(); ++i) {
    ASSERT_NE(nullptr, taken[i].block);
    std::memset(taken[i].block, static_cast<int>(i % 251), taken[i].size);
  }
  for (size_t i = 0; i < taken.size(); ++i)
    for (size_t b = 0; b < taken[i].size; ++b)
      ASSERT_EQ(static_cast<char>(i % 251), taken[i].block[b]) << "block " << i << " was overwritten at " << b;
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
  for (const std::string& text : {std::string(), std::string("abc"), std::string(vnxtext::kLargest * 3, 'x')}) {
    char* copy = vnxtext::copy((text + "cdef").c_str(), static_cast<int>(text.size()));
    ASSERT_NE(nullptr, copy);
    EXPECT_EQ(text, copy);
    vnxtext::release(copy, text.size() + 1);
  }
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
