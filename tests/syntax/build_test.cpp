// File, Header and TAPBloc builds: cutting into blocks and instructions, failures, limits, statement macros.
#include <gtest/gtest.h>

#include "TestSupport.h"
#include "expression_render.h"

namespace {

// Children as I(text) instruction, D(text) declaration, N(text) null, B[...] block.
std::string outline(vnxSyntaxe* node) {
  std::string out;
  for (int i = 1; i <= node->ChildCount(); ++i) {
    vnxSyntaxe* child = node->Child(i);
    if (!out.empty()) out += ' ';
    const int type = child->GetType();
    const char* tag = type == vnxSyntaxe::kInstruction   ? "I("
                      : type == vnxSyntaxe::kDeclaration ? "D("
                      : type == vnxSyntaxe::kSyntaxeNULL ? "N(" : nullptr;
    if (type == vnxSyntaxe::kTAPBloc) out += "B[" + outline(child) + "]";
    else out += tag ? tag + std::string(child->GetContent()) + ")" : "?" + std::to_string(type);
  }
  return out;
}

// A root of the given type over text, built; the tree and source go away with it.
class BuiltTree : public exprtest::RootedText {
 public:
  BuiltTree(const std::string& text, int withNull, int type = vnxSyntaxe::kFile) : RootedText(text, "b.cpp", type) {
    _status = _root->Build(withNull);
  }
  std::string outline() const { return ::outline(_root); }
};

struct Row { const char* text; const char* expected; };

void checkRows(std::initializer_list<Row> rows, int withNull, int type = vnxSyntaxe::kFile) {
  for (const Row& row : rows) {
    BuiltTree tree(row.text, withNull, type);
    EXPECT_EQ(tree.status(), 0) << row.text << ": " << vnxSyntaxe::GetErrMsg();
    EXPECT_EQ(tree.outline(), row.expected) << row.text;
  }
}

TEST(TreeBuild, BlocksNestAndFileLevelHeadersBecomeDeclarations) {
  checkRows({{"class A : public B { int x; };", "D(class A : public B ) B[I(int x)] N(;)"},
             {"int f(){return 1;}", "D(int f()) B[I(return 1)]"}, {"{ a; { b; } }", "B[I(a) B[I(b)]]"},
             {"{int f(){return 1;}}", "B[I(int f()) B[I(return 1)]]"},  // only the file level declares
             {"x{a;}", "D(x) B[I(a)]"}, {";;", "N(;) N(;)"}, {"{ }", "B[]"},
             // Cutting follows the instruction scanner; a last instruction needs no ';'.
             {"if(a) if(b) x; else y;", "I(if(a) if(b) x) I(else y)"}, {"a", "I(a)"}, {"   ", ""}, {"", ""}},
            1);
  checkRows({{"class A : public B { int x; };", "D(class A : public B ) B[I(int x)]"}, {";;a;", "I(a)"}}, 0);
}

TEST(TreeBuild, HeaderKeepsItsBlocksAndInstructionsUnbuilt) {
  checkRows({{"struct S { int a; }; x;", "I(struct S ) B[] N(;) I(x)"}}, 1, vnxSyntaxe::kHeader);
  BuiltTree tree("x; if(a) { b; }", 0, vnxSyntaxe::kHeader);
  EXPECT_EQ(tree.root()->Child(1)->ChildCount() + tree.root()->Child(2)->ChildCount(), 0);
}

TEST(TreeBuild, FailuresNameWhereTheProblemStarts) {
  const struct { const char* text; const char* message; const char* kept; } rows[] = {
      {"a; { b; ", "Missing TAPBloc end at line 1 col 4 length=4", "I(a)"},
      {"a;\n{ c;", "Missing TAPBloc end at line 2 col 1 length=4", "I(a) D(\n)"},
      {"a; f(b;", "Missing Instruction end for Instruction starting line 1 col 4", "I(a)"},
      {"a; { f(\"x); }", "Missing TAPBloc end at line 1 col 4 length=10", "I(a)"},
      {"{ a; { b( } }", "Missing TAPBloc end at line 1 col 1 length=13", ""},
  };
  for (const auto& row : rows) {
    BuiltTree tree(row.text, 1);
    EXPECT_EQ(tree.status(), 1) << row.text;
    EXPECT_STREQ(vnxSyntaxe::GetErrMsg(), row.message) << row.text;
    EXPECT_EQ(tree.outline(), row.kept) << "children built before the failure stay: " << row.text;
  }
  // Inside a block: a chain of controlled statements longer than the cap.
  std::string chain = "{ a; ";
  for (int i = 0; i <= vnxSyntaxe::kMaxInstructionNesting; ++i) chain += "if(a)";
  BuiltTree tree(chain + "x; }", 1);
  EXPECT_EQ(tree.status(), 1);
  EXPECT_STREQ(vnxSyntaxe::GetErrMsg(), "Missing Instruction end for Instruction starting line 1 col 6");
  EXPECT_EQ(tree.outline(), "B[I(a)]");
}

TEST(TreeBuild, NineHundredNestedBlocksBuildAndOneMoreFails) {
  auto nested = [](int depth) { return std::string(depth, '{') + std::string(depth, '}'); };
  BuiltTree fits(nested(vnxSyntaxe::kMaxDepth), 1), tree(nested(vnxSyntaxe::kMaxDepth + 1), 1);
  EXPECT_EQ(fits.status(), 0);
  EXPECT_EQ(fits.root()->GetLastLeaf()->GetDepth(), vnxSyntaxe::kMaxDepth);
  EXPECT_EQ(fits.root()->GetLastLeaf()->GetType(), vnxSyntaxe::kTAPBloc);
  EXPECT_EQ(tree.status(), 1);
  EXPECT_STREQ(vnxSyntaxe::GetErrMsg(), "Depth too high when building a vnxSyntaxe : 901");
}

TEST(TreeBuild, ReleasingABuiltTreeReturnsEveryNodeToItsPool) {
  const std::vector<int> before = exprtest::liveCounts();
  const int nodes = before[0], instructions = before[1];
  const long long arrays = vnxSyntaxe::GetChildArrayBytes();
  {
    std::string fifty;  // a root of 50 children: capacity 2, 7, ..., 52
    for (int i = 0; i < 50; ++i) fifty += "a;";
    {
      BuiltTree flat(fifty, 1);
      ASSERT_EQ(flat.root()->ChildCount(), 50);
      EXPECT_EQ(vnxSyntaxe::GetChildArrayBytes() - arrays, static_cast<long long>(52 * sizeof(vnxSyntaxe*)));
    }
    EXPECT_EQ(vnxSyntaxe::GetChildArrayBytes(), arrays);
    BuiltTree ok("class A { int a; { b; } }; ;; f(); { { } }", 1), failed("a; { b; { c; }", 1);
    EXPECT_GT(vnxSyntaxe::GetPoolLiveCount(), nodes);
    EXPECT_EQ(failed.status(), 1);
    std::string many;  // enough instructions to need a second pool block
    for (int i = 0; i < 1200; ++i) many += "if(a){ x = f(y, z[i]); } else return;";
    BuiltTree big(many, 1);
    EXPECT_EQ(big.status(), 0);
    // The builders keep no hold of their own: each node is held by its father alone.
    for (vnxSyntaxe* root : {big.root(), ok.root()})
      for (vnxSyntaxe* node : exprtest::allNodes(root)) EXPECT_TRUE(node == root || node->GetRefCount() == 1);
    EXPECT_GT(vnxInstruction::GetPoolLiveCount(), instructions + 1024);
  }
  EXPECT_EQ(exprtest::liveCounts(), before);
  EXPECT_EQ(vnxSyntaxe::GetChildArrayBytes(), arrays);
}

// Random nested blocks, calls, indexes, literals and escapes, now and then unbalanced.
class TextMaker {
 public:
  explicit TextMaker(unsigned seed) : _seed(seed) {}
  std::string statements(int depth) {
    std::string out;
    for (int n = pick(4); n >= 0; --n) {
      if (depth < 6 && pick(4) == 0) out += "{" + statements(depth + 1) + "}";
      else if (depth < 6 && pick(5) == 0) out += "if(" + expression(depth + 1) + ")" + (pick(2) ? "{" + statements(depth + 1) + "}" : expression(depth + 1) + ";");
      else out += expression(depth + 1) + (pick(3) ? ";" : " ");
    }
    return out;
  }

