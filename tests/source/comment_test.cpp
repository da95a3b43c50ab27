// Comments: where block and line comments end, each character's place, comments from a string, their pools.
#include "directive_test_support.h"
#include "vnxCComment.h"
#include "vnxCppComment.h"

namespace {

void expectPlacesCountedOverText(vnxComment* c) {
  ::expectPlacesCountedOverText(c, c->getCommentString(), c->getCommentStringSize(), c->getBeginLineInRawStream(),
                                c->getBeginColInRawStream(), c->getBeginPosInRawStream(),
                                &vnxComment::getLineOfCommentCharInRawStream,
                                &vnxComment::getColOfCommentCharInRawStream,
                                &vnxComment::getPosOfCommentCharInRawStream);
}

TEST(CommentSpan, CommentsEndWhereTheirKindSaysAndKnowEveryCharactersPlace) {
  struct Case {
    bool lineComment;
    const char* text;
    int pos, line, col;
    const char* expected;  // null: the build fails
    unsigned endLine, endCol;
  };
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
      EXPECT_EQ(t.endLine, c->getEndLineInRawStream());
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
  std::vector<vnxComment*> blocks;
  for (int i = 0; i < 1025; ++i) blocks.push_back(vnxCComment::create(nullptr));
  vnxComment* line = vnxCppComment::create(nullptr);
  EXPECT_EQ(2, vnxCComment::getPoolBlockCount());
  EXPECT_EQ(1, vnxCppComment::getPoolLiveCount());
  EXPECT_EQ(2, blocks[0]->AddRef());
  for (int i = 0; i < 1024; ++i) blocks[i]->Release();
  EXPECT_EQ(2, vnxCComment::getPoolLiveCount());  // the referenced first one stays
  EXPECT_EQ(2, vnxCComment::getPoolBlockCount());
  blocks[0]->Release();
  EXPECT_EQ(1, vnxCComment::getPoolBlockCount());
  blocks[1024]->Release();
  line->Release();
  EXPECT_EQ(0, vnxCComment::getPoolLiveCount() + vnxCppComment::getPoolLiveCount());
  EXPECT_EQ(0, vnxCComment::getPoolBlockCount() + vnxCppComment::getPoolBlockCount());
}

}  // namespace
