// Which branch of a conditional group is kept: #ifdef/#ifndef, the #if grammar, errors on bad conditions.
#include <gtest/gtest.h>

#include "directive_test_support.h"
#include "vnxPreproConditionalGroup.h"
#include "vnxPreproDirectiveConditional.h"

namespace {

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
  struct Case {
    std::vector<std::string> defines;
    const char* condition;
    int yes;  // 1: the #if branch is kept, 0: the #else one
  };
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
