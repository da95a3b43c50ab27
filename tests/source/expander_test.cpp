// The macro expander: replacements, arguments, recursion, # and ##, malformed calls, and its work bounds.
#include <gtest/gtest.h>

#include <cstdlib>

#include "directive_test_support.h"
#include "vnxDefinePreproDirectiveExpander.h"

namespace {

// The registry is process-wide: every name here starts with "EXP_" so no other test's text meets one.
struct MacroFile {
  MacroFile(const std::vector<std::string>& defines, const std::vector<std::string>& names) : file("m.h", defines) {
    for (const std::string& name : names) vnxSourceFile::addMacroToExpand(name.c_str());
  }
  ScopedSource file;
};

struct Expansion { int status; std::string replacement; int replaced; };  // replacement "<null>": none given

// Runs of blanks as one, no leading blank: the pass squeezes blanks anyway, so only the tokens matter.
std::string squeezed(const std::string& text) {
  std::string out;
  for (char c : text)
    if (c != ' ' || (!out.empty() && out.back() != ' ')) out += c;
  return out;
}

Expansion expandAt(vnxDefinePreproDirectiveExpander& expander, const std::string& text) {
  const std::unique_ptr<char[]> copy = exactCopy(text);
  char* replacement = reinterpret_cast<char*>(1);
  int replaced = -1;
  const int status = expander.expand(copy.get(), replacement, replaced);
  Expansion result{status, replacement ? replacement : "<null>", replaced};
  std::free(replacement);
  EXPECT_EQ(text, std::string(copy.get()));  // the text itself is never changed
  return result;
}

const std::vector<std::string> kDefines = {
    "#define EXP_ONE 1 + 2", "#define EXP_TWO EXP_ONE * 3", "#define EXP_EMPTY",
    "#define EXP_PLAIN unregistered_name EXP_UNREG", "#define EXP_UNREG 9", "#define EXP_ADD(a, b) a+b",
    "#define EXP_CALL EXP_ADD(4, 5)", "#define EXP_NOARGS() z", "#define EXP_STR(x) #x", "#define EXP_CAT(a, b) a ## b",
    "#define EXP_SELF EXP_SELF + 1", "#define EXP_PING EXP_PONG ping", "#define EXP_PONG EXP_PING pong",
    "#define EXP_ARGSELF(x) EXP_ARGSELF(x)", "#define EXP_NAME_ONLY EXP_ADD", "#define EXP_VARIADIC(fmt, ...) f(fmt)",
    "#define EXP_GROW (EXP_GROW)",
};
const std::vector<std::string> kRegistered = {
    "EXP_ONE", "EXP_TWO", "EXP_EMPTY", "EXP_PLAIN", "EXP_ADD", "EXP_CALL", "EXP_NOARGS", "EXP_STR", "EXP_CAT",
    "EXP_SELF", "EXP_PING", "EXP_PONG", "EXP_ARGSELF", "EXP_NAME_ONLY", "EXP_VARIADIC", "EXP_GROW", "EXP_NODEFINE"};

// Macros EXP_WIDE0..39, each replaced by two of the next: 2^40 characters unless bounded.
void addWideChain(std::vector<std::string>& defines, std::vector<std::string>& names) {
  for (int k = 0; k < 40; ++k) {
    const std::string next = " EXP_WIDE" + std::to_string(k + 1);
    defines.push_back("#define EXP_WIDE" + std::to_string(k) + next + next);
    names.push_back("EXP_WIDE" + std::to_string(k));
  }
}

TEST(Expander, RegisteredMacrosExpandToTheirReplacementWithArgumentsSubstituted) {
  struct Case { const char* text; const char* replacement; int replaced; };
  const std::vector<Case> cases = {
      {"EXP_ONE;", "1 + 2 ", 7}, {"EXP_TWO)", "1 + 2 * 3 ", 7}, {"EXP_EMPTY x", "", 9}, {"EXP_CALL", "4 + 5 ", 8},
      {"EXP_PLAIN", "unregistered_name EXP_UNREG ", 9}, {"EXP_ADD(1, 2) rest", "1 + 2 ", 13},
      {"EXP_ADD\n  ( x , y )", "x + y ", 19}, {"EXP_ADD /* c */ (1, 2 /* , 3 */)", "1 + 2 ", 32},
      {"EXP_ADD((1,2), g(3, 4))", "(1,2) + g(3, 4) ", 23}, {"EXP_ADD(\"a,b\", ')')", "\"a,b\" + ')' ", 19},
      {"EXP_ADD(  spaced   out ,\n y)", "spaced out + y ", 28}, {"EXP_NOARGS()", "z ", 12},
      // Arguments are expanded before they are substituted; a call inside them is an ordinary call.
      {"EXP_ADD(EXP_ONE, EXP_TWO)", "1 + 2 + 1 + 2 * 3 ", 25}, {"EXP_ADD(EXP_ADD(1, 2), 3)", "1 + 2 + 3 ", 25},
      // A name that the first pass over an argument brings next to a '('; missing arguments are empty.
      {"EXP_ADD(EXP_NAME_ONLY(1, 2), 0)", "1 + 2 + 0 ", 31}, {"EXP_ADD(1)", "1 + ", 10}, {"EXP_ADD()", "+ ", 9},
      // Stringized and pasted arguments are taken as written; a pasted name is rescanned.
      {"EXP_STR(a  +   b)", "\"a + b\" ", 17}, {"EXP_STR(say \"hi\" 'c' \\n)", "\"say \\\"hi\\\" \\'c\\' \\\\n\" ", 24},
      {"EXP_STR(EXP_ONE)", "\"EXP_ONE\" ", 16}, {"EXP_STR()", "\"\" ", 9}, {"EXP_CAT(x, y)", "xy ", 13},
      {"EXP_CAT(EXP_ONE, 1)", "EXP_ONE1 ", 19}, {"EXP_CAT(EXP_, ONE)", "1 + 2 ", 18}, {"EXP_CAT(, y)", "y ", 12},
      // A macro never expands inside its own expansion, and is back in the set afterwards.
      {"EXP_SELF", "EXP_SELF + 1 ", 8}, {"EXP_PING", "EXP_PING pong ping ", 8},
      {"EXP_ARGSELF(EXP_ONE)", "EXP_ARGSELF ( 1 + 2 ) ", 20}, {"EXP_SELF", "EXP_SELF + 1 ", 8},
  };
  MacroFile macros(kDefines, kRegistered);
  vnxDefinePreproDirectiveExpander expander(macros.file.source);
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    StreamCapture capture;
    const Expansion e = expandAt(expander, c.text);
    ASSERT_EQ(0, e.status);
    EXPECT_EQ(c.replacement, squeezed(e.replacement));
    EXPECT_EQ(c.replaced, e.replaced);
    EXPECT_EQ("", capture.text());
  }
}

