// Inputs the fuzz targets found (fuzz/), reduced, kept so that what broke
// once stays fixed.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "TestSupport.h"
#include "vnxSourceFile.h"
#include "vnxSyntaxe.h"
#include "vnxSyntaxePath.h"

namespace {

// Every node of the tree under root, depth first.
std::vector<vnxSyntaxe*> allNodes(vnxSyntaxe* root) {
  std::vector<vnxSyntaxe*> nodes, pending{root};
  while (!pending.empty()) {
    vnxSyntaxe* node = pending.back();
    pending.pop_back();
    nodes.push_back(node);
    for (int i = node->ChildCount(); i >= 1; --i) pending.push_back(node->Child(i));
  }
  return nodes;
}

// A file cut short after an operator, a keyword or a condition leaves an
// empty operand or body: a size-0 node placed one past the last character of
// the stream. Its path must still be built (GetPoint stops the process on an
// offset outside the stream), and it begins and ends at the same point.
TEST(SyntaxFuzzRegress, PathOfAnEmptyNodeAtTheEndOfTheStreamIsBuilt) {
  const char* const texts[] = {"int x =", "a.", "a +", "p->", "x = a ?", "return", "if(a)", "a,", "!"};
  for (const char* text : texts) {
    SCOPED_TRACE(text);
    StreamCapture quiet;
    vnxSourceFile* source = vnxSourceFile::CreateFromPreprocessedText(text, "regress.cpp");
    vnxSyntaxe* root = vnxSyntaxe::CreateTAPSyntaxe(vnxSyntaxe::kFile, source, 0, source->GetSize(), 1);
    ASSERT_EQ(0, root->Build(0));
    for (vnxSyntaxe* node : allNodes(root)) {
      vnxSyntaxePath path(node);
      EXPECT_EQ(node->GetDepth(), path.GetPosInTree().Size());
      if (node->GetSize() != 0) continue;
      EXPECT_EQ(path.GetBeginPoint().GetLine(), path.GetEndPoint().GetLine());
      EXPECT_EQ(path.GetBeginPoint().GetCol(), path.GetEndPoint().GetCol());
    }
    root->Release();
    source->Release();
  }
}

// One expression of a million words, as a macro whose replacement repeats its
// argument, nested a few levels, gives from a file of a few hundred bytes.
// Each "dc" level peels off the last word and its left operand, the rest,
// used to be scanned all over again: the text's length times the depth limit
// (900). The shorter operands now read one scan of the whole text, and a
// relapse shows as this test running into ctest's timeout.
TEST(SyntaxFuzzRegress, ALongDeclarationWithoutOperatorsIsBuiltInLinearTime) {
  std::string million;
  for (int i = 0; i < 1000000; ++i) million += "1 ";
  std::string longWords;  // 800 words of 1 000 characters: within the depth limit
  for (int i = 0; i < 800; ++i) longWords += std::string(999, 'w') + "1 ";
  std::string callsAndIndexes;  // left operands cut before "(...)" and "[...]" too
  for (int i = 0; i < 100000; ++i) callsAndIndexes += "f(x) g[1] ";
  const struct {
    const char* label;
    std::string text;
    int status;
    const char* message;
    size_t nodes;
  } rows[] = {
      // File, instruction, then the expressions down to depth 901, whose
      // build fails before any right operand is made.
      {"a million words", million + ";", 1, "Depth too high when building a vnxExpression : 901", 902},
      // File, instruction, 799 "dc", 800 words as "id" with their leaves.
      {"800 long words", longWords + ";", 0, "", 2 + 799 + 800 * 2},
      {"calls and indexes", callsAndIndexes + ";", 1, "Depth too high when building a vnxExpression : 901", 902},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.label);
    StreamCapture quiet;
    vnxSourceFile* source = vnxSourceFile::CreateFromPreprocessedText(row.text.c_str(), "regress.cpp");
    vnxSyntaxe* root = vnxSyntaxe::CreateTAPSyntaxe(vnxSyntaxe::kFile, source, 0, source->GetSize(), 1);
    vnxSyntaxe::ErrMsg = "";
    EXPECT_EQ(row.status, root->Build(0));
    EXPECT_STREQ(row.message, vnxSyntaxe::GetErrMsg().CastToCharPtr());
    EXPECT_EQ(1, root->ChildCount());
    EXPECT_EQ(row.nodes, allNodes(root).size());
    root->Release();
    source->Release();
  }
}

}  // namespace
