// The scanners skip ordinary characters sixteen at a time: stops at every offset of a chunk, and at its
// bounds, must give what one character at a time gives.
#include <gtest/gtest.h>

#include "expression_render.h"

namespace {

// n ordinary characters: words and single blanks, never a stop.
std::string filler(int n) {
  static const char pattern[] = "abc de_f9 GhIj k";
  std::string out;
  for (int i = 0; i < n; ++i) out += pattern[i % (sizeof(pattern) - 1)];
  return out;
}

std::string word(int n) { return std::string(static_cast<size_t>(n), 'w'); }
int lastOf(const std::string& text) { return static_cast<int>(text.size()) - 1; }

constexpr int kLongest = 40;  // past two chunks and a half

TEST(TreeChunkScan, BracketWalksStopAtEveryOffsetOfAChunk) {
  for (int n = 0; n <= kLongest; ++n) {
    const std::string par = "(" + filler(n) + ")" + filler(20);
    EXPECT_EQ(vnxSyntaxe::SearchEndOfPar(par.c_str(), 0, lastOf(par)), n + 1) << par;
    EXPECT_EQ(vnxSyntaxe::SearchEndOfPar(par.c_str(), 0, n), 0) << "a closer just past the limit: " << par;
    const std::string index = "[" + filler(n) + "(x]" + filler(n) + ")]";
    EXPECT_EQ(vnxSyntaxe::SearchEndOfIndex(index.c_str(), 0, lastOf(index)), lastOf(index)) << index;
    const std::string block = "{" + filler(n) + "\"}\"" + filler(n) + "}" + filler(17);
    EXPECT_EQ(vnxSyntaxe::SearchEndOfTAPBloc(block.c_str(), 0, lastOf(block), 0), 2 * n + 4) << block;
    const std::string wide = "(" + filler(n) + "L\")\")";
    EXPECT_EQ(vnxSyntaxe::SearchEndOfPar(wide.c_str(), 0, lastOf(wide)), lastOf(wide)) << wide;
  }
}

// An 'L' stops the walks only before a quote (a wide literal), and the quote may lie in the next chunk.
TEST(TreeChunkScan, WideLiteralsAreJumpedAndOtherLettersLPassedAtEveryOffsetOfAChunk) {
  for (int n = 0; n <= kLongest; ++n) {
    const std::string lone = std::string(static_cast<size_t>(n), 'L');
    const std::string par = "(" + lone + filler(n) + "L\")\"L)" + filler(20);
    EXPECT_EQ(vnxSyntaxe::SearchEndOfPar(par.c_str(), 0, lastOf(par)), 2 * n + 6) << par;
    const std::string block = "{" + filler(n) + lone + "L'}'L}" + filler(17);
    EXPECT_EQ(vnxSyntaxe::SearchEndOfTAPBloc(block.c_str(), 0, lastOf(block), 0), 2 * n + 6) << block;
    const std::string instruction = lone + filler(n) + "L\";\"L;" + filler(20);
    EXPECT_EQ(vnxSyntaxe::SearchEndOfTAPInstruction(instruction.c_str(), 0, lastOf(instruction), 0, 0), 2 * n + 5)
        << instruction;
    const std::string open = "(" + filler(n) + "L\"" + lone + filler(20) + ")";
    vnxSyntaxe::ErrMsg = "";  // only the wide literal's own rule sets this message
    EXPECT_EQ(vnxSyntaxe::SearchEndOfPar(open.c_str(), 0, lastOf(open)), 0) << open;
    EXPECT_STREQ(vnxSyntaxe::GetErrMsg().CastToCharPtr(), "Missing \"") << open;
  }
}

TEST(TreeChunkScan, InstructionEndIsFoundAtEveryOffsetOfAChunk) {
  for (int n = 0; n <= kLongest; ++n) {
    const std::string plain = filler(n) + ";" + filler(20);
    EXPECT_EQ(vnxSyntaxe::SearchEndOfTAPInstruction(plain.c_str(), 0, lastOf(plain), 0, 0), n) << plain;
    const std::string jumped = filler(n) + "(;)" + filler(n) + ";";
    EXPECT_EQ(vnxSyntaxe::SearchEndOfTAPInstruction(jumped.c_str(), 0, lastOf(jumped), 0, 0), lastOf(jumped))
        << jumped;
    if (n > 0) { EXPECT_EQ(vnxSyntaxe::SearchEndOfTAPInstruction(filler(n).c_str(), 0, n - 1, 0, 0), n - 1) << n; }
  }
}

TEST(TreeChunkScan, ExpressionsSplitAndReportUnclosedBracketsWhateverTheirLength) {
  for (int n = 0; n <= kLongest; ++n) {
    const std::string unclosed = "f(" + word(n) + ", g(" + word(n) + ")";
    EXPECT_NE(exprtest::BuiltExpression(unclosed).status(), 0) << unclosed;
    EXPECT_STREQ(vnxSyntaxe::GetErrMsg().CastToCharPtr(), "Missing )") << unclosed;
    if (n == 0) continue;
    const std::string a = word(n), b = word(kLongest + 1 - n);
    const struct { std::string text, tree; } rows[] = {
        {a + " + " + b, "+(" + a + "," + b + ")"}, {a + "-" + b + "-" + a, "-(-(" + a + "," + b + ")," + a + ")"},
        {"unsigned " + a, "dc(unsigned," + a + ")"}, {"const " + a + " " + b, "dc(dc(const," + a + ")," + b + ")"},
        {a + "(" + b + ", " + a + ")", "mt(" + a + ",args(" + b + "," + a + "))"},
        {a + "[" + b + "]", "in(" + a + "," + b + ")"}, {"int " + a + " : 3", "dc(int,:(" + a + ",3))"}};
    for (const auto& row : rows) EXPECT_EQ(exprtest::BuiltExpression(row.text).tree(), row.tree) << row.text;
  }
}

}  // namespace
