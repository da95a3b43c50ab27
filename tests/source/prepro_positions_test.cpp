// Every preprocessed character maps back to the raw character it came from, over samples and synthetic text.
#include <gtest/gtest.h>

#include <filesystem>
#include <utility>

#include "directive_test_support.h"

namespace {

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
  int previous = -1;
  for (int k = 0; k < source.GetSize(); ++k) {
    const int r = source.getPosOfPreProcessedCharInRawStream(k);
    ASSERT_GE(r, 0) << label << " at " << k;
    ASSERT_LT(r, static_cast<int>(raw.size())) << label << " at " << k;
    EXPECT_GE(r, previous) << label << ": map goes backwards at " << k;
    previous = r;
    const char c = stream[k];
    // A blank may also stand for a blanked dead branch or a folded brace.
    const bool same = c == raw[static_cast<size_t>(r)] || c == ' ';
    bool macroStart = false;
    for (const char* name : {"ZELLISTP", "ZELLISTV", "SEQUENCE", "EXP_"})
      macroStart = macroStart || raw.compare(static_cast<size_t>(r), std::strlen(name), name) == 0;
    EXPECT_TRUE(same || macroStart) << label << ": stream[" << k << "]='" << c << "' maps to raw[" << r << "]='"
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

TEST(PreproPositions, MapThroughSqueezingCommentsAndBlankedBranches) {
  std::string text;
  for (int i = 0; i < 200; ++i) {
    text += "/* block " + std::to_string(i) + "\n   spans lines */ int  v" + std::to_string(i) + " = ( a , b ) ;\n";
    text += "#if 0\n  dead" + std::to_string(i) + ";\n#else\n\tlive ( x ) ;   // tail\n#endif\n";
    text += "extern \"C\" { void f" + std::to_string(i) + "(); }\r\n";
    text += "#define M" + std::to_string(i) + " \\\n   continued\n";
    text += "ZELLISTP(T" + std::to_string(i) + ") list;   SEQUENCE(a,b) s;\n";
    text += "char* s = \"  kept  \" ; char c = '\\'' ;\n";
  }
  checkText(text, "synthetic.h");
}

TEST(PreproPositions, ExpandedTextMapsToTheMacroName) {
  vnxSourceFile::addMacroToExpand("EXP_ONE");
  vnxSourceFile::addMacroToExpand("EXP_TWICE");
  std::string text = "#define EXP_ONE 1 + 1\n#define EXP_TWICE(x) ((x) * 2)\n";
  for (int i = 0; i < 50; ++i) text += "int a" + std::to_string(i) + " = EXP_ONE ; int b = EXP_TWICE( EXP_ONE );\n";
  checkText(text, "expand.h");

  const Preprocessed pass = preprocess(text);
  ASSERT_EQ(0, pass.status);
  const std::string& stream = pass.stream;
  EXPECT_EQ(std::string::npos, stream.find("EXP_")) << stream.substr(0, 200);
  EXPECT_NE(std::string::npos, stream.find("int a0 = 1 + 1;")) << stream.substr(0, 200);
}

// Tables filled sixteen characters at a time count as a character walk: newlines at any chunk offset, runs, ends.
TEST(PreproPositions, LineAndColumnOfEveryCharacterOfAnyText) {
  std::vector<std::string> texts;
  for (int length = 0; length <= 40; ++length) {
    texts.push_back(std::string(static_cast<size_t>(length), 'a'));
    texts.push_back(std::string(static_cast<size_t>(length), '\n'));
    for (int at = 0; at < length; at += 5) {
      std::string one(static_cast<size_t>(length), 'x');
      one[static_cast<size_t>(at)] = '\n';
      texts.push_back(one);
    }
  }
  unsigned int seed = 12345;
  for (int n = 0; n < 40; ++n) {
    std::string text;
    const unsigned int density = 1 + n % 7;  // one newline in 2 to 128 characters, on average
    for (size_t k = 0; k < 16 * static_cast<size_t>(n % 9) + static_cast<size_t>(n % 17) + 30; ++k) {
      seed = seed * 1103515245u + 12345u;
      const unsigned int r = (seed >> 16) & 0x7fff;
      text += r % (1u << density) == 0 ? '\n' : (r % 11 == 0 ? '\r' : static_cast<char>('a' + r % 26));
    }
    texts.push_back(text);
  }
  for (const std::string& text : texts) {
    vnxSourceFile* source = vnxSourceFile::CreateFromPreprocessedText(text.c_str(), "t");
    int line = 1, col = 1;
    for (int k = 0; k < static_cast<int>(text.size()); ++k) {
      int l = 0, c = 0;
      ASSERT_EQ(0, source->GetPos(k, l, c));
      ASSERT_EQ(std::make_pair(line, col), std::make_pair(l, c)) << "offset " << k << " of a text of " << text.size();
      col = text[static_cast<size_t>(k)] == '\n' ? (++line, 1) : col + 1;
    }
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
