// Conditional groups: their directives, branch bounds (and memo), which branch is kept, errors, the dump.
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>

#include "../../source/vnxBranchMemo.h"
#include "directive_test_support.h"
#include "vnxPreproConditionalGroup.h"
#include "vnxPreproDirectiveConditional.h"
#include "vnxTokenIterator.h"
#include "vnxTokenizer.h"

namespace {

typedef vnxPreproDirectiveConditional Directive;

std::string place(unsigned int pos, unsigned int line, unsigned int col) {
  return std::to_string(pos) + ":" + std::to_string(line) + ":" + std::to_string(col);
}

// A directive's branch as "<begin>-<end>".
std::string branchOf(Directive* d) {
  unsigned int p[2], l[2], c[2];
  d->getBeginTextInRawStream(p[0], l[0], c[0]);
  d->getEndTextInRawStream(p[1], l[1], c[1]);
  return place(p[0], l[0], c[0]) + "-" + place(p[1], l[1], c[1]);
}

// Each directive as "<type> <condition>|<branch>"; a branch marked empty must end before it begins.
std::vector<std::string> directivesOf(vnxPreproConditionalGroup* group) {
  std::vector<std::string> seen;
  ZELListPtr<Directive> directives;
  group->getConditionalDirectives(directives);
  for (int k = 1; k <= directives.Size(); ++k) {
    Directive* d = directives[k];
    ZELListVal<vnxToken> condition;
    d->getControlCondition(condition);
    std::string line = std::to_string(d->getConditionalDirectiveType());
    for (int t = 1; t <= condition.Size(); ++t)
      line += " " + std::string(condition[t].getStart(), condition[t].getLength());
    seen.push_back(line + "|" + branchOf(d));
    if (d->getConditionalDirectiveType() != Directive::Endif) {
      EXPECT_EQ(d->getEndTextPosInRawStream() < d->getBeginTextPosInRawStream(), d->isEmptyText() != 0) << line;
    }
    d->Release();
  }
  return seen;
}

TEST(ConditionalGroup, GroupShapesAreReadToTheirEndif) {
  struct Case { const char* text; int pos, line, col; std::vector<std::string> directives; int size; };
  const std::vector<Case> cases = {
      {"#if A\nx\n#else\ny\n#endif\nrest", 0, 1, 1, {"3 A|6:2:1-7:2:2", "5|14:4:1-15:4:2", "6|22:5:7-22:5:7"}, 23},
      // Indented directives, a group that does not start the text.
      {"int a;\n  #ifdef A\nx;\n\t#else\ny;\n #endif  \nz", 9, 2, 3,
       {"1 A|18:3:1-20:3:3", "5|28:5:1-30:5:3", "6|38:6:8-40:6:10"}, 32},
      // Nested groups belong to the branch that holds them.
      {"#if 1\n#ifdef B\nb\n#else\nc\n#endif\n#else\nd\n#endif\n", 0, 1, 1,
       {"3 1|6:2:1-31:6:7", "5|38:8:1-39:8:2", "6|46:9:7-46:9:7"}, 47},
      // Empty branches, and "# if" with a blank after the number sign.
      {"# if 1\n#elif 2\n#endif\n", 0, 1, 1, {"3 1|7:2:1-6:1:7", "4 2|15:3:1-14:2:8", "6|21:3:7-21:3:7"}, 22},
      // A condition continued on the next line; the branch starts after it.
      {"#if defined(A) \\\n  && defined(B)\nx\n#endif\n", 0, 1, 1,
       {"3 defined ( A ) && defined ( B )|33:3:1-34:3:2", "6|41:4:7-41:4:7"}, 42},
      // A comment spanning lines on the directive line, and one hiding an #else.
      {"#if 0 /* a\nb */\n/*\n#else\n*/ x\n#endif\n", 0, 1, 1, {"3 0|16:3:1-29:5:5", "6|36:6:7-36:6:7"}, 37},
      // A line comment after a directive, and one continued over a directive line.
      {"#if 1 // note\nx\n// c \\\n#else\n#endif // end\n", 0, 1, 1, {"3 1|14:2:1-28:4:6", "6|35:5:7-42:5:14"}, 43},
      // Literals do not hide directive lines, even when left open.
      {"#if 0\ns = \"#endif\";\nc = 'don't;\n#else\n#endif\n", 0, 1, 1,
       {"3 0|6:2:1-31:3:12", "5|38:5:1-37:4:6", "6|44:5:7-44:5:7"}, 45},
      // A stray #endif is a group of its own with no branch.
      {"#endif\n", 0, 1, 1, {"6|6:1:7-6:1:7"}, 7},
      // A group ending with the text covers the NUL (so the caller learns the final newline is missing); a
      // continuation escaping the final newline leaves the end on its backslash.
      {"#if 1\nx\n#endif", 0, 1, 1, {"3 1|6:2:1-7:2:2", "6|14:3:7-14:3:7"}, 15},
      {"#if 1\nx\n#endif \\\n", 0, 1, 1, {"3 1|6:2:1-7:2:2", "6|14:3:7-15:3:8"}, 16},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    ScopedSource file("t.h");
    StreamCapture capture;
    vnxPreproConditionalGroup* g = vnxPreproConditionalGroup::create(file.source, c.text, c.pos, c.line, c.col, 0);
    ASSERT_NE(nullptr, g);
    EXPECT_EQ(c.directives, directivesOf(g));
    EXPECT_EQ(static_cast<int>(c.directives.size()), g->getConditionalDirectiveCount());
    EXPECT_EQ(c.size, g->getInitialGroupSize());
    const std::string& endif = c.directives.back();  // the group ends where its #endif's line does
    EXPECT_EQ(place(c.pos, c.line, c.col) + "-" + endif.substr(endif.find('-') + 1),
              place(g->getBeginGroupPosInRawStream(), g->getBeginGroupLineInRawStream(),
                    g->getBeginGroupColInRawStream()) + "-" +
                  place(g->getEndGroupPosInRawStream(), g->getEndGroupLineInRawStream(),
                        g->getEndGroupColInRawStream()));
    EXPECT_EQ(file.source, g->getSource());
    EXPECT_EQ("", capture.text());
    g->Release();
  }
}

TEST(ConditionalGroup, AGroupWithoutEndifIsNotMadeAndSaysWhereItBegan) {
  struct Case { const char* text; std::vector<std::string> lines; };
  const std::string missing = "# VNX-ERROR:   Missing #endif directive for begin in line 4 in source t.h";
  const std::vector<Case> cases = {
      {"#if 1\nx\n", {missing}}, {"#if 1\nx\n#else\ny\n", {missing}}, {"#if 1\n#if 2\n#endif\n", {missing}},
      {"#ifdef A", {missing}}, {"#if 1\n/* \n#endif\n*/\n", {missing}},
      // Not a conditional directive at all: no group and nothing missing.
      {"#endregion\n#endif\n", {}}, {"#elsewhere\n", {}},
  };
  const int before = Directive::getPoolLiveCount();
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    ScopedSource file("t.h");
    StreamCapture capture;
    EXPECT_EQ(nullptr, vnxPreproConditionalGroup::create(file.source, c.text, 0, 4, 1, 0));
    EXPECT_EQ(c.lines, capture.lines());
  }
  EXPECT_EQ(before, Directive::getPoolLiveCount());
}

