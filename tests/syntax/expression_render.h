// Builds instruction/expression trees from text and renders them compactly.
// Notation: "id" is its word, "st" st:<text>, else op(children) or op; empty ''; SyntaxeNULL ~ (size 0)
// or ; (size 1); TAPIdentifiant #word; args(...); {a;b} blocks; instructions [decl:]<precise>[children].
#ifndef VNX_TESTS_SYNTAX_EXPRESSION_RENDER_H
#define VNX_TESTS_SYNTAX_EXPRESSION_RENDER_H

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "vnxExpression.h"
#include "vnxInstruction.h"
#include "vnxSourceFile.h"
#include "vnxSyntaxe.h"

namespace exprtest {

// Live nodes of each pool (plain, instruction, expression), to check that everything went back.
inline std::vector<int> liveCounts() {
  return {vnxSyntaxe::GetPoolLiveCount(), vnxInstruction::GetPoolLiveCount(), vnxExpression::GetPoolLiveCount()};
}
inline int liveTotal() { return liveCounts()[0] + liveCounts()[1] + liveCounts()[2]; }

// Every node of the tree under root, depth first, root first.
inline std::vector<vnxSyntaxe*> allNodes(vnxSyntaxe* root) {
  std::vector<vnxSyntaxe*> nodes, pending{root};
  while (!pending.empty()) {
    nodes.push_back(pending.back());
    pending.pop_back();
    for (int i = nodes.back()->ChildCount(); i >= 1; --i) pending.push_back(nodes.back()->Child(i));
  }
  return nodes;
}

inline std::string textOf(vnxSyntaxe* node) { return node->GetContent() ? node->GetContent() : "<no source>"; }

inline const char* preciseName(int preciseType) {
  static const struct { int type; const char* name; } names[] = {
      {0, "stmt"}, {9, "nil"}, {20, "return"}, {21, "delete"}, {22, "delete[]"}, {23, "virtual"}, {24, "static"},
      {25, "inline"}, {26, "free"}, {30, "for"}, {31, "if"}, {32, "while"}, {33, "switch"}, {34, "else"}, {35, "do"},
      {36, "case"}, {37, "default"}, {38, "goto"}, {39, "exit"}, {100, "except"}};
  for (const auto& n : names) if (n.type == preciseType) return n.name;
  return "?";
}

inline std::string render(vnxSyntaxe* node);

inline std::string renderChildren(vnxSyntaxe* node, const char* separator) {
  std::string out;
  for (int i = 1; i <= node->ChildCount(); ++i) out += (i > 1 ? separator : "") + render(node->Child(i));
  return out;
}

inline std::string render(vnxSyntaxe* node) {
  if (!node) return "<null>";
  switch (node->GetType()) {
    case vnxSyntaxe::kExpression: {
      const std::string op = node->GetOperator();
      if (op == "id" && node->ChildCount() == 1 && node->Child(1)->GetType() == vnxSyntaxe::kTAPIdentifiant &&
          textOf(node->Child(1)) == textOf(node))
        return textOf(node);
      if (op == "st") return "st:" + textOf(node);
      if (node->ChildCount() == 0) return op.empty() ? "''" : op;
      return op + "(" + renderChildren(node, ",") + ")";
    }
    case vnxSyntaxe::kSyntaxeNULL: return node->GetSize() == 0 ? "~" : ";";
    case vnxSyntaxe::kTAPIdentifiant: return "#" + textOf(node);
    case vnxSyntaxe::kArguments: return "args(" + renderChildren(node, ",") + ")";
    case vnxSyntaxe::kTAPBloc: return "{" + renderChildren(node, ";") + "}";
    case vnxSyntaxe::kInstruction:
    case vnxSyntaxe::kDeclaration:
      return std::string(node->GetType() == vnxSyntaxe::kDeclaration ? "decl:" : "") +
             preciseName(node->GetPreciseType()) + "[" + renderChildren(node, ",") + "]";
    default: return "<type " + std::to_string(node->GetType()) + ">";
  }
}

// A source over text and a File root spanning it, released with the object.
class RootedText {
 public:
  RootedText(const std::string& text, const char* name, int type = vnxSyntaxe::kFile)
      : _source(vnxSourceFile::CreateFromPreprocessedText(text.c_str(), name)),
        _root(vnxSyntaxe::CreateTAPSyntaxe(type, _source, 0, static_cast<int>(text.size()), 1)) {
    vnxSyntaxe::ErrMsg = "";
  }
  ~RootedText() { _root->Release(), _source->Release(); }
  RootedText(const RootedText&) = delete;
  RootedText& operator=(const RootedText&) = delete;
  int status() const { return _status; }
  vnxSyntaxe* root() const { return _root; }

 protected:
  vnxSourceFile* _source;
  vnxSyntaxe* _root;
  int _status = 0;
};

// The root built with null instructions; tree() joins its children with " | ".
class ParsedText : public RootedText {
 public:
  explicit ParsedText(const std::string& text) : RootedText(text, "test.cpp") { _status = _root->Build(1); }
  std::string tree() const { return renderChildren(_root, " | "); }
};

// One expression over the whole text, under the root, built on its own.
class BuiltExpression : public RootedText {
 public:
  explicit BuiltExpression(const std::string& text)
      : RootedText(text, "expr.cpp"),
        _expression(vnxExpression::CreateTAPExpression(_root, 0, static_cast<int>(text.size()), 1)) {
    _status = _expression->Build(0);
  }
  ~BuiltExpression() { _expression->Release(); }
  vnxExpression* node() const { return _expression; }
  std::string tree() const { return render(_expression); }

 private:
  vnxExpression* _expression;
};

// One table row: a text and the compact tree it must give.
struct TreeRow { const char* text; const char* tree; };

// Builds every row with Parsed (BuiltExpression or ParsedText); checks its status and compact tree.
template <class Parsed, size_t N>
void expectTrees(const TreeRow (&rows)[N]) {
  for (const TreeRow& row : rows) {
    Parsed parsed(row.text);
    EXPECT_EQ(parsed.status(), 0) << row.text << ": " << vnxSyntaxe::GetErrMsg().CastToCharPtr();
    EXPECT_EQ(parsed.tree(), row.tree) << row.text;
  }
}

}  // namespace exprtest

#endif
