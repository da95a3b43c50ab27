// Operator search, ExistLongerOp, argument-list messages, depth limits, pools.
#include <gtest/gtest.h>

#include <cstring>

#include "expression_render.h"

using exprtest::BuiltExpression;
using exprtest::ParsedText;

namespace {

using exprtest::liveCounts;
std::string repeat(const std::string& piece, int times) {
  std::string out;
  for (int i = 0; i < times; ++i) out += piece;
  return out;
}

TEST(ExpressionOperatorSearch, FindsTheSplitOffsetAndLengthOrMinusOne) {
  static const struct { const char* text; int begin; int end; int pos; int length; } rows[] = {  // end -1: the whole text
      {"a=b", 0, -1, 1, 1}, {"a<<=b", 0, -1, 1, 3}, {"a ? b : c", 0, -1, 2, 1}, {"a ? b : c ? d : e", 0, -1, 2, 1},
      {"x-->y", 0, -1, 3, 1}, {"!a", 0, -1, 0, 1}, {"a+b*c", 2, 5, 3, 1},  // only b*c is looked at
      {"(a+b)", 0, -1, -1, 0}, {"f(x+1)", 0, -1, -1, 0}, {"\"a+b\"", 0, -1, -1, 0}, {"'+'", 0, -1, -1, 0},
      {"a[i+1]", 0, -1, -1, 0}, {"a+b)", 0, -1, -1, 0},  // a closing parenthesis without its opening
      {"a + \"b", 0, -1, -1, 0}, {"1.5e+3", 0, -1, -1, 0},
  };
  BuiltExpression holder("x");
  for (const auto& row : rows) {
    const int end = row.end < 0 ? static_cast<int>(std::strlen(row.text)) : row.end;
    int length = -7;
    EXPECT_EQ(holder.node()->SearchOperator(row.text, row.begin, end, length), row.pos) << row.text;
    EXPECT_EQ(length, row.length) << row.text;
  }
}

TEST(ExpressionOperatorSearch, ExistLongerOpAcceptsOnlyWholeOperatorTokens) {
  // expected: 0, or the length of the operator the candidate belongs to.
  static const struct { const char* text; int pos; int length; int expected; } rows[] = {
      {"a<<=b", 1, 3, 0}, {"a<<=b", 1, 2, 3}, {"a<<=b", 2, 2, 3}, {"a<<=b", 3, 1, 3}, {"a->*b", 1, 2, 3},
      {"a->b", 1, 2, 0}, {"a->b", 1, 1, 2}, {"a->b", 2, 1, 2}, {"a+++b", 1, 2, 0}, {"a+++b", 2, 2, 2},
      {"a+++b", 3, 1, 0}, {"a+++b", 1, 1, 2}, {"a==b", 1, 1, 2}, {"a==b", 2, 1, 2}, {"a=b", 1, 1, 0},
      {"a::b", 1, 1, 2}, {"a<b", 1, 1, 0}, {"a&&b", 2, 1, 2}, {"a&=b", 1, 1, 2},
      {"1.5", 1, 1, 1},  // the point of a number is no operator at all
  };
  for (const auto& row : rows) {
    const int end = static_cast<int>(std::strlen(row.text));
    EXPECT_EQ(vnxSyntaxe::ExistLongerOp(row.text, 0, end, row.pos, row.length), row.expected)
        << row.text << " at " << row.pos << " length " << row.length;
  }
}

TEST(ExpressionOperatorSearch, LevelsRankOperatorsFromScopeToSemicolon) {
  static const struct { const char* op; int level; } rows[] = {
      {";", 190}, {",", 180}, {"=", 170}, {"<<=", 170}, {"*=", 170}, {"?", 160}, {":", 150}, {"||", 140}, {"&&", 130},
      {"|", 120}, {"^", 110}, {"&", 100}, {"==", 90}, {"!=", 90}, {"<=", 80}, {">", 80}, {">>", 70}, {"+", 65},
      {"-", 65}, {"%", 60}, {"->*", 50}, {".*", 50}, {"!", 40}, {"->", 30}, {".", 30}, {"--", 20}, {"::", 10},
      {"id", 0}, {"<=>", 0}, {"", 0}, {"~", 0}};
  for (const auto& row : rows) EXPECT_EQ(vnxExpression::GetOperatorLevel(row.op), row.level) << row.op;
}

TEST(ExpressionArguments, UnclosedLiteralsAndParenthesesFailAfterTheArgumentsBeforeThem) {
  static const struct { const char* text; const char* message; int children; } rows[] = {
      {"\"abc, x", "Missing \"", 0}, {"a, 'b", "Missing '", 1}, {"a, b, (c", "Missing )", 2}, {"a, f(b", "Missing )", 1}};
  for (const auto& row : rows) {
    exprtest::RootedText base(row.text, "args.cpp");
    const int size = static_cast<int>(std::strlen(row.text));
    vnxSyntaxe* arguments = vnxSyntaxe::CreateTAPSyntaxe(vnxSyntaxe::kArguments, base.root(), 0, size, 1);
    EXPECT_EQ(vnxInstruction::BuildListOfArgs(arguments), 1) << row.text;
    EXPECT_STREQ(vnxSyntaxe::GetErrMsg().CastToCharPtr(), row.message) << row.text;
    EXPECT_EQ(arguments->ChildCount(), row.children) << row.text;
    arguments->Release();
  }
}

TEST(ExpressionDepth, ALeftDeepChainBuildsUpToDepth900AndFailsBeyond) {
  const std::vector<int> before = liveCounts();
  {
    // Directly under the root the expression is at depth 1: with 899 operators its leftmost operand is at 900.
    EXPECT_EQ(BuiltExpression("a" + repeat("+a", 899)).status(), 0);
    BuiltExpression tooDeep("a" + repeat("+a", 900));
    EXPECT_EQ(tooDeep.status(), 1);
    EXPECT_STREQ(vnxSyntaxe::GetErrMsg().CastToCharPtr(), "Depth too high when building a vnxExpression : 901");
    EXPECT_EQ(tooDeep.node()->ChildCount(), 1);  // the left operand, whose build failed, stays
  }
  EXPECT_EQ(liveCounts(), before);
}

TEST(ExpressionDepth, HugeExpressionsFailCleanlyWithoutQuadraticWork) {
  const std::vector<int> before = liveCounts();
  // An initialiser 1,2,3,... is one left-deep comma chain: it cannot be built within depth 900.
  std::string init = "void f(){ static int table[] = {1";
  for (int i = 2; i <= 100000; ++i) init += "," + std::to_string(i);
  init += "}; }";
  const struct { const char* label; std::string text; } rows[] = {
      {"a+a+... (50 000 operators)", "a" + repeat("+a", 50000)},
      {"a=a=... (50 000 operators)", "a" + repeat("=a", 50000)},
      {"a.b.b... (50 000 operators)", "a" + repeat(".b", 50000)},
      {"!!!...a (50 000 operators)", repeat("!", 50000) + "a"},
      {"a-----...b (100 001 minus signs)", "a" + repeat("-", 100001) + "b"},
      {"x=a+a+...; as an instruction", "x=a" + repeat("+a", 50000) + ";"},
      {"a 100 000 element initialiser in a function", init},
  };
  // Each is built in linear time: a relapse shows as ctest's timeout.
  for (const auto& row : rows) {
    const bool instruction = row.text.back() == ';' || row.text.back() == '}';
    EXPECT_EQ(instruction ? ParsedText(row.text).status() : BuiltExpression(row.text).status(), 1) << row.label;
    EXPECT_STREQ(vnxSyntaxe::GetErrMsg().CastToCharPtr(), "Depth too high when building a vnxExpression : 901")
        << row.label;
  }
  EXPECT_EQ(liveCounts(), before);
}

TEST(ExpressionDepth, ListsOfArgumentsHaveTheirOwnDepthMessage) {
  // File 0, instruction 1, call 2, callee and arguments 3, ...: the 450th nested call's callee sits at 901.
  EXPECT_EQ(ParsedText(repeat("f(", 449) + "x" + repeat(")", 449) + ";").status(), 0);
  EXPECT_EQ(ParsedText(repeat("f(", 450) + "x" + repeat(")", 450) + ";").status(), 1);
  EXPECT_STREQ(vnxSyntaxe::GetErrMsg().CastToCharPtr(), "Depth too high when building a vnxExpression : 901");

  // An argument list built on its own below depth 900.
  vnxSourceFile* source = vnxSourceFile::CreateFromPreprocessedText("a, b", "args.cpp");
  std::vector<vnxSyntaxe*> chain{vnxSyntaxe::CreateTAPSyntaxe(vnxSyntaxe::kFile, source, 0, 4, 1)};
  while (chain.size() < 901) chain.push_back(vnxSyntaxe::CreateTAPSyntaxe(vnxSyntaxe::kTAPBloc, chain.back(), 0, 4, 1));
  vnxSyntaxe* arguments = vnxSyntaxe::CreateTAPSyntaxe(vnxSyntaxe::kArguments, chain.back(), 0, 4, 1);
  EXPECT_EQ(arguments->GetDepth(), 901);
  EXPECT_EQ(vnxInstruction::BuildListOfArgs(arguments), 1);
  EXPECT_STREQ(vnxSyntaxe::GetErrMsg().CastToCharPtr(), "Depth too high when building a vnxListOfArgs : 901");
  EXPECT_EQ(arguments->ChildCount(), 0);
  arguments->Release();
  for (vnxSyntaxe* node : chain) node->Release();
  source->Release();
}

TEST(ExpressionDepth, ALongArgumentListIsFlatAndItsNodesGoBackToThePool) {
  const std::vector<int> before = liveCounts();
  const int blocks = vnxExpression::GetPoolBlockCount();
  {
    // Twenty thousand arguments stay one level below the call and need more than one pool block.
    BuiltExpression e("f(x" + repeat(",x", 19999) + ")");
    EXPECT_EQ(e.status(), 0);
    ASSERT_EQ(e.node()->ChildCount(), 2);
    EXPECT_EQ(e.node()->Child(2)->ChildCount(), 20000);
    EXPECT_EQ(e.node()->Child(2)->Child(20000)->GetDepth(), 3);
    EXPECT_GT(vnxExpression::GetPoolBlockCount(), blocks);
  }
  EXPECT_EQ(liveCounts(), before);
  EXPECT_EQ(vnxExpression::GetPoolBlockCount(), blocks);
}

}  // namespace