// Each group of a real header keeps its selected branch, and its directives outlive it while the caller holds
// them; no prefix of the header, read from any directive, overruns.
TEST(ConditionalGroup, ARealHeaderIsReadWholeAndInEveryTruncation) {
  const std::string text = readTextFile(std::string(VNX_TEST_DATA_DIR) + "/conditional/nested.h");
  ASSERT_FALSE(text.empty());
  const int before = Directive::getPoolLiveCount();
  struct Case { const char* first; int count, selected; };  // selected: the succeeding directive's rank, or 0
  const std::vector<Case> cases = {
      {"#ifndef GeoNested_H", 2, 1}, {"#if defined(_WINDOWS_SOURCE)", 4, 2}, {"#ifdef STDMETHOD", 2, 1},
      {"#  if 0", 3, 2},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.first);
    const size_t at = text.find(c.first);
    ASSERT_NE(std::string::npos, at);
    vnxPreproConditionalGroup* group =
        vnxPreproConditionalGroup::create(nullptr, text.c_str(), static_cast<int>(at), 1, 1, 0);
    ASSERT_NE(nullptr, group);
    ZELListPtr<Directive> directives;
    group->getConditionalDirectives(directives);
    EXPECT_EQ(c.count, directives.Size());
    EXPECT_EQ(c.selected ? directives[c.selected] : nullptr, group->getSucceedingDirective());
    EXPECT_EQ(0, group->Release());
    EXPECT_EQ(before + c.count, Directive::getPoolLiveCount());
    EXPECT_EQ(0, std::string(directives[1]->getPreproString()).find(c.first));
    for (int k = 1; k <= directives.Size(); ++k) EXPECT_EQ(0, directives[k]->Release());
  }
  EXPECT_EQ(before, Directive::getPoolLiveCount());

  std::vector<int> starts;
  for (size_t k = 0; k < text.size(); ++k)
    if (text[k] == '#' && (k == 0 || text[k - 1] == '\n')) starts.push_back(static_cast<int>(k));
  StreamCapture capture;
  int made = 0;
  for (size_t n = 0; n <= text.size(); ++n) {
    const std::unique_ptr<char[]> copy = exactCopy(text.substr(0, n));
    for (int start : starts) {
      if (static_cast<size_t>(start) >= n) break;
      if (vnxPreproConditionalGroup* group = vnxPreproConditionalGroup::create(nullptr, copy.get(), start, 1, 1, 0)) {
        ++made;
        EXPECT_LE(group->getEndGroupPosInRawStream(), n);
        group->Release();
      }
    }
  }
  EXPECT_GT(made, 0);
  EXPECT_EQ(before, Directive::getPoolLiveCount());
}