 private:
  int pick(int n) {
    _seed = _seed * 1103515245u + 12345u;
    return static_cast<int>((_seed >> 16) % static_cast<unsigned>(n));
  }
  std::string expression(int depth) {
    static const char* const atoms[] = {"a", "b1", "x::y", "\"s\"", "'c'", "L\"w\"", "\"q\\\"\"", "'\\''", "\"\"\"\"", "1.5"};
    static const char* const joins[] = {" ", "+", ", ", "=", "?", ":", "->", " ", ","};
    static const char* const junk[] = {"\"", "'", ")", "]", "}", "(", "[", "{", "L'", "\\", "/"};
    static const char* const opens[] = {"", "f(", "a[", "("}, *const closes[] = {"", ")", "]", ")"};
    std::string out;
    for (int n = pick(4); n >= 0; --n) {
      if (!out.empty()) out += joins[pick(sizeof(joins) / sizeof(joins[0]))];
      const int kind = depth < 8 ? pick(7) : 0;
      if (kind >= 1 && kind <= 3) out += opens[kind] + expression(depth + 1) + closes[kind];
      else if (kind == 4 && pick(6) == 0) out += junk[pick(sizeof(junk) / sizeof(junk[0]))];
      else out += atoms[pick(sizeof(atoms) / sizeof(atoms[0]))];
    }
    return out;
  }

