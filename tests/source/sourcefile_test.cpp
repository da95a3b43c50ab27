// Source files: include scan, macro registry, resources, references the lists hand out, and the position map
// from every preprocessed character back to its raw one.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <utility>

#include "directive_test_support.h"
#include "TAIndex.h"
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

TEST(SourceFilePass, SubscribersSeeTheRawTextBeforeItIsDropped) {
  struct BufferSpy : TACallbackSubscriber {
    std::string seen;
    vnxSourceFile* from = nullptr;
    int ReceiveCallback(TACallbackPublisher*, const TAEvent* event) override {
      if (std::string(event->isA()) != "EventGetBuffer") return 0;
      const auto* e = static_cast<const vnxEventGetBuffer*>(event);
      seen = e->getBuffer() ? e->getBuffer() : "<null>";
      from = e->getSourceFile();
      return 1;
    }
  } spy;
  vnxSourceFile* source = new vnxSourceFile("// tag: x\nint a;\n", nullptr, TAFileName());
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
  auto names = [](vnxSourceFile* file) {
    const std::string both = std::string(file->GetName()) + "|" + file->getCompilationUnit().CastToCharPtr();
    file->Release();
    return both;
  };
  auto named = [](const char* name) { return ZELFileBuffer::CreateFromString("x", name); };
  EXPECT_EQ("dir/a.h|dir/a.h", names(new vnxSourceFile(named("dir/a.h"), nullptr, TAFileName())));
  EXPECT_EQ("a.h|main.cpp", names(new vnxSourceFile(named("a.h"), nullptr, TAFileName("main.cpp"))));
  EXPECT_EQ("|", names(new vnxSourceFile("x", nullptr, TAFileName())));
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

// Characters from a list-macro fold or an expansion map to the macro name's start; all others to themselves.
void checkPositions(const std::string& raw, vnxSourceFile& source, const std::string& label) {
  const char* stream = source.GetStream();
  ASSERT_NE(nullptr, stream) << label;
  std::vector<int> lines(raw.size()), cols(raw.size());
  int line = 1, col = 1;
  for (size_t k = 0; k < raw.size(); ++k) {
    lines[k] = line;
    cols[k] = col;
    col = raw[k] == '\n' ? (++line, 1) : col + 1;
  }
  TAIndex macros;  // a list macro, or any macro some test registered for expansion, maps to the name's start
  vnxSourceFile::getMacrosToExpand(macros);
  std::vector<std::string> names = {"ZELLISTP", "ZELLISTV", "SEQUENCE"};
  for (int m = 0; m < macros.Size(); ++m) names.push_back(macros.GetKey(m));
  int previous = -1;
  for (int k = 0; k < source.GetSize(); ++k) {
    const int r = source.getPosOfPreProcessedCharInRawStream(k);
    ASSERT_GE(r, 0) << label << " at " << k;
    ASSERT_LT(r, static_cast<int>(raw.size())) << label << " at " << k;
    EXPECT_GE(r, previous) << label << ": map goes backwards at " << k;
    previous = r;
    const char c = stream[k];
    // A blank may also stand for a blanked dead branch or a folded brace.
    bool same = c == raw[static_cast<size_t>(r)] || c == ' ';
    for (size_t n = 0; !same && n < names.size(); ++n)
      same = raw.compare(static_cast<size_t>(r), names[n].size(), names[n]) == 0;
    EXPECT_TRUE(same) << label << ": stream[" << k << "]='" << c << "' maps to raw[" << r << "]='"
                      << raw[static_cast<size_t>(r)] << "'";
    int l = 0, cc = 0;
    ASSERT_EQ(0, source.GetPos(k, l, cc));
    EXPECT_EQ(std::make_pair(lines[static_cast<size_t>(r)], cols[static_cast<size_t>(r)]), std::make_pair(l, cc))
        << label << " at " << k;
    EXPECT_EQ(std::make_pair(l, cc), std::make_pair(source.GetPoint(k).GetLine(), source.GetPoint(k).GetCol()));
  }
}

void checkText(const std::string& raw, const std::string& label) {
  StreamCapture quiet;
  vnxSourceFile* source = new vnxSourceFile(ZELFileBuffer::CreateFromString(raw.c_str(), label.c_str()), nullptr,
                                            TAFileName());
  if (source->preProcess() == 0) checkPositions(raw.substr(0, std::string(raw.c_str()).size()), *source, label);
  source->Release();
}

TEST(PreproPositions, MapEveryCharacterOfTheSampleWorkspaceBack) {
  int files = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(VNX_EXAMPLES_DIR)) {
    if (!entry.is_regular_file()) continue;
    checkText(readTextFile(entry.path().string()), entry.path().string());
    ++files;
  }
  EXPECT_GT(files, 0);
}

TEST(PreproPositions, MapThroughSqueezingCommentsBlankedBranchesAndExpansions) {
  vnxSourceFile::addMacroToExpand("EXP_ONE");
  vnxSourceFile::addMacroToExpand("EXP_TWICE");
  std::string text = "#define EXP_ONE 1 + 1\n#define EXP_TWICE(x) ((x) * 2)\n";
  for (int i = 0; i < 200; ++i) {
    const std::string n = std::to_string(i);
    text += "/* block " + n + "\n   spans lines */ int  v" + n + " = ( a , b ) ;\n";
    text += "#if 0\n  dead" + n + ";\n#else\n\tlive ( x ) ;   // tail\n#endif\n";
    text += "extern \"C\" { void f" + n + "(); }\r\n#define M" + n + " \\\n   continued\n";
    text += "ZELLISTP(T" + n + ") list;   SEQUENCE(a,b) s;\nchar* s = \"  kept  \" ; char c = '\\'' ;\n";
    text += "int a" + n + " = EXP_ONE ; int b = EXP_TWICE( EXP_ONE );\n";
  }
  checkText(text, "synthetic.h");
  const std::string stream = preprocess(text).stream;  // the map above did go through expansions
  EXPECT_NE(std::string::npos, stream.find("int a0 = 1 + 1;int b =((1 + 1)* 2);")) << stream.substr(0, 300);
  EXPECT_EQ(std::string::npos, stream.find("EXP_"));
}