// Branches of nested groups, taken from the enclosing walk inside the pass, match a fresh walk of each directive.
TEST(ConditionalGroup, BranchesReadInsideThePassAreThoseOfAFreshWalk) {
  std::string deep;
  for (int k = 0; k < 40; ++k) deep += (k % 3 ? "#ifdef D\n" : "#if 0\nx\n#elif 1\n");
  deep += "core;\n";
  for (int k = 0; k < 40; ++k) deep += (k % 2 ? "#else\ny;\n#endif\n" : "#endif\n");
  const std::vector<std::string> texts = {
      "#ifndef G\n#define G\n#if A\na;\n#elif B\n#ifdef C\nc;\n#else\nd;\n#endif\n#else\ne;\n#endif\nf;\n#endif\n",
      "#if 1\n#if 0\n/*\n#else\n*/\n#endif\n#if 1 /* x\n*/ y\n#endif\n#endif\nz;\n",
      "#if 1\n  # if 0\n s = \"#endif\";\n#else\n t;\n#endif \\\n more\n#endif\n",
      "extern \"C\" {\n#if 1\n#ifdef X\nint a;\n#endif\n}\n#endif\n",
      "#if 1\n#if 1\n#if 0\n#endif\n#else\n#endif\nq;\n#elif 0\n#if 1\n#endif\n#endif\n",
      // A nested group left open inside a kept branch, and one in a dead branch.
      "#if 1\n#ifdef U\nu;\n#else\nv;\n#endif\nw;\n#if 0\n#ifdef U\n#endif\n#else\nk;\n#endif\n",
      deep,
      // Block comments and continuations after directives: the pass's quick walk hands over mid-branch.
      "#ifndef G\n// a # b /* no */ c\n  //! \\brief x\n#if 0 /* open\n#endif */\n#endif\n#ifdef A\n#endif\nq;\n#endif\n",
      "#if 1\n#if A\nx;\n#elif B /* a\n#endif */\ny;\n#endif\n#endif\n",
      "#if 1\n#ifdef A\n#endif // tail \\\n#else\n#endif\nz;\n#endif\n",
      "#if 1\na # b;\n  x; #endif\n\t#  ifdef Q\n#endif\n\r#else\n#endif\n",
      // Slashes that open no comment, and an opener whose '*' starts the next chunk.
      "#if 1\n// a / b //\n#ifdef A\n/ /*\n#endif */\n#else\n#endif\n#endif\nz;\n",
  };
  StreamCapture quiet;
  std::vector<std::string> shifted;  // each text at every offset of a 16-character chunk
  for (const std::string& text : texts)
    for (int pad = 0; pad <= 16; ++pad) shifted.push_back(std::string(pad, ' ') + "\n" + text);
  for (const std::string& text : shifted) {
    vnxSourceFile* source = new vnxSourceFile(text.c_str(), nullptr, TAFileName());
    ASSERT_EQ(0, source->preProcess()) << text;
    ZELListPtr<vnxZELPreproDirective> directives;
    source->getPreproDirectiveList(directives);
    int compared = 0;
    for (int k = 1; k <= directives.Size(); ++k) {
      if (directives[k]->getPreproType() != vnxZELPreproDirective::Conditional) continue;
      Directive* inPass = static_cast<Directive*>(directives[k]);
      Directive* alone = Directive::create(source);
      ASSERT_EQ(0, alone->build(text.c_str(), inPass->getBeginPosInRawStream(),
                                static_cast<int>(inPass->getBeginLineInRawStream()),
                                static_cast<int>(inPass->getBeginColInRawStream()), 0));
      EXPECT_EQ(branchOf(alone), branchOf(inPass)) << text;
      alone->Release();
      ++compared;
    }
    EXPECT_GE(compared, 4) << text;
    for (int k = 1; k <= directives.Size(); ++k) directives[k]->Release();  // the list's references
    source->Release();
  }
}

