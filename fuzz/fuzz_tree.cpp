// libFuzzer target: tree building, dump and navigation. Each input is built
// twice: as a file (preprocessed first, root "File", Build(0), as the loader
// does) and as an already preprocessed stream (the bytes themselves, with null
// instructions), because the builders are exported and must survive any text.
// Every node of the result is checked against its father and read through the
// content and position queries; a few navigation lists, occurrence searches,
// expression strings and node paths run over it. Releasing the root must bring
// every pool back to its count before the input.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "FuzzSupport.h"
#include "TAFileName.h"
#include "ZELLists.h"
#include "ZELString.h"
#include "vnxSourceFile.h"
#include "vnxSyntaxe.h"
#include "vnxSyntaxePath.h"

namespace {

using vnxfuzz::require;

// Bounds on the per-node work, so that big inputs stay fast.
constexpr int kMaxNodesVisited = 20000;
constexpr int kMaxPaths = 200;
constexpr int kMaxStringLists = 200;
// GetContent keeps a copy of each node's text: over a stream that macros blew
// up, copying every node would measure memory, not the library.
constexpr long long kMaxContentBytes = 4 << 20;

// The node at the end of path's positions, descending from root.
vnxSyntaxe* resolve(vnxSyntaxe* root, const ZELRawCollint& positions) {
  vnxSyntaxe* node = root;
  for (int i = 1; node && i <= positions.Size(); ++i) {
    const int position = positions[i];
    if (position < 1 || position > node->ChildCount()) return nullptr;
    node = node->Child(position);
  }
  return node;
}

// Structure, text and position queries of one node.
void checkNode(vnxSyntaxe* node, int streamSize, long long& contentBytes) {
  require(vnxSyntaxe::GetTypeName(node->GetType()) != nullptr, "a node of unknown type");
  require(node->GetBegin() >= 0 && node->GetSize() >= 0, "a negative begin or size");
  require(node->GetEnd() <= streamSize, "a node ends past the stream");
  if (contentBytes + node->GetSize() <= kMaxContentBytes) {
    contentBytes += node->GetSize();
    const char* content = node->GetContent();
    require(content && std::strlen(content) == static_cast<size_t>(node->GetSize()),
            "the content is not the node's text");
  }
  int line = 0, col = 0;
  node->GetPos(line, col);
  node->GetEndPos(line, col);
  node->GetPosEndOfScope(line, col);
  node->getBeginPosInChar();
  node->getEndPosInChar();
  node->GetBlocSize();
  node->StartWith("if");
  node->EndWith(";");
  node->IsPointer();
  node->IsHandler();
  node->isSyntaxeNullValue();
  node->isSyntaxeThisValue();
  node->GetPreciseType();
  node->GetOperator();
  for (int i = 1; i <= node->ChildCount(); ++i) {
    vnxSyntaxe* child = node->Child(i);
    require(child != nullptr, "a null child");
    require(child->GetParent() == node, "a child does not name its father");
    require(child->GetPosInFather() == i, "a child's position in father is not its index");
    require(child->GetDepth() == node->GetDepth() + 1, "a child's depth is not its father's plus one");
    require(child->GetTAPSourceFile() == node->GetTAPSourceFile(), "a child of another source");
  }
  if (vnxSyntaxe* next = node->getNext()) require(next->getPrevious() == node, "next and previous disagree");
  if (vnxSyntaxe* previous = node->getPrevious()) require(previous->getNext() == node, "previous and next disagree");
}

// A path leads back to its node and, for a node with a stream, carries points.
void checkPath(vnxSyntaxe* root, vnxSyntaxe* node) {
  vnxSyntaxePath path(node);
  require(resolve(root, path.GetPosInTree()) == node, "a node's path leads elsewhere");
  vnxSyntaxePath copy(&path);
  require(copy.IsEqual(path) == 1, "a copied path differs");
}

void navigate(vnxSyntaxe* root, vnxSyntaxe* leaf) {
  root->Navigate(SNAV_Child, 1, SNAV_Child, 1, 0);
  root->Navigate(SNAV_Child, 1, SNAV_Next, SNAV_Previous, SNAV_Father, 0);
  root->Navigate(SNAV_Child, 2, SNAV_Test, vnxSyntaxe::kInstruction, SNAV_Child, 1, 0);
  root->Navigate(SNAV_Child, 1, SNAV_InstTest, 20, SNAV_Child, 1, SNAV_ExprTest, "=", 0);
  root->Navigate(SNAV_Child, 1, SNAV_StringContent, "return", 0);
  root->Navigate(SNAV_Child, 1, SNAV_BeginWith, "if", SNAV_Child, 1, SNAV_IsNull, 1, 0);
  if (leaf) {
    leaf->Navigate(SNAV_Father, SNAV_Child, 1, SNAV_SyntaxeContent, leaf, 0);
    leaf->Navigate(SNAV_Previous, SNAV_Next, SNAV_Father, SNAV_Father, SNAV_Next, 0);
    ZELListPtr<vnxSyntaxe> found;
    root->FindOccurrences(leaf, found);
    require(found.Size() > 0, "a leaf was not found among the leaves");
  }
  ZELListPtr<vnxSyntaxe> found;
  root->FindOccurrences("i", found);
  root->HasOccurrences("return");
}

void exercise(vnxSyntaxe* root) {
  root->Dump("", 1);
  const int streamSize = root->GetTAPSourceFile() ? root->GetTAPSourceFile()->GetSize() : 0;
  std::vector<vnxSyntaxe*> pending{root};
  vnxSyntaxe* firstLeaf = nullptr;
  int visited = 0, paths = 0, stringLists = 0;
  long long contentBytes = 0;
  while (!pending.empty() && visited < kMaxNodesVisited) {
    vnxSyntaxe* node = pending.back();
    pending.pop_back();
    ++visited;
    checkNode(node, streamSize, contentBytes);
    if (node->ChildCount() == 0 && !firstLeaf) firstLeaf = node;
    if (paths < kMaxPaths) {
      checkPath(root, node);
      ++paths;
    }
    if (node->GetType() == vnxSyntaxe::kExpression && stringLists < kMaxStringLists) {
      ZELListValZELString strings;
      node->GetListOfString(strings);
      ++stringLists;
    }
    for (int i = node->ChildCount(); i >= 1; --i) pending.push_back(node->Child(i));
  }
  navigate(root, firstLeaf);
}

// Builds and exercises a tree over source; the tree takes its own reference.
void buildTree(vnxSourceFile* source, int withNullInstructions) {
  vnxSyntaxe* root = vnxSyntaxe::CreateTAPSyntaxe(vnxSyntaxe::kFile, source, 0, source->GetSize(), 1);
  require(root != nullptr, "no root");
  if (root->Build(withNullInstructions) == 0) exercise(root);
  root->Release();
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  vnxfuzz::setUpProcess();
  static const char* const kMacros[] = {"GEO_SQUARE", "GEO_SAMPLES_MIN", "MAX", "A", "M"};
  for (const char* name : kMacros) vnxSourceFile::addMacroToExpand(name);
  // Statement macros: names that stand for a whole statement, ';' included.
  static ZELListVal<ZELString> statementMacros;
  statementMacros.Append(ZELString("ZELEndTry"));
  statementMacros.Append(ZELString("DECLARE"));
  statementMacros.Append(ZELString("S"));
  vnxSourceFile::addMacroWithSemicolon(&statementMacros);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const vnxfuzz::Text text(data, size);
  const vnxfuzz::PoolCounts baseline = vnxfuzz::PoolCounts::now();
  {
    vnxSourceFile* source = new vnxSourceFile(text.c_str(), nullptr, TAFileName());
    if (source->preProcess() == 0) buildTree(source, 0);
    source->Release();
  }
  {
    vnxSourceFile* source = vnxSourceFile::CreateFromPreprocessedText(text.c_str(), "fuzz.cpp");
    buildTree(source, 1);
    source->Release();
  }
  vnxfuzz::requireSamePoolCounts(baseline);
  return 0;
}
