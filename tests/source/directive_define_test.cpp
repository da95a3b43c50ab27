// Define and include directives: name, replacement, parameters, tokens, include string, and malformed lines.
#include <gtest/gtest.h>

#include "directive_test_support.h"
#include "vnxPreproDirectiveDefineFunction.h"
#include "vnxPreproDirectiveDefineSimple.h"
#include "vnxPreproDirectiveInclude.h"

namespace {

const char* const kNone = nullptr;
const std::vector<std::string> kObjectLike = {"<object-like>"};
const std::string kCompute = " -> !! vnxPreproDirectiveDefineFunction::compute : ";
const std::string kOrder = kCompute + "order of COMMA / ID not coherent in _argumentString : ";
const std::string kNeither = kCompute + "Token is neither ID nor COMMA in _argumentString : ";

TEST(DirectiveDefine, NameReplacementAndParametersAreReadFromTheLine) {
  struct Case {
    const char* text;
    const char* name;
    const char* replacement;
    std::vector<std::string> parameters;  // kObjectLike for object-like defines
    std::vector<std::string> lines;       // written on the error stream
  };
  const std::vector<Case> cases = {
      {"#define A\n", "A", kNone, kObjectLike, {}}, {"#define A 1  \n", "A", "1  ", kObjectLike, {}},
      {"#define A 1 // c\n", "A", "1 ", kObjectLike, {}}, {"#define A \\\nint x;\n", "A", "int x;", kObjectLike, {}},
      {"#  define\t$x_1 y\n", "$x_1", "y", kObjectLike, {}},
      {"#define A-1\n", "A", "-1", kObjectLike,
       {" !! define line contains an invalid character, check spelling (f.h:3) : #define A-1"}},
      {"#define F(a, b) a+b\n", "F", "a+b", {"a", "b"}, {}}, {"#define F()\n", "F", kNone, {}, {}},
      {"#define F(a, /* c */ \\\n b) x\n", "F", "x", {"a", "b"}, {}},
      {"#define F(a b) x\n", "F", "x", {"a"}, {kOrder + "a b"}}, {"#define F(,a) x\n", "F", "x", {}, {kOrder + ",a"}},
      {"#define F(a,,b) x\n", "F", "x", {"a"}, {kOrder + "a,,b"}},
      {"#define F(fmt, ...) x\n", "F", "x", {"fmt"}, {kNeither + "fmt, ..."}},
      {"#define F(a x\n", "F", kNone, {"a"},
       {"  -> !! vnxPreproDirectiveDefineFunction::buildDefine, end of argumentString not found : f.h:3) : "
        "#define F(a x",
        kOrder + "a x"}},
  };
  for (const Case& t : cases) {
    SCOPED_TRACE(t.text);
    ScopedSource file("f.h");
    StreamCapture capture;
    vnxZELPreproDirective* d = vnxPreproDirectiveParser(file.source).parse(t.text, 0, 3, 1, 0);
    ASSERT_NE(nullptr, d);
    const bool functionLike = t.parameters != kObjectLike;
    ASSERT_EQ(functionLike ? vnxZELPreproDirective::DefineFunction : vnxZELPreproDirective::DefineSimple,
              d->getPreproType());
    auto* define = static_cast<vnxPreproDirectiveDefineSimple*>(d);
    EXPECT_EQ(orNull(t.name), orNull(define->getDefinedIdentifier()));
    EXPECT_EQ(orNull(t.replacement), orNull(define->getReplacementString()));
    if (functionLike) {
      auto* function = static_cast<vnxPreproDirectiveDefineFunction*>(d);
      ZELListVal<ZELString> parameters;
      const bool malformed = !t.lines.empty() && t.lines.back().compare(0, kCompute.size(), kCompute) == 0;
      EXPECT_EQ(malformed ? 1 : 0, function->getArgumentList(parameters));
      std::vector<std::string> names;
      for (int i = 1; i <= parameters.Size(); ++i) names.push_back(parameters[i].str());
      EXPECT_EQ(t.parameters, names);
      EXPECT_EQ(static_cast<int>(names.size()), function->getArgumentCount());  // read once, no new lines
    }
    EXPECT_EQ(t.lines, capture.lines());
    d->Release();
  }
}

TEST(DirectiveDefine, ReplacementTokensLeaveOutCommentsAndLineContinuations) {
  struct Case { const char* text; std::vector<std::string> tokens; };
  const std::vector<Case> cases = {
      {"#define A x /* c */ + \\\n y // z\n", {"x", "+", "y"}},
      {"#define A a##b #c \"s\" 'c' 10", {"a", "##", "b", "#", "c", "\"s\"", "'c'", "10"}},
      // Only a backslash right before the newline continues the line.
      {"#define F(a) f(a, \\\r\n a)\n", {"f", "(", "a", ",", "\\"}},
      {"#define A \\ x\n", {"\\", "x"}}, {"#define A\n", {}},
  };
  for (const Case& t : cases) {
    SCOPED_TRACE(t.text);
    auto* d = static_cast<vnxPreproDirectiveDefineSimple*>(vnxPreproDirectiveParser(nullptr).parse(t.text, 0, 1, 1, 0));
    ASSERT_NE(nullptr, d);
    ZELListVal<vnxToken> tokens;
    EXPECT_EQ(0, d->getReplacementTokenList(tokens));
    d->getReplacementTokenList(tokens);  // a second request copies the same tokens again
    ASSERT_EQ(2 * t.tokens.size(), static_cast<size_t>(tokens.Size()));
    for (size_t i = 0; i < t.tokens.size(); ++i)
      EXPECT_EQ(t.tokens[i], std::string(tokens[i + 1].getStart(), tokens[i + 1].getLength()));
    d->Release();
  }
}

enum Kind { kSimple, kFunction, kInclude };

vnxZELPreproDirective* createOfKind(Kind kind) {
  if (kind == kSimple) return vnxPreproDirectiveDefineSimple::create(nullptr);
  if (kind == kFunction) return vnxPreproDirectiveDefineFunction::create(nullptr);
  return vnxPreproDirectiveInclude::create(nullptr);
}

TEST(DirectiveBuild, ABuildOnTextOfAnotherKindFailsWithItsLine) {
  const std::string simple = "vnxPreproDirectiveDefineSimple::buildDefine";
  const std::string function = "vnxPreproDirectiveDefineFunction::buildDefine";
  const std::string include = " in vnxPreproDirectiveInclude::buildIncludeString";
  struct Case {
    Kind kind;
    const char* text;  // null: buildDefine without a build
    std::string line;
  };
  const std::vector<Case> cases = {
      {kSimple, "define A", " -> !! Bad Position in " + simple},
      {kSimple, "#  ", " -> !! keyword include not found in " + simple},
      {kSimple, "#define /* c */ A", " -> !! begin of _definedIdentifier not found in " + simple},
      {kSimple, "\n", " -> !! Bad input in " + simple},
      {kSimple, nullptr, " -> !! Bad input in " + simple},
      {kFunction, "define F(a)", " -> !! Bad Position in " + function},
      {kFunction, "#define", " -> !! begin of _definedIdentifier not found in " + function},
      // Without '(' a function-like record still defines the name.
      {kFunction, "#define F x",
       "  -> !! " + function + ", building a non function like macro replacement : :1) : #define F x"},
      {kInclude, "include <a.h>", " -> !! Bad Position" + include},
      {kInclude, "# \t ", " -> !! keyword include not found" + include},
      {kInclude, "", " -> !! Bad input" + include},
  };
  for (const Case& t : cases) {
    SCOPED_TRACE(t.text ? t.text : "<unbuilt>");
    vnxZELPreproDirective* d = createOfKind(t.kind);
    auto* define = t.kind == kInclude ? nullptr : static_cast<vnxPreproDirectiveDefineSimple*>(d);
    StreamCapture capture;
    const int status = t.text ? d->build(t.text, 0, 1, 1, 0) : define->buildDefine();
    EXPECT_EQ(t.line + "\n", capture.text());
    EXPECT_EQ(t.text && std::string(t.text) == "#define F x" ? 0 : 1, status);
    if (!define) EXPECT_EQ(nullptr, static_cast<vnxPreproDirectiveInclude*>(d)->getIncludeString());
    else if (status == 0) EXPECT_STREQ("x", define->getReplacementString());
    else EXPECT_EQ(nullptr, define->getDefinedIdentifier());
    d->Release();
  }
}

TEST(DirectiveInclude, TheIncludeStringIsTheNameBetweenEitherCloser) {
  const std::string invalid = " !! include syntax in invalid (f.h:2) : ";
  struct Case {
    const char* text;
    const char* includeString;
    std::string line;  // written on the error stream
  };
  const std::vector<Case> cases = {
      {"#include \"a.h\"\n", "a.h", ""}, {"#include <a.h>\n", "a.h", ""}, {"#include <a.h\"\n", "a.h", ""},
      {"#include \"a.h\" extra\n", "a.h", ""},
      {"#  include   \\\n  \"b/c.h\" // x\n", "b/c.h", ""},
      // An unclosed quote opens a literal that only the end of the text closes.
      {"#include \"a.h", "a.h", invalid + "#include \"a.h"},
      {"#include <\n", kNone, invalid + "#include <"}, {"#include \"\"\n", kNone, ""},
      // A macro-named include keeps the whole rest of the line.
      {"#include FOO(x) // c\n", "FOO(x) ", ""}, {"#include // c\n", kNone, ""},
  };
  for (const Case& t : cases) {
    SCOPED_TRACE(t.text);
    ScopedSource file("f.h");
    StreamCapture capture;
    vnxZELPreproDirective* d = vnxPreproDirectiveParser(file.source).parse(t.text, 0, 2, 1, 0);
    ASSERT_NE(nullptr, d);
    ASSERT_EQ(vnxZELPreproDirective::Include, d->getPreproType());
    EXPECT_EQ(orNull(t.includeString), orNull(static_cast<vnxPreproDirectiveInclude*>(d)->getIncludeString()));
    EXPECT_EQ(t.line.empty() ? "" : t.line + "\n", capture.text());
    d->Release();
  }
}

}  // namespace