// What a pass over text leaves: its status, messages, stream, position map and every conditional branch.
std::string passOf(const std::string& text) {
  vnxSourceFile* source = new vnxSourceFile(text.c_str(), nullptr, TAFileName());
  std::string seen;
  {
    StreamCapture capture;
    seen = std::to_string(source->preProcess()) + "|" + capture.text() + "|";
  }
  if (source->GetStream()) seen.append(source->GetStream(), static_cast<size_t>(source->GetSize()));
  for (int k = 0; source->getPositionMap() && k <= source->GetSize(); ++k)
    seen += " " + std::to_string(source->getPositionMap()[k]);
  ZELListPtr<vnxZELPreproDirective> directives;
  source->getPreproDirectiveList(directives);
  for (int k = 1; k <= directives.Size(); ++k) {
    if (directives[k]->getPreproType() == vnxZELPreproDirective::Conditional)
      seen += "|" + branchOf(static_cast<Directive*>(directives[k]));
    directives[k]->Release();
  }
  source->Release();
  return seen;
}

TEST(ConditionalGroup, AFileGivesTheSamePassAfterAnyOtherFile) {
  // The probe's walks start at the same newlines as those of the first file below, and end elsewhere.
  const std::string probe = "#ifndef X\n#ifndef Y\nint a; int bb; int ccc;\n#else\nb;\n#endif\n#endif\nz;\n";
  std::string many;  // more remembered branch ends than the pass keeps tables for
  for (int k = 0; k < 3000; ++k) many += "#ifdef A\n#ifdef B\nx;\n#endif\n#endif\n";
  std::string blanked = "#if 0\n";  // a dead branch blanked ahead of the scan
  for (int k = 0; k < 200; ++k) blanked += "#ifdef C\ny;\n#endif\n";
  blanked += "#else\nw;\n#endif\n";
  const std::vector<std::string> firsts = {
      "", "#ifndef X\nint a;\n#endif\n", "#ifndef X\n#ifndef Y\nint a;\n#endif\n#endif\n", many, blanked,
      "#ifdef X\nint a;\n",                 // a group without its #endif
      "#ifdef X\nZELLISTP(const X) l;\n#endif\n",  // a pass that aborts
      std::string(5000, ' ') + "\n#ifdef X\n#endif\n",
  };
  StreamCapture quiet;
  const std::string alone = passOf(probe);
  for (const std::string& first : firsts) {
    passOf(first);
    EXPECT_EQ(alone, passOf(probe)) << "after: " << first.substr(0, 60);
  }
}

