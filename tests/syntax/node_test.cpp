// The node: pools, children, siblings, positions, text, paths, comparison, dump.
#include <gtest/gtest.h>

#include "TestSupport.h"
#include "expression_render.h"
#include "vnxSyntaxePath.h"

namespace {

// Append is protected: a subclass names it (never instantiated). The builder's hold is dropped.
class Attach : public vnxSyntaxe {
 public:
  static vnxSyntaxe* append(vnxSyntaxe* father, vnxSyntaxe* child) {
    (father->*&Attach::Append)(child);
    child->Release();
    return child;
  }
};

// A source over text and a root of the given type spanning it, released with it.
class Tree : public exprtest::RootedText {
 public:
  explicit Tree(const char* text, int type = vnxSyntaxe::kFile, const char* name = "t.cpp")
      : RootedText(text, name, type) {}
  vnxSyntaxe* add(vnxSyntaxe* father, int type, int begin, int size) {  // over [begin, begin + size), appended
    return Attach::append(father, vnxSyntaxe::CreateTAPSyntaxe(type, father, begin, size, father->ChildCount() + 1));
  }
};

TEST(TreeNode, PoolGrowsByWholeBlocksAndFreesThemWhenEveryNodeIsGone) {
  ASSERT_EQ(vnxSyntaxe::GetPoolLiveCount() + vnxSyntaxe::GetPoolBlockCount(), 0);
  vnxSourceFile* source = vnxSourceFile::CreateFromPreprocessedText("abc", "p.cpp");
  std::vector<vnxSyntaxe*> nodes;
  for (int i = 0; i < 1025; ++i) nodes.push_back(vnxSyntaxe::CreateTAPSyntaxe(1, source, 0, 3, 1));
  EXPECT_EQ(vnxSyntaxe::GetPoolLiveCount(), 1025);
  EXPECT_EQ(vnxSyntaxe::GetPoolBlockCount(), 2);
  EXPECT_EQ(source->GetRefCount(), 1026) << "every node holds its source";
  for (int i = 0; i < 1024; ++i) nodes[i]->Release();
  EXPECT_EQ(vnxSyntaxe::GetPoolBlockCount(), 1) << "the first block is freed once all its nodes are dead";
  vnxSyntaxe* more = vnxSyntaxe::CreateTAPSyntaxe(1, source, 1, 1, 1);
  EXPECT_STREQ(more->GetContent(), "b");
  more->Release();
  nodes[1024]->Release();
  EXPECT_EQ(vnxSyntaxe::GetPoolLiveCount() + vnxSyntaxe::GetPoolBlockCount(), 0);
  EXPECT_EQ(source->GetRefCount(), 1);
  source->Release();
}

TEST(TreeNode, ChildrenGrowInOrderWalkLinearlyAndOutOfRangeIsNullAndReported) {
  const int n = 100000;
  const std::string text(n, 'x');
  Tree tree(text.c_str());
  std::vector<vnxSyntaxe*> added;
  for (int i = 0; i < n; ++i) added.push_back(tree.add(tree.root(), 5, i, 1));
  ASSERT_EQ(tree.root()->ChildCount(), n);
  for (int i = 1; i <= n; ++i) {
    EXPECT_EQ(tree.root()->Child(i), added[i - 1]);
    EXPECT_EQ(added[i - 1]->GetPosInFather(), i);
    EXPECT_EQ(added[i - 1]->GetParent(), tree.root());
    EXPECT_EQ(added[i - 1]->GetDepth(), 1);
    EXPECT_EQ(added[i - 1]->GetRefCount(), 1) << "only the father holds it";
  }
  EXPECT_EQ(tree.root()->GetLastLeaf(), added.back());
  EXPECT_EQ(added[3]->GetLastLeaf(), added[3]);
  int forward = 1, backward = 1;
  for (vnxSyntaxe* node = added.front(); node->getNext(); node = node->getNext()) ++forward;
  for (vnxSyntaxe* node = added.back(); node->getPrevious(); node = node->getPrevious()) ++backward;
  EXPECT_EQ(forward + backward, 2 * n);
  StreamCapture capture;
  EXPECT_EQ(tree.root()->Child(0), nullptr);
  EXPECT_EQ(tree.root()->Child(n + 1), nullptr);
  EXPECT_EQ(capture.lines(), (std::vector<std::string>{" vnxSyntaxe:Child Bad Index", " vnxSyntaxe:Child Bad Index"}));
}

TEST(TreeNode, ChildArraysFreedByOneTreeServeTheNextWithoutMixingChildren) {
  // Counts on both sides of each capacity step; two fathers grow side by side,
  // so an array handed to both, or kept after its release, shows as a wrong child.
  const int counts[] = {3, 7, 8, 12, 13, 17, 23, 33, 70};
  const long long bytesBefore = vnxSyntaxe::GetChildArrayBytes();
  for (int round = 0; round < 2; ++round) {
    for (const int count : counts) {
      const std::string text(count, 'x');
      Tree tree(text.c_str());
      vnxSyntaxe* fathers[2] = {tree.add(tree.root(), 2, 0, count), tree.add(tree.root(), 2, 0, count)};
      std::vector<vnxSyntaxe*> added[2];
      for (int i = 0; i < count; ++i)
        for (int f = 0; f < 2; ++f) added[f].push_back(tree.add(fathers[f], 5, i, 1));
      for (int f = 0; f < 2; ++f) {
        ASSERT_EQ(fathers[f]->ChildCount(), count);
        for (int i = 1; i <= count; ++i) EXPECT_EQ(fathers[f]->Child(i), added[f][i - 1]) << count << " " << i;
      }
      const long long capacity = 2 + 5 * ((count - 2 + 4) / 5);
      EXPECT_EQ(vnxSyntaxe::GetChildArrayBytes() - bytesBefore, 2 * capacity * static_cast<long long>(sizeof(vnxSyntaxe*))) << count;
    }
    EXPECT_EQ(vnxSyntaxe::GetChildArrayBytes(), bytesBefore) << "round " << round;
  }
}

TEST(TreeNode, SiblingsAreFoundAtBothEndsAndForMisplacedNodes) {
  Tree tree("abcd");
  vnxSyntaxe* a = tree.add(tree.root(), 5, 0, 1);
  vnxSyntaxe* b = tree.add(tree.root(), 5, 1, 1);
  vnxSyntaxe* c = tree.add(tree.root(), 5, 2, 1);
  const struct { vnxSyntaxe *node, *next, *previous; } rows[] = {
      {a, b, nullptr}, {b, c, a}, {c, nullptr, b}, {tree.root(), nullptr, nullptr}};
  for (const auto& row : rows) {
    EXPECT_EQ(row.node->getNext(), row.next);
    EXPECT_EQ(row.node->getPrevious(), row.previous);
  }

  // A node whose recorded position is wrong is still found; one never appended has no siblings.
  vnxSyntaxe* stray = Attach::append(tree.root(), vnxSyntaxe::CreateTAPSyntaxe(5, tree.root(), 3, 1, 1));
  EXPECT_TRUE(stray->getPrevious() == c && stray->getNext() == nullptr);
  vnxSyntaxe* orphan = vnxSyntaxe::CreateTAPSyntaxe(5, tree.root(), 0, 1, 1);
  EXPECT_TRUE(orphan->getNext() == nullptr && orphan->getPrevious() == nullptr);
  orphan->Release();
}

TEST(TreeNode, ReleasingAVeryDeepTreeDoesNotRecurse) {
  const int baseline = vnxSyntaxe::GetPoolLiveCount();
  {
    Tree tree("x");
    vnxSyntaxe* node = tree.root();
    for (int i = 0; i < 300000; ++i) node = tree.add(node, 4, 0, 1);
    EXPECT_EQ(node->GetDepth(), 300000);
    EXPECT_EQ(vnxSyntaxe::GetPoolLiveCount(), baseline + 300001);
  }
  EXPECT_EQ(vnxSyntaxe::GetPoolLiveCount(), baseline);
}

using exprtest::liveTotal;
int subtreeSize(vnxSyntaxe* node) { return static_cast<int>(exprtest::allNodes(node).size()); }

TEST(TreeNode, ASubtreeHeldFromOutsideOutlivesItsTreeWithItsSourceAndChildren) {
  const int baseline = liveTotal();
  const char* text = "f(a, b); if(x) { y = g(z, w); } h();";
  vnxSourceFile* source = vnxSourceFile::CreateFromPreprocessedText(text, "hold.cpp");
  vnxSyntaxe* root = vnxSyntaxe::CreateTAPSyntaxe(vnxSyntaxe::kFile, source, 0, source->GetSize(), 1);
  ASSERT_EQ(root->Build(0), 0);
  vnxSyntaxe* held = root->Child(2);  // the if
  const int heldNodes = subtreeSize(held);
  ASSERT_GT(heldNodes, 5);
  vnxSyntaxe* deepLeaf = held->GetLastLeaf();
  deepLeaf->AddRef();  // a second outside hold, inside the held subtree
  held->AddRef();
  root->Release();
  EXPECT_EQ(liveTotal(), baseline + heldNodes) << "only the held subtree is left";
  EXPECT_EQ(source->GetRefCount(), 1 + heldNodes) << "each node left still holds the source";
  EXPECT_EQ(subtreeSize(held), heldNodes);
  EXPECT_STREQ(held->GetContent(), "if(x) { y = g(z, w); }");
  EXPECT_STREQ(deepLeaf->GetContent(), "w");
  held->Release();
  EXPECT_EQ(liveTotal(), baseline + 1) << "the leaf still held";
  EXPECT_STREQ(deepLeaf->GetContent(), "w");
  deepLeaf->Release();
  EXPECT_EQ(liveTotal(), baseline);
  EXPECT_EQ(source->GetRefCount(), 1);
  source->Release();
}

// A node of a caller's own class, from the heap, in a tree of pooled nodes.
class HeapNode : public vnxSyntaxe {
 public:
  static int returned;
  static vnxSyntaxe* add(vnxSyntaxe* father, int begin, int size) {
    HeapNode* node = new HeapNode;
    node->create(vnxSyntaxe::kExpression, father, begin, size, father->ChildCount() + 1);
    return Attach::append(father, node);
  }