  unsigned _seed;
};

// On random texts the builders' kept bracket answers agree with the scanners and operator search asked afresh.
TEST(TreeBuild, BlockArgumentAndOperatorExtentsAreTheScannersAnswersAskedAfresh) {
  int built = 0, brackets = 0, operators = 0;
  for (unsigned round = 0; round < 400; ++round) {
    const std::string text = TextMaker(round).statements(0);
    StreamCapture quiet;
    BuiltTree tree(text, static_cast<int>(round % 2));
    if (tree.status() == 0) ++built;
    const char* s = text.c_str();
    const int last = static_cast<int>(text.size()) - 1;
    for (vnxSyntaxe* node : exprtest::allNodes(tree.root())) {
      SCOPED_TRACE(text + " at " + (node->GetContent() ? node->GetContent() : ""));
      const int type = node->GetType(), open = node->GetBegin() - 1;
      if (type == vnxSyntaxe::kTAPBloc || type == vnxSyntaxe::kArguments) {
        const bool block = type == vnxSyntaxe::kTAPBloc;
        EXPECT_EQ(block ? vnxSyntaxe::SearchEndOfTAPBloc(s, open, last, 0) : vnxSyntaxe::SearchEndOfPar(s, open, last),
                  node->GetEnd());
        ++brackets;
      }
      const char* op = node->GetOperator();
      if (type != vnxSyntaxe::kExpression || vnxExpression::GetOperatorLevel(op) == 0) continue;
      int length = 0;
      const int at = static_cast<vnxExpression*>(node)->SearchOperator(s, node->GetBegin(), node->GetEnd(), length);
      ASSERT_GE(at, node->GetBegin());
      EXPECT_EQ(std::string(s + at, static_cast<size_t>(length)), op);
      if (node->ChildCount() == 2) { EXPECT_GE(node->Child(2)->GetBegin(), at + length); }
      // The left operand ends before the operator; for a postfix ++ / -- too.
      if (node->ChildCount() == 2 || at != node->GetBegin()) { EXPECT_LE(node->Child(1)->GetEnd(), at); }
      ++operators;
    }
  }
  EXPECT_GT(built, 130);
  EXPECT_GT(brackets, 1300);
  EXPECT_GT(operators, 2000);
}

// Registers the statement macros for one test; the registry keeps a pointer.
class StatementMacros {
 public:
  explicit StatementMacros(std::initializer_list<const char*> names) {
    for (const char* name : names) _list.Append(name);
    vnxSourceFile::addMacroWithSemicolon(&_list);
  }
  ~StatementMacros() { vnxSourceFile::addMacroWithSemicolon(nullptr); }

 private:
  ZELListValZELString _list;
};

// Registered between two builds they are found by the second; released, they are ordinary words again.
TEST(TreeBuild, StatementMacrosEndAnInstructionWithoutASemicolonWhileRegistered) {
  // The first build finds the registry empty and stops asking for the rest of it.
  checkRows({{"ZZ_END x; ZZ_END y; { ZZ_END z; }", "I(ZZ_END x) I(ZZ_END y) B[I(ZZ_END z)]"}}, 0);
  {
    StatementMacros macros({"ZZ_END", "MY_CHECK", "AA_FIRST"});
    checkRows({{"MY_CHECK(a) b; c;", "I(MY_CHECK(a)) I(b) I(c)"}, {"ZZ_END x; y;", "I(ZZ_END ) I(x) I(y)"},
               {"ZZ_END;", "I(ZZ_END) N(;)"}, {"ZZ_ENDX; y;", "I(ZZ_ENDX) I(y)"} /* a longer word is no use */,
               {"(MY_CHECK(a)) b;", "I((MY_CHECK(a)) b)"}, {"{ ZZ_END x; }", "B[I(ZZ_END ) I(x)]"},
               {"ZZ_END x; { ZZ_END z; }", "I(ZZ_END ) I(x) B[I(ZZ_END ) I(z)]"}},
              1);
  }
  checkRows({{"ZZ_END x;", "I(ZZ_END x)"}}, 0);  // the list is read again after the release
}

}  // namespace