TEST(ConditionalDump, AGroupDumpsItsDirectivesBetweenTheFrenchBanners) {
  const std::string text = "#if defined(A) || B\nx\n#else // other\ny\n#endif\n";
  vnxPreproConditionalGroup* group = vnxPreproConditionalGroup::create(nullptr, text.c_str(), 0, 1, 1, 0);
  ASSERT_NE(nullptr, group);
  StreamCapture capture(wbStdout);
  group->dump();
  const char* const head = "#### vnxZELPreproDirective\n## preproString\n";
  const char* const kind = "## preproType : Conditional\n   type:";
  EXPECT_EQ(std::string("************* Groupe de directives ***************\n") + head + "#if defined(A) || B\n" +
                kind + "3\n   control condition: defined ( A ) || B\n" +
                "   Debut. Pos:20 Line:2 Col:1\n   Fin. Pos:21 Line:2 Col:2\n" + head + "#else \n" + kind +
                "5\n   control condition:\n   Debut. Pos:37 Line:4 Col:1\n   Fin. Pos:38 Line:4 Col:2\n" + head +
                "#endif\n" + kind + "6\n   control condition:\n   Debut. Pos:45 Line:5 Col:7\n" +
                "   Fin. Pos:45 Line:5 Col:7\n************* Fin groupe de directives ***************\n",
            capture.text());
  group->Release();
}

TEST(BranchMemo, LinesAndEndsAreAnsweredOnlyOverTextNotBlankedAhead) {
  const char* text = "a\nbb\nc\ndd\ne\n";  // newlines at 1, 4, 6, 9, 11
  vnxLineIndex lines;
  lines.build(text, static_cast<int>(std::strlen(text)));
  // Nothing blanked; a stretch inside, meeting the start, meeting the end; one before; one after.
  const struct { int blankFrom, blankTo, from, to; bool answered; unsigned int lines, column; } cases[] = {
      {-1, -2, 1, 9, true, 3, 3}, {5, 6, 1, 9, false, 0, 0}, {0, 1, 1, 9, false, 0, 0},
      {9, 10, 1, 9, false, 0, 0}, {2, 3, 4, 9, true, 2, 3},  {10, 11, 1, 9, true, 3, 3},
  };
  for (const auto& c : cases) {
    vnxBranchMemo memo;
    memo.setText(text, 0, 0);
    memo.setLines(&lines);
    memo.record(c.from, c.to);
    memo.blanked(c.blankFrom, c.blankTo, 0);
    unsigned int counted = 0, col = 0;
    EXPECT_EQ(c.answered, memo.rawLinesBetween(c.from, c.to, counted, col)) << c.blankFrom << ".." << c.blankTo;
    EXPECT_EQ(c.answered ? c.to : -1, memo.lookup(c.from)) << c.blankFrom << ".." << c.blankTo;
    if (c.answered) {
      EXPECT_EQ(c.lines, counted);
      EXPECT_EQ(c.column, col);
    }
  }
}

