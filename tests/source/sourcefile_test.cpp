// Source-file bookkeeping: include scan, macro registry, resources, references handed out by the lists.
#include <gtest/gtest.h>

#include <cstdlib>

#include "TAIndex.h"
#include "directive_test_support.h"
#include "vnxComment.h"
#include "vnxEventGetBuffer.h"
#include "vnxResources.h"
#include "vnxZELPreproDirective.h"

namespace {

std::vector<std::string> rawIncludes(const char* text) {
  vnxSourceFile* source = new vnxSourceFile(text, nullptr, TAFileName());
  ZELListValZELString names;
  source->getIncludeList(names);
  std::vector<std::string> out;
  for (int i = 1; i <= names.Size(); ++i) out.push_back(names[i].CastToCharPtr());
  source->Release();
  return out;
}

TEST(SourceFileIncludes, RawScanFindsIncludeLinesOnly) {
  struct Case { const char* text; std::vector<std::string> names; } cases[] = {
      {"#include \"a.h\"\n#include <b/c.h>\n", {"a.h", "b/c.h"}}, {"  #  include \"spaced.h\"\n", {"spaced.h"}},
      {"#include \"twice.h\"\n#include \"twice.h\"\n", {"twice.h", "twice.h"}}, {"int include;\n", {}},
      {"x; #include \"not_first.h\"\n", {}}, {"/*\n#include \"in_comment.h\"\n*/\n#include \"after.h\"\n", {"after.h"}},
      {"#include /* why */ \"commented.h\"\n", {"commented.h"}}, {"#include\n\"next_line.h\"\n", {"next_line.h"}},
      {"#include MACRO_NAME\n", {}}, {"#include \"unclosed.h\n", {}}, {"#include", {}},
      {"#include \"a.h\"\r\n#include \"b.h\"\r\n", {"a.h", "b.h"}},
  };
  for (const Case& c : cases) EXPECT_EQ(c.names, rawIncludes(c.text)) << c.text;
  const std::string overlong = "#include \"" + std::string(5000, 'x') + "\"\n#include \"ok.h\"\n";
  EXPECT_EQ(std::vector<std::string>{"ok.h"}, rawIncludes(overlong.c_str())) << "overlong names are skipped";
}

TEST(SourceFileIncludes, AfterThePassTheDirectivesAnswerAndCommentedOnesDoNot) {
  StreamCapture quiet;
  vnxSourceFile* source =
      new vnxSourceFile("#include \"a.h\"\n#include FOO_H\n/*\n#include \"c.h\"\n*/", nullptr, TAFileName());
  ASSERT_EQ(0, source->preProcess());
  ZELListValZELString names;
  source->getIncludeList(names);
  ASSERT_EQ(2, names.Size());
  EXPECT_EQ("a.h FOO_H", std::string(names[1].str()) + " " + names[2].str());
  source->Release();
}

TEST(SourceFileMacros, RegistryIgnoresEmptyAndRepeatedNames) {
  TAIndex before;
  vnxSourceFile::getMacrosToExpand(before);
  for (const char* name : {static_cast<const char*>(nullptr), "", "REG_ONCE", "REG_ONCE"})
    vnxSourceFile::addMacroToExpand(name);
  TAIndex after;
  vnxSourceFile::getMacrosToExpand(after);
  EXPECT_EQ(before.Size() + (before.IsIn("REG_ONCE") >= 0 ? 0 : 1), after.Size());
  EXPECT_GE(after.IsIn("REG_ONCE"), 0);
}

TEST(SourceFileMacros, OnlyRegisteredNamesExpandAndOnlyAsWholeWords) {
  vnxSourceFile::addMacroToExpand("REG_VALUE");
  const Preprocessed pass = preprocess("#define REG_VALUE 42\n#define OTHER 7\nint a = REG_VALUE; int b = OTHER; "
                                       "int c = REG_VALUEX; int d = xREG_VALUE;\n");
  ASSERT_EQ(0, pass.status);
  EXPECT_EQ("int a = 42;int b = OTHER;int c = REG_VALUEX;int d = xREG_VALUE;", pass.stream);
}

struct BufferSpy : TACallbackSubscriber {
  std::string seen;
  vnxSourceFile* from = nullptr;
  int ReceiveCallback(TACallbackPublisher*, const TAEvent* event) override {
    if (std::string(event->isA()) != "EventGetBuffer") return 0;
    const auto* e = static_cast<const vnxEventGetBuffer*>(event);
    seen = e->getBuffer() ? e->getBuffer() : "";
    from = e->getSourceFile();
    return 1;
  }
};

TEST(SourceFilePass, SubscribersSeeTheRawTextBeforeItIsDropped) {
  vnxSourceFile* source = new vnxSourceFile("// tag: x\nint a;\n", nullptr, TAFileName());
  BufferSpy spy;
  source->AddSubscriber(&spy);
  ASSERT_EQ(0, source->preProcess());
  EXPECT_EQ("// tag: x\nint a;\n", spy.seen);
  EXPECT_EQ(source, spy.from);
  source->Release();
}

TEST(SourceFilePass, ListsHandOutOneReferencePerElement) {
  StreamCapture quiet;
  vnxSourceFile* source = new vnxSourceFile("/* a */\n// b\n#define X\nint x;\n", nullptr, TAFileName());
  ASSERT_EQ(0, source->preProcess());
  ZELListPtr<vnxComment> comments;
  source->getCommentList(comments);
  ASSERT_EQ(2, comments.Size());
  EXPECT_LT(comments[1]->getPosOfCommentCharInRawStream(0), comments[2]->getPosOfCommentCharInRawStream(0));
  ZELListPtr<vnxZELPreproDirective> directives;
  source->getPreproDirectiveList(directives);
  ASSERT_EQ(1, directives.Size());
  source->Release();  // the elements outlive the file while the caller holds them
  EXPECT_STREQ("/* a */", comments[1]->getCommentString());
  EXPECT_EQ(0, std::string(directives[1]->getPreproString()).find("#define X"));
  for (int i = 1; i <= comments.Size(); ++i) comments[i]->Release();
  directives[1]->Release();
}

TEST(SourceFileNames, CompilationUnitDefaultsToTheFileName) {
  vnxSourceFile* named = new vnxSourceFile(ZELFileBuffer::CreateFromString("x", "dir/a.h"), nullptr, TAFileName());
  EXPECT_EQ("dir/a.h dir/a.h", std::string(named->GetName()) + " " + named->getCompilationUnit());
  named->Release();
  vnxSourceFile* unit = new vnxSourceFile(ZELFileBuffer::CreateFromString("x", "a.h"), nullptr, TAFileName("main.cpp"));
  EXPECT_STREQ("main.cpp", unit->getCompilationUnit());
  unit->Release();
  vnxSourceFile* text = new vnxSourceFile("x", nullptr, TAFileName());
  EXPECT_STREQ("", text->GetName());
  text->Release();
}

TEST(ResourcesEnvironment, RuntimeQueryOnlyPrimesTheBuildTimeName) {
  // Both values are cached for the process: this is the only test that reads them.
  setenv("vnxOS_Runtime", "linux_b64", 1);
  unsetenv("vnxOS_Buildtime");
  EXPECT_EQ(nullptr, vnxResources::getOS_Runtime());
  ASSERT_NE(nullptr, vnxResources::getOS_Buildtime());
  EXPECT_STREQ("linux_b64", vnxResources::getOS_Buildtime());
  setenv("vnxOS_Buildtime", "changed", 1);
  EXPECT_STREQ("linux_b64", vnxResources::getOS_Buildtime()) << "read once, never refreshed";
}

TEST(ResourcesDeathTest, SourceErrorExitWritesTheLineAndEndsTheProcess) {
  EXPECT_EXIT(vnxResources::exitingWithSrcError(4), ::testing::ExitedWithCode(4), "--> exiting");
}

}  // namespace