TEST(Expander, NamesThatCannotExpandHereFailAndLeaveTheTextAlone) {
  struct Case { const char* text; std::vector<std::string> lines; };
  const std::vector<Case> cases = {
      {"EXP_NOT_REGISTERED",
       {"# VNX-WARNING: Problem in vnxDefinePreproDirectiveExpander::expandLocal: <EXP_NOT_REGISTERED> is not in "
        "macro list. File name : m.h"}},
      {"EXP_NODEFINE", {}}, {"EXP_ADD + 1", {}}, {"EXP_ADD", {}}, {"EXP_ADD(1, 2, 3)", {}}, {"EXP_NOARGS(1)", {}},
      {"EXP_ADD(1, (2)", {}}, {"EXP_ADD(1, \"2)", {}}, {"EXP_ADD(1 /* 2)", {}}, {"", {}},
      // A parameter list that cannot be read (the reading says why, once).
      {"EXP_VARIADIC(\"%d\", 1)",
       {" -> !! vnxPreproDirectiveDefineFunction::compute : Token is neither ID nor COMMA in _argumentString : "
        "fmt, ..."}},
  };
  MacroFile macros(kDefines, kRegistered);
  vnxDefinePreproDirectiveExpander expander(macros.file.source);
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    StreamCapture capture;
    const Expansion e = expandAt(expander, c.text);
    EXPECT_NE(0, e.status);
    EXPECT_EQ("<null>", e.replacement);
    EXPECT_EQ(0, e.replaced);
    EXPECT_EQ(c.lines, capture.lines());
  }
}