// The branch the group built over text keeps: "" when every branch is dead, "<null>" when no group is made.
std::string keptBranch(vnxSourceFile* source, const std::string& text) {
  vnxPreproConditionalGroup* group = vnxPreproConditionalGroup::create(source, text.c_str(), 0, 1, 1, 0);
  if (!group) return "<null>";
  std::string kept;
  vnxPreproDirectiveConditional* selected = group->getSucceedingDirective();
  if (selected && !selected->isEmptyText()) {
    const unsigned int begin = selected->getBeginTextPosInRawStream();
    kept = text.substr(begin, selected->getEndTextPosInRawStream() - begin + 1);
  }
  group->Release();
  return kept;
}

std::string ifElse(const std::string& condition) { return "#if " + condition + "\nYES\n#else\nNO\n#endif\n"; }

TEST(ConditionalEvaluation, IfConditionsSelectTheBranchTheGrammarGives) {
  struct Case { std::vector<std::string> defines; const char* condition; int yes; };  // yes: the #if branch is kept
  const std::vector<Case> cases = {
      {{}, "1", 1}, {{}, "0", 0}, {{"#define A 1"}, "A", 1}, {{"#define A 0"}, "A", 0}, {{"#define A"}, "A", 1},
      {{"#define A 0 // off"}, "A", 0}, {{"#define A 0 /* off */"}, "A", 0}, {{"#define A(x) x"}, "A", 0},
      {{}, "A", 0}, {{}, "!A", 1}, {{"#define A 1"}, "!A", 0}, {{"#define A 1"}, "!!A", 1}, {{}, "defined(A)", 0},
      {{"#define A 0"}, "defined(A)", 1}, {{"#define A(x) x"}, "defined(A)", 1}, {{"#define A"}, "(defined A)", 1},
      {{"#define A"}, "defined(A) && !defined(B)", 1}, {{"#define A", "#define B"}, "defined(A) && !defined(B)", 0},
      {{"#define B"}, "defined(A) || defined(B)", 1},
      // && binds tighter than ||, and a false left operand still consumes its tail.
      {{"#define C"}, "defined(A) && defined(B) || defined(C)", 1},
      {{"#define A"}, "defined(A) || defined(B) && defined(C)", 1},
      {{"#define B"}, "defined(A) || defined(B) && defined(C)", 0},
      {{"#define A", "#define C"}, "(defined(A) || defined(B)) && defined(C)", 1},
      // Bare names and literals count only as the very last token.
      {{"#define A 1"}, "(A)", 0}, {{"#define X 1", "#define Y"}, "X && defined(Y)", 0}, {{}, "defined(A) || 1", 1},
      {{"#define X 1", "#define Y"}, "defined(Y) && X", 1}, {{"#define X 1"}, "1 || X", 0},
      // Two names: the first one's replacement against the second's.
      {{"#define OS WIN", "#define WIN"}, "OS WIN", 0}, {{"#define OS WIN"}, "OS WIN", 1}, {{}, "OS WIN", 0},
      {{"#define OS 3", "#define WIN 3"}, "OS WIN", 1},
      // Comparisons are not evaluated; three names are defined everywhere, with no replacement.
      {{"#define A 1"}, "A == 1", 0}, {{}, "defined(_ZEL_ANSI_STREAMS) && defined(STDMETHOD)", 1},
      {{}, "defined HARBO_CLIENT", 1}, {{}, "HARBO_CLIENT", 0},
      {{"#define A 1"}, "defined(A) /* c */ && \\\n defined(A)", 1},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.condition);
    ScopedSource file("t.h", c.defines);
    EXPECT_EQ(c.yes ? "YES\n" : "NO\n", keptBranch(file.source, ifElse(c.condition)));
  }
}

