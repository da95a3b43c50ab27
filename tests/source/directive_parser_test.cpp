// The directive-line parser: which record a line makes, how far it runs, its errors, dumps, the directive pools.
#include <gtest/gtest.h>

#include "directive_test_support.h"
#include "vnxCComment.h"
#include "vnxCppComment.h"
#include "vnxPreproDirectiveDefineFunction.h"
#include "vnxPreproDirectiveInclude.h"

namespace {

void expectPlacesCountedOverText(vnxZELPreproDirective* d) {
  ::expectPlacesCountedOverText(d, d->getPreproString(), d->getPreproStringSize(), d->getBeginLineInRawStream(),
                                d->getBeginColInRawStream(), d->getBeginPosInRawStream(),
                                &vnxZELPreproDirective::getLineOfPreproCharInRawStream,
                                &vnxZELPreproDirective::getColOfPreproCharInRawStream,
                                &vnxZELPreproDirective::getPosOfPreproCharInRawStream);
}

TEST(DirectiveParser, EachLineMakesTheRecordOfItsKindAndRunsToItsEnd) {
  const char* const kNone = nullptr;
  const char* const kBase = "vnxZELPreproDirective";
  const char* const kSimple = "vnxPreproDirectiveDefineSimple";
  struct Case {
    const char* text;
    const char* isA;  // null: no directive
    int type;
    const char* identifier;
    const char* directiveText;
    int size;  // -1: the length of directiveText
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
  EXPECT_EQ(nullptr, parser.parse(text, -1, 1, 1, 0));
  EXPECT_EQ(nullptr, parser.parse(text, 0, 0, 1, 0));
  EXPECT_EQ(nullptr, parser.parse(text, 0, 1, 0, 0));
  // A bad output position fails the build; the record goes back to its pool.
  EXPECT_EQ(nullptr, parser.parse(text, 0, 1, 1, -1));
  EXPECT_EQ(nullptr, parser.parse("#pragma x", 0, 1, 1, -1));
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

  std::vector<vnxZELPreproDirective*> directives;
  for (int i = 0; i < 1025; ++i) directives.push_back(vnxZELPreproDirective::create(nullptr));
  EXPECT_EQ(1025, vnxZELPreproDirective::getPoolLiveCount());
  EXPECT_EQ(2, vnxZELPreproDirective::getPoolBlockCount());
  EXPECT_EQ(2, directives[0]->AddRef());
  for (int i = 1023; i >= 0; --i) directives[i]->Release();  // the first one is still held
  EXPECT_EQ(2, vnxZELPreproDirective::getPoolBlockCount());
  EXPECT_EQ(0, directives[0]->Release());
  EXPECT_EQ(1, vnxZELPreproDirective::getPoolBlockCount());
  directives[1024]->Release();
  EXPECT_EQ(0, vnxZELPreproDirective::getPoolBlockCount());
}

// Dumps the directive of every line whose first non-blank is '#', going on after its end as the pass does.
std::string dumpDirectivesOf(const std::string& text) {
  StreamCapture out(wbStdout);
  vnxPreproDirectiveParser parser(nullptr);
  int line = 1;
  for (size_t lineStart = 0; lineStart < text.size(); ++line) {
    size_t k = lineStart;
    while (k < text.size() && (text[k] == ' ' || text[k] == '\t')) ++k;
    size_t next = text.find('\n', k);
    if (k < text.size() && text[k] == '#') {
      const int col = static_cast<int>(k - lineStart) + 1;
      vnxZELPreproDirective* d = parser.parse(text.c_str(), static_cast<int>(k), line, col, 0);
      if (d) {
        d->dump();
        line = static_cast<int>(d->getEndLineInRawStream());
        next = text.find('\n', static_cast<size_t>(d->getPosOfPreproCharInRawStream(d->getPreproStringSize() - 1)));
        d->Release();
      }
    }
    if (next == std::string::npos) break;
    lineStart = next + 1;
  }
  return out.text();
}

TEST(DirectiveDump, EveryKindOfDirectiveDumpsItsOwnLines) {
  const std::string dir = std::string(VNX_TEST_DATA_DIR) + "/directives/";
  const std::string sample = readTextFile(dir + "directives.h");
  ASSERT_FALSE(sample.empty());
  StreamCapture errors;
  EXPECT_EQ(readTextFile(dir + "directives.dump"), dumpDirectivesOf(sample));
  EXPECT_EQ("", errors.text());
}

}  // namespace
