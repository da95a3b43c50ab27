// Test helpers for instruction and expression trees: build a tree from a
// preprocessed text and write it as a compact string.
//
// Notation: an "id" expression is its word; "st" is st:<text>; any other
// expression is op(children) or op alone; an empty expression is ''; a
// SyntaxeNULL is ~ (size 0) or ; (size 1); a TAPIdentifiant is #word; an
// Arguments node args(...); a TAPBloc {...} with ';' between children; an
// instruction <kind>[children] where kind names its precise type (decl: in
// front for a node of type 8).
#ifndef VNX_TESTS_SYNTAX_EXPRESSION_RENDER_H
#define VNX_TESTS_SYNTAX_EXPRESSION_RENDER_H

#include <gtest/gtest.h>

#include <string>

#include "vnxExpression.h"
#include "vnxInstruction.h"
#include "vnxSourceFile.h"
#include "vnxSyntaxe.h"

namespace exprtest {

inline std::string textOf(vnxSyntaxe* node) {
  const char* text = node->GetContent();
  return text ? text : "<no source>";
}

inline const char* preciseName(int preciseType) {
  switch (preciseType) {
    case 0: return "stmt";
    case 9: return "nil";
    case 20: return "return";
    case 21: return "delete";
    case 22: return "delete[]";
    case 23: return "virtual";
    case 24: return "static";
    case 25: return "inline";
    case 26: return "free";
    case 30: return "for";
    case 31: return "if";
    case 32: return "while";
    case 33: return "switch";
    case 34: return "else";
    case 35: return "do";
    case 36: return "case";
    case 37: return "default";
    case 38: return "goto";
    case 39: return "exit";
    case 100: return "except";
    default: return "?";
  }
}

inline std::string render(vnxSyntaxe* node);

inline std::string renderChildren(vnxSyntaxe* node, const char* separator) {
  std::string out;
  for (int i = 1; i <= node->ChildCount(); ++i) {
    if (i > 1) out += separator;
    out += render(node->Child(i));
  }
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
      if (op.empty() && node->ChildCount() == 0) return "''";
      if (node->ChildCount() == 0) return op;
      return op + "(" + renderChildren(node, ",") + ")";
    }
    case vnxSyntaxe::kSyntaxeNULL: return node->GetSize() == 0 ? "~" : ";";
    case vnxSyntaxe::kTAPIdentifiant: return "#" + textOf(node);
    case vnxSyntaxe::kArguments: return "args(" + renderChildren(node, ",") + ")";
    case vnxSyntaxe::kTAPBloc: return "{" + renderChildren(node, ";") + "}";
    case vnxSyntaxe::kInstruction:
    case vnxSyntaxe::kDeclaration: {
      std::string out = node->GetType() == vnxSyntaxe::kDeclaration ? "decl:" : "";
      out += preciseName(node->GetPreciseType());
      return out + "[" + renderChildren(node, ",") + "]";
    }
    default: return "<type " + std::to_string(node->GetType()) + ">";
  }
}

// A File root over text, built with null instructions; the tree and the
// source are released with the object.
class ParsedText {
 public:
  explicit ParsedText(const std::string& text) {
    _source = vnxSourceFile::CreateFromPreprocessedText(text.c_str(), "test.cpp");
    _root = vnxSyntaxe::CreateTAPSyntaxe(vnxSyntaxe::kFile, _source, 0, static_cast<int>(text.size()), 1);
    vnxSyntaxe::ErrMsg = "";
    _status = _root->Build(1);
  }
  ~ParsedText() {
    _root->Release();
    _source->Release();
  }
  ParsedText(const ParsedText&) = delete;
  ParsedText& operator=(const ParsedText&) = delete;

  int status() const { return _status; }
  vnxSyntaxe* root() const { return _root; }
  // The root's children, rendered and separated by " | ".
  std::string tree() const { return renderChildren(_root, " | "); }

 private:
  vnxSourceFile* _source = nullptr;
  vnxSyntaxe* _root = nullptr;
  int _status = 0;
};

// One expression over the whole text, under a File root, built on its own.
class BuiltExpression {
 public:
  explicit BuiltExpression(const std::string& text) {
    _source = vnxSourceFile::CreateFromPreprocessedText(text.c_str(), "expr.cpp");
    const int size = static_cast<int>(text.size());
    _root = vnxSyntaxe::CreateTAPSyntaxe(vnxSyntaxe::kFile, _source, 0, size, 1);
    _expression = vnxExpression::CreateTAPExpression(_root, 0, size, 1);
    vnxSyntaxe::ErrMsg = "";
    _status = _expression->Build(0);
  }
  ~BuiltExpression() {
    _expression->Release();
    _root->Release();
    _source->Release();
  }
  BuiltExpression(const BuiltExpression&) = delete;
  BuiltExpression& operator=(const BuiltExpression&) = delete;

  int status() const { return _status; }
  vnxExpression* node() const { return _expression; }
  std::string tree() const { return render(_expression); }

 private:
  vnxSourceFile* _source = nullptr;
  vnxSyntaxe* _root = nullptr;
  vnxExpression* _expression = nullptr;
  int _status = 0;
};

// One table row: a text and the compact tree it must give.
struct TreeRow {
  const char* text;
  const char* tree;
};

// Builds every row with Parsed (BuiltExpression or ParsedText) and compares
// its status and compact tree.
template <class Parsed>
void expectTrees(const TreeRow* rows, size_t count) {
  for (size_t i = 0; i < count; ++i) {
    Parsed parsed(rows[i].text);
    EXPECT_EQ(parsed.status(), 0) << rows[i].text << ": " << vnxSyntaxe::GetErrMsg().CastToCharPtr();
    EXPECT_EQ(parsed.tree(), rows[i].tree) << rows[i].text;
  }
}

}  // namespace exprtest

#endif