TEST(ConditionalEvaluation, IfdefIfndefAndElifChainsPickTheFirstTrueBranch) {
  struct Case { std::vector<std::string> defines; const char* text; const char* kept; };
  const char* const chain = "#if defined(A)\na\n#elif defined(B)\nb\n#elif defined(C)\nc\n#else\nd\n#endif\n";
  const std::vector<Case> cases = {
      {{"#define X"}, "#ifdef X\nx\n#endif\n", "x\n"}, {{}, "#ifdef X\nx\n#endif\n", ""},
      {{}, "#ifdef X // note\nx\n#else\ny\n#endif\n", "y\n"}, {{}, "#ifndef X\nx\n#else\ny\n#endif\n", "x\n"},
      {{"#define X"}, "#ifndef X\nx\n#else\ny\n#endif\n", "y\n"}, {{}, "#ifdef HARBO_CLIENT\nh\n#endif\n", "h\n"},
      {{"#define A", "#define B"}, chain, "a\n"}, {{"#define B", "#define C"}, chain, "b\n"},
      {{"#define C"}, chain, "c\n"}, {{}, chain, "d\n"}, {{}, "#if 1\na\n#else\nb\n#else\nc\n#endif\n", "a\n"},
      {{}, "#if 0\na\n#else\nb\n#elif 1\nc\n#endif\n", "b\n"},
      {{}, "#else\na\n#endif\n", ""}, {{}, "#elif 1\na\n#else\nb\n#endif\n", "b\n"},  // a stray head never wins
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    ScopedSource file("t.h", c.defines);
    EXPECT_EQ(c.kept, keptBranch(file.source, c.text));
  }
}

TEST(ConditionalEvaluation, MalformedConditionsWriteTheirErrorsOrMakeNoGroup) {
  struct Case { const char* text; const char* kept; std::vector<std::string> lines; };
  const std::string missing = "# VNX-ERROR:   Missing condition in conditional preprocessing directive beginning line ";
  const std::string emptyN =
      "# VNX-ERROR:   Problem in N condition in conditional preprocessing directive in source t.h";
  const std::string empty = "# VNX-ERROR:   \tEmpty condition.";
  const std::vector<Case> cases = {
      {"#if\nx\n#else\ny\n#endif\n", "y\n", {missing + "1 in source t.h"}},
      {"#if 0\nx\n#elif // none\ny\n#endif\n", "", {missing + "3 in source t.h"}},
      {"#if defined(A) &&\nx\n#endif\n", "", {emptyN, empty}},
      {"#if !\nx\n#endif\n", "x\n", {emptyN, empty}},  // "!" of a missing operand: one minus false
      {"#if ( defined A\nx\n#endif\n", "", {}}, {"#ifdef\nx\n#endif\n", "<null>", {}},
      {"#ifdef A B\nx\n#endif\n", "<null>", {}}, {"#ifndef A /* c */ B\nx\n#endif\n", "<null>", {}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    ScopedSource file("t.h");
    StreamCapture capture;
    EXPECT_EQ(c.kept, keptBranch(file.source, c.text));
    EXPECT_EQ(c.lines, capture.lines());
  }
}

TEST(ConditionalEvaluation, WithoutASourceOnlyTheThreeAlwaysDefinedNamesAreDefined) {
  EXPECT_EQ("YES\n", keptBranch(nullptr, ifElse("defined(HARBO_CLIENT)")));
  EXPECT_EQ("NO\n", keptBranch(nullptr, ifElse("defined(A)")));
  EXPECT_EQ("NO\n", keptBranch(nullptr, ifElse("A")));
  StreamCapture capture;
  EXPECT_EQ("NO\n", keptBranch(nullptr, ifElse("")));
  EXPECT_EQ(std::vector<std::string>{"# VNX-ERROR:   Missing condition in conditional preprocessing directive "
                                     "beginning line 1 in source "},
            capture.lines());
}

TEST(ConditionalEvaluation, DeeplyNestedConditionsEndWithoutExhaustingTheStack) {
  ScopedSource file("t.h", {"#define A"});
  const std::string nots(20000, '!');
  EXPECT_EQ("NO\n", keptBranch(file.source, ifElse(nots + "defined(A)")));
  const std::string open(20000, '(');
  EXPECT_EQ("NO\n", keptBranch(file.source, ifElse(open + "defined(A)")));
  std::string chain = "defined(A)";
  for (int k = 0; k < 20000; ++k) chain += " && defined(A)";
  EXPECT_EQ("NO\n", keptBranch(file.source, ifElse(chain)));
  EXPECT_EQ("YES\n", keptBranch(file.source, ifElse("!!!!defined(A) && (((defined(A))))")));
}

}  // namespace