// Line starts found sixteen characters at a time count as a character walk (newlines at any chunk offset, runs,
// ends), whatever the order of the questions (the index remembers the last line it answered), and the whole
// per-character tables made on request agree.
TEST(PreproPositions, LineAndColumnOfEveryCharacterOfAnyTextInAnyOrder) {
  std::vector<std::string> texts;
  for (int length = 0; length <= 40; ++length) {
    texts.push_back(std::string(static_cast<size_t>(length), 'a'));
    texts.push_back(std::string(static_cast<size_t>(length), '\n'));
    for (int at = 0; at < length; at += 5)
      texts.push_back(std::string(static_cast<size_t>(at), 'x') + '\n' +
                      std::string(static_cast<size_t>(length - at - 1), 'x'));
  }
  unsigned int seed = 12345;
  const auto next = [&seed] {
    seed = seed * 1103515245u + 12345u;
    return (seed >> 16) & 0x7fff;
  };
  for (int n = 0; n < 40; ++n) {
    std::string text;
    const unsigned int density = 1u << (1 + n % 7);  // one newline in 2 to 128 characters, on average
    for (int k = 0; k < 16 * (n % 9) + n % 17 + 30 + (n % 10 == 0 ? 3000 : 0); ++k) {
      const unsigned int r = next();
      text += r % density == 0 ? '\n' : (r % 11 == 0 ? '\r' : static_cast<char>('a' + r % 26));
    }
    texts.push_back(text);
  }
  for (const std::string& text : texts) {
    const int size = static_cast<int>(text.size());
    std::vector<std::pair<int, int>> model;
    int line = 1, col = 1;
    for (int k = 0; k < size; ++k) {
      model.emplace_back(line, col);
      col = text[static_cast<size_t>(k)] == '\n' ? (++line, 1) : col + 1;
    }
    std::vector<int> order;
    for (int k = 0; k < size; ++k) order.push_back(k);
    for (int k = size - 1; k >= 0; --k) order.push_back(k);
    for (int k = 0; k < size; ++k) order.push_back(static_cast<int>(next() % static_cast<unsigned int>(size)));
    vnxSourceFile* source = vnxSourceFile::CreateFromPreprocessedText(text.c_str(), "t");
    for (const int k : order) {
      int l = 0, c = 0;
      ASSERT_EQ(0, source->GetPos(k, l, c));
      ASSERT_EQ(model[static_cast<size_t>(k)], std::make_pair(l, c)) << "offset " << k << " of a text of " << size;
    }
    const unsigned int* lines = source->getRawLineTable();
    const unsigned int* columns = source->getRawColumnTable();
    ASSERT_TRUE(lines && columns);
    for (int k = 0; k < size; ++k)
      ASSERT_EQ(model[static_cast<size_t>(k)], std::make_pair(static_cast<int>(lines[k]), static_cast<int>(columns[k])))
          << "table entry " << k << " of a text of " << size;
    source->Release();
  }
}

TEST(PreproPositions, OutOfRangeQueriesFailWithTheMessage) {
  vnxSourceFile* source = new vnxSourceFile("int a;\nint b;\n", nullptr, TAFileName());
  int line = 0, col = 0;
  EXPECT_EQ(1, source->GetPos(0, line, col)) << "no tables before the pass";
  EXPECT_EQ(1, source->getPosOfPreProcessedCharInRawStream(0)) << "a missing map answers 1";
  EXPECT_EQ(0, source->GetPoint(0).GetLine());
  ASSERT_EQ(0, source->preProcess());
  for (int bad : {-1, source->GetSize()}) {
    EXPECT_EQ(1, source->GetPos(bad, line, col));
    EXPECT_STREQ("vnxSourceFile::GetPos - Position out of bounds", source->GetErrMsg());
    EXPECT_EQ(-1, source->getPosOfPreProcessedCharInRawStream(bad));
  }
  ASSERT_EQ(0, source->GetPos(6, line, col));
  EXPECT_EQ(std::make_pair(2, 1), std::make_pair(line, col));
  source->Release();

  source = new vnxSourceFile("/* only a comment */\n", nullptr, TAFileName());
  ASSERT_EQ(0, source->preProcess());
  EXPECT_EQ(0, source->GetSize());
  EXPECT_EQ(std::make_pair(0, 0), std::make_pair(source->GetPoint(0).GetLine(), source->GetPoint(0).GetCol()))
      << "an empty stream answers the null point";
  source->Release();
}

TEST(PreproPositionsDeathTest, PointOutsideTheStreamStopsTheProcess) {
  vnxSourceFile* source = new vnxSourceFile("int a;", nullptr, TAFileName());
  ASSERT_EQ(0, source->preProcess());
  EXPECT_DEATH(source->GetPoint(source->GetSize()), "");
  source->Release();
}

}  // namespace