TEST(Expander, TheRegistryIsCopiedWhenTheExpanderIsMade) {
  // The registry only grows: a name of its own per run keeps a repeated run honest.
  static int run = 0;
  const std::string name = "EXP_LATE" + std::to_string(++run);
  MacroFile macros({"#define " + name + " late"}, {});
  vnxDefinePreproDirectiveExpander early(macros.file.source);
  vnxSourceFile::addMacroToExpand(name.c_str());
  StreamCapture capture;
  EXPECT_NE(0, expandAt(early, name).status);
  vnxDefinePreproDirectiveExpander late(macros.file.source);
  EXPECT_EQ("late ", expandAt(late, name).replacement);

  vnxDefinePreproDirectiveExpander orphan(nullptr);
  EXPECT_NE(0, expandAt(orphan, name).status);
}

TEST(Expander, RunawayExpansionsHitTheirBoundsAndFailCleanly) {
  std::vector<std::string> defines = {"#define EXP_SHALLOW EXP_DEEP70"}, names = {"EXP_SHALLOW"};
  for (int k = 0; k < 80; ++k) {  // a chain deeper than the nesting bound
    defines.push_back("#define EXP_DEEP" + std::to_string(k) + " EXP_DEEP" + std::to_string(k + 1));
    names.push_back("EXP_DEEP" + std::to_string(k));
  }
  addWideChain(defines, names);
  MacroFile macros(defines, names);
  MacroFile grow(kDefines, kRegistered);
  vnxDefinePreproDirectiveExpander expander(macros.file.source);
  vnxDefinePreproDirectiveExpander growing(grow.file.source);

  EXPECT_NE(0, expandAt(expander, "EXP_DEEP0").status);
  EXPECT_EQ("EXP_DEEP80 ", expandAt(expander, "EXP_SHALLOW").replacement);
  EXPECT_NE(0, expandAt(expander, "EXP_WIDE0").status);
  // An argument whose every pass grows: the passes are bounded.
  EXPECT_NE(0, expandAt(growing, "EXP_ADD(EXP_GROW, 0)").status);
  // A bound reached once does not spoil the next expansion.
  EXPECT_EQ("EXP_DEEP80 ", expandAt(expander, "EXP_DEEP75").replacement);
}

// Past a total of work spent on failed expansions, later ones get a small bound; ordinary macros still expand.
TEST(Expander, FailedExpansionsPastTheirTotalLeaveLaterOnesASmallBound) {
  std::vector<std::string> defines = {"#define EXP_SMALL (1 + 2)"}, names = {"EXP_SMALL"};
  addWideChain(defines, names);
  MacroFile macros(defines, names);
  vnxDefinePreproDirectiveExpander expander(macros.file.source);

  // 2^16 copies of a name: far past the reduced bound, within the whole one.
  const std::string wide = "EXP_WIDE24";
  EXPECT_EQ(0, expandAt(expander, wide).status);
  int failures = 0;
  while (failures < 8 && expandAt(expander, wide).status == 0) {
    EXPECT_NE(0, expandAt(expander, "EXP_WIDE0").status);
    ++failures;
  }
  EXPECT_EQ(1, failures);  // one runaway call spends the total
  EXPECT_NE(0, expandAt(expander, wide).status);
  EXPECT_EQ("( 1 + 2 ) ", expandAt(expander, "EXP_SMALL").replacement);
}

}  // namespace
