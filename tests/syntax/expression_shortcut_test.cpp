// Texts the builder answers without its full scans (words apart by spaces,
// operands the father's scan read whole) must give the trees the scans give.
#include <gtest/gtest.h>

#include <algorithm>

#include "expression_render.h"

using exprtest::BuiltExpression;

namespace {

// Every node with its extent, depth first: two trees compare by layout, not only by text.
std::string layout(vnxSyntaxe* root) {
  std::string out;
  for (vnxSyntaxe* node : exprtest::allNodes(root))
    out += std::to_string(node->GetType()) + ":" + (node->GetOperator() ? node->GetOperator() : "") + "@" +
           std::to_string(node->GetBegin()) + "+" + std::to_string(node->GetSize()) + " ";
  return out;
}

TEST(ExpressionShortcut, WordsApartBySpacesGiveTheTreeTheyGiveApartByTabs) {
  // A tab is a blank to the general scans but not to the words-only builder.
  std::string deep;  // deeper than the depth limit: both fail at the same node
  for (int i = 0; i < vnxSyntaxe::kMaxDepth + 50; ++i) deep += i ? " w" : "w";
  const std::string rows[] = {"a b", "const Standard_Real U", "a  b   c", "Standard_EXPORT static void D0",
                              "newer x", "x1 _y 2z", "f(const T x, y  z) w", "a b = c d", "p q[n m]", deep};
  for (const std::string& spaced : rows) {
    std::string tabbed = spaced;
    std::replace(tabbed.begin(), tabbed.end(), ' ', '\t');
    const int before = exprtest::liveTotal();
    BuiltExpression fast(spaced);
    const std::string fastMessage = vnxSyntaxe::GetErrMsg().CastToCharPtr();
    const int fastNodes = exprtest::liveTotal() - before;
    BuiltExpression scanned(tabbed);
    EXPECT_EQ(fast.status(), scanned.status()) << spaced;
    EXPECT_EQ(fastMessage, vnxSyntaxe::GetErrMsg().CastToCharPtr()) << spaced;
    EXPECT_EQ(fastNodes, exprtest::liveTotal() - before - fastNodes) << spaced;
    EXPECT_EQ(layout(fast.node()), layout(scanned.node())) << spaced;
  }
  EXPECT_EQ(BuiltExpression("a b c").tree(), "dc(dc(a,b),c)");
  EXPECT_EQ(BuiltExpression("new a b").tree(), "nw(dc(a,b))");  // "new " keeps its own rule
}

TEST(ExpressionShortcut, EveryOperandSplitsAsItsOwnTextAlone) {
  // Operands whose father's scan met no operator skip their own; narrowing drops text that scan jumped.
  const char* const rows[] = {"const Handle(Geom_Curve)& C", "a = (b+c)", "x = (b) * (c-d)", "!(a+b)", "i++ + j",
                              "p->q(r, s+t).u", "a == \"s+t\"", "f(x) + g(y,z)", "-(a) - (b)", "x = 'c' + 1.5e-3",
                              "a < b > c", "*p = &q"};
  for (const char* text : rows) {
    BuiltExpression whole(text);
    ASSERT_EQ(whole.status(), 0) << text;
    for (vnxSyntaxe* node : exprtest::allNodes(whole.node())) {
      if (node == whole.node() || node->GetType() != vnxSyntaxe::kExpression) continue;
      EXPECT_EQ(exprtest::render(node), BuiltExpression(node->GetContent()).tree()) << text << " / " << node->GetContent();
    }
  }
}

TEST(ExpressionShortcut, ParenthesesMatchInATreeBuildAsTheyDoAlone) {
  // A tree build keeps each bracket's answer for later scans; one built alone keeps none.
  const char* const rows[] = {"f(L\"a)b\", Lx) + g(Ly)", "g(Lx, y) + h(L')', z)", "k(a[1], (b)) - m(Ly)",
                              "p(q(r), Ls(t)) * (L)", "u(\"(\") * v(w) , x(L)"};
  for (const char* text : rows) {
    exprtest::ParsedText parsed(std::string(text) + ";");
    ASSERT_EQ(parsed.status(), 0) << text;
    EXPECT_EQ(exprtest::render(parsed.root()->Child(1)->Child(1)), BuiltExpression(text).tree()) << text;
  }
}

TEST(ExpressionShortcut, LeavesHeldFromOutsideOutliveTheirTree) {
  // Leaves die with their father's release unless something else holds them.
  const std::vector<int> before = exprtest::liveCounts();
  struct Row { const char* text; std::vector<int> path; int type; };
  const Row rows[] = {{"a b", {1, 2, 1}, vnxSyntaxe::kTAPIdentifiant}, {"f()", {1, 2}, vnxSyntaxe::kArguments},
                      {"f(,x)", {1, 2, 1}, vnxSyntaxe::kSyntaxeNULL}, {"x = y", {1, 2}, vnxSyntaxe::kExpression}};
  for (const Row& row : rows) {
    vnxSyntaxe* held = nullptr;
    {
      exprtest::ParsedText parsed(row.text);
      held = parsed.root()->Child(1);
      for (int step : row.path) held = held->Child(step);
      ASSERT_NE(held, nullptr) << row.text;
      EXPECT_EQ(held->GetType(), row.type) << row.text;
      held->AddRef();
    }
    EXPECT_EQ(exprtest::liveTotal(), before[0] + before[1] + before[2] + static_cast<int>(exprtest::allNodes(held).size()))
        << row.text;
    EXPECT_NE(held->GetContent(), nullptr);  // its source is still held by it
    held->Release();
    EXPECT_EQ(exprtest::liveCounts(), before) << row.text;
  }
}

}  // namespace