namespace {

const char* const kKeywords[] = {"", "ifdef", "ifndef", "if", "elif", "else", "endif"};

// A directive read with the tokenizer, token by token: its keyword (empty
// when it is no conditional one), then every token after it up to the line's
// end, comments left out, a backslash before a newline joining the lines.
// Each token as "<kind>@<offset>+<length>".
std::vector<std::string> conditionModel(const char* text, int size) {
  std::vector<std::string> seen{""};
  vnxTokenizer tokenizer(text, static_cast<unsigned int>(size));
  vnxTokenIterator it = tokenizer.getTokenIterator();
  vnxToken token;
  if (!it.getNextToken(token) || token.getKind() != vnxToken::kHash) return seen;
  if (!it.getNextToken(token) || token.getKind() != vnxToken::kIdentifier) return seen;
  const std::string keyword(token.getStart(), token.getLength());
  if (std::find(std::begin(kKeywords) + 1, std::end(kKeywords), keyword) == std::end(kKeywords)) return seen;
  seen[0] = keyword;
  while (it.getNextToken(token)) {
    if (token.getKind() == vnxToken::kBlockComment || token.getKind() == vnxToken::kLineComment) continue;
    if (token.getKind() == vnxToken::kNewline) break;
    vnxTokenIterator peek = it;
    vnxToken next;
    if (token.getStart()[0] == '\\' && peek.getNextToken(next) && next.getKind() == vnxToken::kNewline) {
      it = peek;
      continue;
    }
    seen.push_back(std::to_string(token.getKind()) + "@" + std::to_string(token.getStart() - text) + "+" +
                   std::to_string(token.getLength()));
  }
  return seen;
}

}  // namespace

TEST(ConditionalDirective, KeywordAndConditionMatchTheTokenizersReadingWhateverTheLine) {
  const char* const rows[] = {
      "#ifndef GUARD_H\n",  "#endif\n",          " # ifdef\tA_1 \r\n", "#if A B C D E F\n",
      "#if A B C D E F G\n", "#if A B C D E F G H\n", "#else // GUARD\n",  "#if defined(A) && B\n",
      "#if 0\n",            "#if A \\\n B\n",      "#elif A/*x*/B\n",   "#if A ## B\n",
      "#if A # B\n",        "#ifdef A",           "#ifdef\n",          "##if A\n",
      "#define A B\n",      "#if A\nB C\n",        "#if _a9 \t\r\n",     "#if A\xe9\n"};
  for (const char* row : rows) {
    ScopedSource file;
    Directive* d = Directive::create(file.source);
    d->build(row, 0, 1, 1, 0);
    const char* text = d->getPreproString();
    ASSERT_NE(text, nullptr) << row;
    ZELListVal<vnxToken> condition;
    d->getControlCondition(condition);
    std::vector<std::string> seen{kKeywords[d->getConditionalDirectiveType()]};
    for (int t = 1; t <= condition.Size(); ++t)
      seen.push_back(std::to_string(condition[t].getKind()) + "@" + std::to_string(condition[t].getStart() - text) +
                     "+" + std::to_string(condition[t].getLength()));
    EXPECT_EQ(seen, conditionModel(text, d->getPreproStringSize())) << row;
    d->Release();
  }
}
