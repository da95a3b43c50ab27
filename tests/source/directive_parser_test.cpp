// Directive lines: which record a line makes and how far it runs, define and include contents, errors, dumps, pools.
#include <gtest/gtest.h>

#include "directive_test_support.h"
#include "vnxCComment.h"
#include "vnxCppComment.h"
#include "vnxPreproDirectiveDefineFunction.h"
#include "vnxPreproDirectiveDefineSimple.h"
#include "vnxPreproDirectiveInclude.h"

namespace {

const char* const kNone = nullptr;

// One directive line parsed at line `line` of "f.h", with what the parse wrote on the error stream.
struct ParsedLine {
  ParsedLine(const char* text, int line) : d(vnxPreproDirectiveParser(file.source).parse(text, 0, line, 1, 0)) {}
  ScopedSource file{"f.h"};
  StreamCapture capture;
  vnxZELPreproDirective* d;
};

void expectPlacesCountedOverText(vnxZELPreproDirective* d) {
  ::expectPlacesCountedOverText(d, d->getPreproString(), d->getPreproStringSize(), d->getBeginLineInRawStream(),
                                d->getBeginColInRawStream(), d->getBeginPosInRawStream(),
                                &vnxZELPreproDirective::getLineOfPreproCharInRawStream,
                                &vnxZELPreproDirective::getColOfPreproCharInRawStream,
                                &vnxZELPreproDirective::getPosOfPreproCharInRawStream);
}

TEST(DirectiveParser, EachLineMakesTheRecordOfItsKindAndRunsToItsEnd) {
  const char* const kBase = "vnxZELPreproDirective";
  const char* const kSimple = "vnxPreproDirectiveDefineSimple";
  struct Case {  // isA null: no directive; size -1: the length of directiveText
    const char *text, *isA;
    int type;
    const char *identifier, *directiveText;
    int size;
    unsigned endLine, endCol;
    const char* error;
  };
  const Case cases[] = {
      {"#\nint x;", kBase, 0, kNone, "#", -1, 1, 1, kNone},
      {"#  pragma once\nint x;", kBase, 0, "pragma", "#  pragma once", -1, 1, 14, kNone},
      {"#define\nint x;", kBase, 0, "define", "#define", -1, 1, 7, "'#define' is not followed by an identifier"},
      {"#define /* c */ A\n", kBase, 0, "define", "#define /* c */ A", -1, 1, 17,
       "'#define' is not followed by an identifier"},
      {"#define A 1 // x\n", kSimple, 1, kNone, "#define A 1 ", -1, 1, 12, kNone},
      // A block comment carries the directive over to the next line.
      {"#define A 1 /* x\n y */ + 2\nnext", kSimple, 1, kNone, "#define A 1 /* x\n y */ + 2", -1, 2, 9, kNone},
      {"#define \\\n A 1\n", kSimple, 1, kNone, "#define \\\n A 1", -1, 2, 4, kNone},
      {"#define A (x) x\n", kSimple, 1, kNone, "#define A (x) x", -1, 1, 15, kNone},
      // At the end of the text the NUL is counted in the length.
      {"# define $A(x) x", "vnxPreproDirectiveDefineFunction", 2, kNone, "# define $A(x) x", 17, 1, 17, kNone},
      {"#\tinclude\t\"a.h\"\r\n", "vnxPreproDirectiveInclude", 3, kNone, "#\tinclude\t\"a.h\"\r", -1, 1, 16, kNone},
      // Literals hide comment markers; an open literal runs over newlines.
      {"#define A 'x' \"y\\\"z // \" // c", kSimple, 1, kNone, "#define A 'x' \"y\\\"z // \" ", -1, 1, 25, kNone},
      {"#error don't\nline2 'x\ny", kBase, 0, "error", "#error don't\nline2 'x", -1, 2, 8, kNone},
      // Conditional words reaching the parser make records of unknown kind.
      {"#ifdef X\n", kBase, 0, "ifdef", "#ifdef X", -1, 1, 8, kNone},
      {"#defined X\n", kBase, 0, "defined", "#defined X", -1, 1, 10, kNone},
      {"#1abc\n", kBase, 0, kNone, "#1abc", -1, 1, 5, "Directive identifier is not alphabetic: 1"},
      {"#", kBase, 0, kNone, "#", 2, 1, 2, "Directive identifier is not alphabetic."},
      {"x", kNone, 0, kNone, kNone, 0, 0, 0, "Directive found begins with x instead of '#'"},
      {"", kNone, 0, kNone, kNone, 0, 0, 0, "Directive found does not begin with '#'"},
  };
  for (const Case& t : cases) {
    SCOPED_TRACE(t.text);
    auto text = exactCopy(t.text);
    StreamCapture capture;
    vnxZELPreproDirective* d = vnxPreproDirectiveParser(nullptr).parse(text.get(), 0, 1, 1, 6);
    EXPECT_EQ(t.error ? std::string("# VNX-ERROR:   ") + t.error + "\n" : "", capture.text());
    if (!t.isA) {
      EXPECT_EQ(nullptr, d);
      continue;
    }
    ASSERT_NE(nullptr, d);
    EXPECT_STREQ(t.isA, d->IsA());
    EXPECT_EQ(t.type, static_cast<int>(d->getPreproType()));
    EXPECT_EQ(orNull(t.identifier), orNull(d->getDirectiveIdentifier()));
    EXPECT_EQ(std::string(t.directiveText), d->getPreproString());
    EXPECT_EQ(t.size < 0 ? static_cast<int>(std::strlen(t.directiveText)) : t.size, d->getPreproStringSize());
    EXPECT_EQ(6, d->getOutputPosition());
    EXPECT_EQ(t.endLine, d->getEndLineInRawStream());
    EXPECT_EQ(t.endCol, d->getEndColInRawStream());
    expectPlacesCountedOverText(d);
    EXPECT_EQ(0, d->Release());
  }
}

TEST(DirectiveParser, BadArgumentsGiveNoDirectiveAndNoMessage) {
  const char text[] = "#define A 1\n";
  vnxPreproDirectiveParser parser(nullptr);
  StreamCapture capture;
  EXPECT_EQ(nullptr, parser.parse(nullptr, 0, 1, 1, 0));
  for (const auto& bad : std::vector<std::vector<int>>{{-1, 1, 1, 0}, {0, 0, 1, 0}, {0, 1, 0, 0}, {0, 1, 1, -1}})
    EXPECT_EQ(nullptr, parser.parse(text, bad[0], bad[1], bad[2], bad[3]));
  EXPECT_EQ(nullptr, parser.parse("#pragma x", 0, 1, 1, -1));  // a failed build gives its record back
  EXPECT_EQ(0, vnxZELPreproDirective::getPoolLiveCount());
  EXPECT_EQ("", capture.text());
}

TEST(DirectiveParser, BlockCommentsInsideADirectiveGoToTheSourcesComments) {
  ScopedSource file;
  const char text[] = "x;\n  #define A 1 /* x\n y */ + 2 /**/\nnext";
  vnxZELPreproDirective* d = vnxPreproDirectiveParser(file.source).parse(text, 5, 2, 3, 2);
  ASSERT_NE(nullptr, d);
  EXPECT_EQ(file.source, d->getSource());
  EXPECT_EQ(std::string("#define A 1 /* x\n y */ + 2 /**/"), d->getPreproString());
  expectPlacesCountedOverText(d);

  ZELListPtr<vnxComment> comments;
  file.source->getCommentList(comments);
  ASSERT_EQ(2, comments.Size());
  auto where = [](vnxComment* c) {
    return std::string(c->getCommentString()) + "@" + std::to_string(c->getPosOfCommentCharInRawStream(0)) + ":" +
           std::to_string(c->getBeginLineInRawStream()) + ":" + std::to_string(c->getBeginColInRawStream()) + ">" +
           std::to_string(c->getOutputPosition());
  };
  EXPECT_EQ("/* x\n y */@17:2:15>2", where(comments[1]));
  EXPECT_EQ("/**/@32:3:11>2", where(comments[2]));
  for (int i = 1; i <= comments.Size(); ++i) comments[i]->Release();
  d->Release();

  // Without a source the comments are dropped.
  const int live = vnxCComment::getPoolLiveCount();
  d = vnxPreproDirectiveParser(nullptr).parse("#pragma a /* b */ c", 0, 1, 1, 0);
  ASSERT_NE(nullptr, d);
  EXPECT_EQ(live, vnxCComment::getPoolLiveCount());
  d->Release();
}

TEST(DirectiveBase, TheIdentifierIsSetOnceAndSurvivesABuild) {
  vnxZELPreproDirective* d = vnxZELPreproDirective::create(nullptr);
  d->setDirectiveIdentifier(nullptr);
  d->setDirectiveIdentifier("");
  EXPECT_EQ(nullptr, d->getDirectiveIdentifier());
  d->setDirectiveIdentifier("pragma");
  d->setDirectiveIdentifier("line");
  ASSERT_EQ(0, d->build("#x y\n", 0, 4, 2, 0));
  EXPECT_EQ(std::string("pragma"), d->getDirectiveIdentifier());
  EXPECT_EQ(std::string("#x y"), d->getPreproString());
  d->Release();
}

TEST(DirectiveParser, EveryPrefixOfTrickyTextStaysInsideItsBuffer) {
  const std::string samples[] = {
      "#define F(a, \\\n b) /* x \n*/ a // c\n#include <a.h\n#",
      "# include \"x\\\"y\" '\\\\' /*/ \n#define A\\",
      "#define\t\\\n\\\n(\n#if 'a\n#\\\n//\\",
  };
  StreamCapture quiet, quietOut(wbStdout);
  for (const std::string& sample : samples) {
    for (size_t n = 0; n <= sample.size(); ++n) {
      auto text = exactCopy(sample.substr(0, n));
      const int size = static_cast<int>(n);
      for (int k = 0; k < size; ++k) {
        if (text[k] == '#') {
          vnxZELPreproDirective* d = vnxPreproDirectiveParser(nullptr).parse(text.get(), k, 1, 1, 0);
          if (!d) continue;
          EXPECT_LE(d->getPosOfPreproCharInRawStream(d->getPreproStringSize() - 1), size);
          d->dump();
          if (d->getPreproType() == vnxZELPreproDirective::DefineFunction) {
            ZELListVal<ZELString> parameters;
            static_cast<vnxPreproDirectiveDefineFunction*>(d)->getArgumentList(parameters);
          }
          d->Release();
        } else if (text[k] == '/') {
          vnxComment* comments[] = {vnxCComment::create(nullptr), vnxCppComment::create(nullptr)};
          for (vnxComment* c : comments) {
            EXPECT_EQ(0, c->build(text.get(), k, 1, 1, 0));
            EXPECT_LT(c->getPosOfCommentCharInRawStream(c->getCommentStringSize() - 1), size);
            c->Release();
          }
        }
      }
    }
  }
}

TEST(DirectivePool, EachClassHasItsOwnPoolWhoseBlocksHold1024AndAreFreedWithTheirLast) {
  vnxZELPreproDirective* kinds[] = {vnxPreproDirectiveDefineSimple::create(nullptr),
                                    vnxPreproDirectiveDefineFunction::create(nullptr),
                                    vnxPreproDirectiveInclude::create(nullptr)};
  auto derivedLive = [] {
    return vnxPreproDirectiveDefineSimple::getPoolLiveCount() + vnxPreproDirectiveDefineFunction::getPoolLiveCount() +
           vnxPreproDirectiveInclude::getPoolLiveCount();
  };
  EXPECT_EQ(0, vnxZELPreproDirective::getPoolLiveCount());
  EXPECT_EQ(3, derivedLive());
  for (vnxZELPreproDirective* d : kinds) EXPECT_EQ(0, d->Release());  // through the base, to its own pool
  EXPECT_EQ(0, derivedLive());
  expectPoolBlocksOf1024FreedWithTheirLast<vnxZELPreproDirective>();
}

TEST(DirectiveDump, EveryKindOfDirectiveDumpsItsOwnLines) {
  const std::string dir = std::string(VNX_TEST_DATA_DIR) + "/directives/";
  StreamCapture errors, out(wbStdout);
  vnxSourceFile* source = new vnxSourceFile(readTextFile(dir + "directives.h").c_str(), nullptr, TAFileName());
  ASSERT_EQ(0, source->preProcess());
  ZELListPtr<vnxZELPreproDirective> directives;
  source->getPreproDirectiveList(directives);
  for (int k = 1; k <= directives.Size(); ++k) directives[k]->dump(), directives[k]->Release();
  source->Release();
  EXPECT_EQ(readTextFile(dir + "directives.dump"), out.text());
  EXPECT_EQ("", errors.text());
}

const std::vector<std::string> kObjectLike = {"<object-like>"};
const std::string kCompute = " -> !! vnxPreproDirectiveDefineFunction::compute : ";
const std::string kOrder = kCompute + "order of COMMA / ID not coherent in _argumentString : ";
const std::string kNeither = kCompute + "Token is neither ID nor COMMA in _argumentString : ";

TEST(DirectiveDefine, NameReplacementAndParametersAreReadFromTheLine) {
  // parameters: kObjectLike for object-like defines; lines: written on the error stream.
  struct Case { const char *text, *name, *replacement; std::vector<std::string> parameters, lines; };
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
      {"#define F(fmt, ...) x\n", "F", "x", {"fmt"}, {kNeither + "fmt, ..."}}, {"#define F(a x\n", "F", kNone, {"a"},
       {"  -> !! vnxPreproDirectiveDefineFunction::buildDefine, end of argumentString not found : f.h:3) : "
        "#define F(a x",
        kOrder + "a x"}},
  };
  for (const Case& t : cases) {
    SCOPED_TRACE(t.text);
    ParsedLine parsed(t.text, 3);
    vnxZELPreproDirective* d = parsed.d;
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
    EXPECT_EQ(t.lines, parsed.capture.lines());
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

enum Kind { kSimpleKind, kFunctionKind, kIncludeKind };

vnxZELPreproDirective* createOfKind(Kind kind) {
  if (kind == kSimpleKind) return vnxPreproDirectiveDefineSimple::create(nullptr);
  if (kind == kFunctionKind) return vnxPreproDirectiveDefineFunction::create(nullptr);
  return vnxPreproDirectiveInclude::create(nullptr);
}

TEST(DirectiveBuild, ABuildOnTextOfAnotherKindFailsWithItsLine) {
  const std::string simple = "vnxPreproDirectiveDefineSimple::buildDefine";
  const std::string function = "vnxPreproDirectiveDefineFunction::buildDefine";
  const std::string include = " in vnxPreproDirectiveInclude::buildIncludeString";
  struct Case { Kind kind; const char* text; std::string line; };  // text null: buildDefine without a build
  const std::vector<Case> cases = {
      {kSimpleKind, "define A", " -> !! Bad Position in " + simple},
      {kSimpleKind, "#  ", " -> !! keyword include not found in " + simple},
      {kSimpleKind, "#define /* c */ A", " -> !! begin of _definedIdentifier not found in " + simple},
      {kSimpleKind, "\n", " -> !! Bad input in " + simple}, {kSimpleKind, nullptr, " -> !! Bad input in " + simple},
      {kFunctionKind, "define F(a)", " -> !! Bad Position in " + function},
      {kFunctionKind, "#define", " -> !! begin of _definedIdentifier not found in " + function},
      // Without '(' a function-like record still defines the name.
      {kFunctionKind, "#define F x",
       "  -> !! " + function + ", building a non function like macro replacement : :1) : #define F x"},
      {kIncludeKind, "include <a.h>", " -> !! Bad Position" + include},
      {kIncludeKind, "# \t ", " -> !! keyword include not found" + include},
      {kIncludeKind, "", " -> !! Bad input" + include},
  };
  for (const Case& t : cases) {
    SCOPED_TRACE(t.text ? t.text : "<unbuilt>");
    vnxZELPreproDirective* d = createOfKind(t.kind);
    auto* define = t.kind == kIncludeKind ? nullptr : static_cast<vnxPreproDirectiveDefineSimple*>(d);
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
  struct Case { const char *text, *includeString; std::string line; };  // line: written on the error stream
  const std::vector<Case> cases = {
      {"#include \"a.h\"\n", "a.h", ""}, {"#include <a.h>\n", "a.h", ""}, {"#include <a.h\"\n", "a.h", ""},
      {"#include \"a.h\" extra\n", "a.h", ""}, {"#  include   \\\n  \"b/c.h\" // x\n", "b/c.h", ""},
      // An unclosed quote opens a literal that only the end of the text closes.
      {"#include \"a.h", "a.h", invalid + "#include \"a.h"},
      {"#include <\n", kNone, invalid + "#include <"}, {"#include \"\"\n", kNone, ""},
      // A macro-named include keeps the whole rest of the line.
      {"#include FOO(x) // c\n", "FOO(x) ", ""}, {"#include // c\n", kNone, ""},
  };
  for (const Case& t : cases) {
    SCOPED_TRACE(t.text);
    ParsedLine parsed(t.text, 2);
    vnxZELPreproDirective* d = parsed.d;
    ASSERT_NE(nullptr, d);
    ASSERT_EQ(vnxZELPreproDirective::Include, d->getPreproType());
    EXPECT_EQ(orNull(t.includeString), orNull(static_cast<vnxPreproDirectiveInclude*>(d)->getIncludeString()));
    EXPECT_EQ(t.line.empty() ? "" : t.line + "\n", parsed.capture.text());
    d->Release();
  }
}

}  // namespace