 protected:
  void ReturnToPool() override { ++returned; delete this; }
};
int HeapNode::returned = 0;

TEST(TreeNode, ReleasingATreeGivesEachNodeBackWhereItCameFrom) {
  const int baseline = liveTotal();
  HeapNode::returned = 0;
  {
    Tree tree("a+b c");
    vnxSyntaxe* pooled = tree.add(tree.root(), vnxSyntaxe::kExpression, 0, 3);
    vnxSyntaxe* own = HeapNode::add(pooled, 0, 1);
    tree.add(own, vnxSyntaxe::kTAPIdentifiant, 0, 1);  // a pooled node under the caller's one
    HeapNode::add(tree.root(), 4, 1);
    EXPECT_EQ(liveTotal(), baseline + 3);
  }
  EXPECT_EQ(HeapNode::returned, 2);
  EXPECT_EQ(liveTotal(), baseline);
}

TEST(TreeNode, PositionsTextAndBlockSizesComeFromTheSourceStream) {
  Tree tree("ab\ncd_var *p*");
  vnxSyntaxe* node = tree.add(tree.root(), 5, 3, 6);  // "cd_var"
  EXPECT_EQ(node->GetEnd(), 9);
  int line = -1, col = -1, endCol = -1, scopeCol = -1;
  node->GetPos(line, col);
  node->GetEndPos(line, endCol);
  node->GetPosEndOfScope(line, scopeCol);
  EXPECT_EQ((std::vector<int>{line, col, endCol, scopeCol, node->getBeginPosInChar(), node->getEndPosInChar()}),
            (std::vector<int>{2, 1, 6, 7, 3, 8}));
  EXPECT_STREQ(node->GetSource(), "t.cpp");
  EXPECT_EQ(std::string(node->GetStream()), "cd_var *p*");
  EXPECT_STREQ(node->GetContent(), "cd_var");
  EXPECT_EQ(node->GetContent(), node->GetContent()) << "copied once";
  EXPECT_EQ((std::vector<int>{node->StartWith("cd"), node->StartWith("cd_var!"), node->EndWith("_var"),
                              node->EndWith(""), node->IsHandler(), node->IsPointer()}),
            (std::vector<int>{1, 0, 1, 1, 1, 0}));
  EXPECT_EQ(tree.add(tree.root(), 5, 10, 1)->IsPointer(), 0) << "a lone '*' is not a pointer";
  EXPECT_EQ(tree.add(tree.root(), 5, 11, 2)->IsPointer(), 1);
  EXPECT_EQ(tree.add(tree.root(), 5, 5, 4)->IsHandler(), 0) << "\"_var\" alone is not a handler";
  Tree blocks("{a\nb\nc}{}x");  // a block's size in lines
  EXPECT_EQ(blocks.add(blocks.root(), 2, 1, 5)->GetBlocSize(), 3);
  EXPECT_EQ(blocks.add(blocks.root(), 2, 8, 0)->GetBlocSize(), 1);
  EXPECT_EQ(blocks.add(blocks.root(), 3, 1, 5)->GetBlocSize(), 0) << "only blocks have a size in lines";
}

TEST(TreeNode, EmptyAndSourcelessNodesAnswerNeutralValues) {
  Tree tree("abc");
  vnxSyntaxe* empty = tree.add(tree.root(), 5, 1, -4);
  EXPECT_EQ(empty->GetSize(), 0);
  EXPECT_EQ(std::string(empty->GetStream()) + empty->GetContent(), "");

  vnxSyntaxe* bare = vnxSyntaxe::CreateTAPSyntaxe(1, static_cast<vnxSourceFile*>(nullptr), 0, 3, 1);
  EXPECT_EQ(bare->GetType(), 0) << "a null file leaves the pool's state";
  EXPECT_TRUE(bare->GetSource() == nullptr && bare->GetContent() == nullptr);
  EXPECT_STREQ(bare->GetStream(), "");
  int line = 7, col = 7;
  bare->GetPos(line, col);
  EXPECT_EQ((std::vector<int>{bare->getBeginPosInChar(), bare->StartWith(""), line, bare->Build(1), bare->Dump("", 1)}),
            (std::vector<int>{-1, 0, 7, 1, 1}));
  bare->Release();
}

std::vector<int> positions(const ZELRawCollint& list) {
  std::vector<int> out;
  for (int i = 1; i <= list.Size(); ++i) out.push_back(list[i]);
  return out;
}

std::string points(const vnxSyntaxePath& path) {
  const vnxSyntaxePoint b = path.GetBeginPoint(), e = path.GetEndPoint();
  return std::to_string(b.GetLine()) + ":" + std::to_string(b.GetCol()) + "-" + std::to_string(e.GetLine()) + ":" +
         std::to_string(e.GetCol());
}

TEST(TreeNode, PathsCarryFilePositionsAndPointsAndCompareByCharacters) {
  Tree tree("a;\n{ b; c; }", vnxSyntaxe::kFile, "path.cpp");
  vnxSyntaxe* root = tree.root();
  tree.add(root, vnxSyntaxe::kInstruction, 0, 1);                  // a
  vnxSyntaxe* block = tree.add(root, vnxSyntaxe::kTAPBloc, 4, 7);  // " b; c; "
  tree.add(block, vnxSyntaxe::kInstruction, 5, 1);                 // b
  vnxSyntaxe* c = tree.add(block, vnxSyntaxe::kInstruction, 8, 1);
  vnxSyntaxe* cExpression = tree.add(c, vnxSyntaxe::kExpression, 8, 1);
  vnxSyntaxe* empty = tree.add(block, vnxSyntaxe::kSyntaxeNULL, 7, 0);

  vnxSyntaxePath path(cExpression);
  EXPECT_STREQ(path.GetFilePath(), "path.cpp");
  EXPECT_EQ(positions(path.GetPosInTree()), (std::vector<int>{2, 2, 1}));
  const struct { vnxSyntaxe* node; const char* points; } rows[] = {
      {cExpression, "2:6-2:6"}, {root, "1:1-2:9"}, {block, "2:1-2:9"} /* with its braces */, {empty, "2:5-2:5"}};
  for (const auto& row : rows) EXPECT_EQ(points(vnxSyntaxePath(row.node)), row.points) << row.points;

  ZELRawCollint chain;
  chain.Append(99);
  EXPECT_EQ(cExpression->GetTAPSyntaxePath(chain), 0);
  EXPECT_EQ(positions(chain), (std::vector<int>{99, 2, 2, 1})) << "appended after what the list held";

  // Equality is about the file and the characters, not the place in the tree.
  vnxSyntaxePath instruction(c), blockPath(block), rootPath(root);
  EXPECT_EQ(instruction.IsEqual(path), 1);
  EXPECT_EQ(instruction.IsEqual(blockPath), 0);
  Tree twin("a;\n{ b; c; }", vnxSyntaxe::kFile, "twin.cpp");
  vnxSyntaxePath other(twin.root());
  EXPECT_EQ(rootPath.IsEqual(other), 0) << "another file";

  // Copies carry everything; a null node or path gives the empty path.
  vnxSyntaxePath fromPointer(&path), assigned;
  assigned = path;
  for (vnxSyntaxePath* copy : {&fromPointer, &assigned}) {
    EXPECT_EQ(copy->IsEqual(path), 1);
    EXPECT_EQ(positions(copy->GetPosInTree()), positions(path.GetPosInTree()));
  }
  vnxSyntaxePath fromNull(static_cast<vnxSyntaxePath*>(nullptr)), ofNull(static_cast<vnxSyntaxe*>(nullptr)),
      ofRoot(root);
  for (vnxSyntaxePath* none : {&fromNull, &ofNull, &ofRoot}) EXPECT_EQ(none->GetPosInTree().Size(), 0);
  for (vnxSyntaxePath* none : {&fromNull, &ofNull}) {
    EXPECT_STREQ(none->GetFilePath(), "");
    EXPECT_EQ(points(*none), "0:0-0:0");
  }
}

TEST(TreeNode, NodesCompareBySourceNameAndSlice) {
  Tree one("int a;", vnxSyntaxe::kFile, "same.cpp");
  Tree two("int a;", vnxSyntaxe::kFile, "same.cpp");
  Tree other("int a;", vnxSyntaxe::kFile, "other.cpp");
  vnxSyntaxe* a = one.add(one.root(), 3, 0, 5);
  vnxSyntaxe* b = two.add(two.root(), 4, 0, 5);
  EXPECT_TRUE(*a == *b && *a == b && !(*a != b)) << "type and tree do not matter";
  EXPECT_FALSE(*a == *other.add(other.root(), 3, 0, 5));
  EXPECT_FALSE(*a == *one.add(one.root(), 3, 0, 4));
  const vnxSyntaxe* none = nullptr;
  EXPECT_TRUE(!(*a == none) && *a != none);
  vnxSourceFile* noFile = nullptr;
  vnxSyntaxe* bare1 = vnxSyntaxe::CreateTAPSyntaxe(1, noFile, 0, 0, 1);
  vnxSyntaxe* bare2 = vnxSyntaxe::CreateTAPSyntaxe(1, noFile, 0, 0, 1);
  EXPECT_TRUE(*bare1 == *bare2);
  EXPECT_FALSE(*bare1 == *one.add(one.root(), 3, 0, 0)) << "one sourceless, one not";
  bare1->Release();
  bare2->Release();
}

TEST(TreeNode, DumpPrintsNamesTagsAndAtMostFiftyNineCharacters) {
  const std::string text = std::string(60, 'x') + "y" + "ab;cd";
  Tree tree(text.c_str(), vnxSyntaxe::kFile, "dump.cpp");
  vnxSyntaxe* root = tree.root();
  tree.add(root, 3, 0, 60);  // exactly 60: 59 shown, no "..."
  tree.add(root, 4, 0, 61);
  vnxSyntaxe* block = tree.add(root, 2, 61, 2);
  tree.add(block, 5, 61, 2);
  for (int type : {9, 6, 8}) tree.add(root, type, type == 9 ? 63 : 64, type == 9 ? 1 : 2);

  StreamCapture capture;
  EXPECT_EQ(root->Dump("> ", 1), 0);
  const std::string fiftyNine(59, 'x');
  EXPECT_EQ(capture.lines(), (std::vector<std::string>{"> Filedump.cpp", "", ">   vnxInstruction  " + fiftyNine,
                                                       ">   vnxExpression  " + fiftyNine + "...", ">   TAPBloc",
                                                       ">     TAPIdentifiant  ab", ">   SyntaxeNULL  ;", ">   Arguments",
                                                       ">   Declaration  cd"}));
  capture.clear();
  EXPECT_EQ(block->Dump("", 0), 0);
  EXPECT_EQ(capture.text(), "TAPBloc\n") << "not recursive";
}

TEST(TreeNode, DumpOfAnUnknownTypeStopsThere) {
  Tree tree("abc", vnxSyntaxe::kHeader, "h.h");
  vnxSyntaxe* odd = tree.add(tree.root(), 42, 0, 1);
  tree.add(odd, 5, 0, 1);
  StreamCapture capture;
  EXPECT_EQ(odd->Dump("  ", 1), 1);
  EXPECT_EQ(capture.text(), "  Unknown !\n");
  EXPECT_STREQ(vnxSyntaxe::GetErrMsg(), "Unknown type");
  capture.clear();
  EXPECT_EQ(tree.root()->Dump("", 1), 0) << "a bad child does not fail its father's dump";
  EXPECT_EQ(capture.lines(), (std::vector<std::string>{"Headerh.h", "", "  Unknown !"}));
}

TEST(TreeNode, IndentationGrowsAndShrinksByThreeBlanks) {
  ZELString* indent = getcscindent();
  *indent = "";
  std::vector<std::string> seen{cscincrement().CastToCharPtr(), cscincrement().CastToCharPtr(),
                                getcscindent()->CastToCharPtr()};
  for (int i = 0; i < 3; ++i) seen.push_back(cscdecrement().CastToCharPtr());
  EXPECT_EQ(seen, (std::vector<std::string>{"", "   ", "      ", "   ", "", ""}));
  EXPECT_EQ(getcscindent(), indent);
}

}  // namespace
