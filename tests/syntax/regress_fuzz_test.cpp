// Reduced inputs the fuzz targets (fuzz/) found, kept so that what broke once stays fixed.
#include <gtest/gtest.h>

#include "TestSupport.h"
#include "expression_render.h"
#include "vnxSyntaxePath.h"

namespace {

using exprtest::allNodes;

// A file cut short after an operator or keyword leaves a size-0 node one past the stream's end:
// its path must still be built (GetPoint stops the process outside the stream) and be a single point.
TEST(SyntaxFuzzRegress, PathOfAnEmptyNodeAtTheEndOfTheStreamIsBuilt) {
  const char* const texts[] = {"int x =", "a.", "a +", "p->", "x = a ?", "return", "if(a)", "a,", "!"};
  for (const char* text : texts) {
    SCOPED_TRACE(text);
    StreamCapture quiet;
    exprtest::RootedText tree(text, "regress.cpp");
    ASSERT_EQ(0, tree.root()->Build(0));
    for (vnxSyntaxe* node : allNodes(tree.root())) {
      vnxSyntaxePath path(node);
      EXPECT_EQ(node->GetDepth(), path.GetPosInTree().Size());
      if (node->GetSize() != 0) continue;
      EXPECT_TRUE(path.GetBeginPoint().GetLine() == path.GetEndPoint().GetLine() &&
                  path.GetBeginPoint().GetCol() == path.GetEndPoint().GetCol());
    }
  }
}

// A million-word expression (nested repeating macros make one from a few hundred bytes) used to be
// rescanned at each "dc" level: length times the depth limit. A relapse shows as ctest's timeout.
TEST(SyntaxFuzzRegress, ALongDeclarationWithoutOperatorsIsBuiltInLinearTime) {
  std::string million;
  for (int i = 0; i < 1000000; ++i) million += "1 ";
  std::string longWords;  // 800 words of 1 000 characters: within the depth limit
  for (int i = 0; i < 800; ++i) longWords += std::string(999, 'w') + "1 ";
  std::string callsAndIndexes;  // left operands cut before "(...)" and "[...]" too
  for (int i = 0; i < 100000; ++i) callsAndIndexes += "f(x) g[1] ";
  const struct { const char* label; std::string text; int status; const char* message; size_t nodes; } rows[] = {
      // File, instruction, then the expressions down to depth 901, which fails before any right operand is made.
      {"a million words", million + ";", 1, "Depth too high when building a vnxExpression : 901", 902},
      // File, instruction, 799 "dc", 800 words as "id" with their leaves.
      {"800 long words", longWords + ";", 0, "", 2 + 799 + 800 * 2},
      {"calls and indexes", callsAndIndexes + ";", 1, "Depth too high when building a vnxExpression : 901", 902},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.label);
    StreamCapture quiet;
    exprtest::RootedText tree(row.text, "regress.cpp");
    EXPECT_EQ(row.status, tree.root()->Build(0));
    EXPECT_STREQ(row.message, vnxSyntaxe::GetErrMsg().CastToCharPtr());
    EXPECT_EQ(1, tree.root()->ChildCount());
    EXPECT_EQ(row.nodes, allNodes(tree.root()).size());
  }
}

}  // namespace
