// Expressions: where a text splits and how operands are laid out, as compact trees (expression_render.h).
#include <gtest/gtest.h>

#include "expression_render.h"

using exprtest::BuiltExpression;

namespace {

using Row = exprtest::TreeRow;

template <size_t N>
void expectTrees(const Row (&rows)[N]) { exprtest::expectTrees<exprtest::BuiltExpression>(rows); }

TEST(ExpressionSplit, SplitsAtTheWeakestOperatorLeftAssociativelyExceptForUnaryAndQuestion) {
  static const Row rows[] = {
      {"a - b - c", "-(-(a,b),c)"}, {"a = b = c", "=(=(a,b),c)"},  // assignments split at the rightmost too
      {"a+b*c", "+(a,*(b,c))"}, {"a*b+c", "+(*(a,b),c)"}, {"a, b, c", ",(,(a,b),c)"},
      {"a || b && c | d ^ e & f", "||(a,&&(b,|(c,^(d,&(e,f)))))"}, {"a == b < c << d", "==(a,<(b,<<(c,d)))"},
      {"a <<= b >> c", "<<=(a,>>(b,c))"}, {"x += y -= z", "-=(+=(x,y),z)"}, {"p->x.y", ".(->(p,x),y)"},
      {"a::b::c", "::(::(a,b),c)"}, {"a.*b + c->*d", "+(.*(a,b),->*(c,d))"}, {"!a && !b", "&&(!(a),!(b))"},
      {"--i", "--(i)"}, {"i--", "--(i)"}, {"++i++", "++(++(i))"},  // the leftmost "++" wins, then a postfix one
      {"x = -1", "=(x,-(1))"}, {"*p = &q", "=(*(p),&(q))"}, {"::f()", "::(mt(f,args()))"}, {"int* p", "*(int,p)"},
      {"int*", "*(int,~)"},  // an empty operand is a null node of size 0
      {"i=0;i<n;i++", ";(;(=(i,0),<(i,n)),++(i))"}, {";;", ";(;,~)"},  // a lone ';' operand is a null node of size 1
  };
  expectTrees(rows);
}

TEST(ExpressionSplit, ColonRanksAboveQuestionOnlyUnderAQuestionAndNeverInABitField) {
  static const Row rows[] = {
      {"a ? b : c", "?(a,:(b,c))"},
      // The leftmost "?" wins; under it the rightmost ':' (level 165) does.
      {"a ? b : c ? d : e", "?(a,:(?(:(b,c),d),e))"}, {"x = c ? 1 : 2", "=(x,?(c,:(1,2)))"}, {"a : b", ":(a,b)"},
      {"int x : 3", "dc(int,:(x,3))"}, {"unsigned flag:1", "dc(unsigned,:(flag,1))"},
      {"unsigned long f : 2", "dc(dc(unsigned,long),:(f,2))"},
      {"internal : 3", ":(internal,3)"},  // "int" is matched as a whole word
  };
  expectTrees(rows);
}

TEST(ExpressionSplit, OperatorCharactersGroupAsACompilerReadsThem) {
  static const Row rows[] = {
      {"a+++b", "+(++(a),b)"}, {"x-->y", ">(--(x),y)"}, {"a---b", "-(--(a),b)"}, {"a-->*b", ">(--(a),*(b))"},
      {"a!=b", "!=(a,b)"}, {"a>>=b", ">>=(a,b)"}, {"x = 1.5e-3 * y", "=(x,*(1.5e-3,y))"},
      {"x = .5 + 1E+2", "=(x,+(.5,1E+2))"}, {"0x1e-5", "-(0x1e,5)"},  // 'e' is a hex digit there, not an exponent
      {"0x1p-5", "0x1p-5"}, {"v1.x", ".(v1,x)"}, {"f(int, ...)", "mt(f,args(int,...))"},
  };
  expectTrees(rows);
}

TEST(ExpressionSplit, WithoutOperatorRecognisesCallsCastsIndexesDeclarationsAndWords) {
  static const Row rows[] = {
      {"f(x, y)", "mt(f,args(x,y))"}, {"f( )", "mt(f,args())"}, {"f(a,,b)", "mt(f,args(a,~,b))"},
      {"f(a, g(b, c))", "mt(f,args(a,mt(g,args(b,c))))"}, {"f(\"a,b\", ',')", "mt(f,args(st:\"a,b\",st:','))"},
      {"f(a; b)", "mt(f,args(a))"},  // a ';' ends the list
      {"f(a)(b)", "mt(mt(f,args(a)),args(b))"}, {"(*f)(x)", "mt(*(f),args(x))"},
      {"int f(int a, char* b)", "mt(dc(int,f),args(dc(int,a),*(char,b)))"},
      {"void f() const", "dc(mt(dc(void,f),args()),const)"}, {"(const char *) p", "ct(#const char *,p)"},
      {"(int)x + 1", "+(ct(#int,x),1)"}, {"(void*)0", "ct(#void*,0)"}, {"malloc(n * 4)", "mc(malloc,args(*(n,4)))"},
      {"calloc(n, 4)", "cc(calloc,args(n,4))"}, {"a[i][j]", "in(in(a,i),j)"}, {"char* argv[]", "*(char,in(argv,~))"},
      {"f(x)[2]", "in(mt(f,args(x)),2)"}, {"a[i](x)", "mt(in(a,i),args(x))"},
      {"unsigned long x", "dc(dc(unsigned,long),x)"}, {"const ZELString& name", "&(dc(const,ZELString),name)"},
      {"int x = 3", "=(dc(int,x),3)"}, {"const char* s = \"abc\"", "=(*(dc(const,char),s),st:\"abc\")"},
      {"new A(x)", "nw(mt(A,args(x)))"}, {"new char[10]", "nw(in(char,10))"},
      {"p = new(place) T", "=(p,nw(ct(#place,T)))"}, {"(new A)", "nw(A)"}, {"newValue", "newValue"},
      {"L\"wide\" \"more\"", "st:L\"wide\" \"more\""}, {"'a'", "st:'a'"}, {"L'a'", "st:L'a'"}, {"'\\''", "st:'\\''"},
      {"\"a\" + b", "+(st:\"a\",b)"}, {"x = {1,2}", "=(x,{1,2})"},
  };
  expectTrees(rows);
}

TEST(ExpressionSplit, EachLeftOperandOfALongDeclarationSplitsAsItsTextAlone) {
  // A long run of words shares one scan down its left operands: each must give the tree its text gives alone.
  static const struct { std::vector<std::string> pieces; const char* tail; } rows[] = {  // pieces repeated, blank-separated
      {{"name", "a[2]", "f(x)", "\"s t\"", "'c'", "...", "{k l}", "L\"w\"", "g()", "x1"}, ""},
      {{"unsigned", "int", "a[2]", "f(x)", "q", "'c'", "..."}, " w:3 v : 4"},  // a bit-field
      {{"char", "p", "(p)", "[i]", "h(a b)", "\"a\"\"b\"", "z"}, ""},
  };
  for (const auto& row : rows) {
    std::string text;
    for (size_t i = 0; text.size() < 700; ++i) text += (i ? " " : "") + row.pieces[i % row.pieces.size()];
    text += row.tail;
    SCOPED_TRACE(text);
    BuiltExpression whole(text);
    ASSERT_EQ(whole.status(), 0);
    // Down the left operands of "dc", "mt" and "in", which cut the text short.
    int compared = 0;
    for (vnxSyntaxe* node = whole.node(); node && node->GetType() == vnxSyntaxe::kExpression; node = node->Child(1)) {
      EXPECT_EQ(exprtest::render(node), BuiltExpression(node->GetContent()).tree()) << node->GetContent();
      ++compared;
      const std::string op = node->GetOperator();
      if (op != "dc" && op != "mt" && op != "in") break;
    }
    EXPECT_GT(compared, 60);
  }
}

TEST(ExpressionSplit, DroppingBlanksAndOuterParenthesesNarrowsTheNodeItself) {
  BuiltExpression wrapped("  ( (a+b) )  ");
  EXPECT_EQ(wrapped.tree(), "+(a,b)");
  EXPECT_EQ(wrapped.node()->GetBegin(), 5);
  EXPECT_STREQ(wrapped.node()->GetContent(), "a+b");
  EXPECT_STREQ(wrapped.node()->Child(2)->GetContent(), "b");
  // (a)+(b) starts and ends with a parenthesis that do not match each other.
  BuiltExpression pair("(a)+(b)");
  EXPECT_EQ(pair.tree(), "+(a,b)");
  EXPECT_STREQ(pair.node()->GetContent(), "(a)+(b)");
  BuiltExpression empty("( )");
  EXPECT_TRUE(empty.status() == 0 && empty.tree() == "''") << "no children and no operator";
  EXPECT_STREQ(BuiltExpression("f(x)").node()->Child(2)->GetContent(), "x");  // the arguments' own extent
}

TEST(ExpressionSplit, UnclosedBracketsAndLiteralsFailButKeepWhatWasBuilt) {
  static const struct { const char* text; const char* message; const char* tree; } rows[] = {
      {"f(x", "Missing )", "''"}, {"a[i", "Missing ]", "''"}, {"a)", "Missing )", "''"}, {"b]", "Missing ]", "''"},
      {"g(x) + f(y", "Missing )", "+(mt(g,args(x)),'')"}, {"(x", "Missing )", "''"}, {"x \"abc", "Missing \"", "''"},
      {"f(a, (b)", "Missing )", ",('')"}};  // the comma is taken before the unclosed parenthesis is seen
  for (const auto& row : rows) {
    BuiltExpression e(row.text);
    EXPECT_EQ(e.status(), 1) << row.text;
    EXPECT_STREQ(vnxSyntaxe::GetErrMsg().CastToCharPtr(), row.message) << row.text;
    EXPECT_EQ(e.tree(), row.tree) << row.text;
  }
}

// Bracket answers kept for one tree are forgotten before the next: each must come out as if built alone,
// whether the stream is longer than any before or shorter after a long one.
TEST(ExpressionSplit, EachTreeReadsOnlyItsOwnBracketAnswers) {
  static const Row rows[] = {
      {"f((a),b);", "stmt[mt(f,args(a,b))]"}, {"f((a,b));", "stmt[mt(f,args(,(a,b)))]"},
      {"x=(a)+(b);", "stmt[=(x,+(a,b))]"}, {"x=(a+(b));", "stmt[=(x,+(a,b))]"},
      {"y=a[(b)][c];", "stmt[=(y,in(in(a,b),c))]"},
      {"y=a[(b)[c]];", "stmt[=(y,in(a,ct(#b,in(~,c))))]"},  // (b) casts [c]
      {"{a;}{b;}", "{stmt[a]} | {stmt[b]}"}, {"{a;{b;}}", "{stmt[a];{stmt[b]}}"},
  };
  exprtest::expectTrees<exprtest::ParsedText>(rows);
  static const int counts[] = {1, 70, 3000, 120000, 2, 5000};
  for (size_t round = 0; round < sizeof(counts) / sizeof(counts[0]); ++round) {
    const Row& piece = rows[round % 2 == 0 ? 0 : 3];  // alternate: each offset holds other brackets than before
    std::string text, expected;
    for (int k = 0; k < counts[round]; ++k) {
      text += piece.text;
      expected += (k ? " | " : "") + std::string(piece.tree);
    }
    exprtest::ParsedText parsed(text);
    EXPECT_EQ(parsed.status(), 0) << counts[round];
    EXPECT_TRUE(parsed.tree() == expected) << counts[round] << " copies of " << piece.text;
  }
}

}  // namespace
