// Paths of nodes: file, chain of positions, begin and end points, equality.
#include <gtest/gtest.h>

#include <vector>

#include "vnxSourceFile.h"
#include "vnxSyntaxe.h"
#include "vnxSyntaxePath.h"

namespace {

std::vector<int> positions(const ZELRawCollint& list) {
  std::vector<int> out;
  for (int i = 1; i <= list.Size(); ++i) out.push_back(list[i]);
  return out;
}

class Attach : public vnxSyntaxe {
 public:
  static vnxSyntaxe* add(vnxSyntaxe* father, int type, int begin, int size) {
    vnxSyntaxe* child = CreateTAPSyntaxe(type, father, begin, size, father->ChildCount() + 1);
    (father->*&Attach::Append)(child);
    child->Release();
    return child;
  }
};

// Built over two lines: "a;" then "{ b; c; }".
class TreePath : public ::testing::Test {
 protected:
  void SetUp() override {
    source = vnxSourceFile::CreateFromPreprocessedText("a;\n{ b; c; }", "path.cpp");
    root = vnxSyntaxe::CreateTAPSyntaxe(vnxSyntaxe::kFile, source, 0, source->GetSize(), 1);
    Attach::add(root, vnxSyntaxe::kInstruction, 0, 1);          // a
    block = Attach::add(root, vnxSyntaxe::kTAPBloc, 4, 7);      // " b; c; "
    Attach::add(block, vnxSyntaxe::kInstruction, 5, 1);         // b
    c = Attach::add(block, vnxSyntaxe::kInstruction, 8, 1);     // c
    cExpression = Attach::add(c, vnxSyntaxe::kExpression, 8, 1);
  }
  void TearDown() override {
    root->Release();
    source->Release();
  }
  vnxSourceFile* source = nullptr;
  vnxSyntaxe* root = nullptr;
  vnxSyntaxe* block = nullptr;
  vnxSyntaxe* c = nullptr;
  vnxSyntaxe* cExpression = nullptr;
};

TEST_F(TreePath, PathCarriesFilePositionsAndPoints) {
  vnxSyntaxePath path(cExpression);
  EXPECT_STREQ(path.GetFilePath(), "path.cpp");
  EXPECT_EQ(positions(path.GetPosInTree()), (std::vector<int>{2, 2, 1}));
  EXPECT_EQ(path.GetBeginPoint().GetLine(), 2);
  EXPECT_EQ(path.GetBeginPoint().GetCol(), 6);
  EXPECT_EQ(path.GetEndPoint().GetCol(), 6);

  ZELRawCollint chain;
  chain.Append(99);
  EXPECT_EQ(cExpression->GetTAPSyntaxePath(chain), 0);
  EXPECT_EQ(positions(chain), (std::vector<int>{99, 2, 2, 1})) << "appended after what the list held";
}

TEST_F(TreePath, RootPathHasNoPositionsButItsPoints) {
  vnxSyntaxePath path(root);
  EXPECT_EQ(path.GetPosInTree().Size(), 0);
  EXPECT_EQ(path.GetBeginPoint().GetLine(), 1);
  EXPECT_EQ(path.GetBeginPoint().GetCol(), 1);
  EXPECT_EQ(path.GetEndPoint().GetLine(), 2);
  EXPECT_EQ(path.GetEndPoint().GetCol(), 9);
}

TEST_F(TreePath, BlockPathCoversItsBraces) {
  vnxSyntaxePath path(block);
  EXPECT_EQ(path.GetBeginPoint().GetLine(), 2);
  EXPECT_EQ(path.GetBeginPoint().GetCol(), 1);
  EXPECT_EQ(path.GetEndPoint().GetCol(), 9);
}

TEST_F(TreePath, EmptyNodeBeginsAndEndsAtTheSamePoint) {
  vnxSyntaxePath path(Attach::add(block, vnxSyntaxe::kSyntaxeNULL, 7, 0));
  EXPECT_EQ(path.GetBeginPoint().GetCol(), 5);
  EXPECT_EQ(path.GetEndPoint().GetCol(), 5);
  EXPECT_EQ(path.GetBeginPoint().GetLine(), path.GetEndPoint().GetLine());
}

TEST_F(TreePath, EqualityIsAboutCharactersNotPlaceInTheTree) {
  vnxSyntaxePath instruction(c);
  vnxSyntaxePath expression(cExpression);
  EXPECT_NE(positions(instruction.GetPosInTree()), positions(expression.GetPosInTree()));
  EXPECT_EQ(instruction.IsEqual(expression), 1);
  vnxSyntaxePath blockPath(block);
  EXPECT_EQ(instruction.IsEqual(blockPath), 0);

  vnxSourceFile* twin = vnxSourceFile::CreateFromPreprocessedText("a;\n{ b; c; }", "twin.cpp");
  vnxSyntaxe* twinRoot = vnxSyntaxe::CreateTAPSyntaxe(vnxSyntaxe::kFile, twin, 0, twin->GetSize(), 1);
  vnxSyntaxePath other(twinRoot);
  vnxSyntaxePath mine(root);
  EXPECT_EQ(mine.IsEqual(other), 0) << "another file";
  twinRoot->Release();
  twin->Release();
}

TEST_F(TreePath, CopiesCarryEverythingAndNullGivesTheEmptyPath) {
  vnxSyntaxePath original(cExpression);
  vnxSyntaxePath fromPointer(&original);
  vnxSyntaxePath assigned;
  assigned = original;
  for (vnxSyntaxePath* path : {&fromPointer, &assigned}) {
    EXPECT_EQ(path->IsEqual(original), 1);
    EXPECT_EQ(positions(path->GetPosInTree()), positions(original.GetPosInTree()));
  }
  vnxSyntaxePath fromNull(static_cast<vnxSyntaxePath*>(nullptr));
  vnxSyntaxePath ofNull(static_cast<vnxSyntaxe*>(nullptr));
  for (vnxSyntaxePath* path : {&fromNull, &ofNull}) {
    EXPECT_STREQ(path->GetFilePath(), "");
    EXPECT_EQ(path->GetPosInTree().Size(), 0);
    EXPECT_EQ(path->GetEndPoint().GetCol(), 0);
  }
}

}  // namespace
