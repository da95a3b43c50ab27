// Navigation, content tests, occurrences, strings of an expression, value predicates, over hand-made trees.
#include <gtest/gtest.h>

#include "TAFatalError.h"
#include "TestSupport.h"
#include "vnxSourceFile.h"
#include "vnxSyntaxe.h"

namespace {

// A node with a given operator text and precise type, owned by its tree, returned to the heap.
class FakeNode : public vnxSyntaxe {
 public:
  static FakeNode* add(vnxSyntaxe* father, int type, int begin, int size, const char* op = nullptr, int precise = 0) {
    FakeNode* node = new FakeNode(op, precise);
    node->create(type, father, begin, size, father->ChildCount() + 1);
    (father->*&FakeNode::Append)(node);
    node->Release();
    return node;
  }
  const char* GetOperator() const override { return _op; }
  int GetPreciseType() const override { return _precise; }

 protected:
  void ReturnToPool() override { delete this; }

 private:
  FakeNode(const char* op, int precise) : _op(op), _precise(precise) {}
  const char* _op;
  int _precise;
};

// An identifier expression "id" over [begin, begin + size) with its leaf.
FakeNode* addId(vnxSyntaxe* father, int begin, int size) {
  FakeNode* id = FakeNode::add(father, vnxSyntaxe::kExpression, begin, size, "id");
  FakeNode::add(id, vnxSyntaxe::kTAPIdentifiant, begin, size);
  return id;
}

// The text below built by hand as the instruction and expression builders would.
class TreeNavigate : public ::testing::Test {
 protected:
  void SetUp() override {
    //                 0         1         2         3         4         5         6         7
    //                 0123456789012345678901234567890123456789012345678901234567890123456789012345
    const char* text = "a = f(x, y); return NULL; p = (T)0; q = (T)this; r = (T)g(); s <<= 1; ;";
    source = vnxSourceFile::CreateFromPreprocessedText(text, "nav.cpp");
    root = vnxSyntaxe::CreateTAPSyntaxe(vnxSyntaxe::kFile, source, 0, source->GetSize(), 1);

    assignment = FakeNode::add(root, vnxSyntaxe::kInstruction, 0, 11);
    vnxSyntaxe* equal = FakeNode::add(assignment, vnxSyntaxe::kExpression, 0, 11, "=");
    addId(equal, 0, 1);
    call = FakeNode::add(equal, vnxSyntaxe::kExpression, 4, 7, "mt");
    addId(call, 4, 1);
    arguments = FakeNode::add(call, vnxSyntaxe::kArguments, 6, 4);
    addId(arguments, 6, 1);
    addId(arguments, 9, 1);

    returnNull = FakeNode::add(root, vnxSyntaxe::kInstruction, 13, 11, nullptr, 20);
    nullId = addId(returnNull, 20, 4);

    for (int begin : {26, 36}) {  // p = (T)0 and q = (T)this
      vnxSyntaxe* instruction = FakeNode::add(root, vnxSyntaxe::kInstruction, begin, 8 + (begin == 36 ? 3 : 0));
      vnxSyntaxe* eq = FakeNode::add(instruction, vnxSyntaxe::kExpression, begin, instruction->GetSize(), "=");
      addId(eq, begin, 1);
      vnxSyntaxe* cast = FakeNode::add(eq, vnxSyntaxe::kExpression, begin + 4, instruction->GetSize() - 4, "ct");
      FakeNode::add(cast, vnxSyntaxe::kTAPIdentifiant, begin + 5, 1);
      addId(cast, begin + 7, instruction->GetSize() - 7);
      (begin == 26 ? nullCast : thisCast) = cast;
    }
    callCast = FakeNode::add(root, vnxSyntaxe::kExpression, 53, 6, "ct");  // (T)g()
    FakeNode::add(callCast, vnxSyntaxe::kTAPIdentifiant, 54, 1);
    addId(FakeNode::add(callCast, vnxSyntaxe::kExpression, 56, 3, "mt"), 56, 1);
    shift = FakeNode::add(root, vnxSyntaxe::kExpression, 61, 7, "<<=");
    empty = FakeNode::add(root, vnxSyntaxe::kSyntaxeNULL, 70, 1);
  }
  void TearDown() override { root->Release(), source->Release(); }

  vnxSourceFile* source = nullptr;
  vnxSyntaxe *root = nullptr, *assignment = nullptr, *call = nullptr, *arguments = nullptr, *returnNull = nullptr;
  vnxSyntaxe *nullId = nullptr, *nullCast = nullptr, *thisCast = nullptr, *callCast = nullptr, *shift = nullptr,
             *empty = nullptr;
};

TEST_F(TreeNavigate, NavigateFollowsMovesAndTests) {
  EXPECT_EQ(root->Navigate(SNAV_Child, 1, SNAV_Child, 1, SNAV_ExprTest, "=", SNAV_Child, 2, SNAV_ExprTest, "mt",
                           SNAV_Child, 2, SNAV_Test, 6, 0),
            arguments);
  EXPECT_EQ(root->Navigate(SNAV_Child, 2, SNAV_InstTest, 20, SNAV_Child, 1, SNAV_StringContent, "NULL", 0), nullId);
  EXPECT_EQ(arguments->Navigate(SNAV_Father, SNAV_Father, SNAV_Father, SNAV_Next, SNAV_Previous, 0), assignment);
  EXPECT_EQ(call->Navigate(SNAV_BeginWith, "f(", SNAV_SyntaxeContent, call, 0), call);
  EXPECT_EQ(shift->Navigate(SNAV_ExprTest, "<<", 0), shift) << "only two characters of the operator count";
  EXPECT_EQ(empty->Navigate(SNAV_IsNull, 1, SNAV_Father, 0), root) << "the element after IsNull is skipped";
  EXPECT_EQ(empty->Navigate(SNAV_IsNull, 0), empty);
}

TEST_F(TreeNavigate, NavigateEndsWithNullOnAFailedStep) {
  const struct { vnxSyntaxe* result; const char* what; } rows[] = {
      {root->Navigate(SNAV_Child, 99, 0), "child index above the count"},
      {root->Navigate(SNAV_Test, 2, 0), "wrong node type"}, {call->Navigate(SNAV_ExprTest, "=", 0), "wrong operator"},
      {assignment->Navigate(SNAV_ExprTest, "", 0), "not an expression"},
      {returnNull->Navigate(SNAV_InstTest, 31, 0), "wrong precise type"},
      {call->Navigate(SNAV_InstTest, 20, 0), "precise type of a non-instruction"},
      {call->Navigate(SNAV_StringContent, "f(x, y", 0), "text differs"},
      {call->Navigate(SNAV_BeginWith, "g", 0), "prefix differs"}, {call->Navigate(SNAV_IsNull, 1, 0), "not null"},
      {call->Navigate(SNAV_SyntaxeContent, assignment, 0), "other node's text differs"},
      {root->Navigate(SNAV_Father, SNAV_Child, 1, 0), "move to a missing father"},
      {empty->Navigate(SNAV_Next, SNAV_Child, 1, 0), "no next"}, {assignment->Navigate(SNAV_Previous, 0), "no previous"}};
  for (const auto& row : rows) EXPECT_EQ(row.result, nullptr) << row.what;
}

TEST_F(TreeNavigate, ZeroArgumentEndsTheListEarlyAndBadCodesAreReported) {
  const int reports = TAFatalErrorCount();
  StreamCapture capture;
  EXPECT_EQ(root->Navigate(SNAV_Child, 0, SNAV_Child, 1, 0), root);
  EXPECT_EQ(root->Navigate(SNAV_StringContent, static_cast<const char*>(nullptr), SNAV_Child, 1, 0), root);
  EXPECT_EQ(capture.lines(),
            (std::vector<std::string>{"# FATAL ERROR: vnxSyntaxe::Navigate not enought args for SNAV_Child",
                                      "# FATAL ERROR: vnxSyntaxe::Navigate not enought args for SNAV_StringContent"}));
  capture.clear();
  // Navigate2 reports a bad code and goes on.
  const char* list[] = {reinterpret_cast<const char*>(150), reinterpret_cast<const char*>(SNAV_Child),
                        reinterpret_cast<const char*>(1)};
  EXPECT_EQ(root->Navigate2(3, list), assignment);
  EXPECT_EQ(capture.text(), "# FATAL ERROR: vnxSyntaxe::Navigate bad argument\n");
  capture.clear();
  // An operator or precise-type test in last place is passed over silently.
  for (const char* last : {reinterpret_cast<const char*>(SNAV_ExprTest), reinterpret_cast<const char*>(SNAV_InstTest)})
    EXPECT_EQ(call->Navigate2(1, &last), call);
  EXPECT_EQ(capture.text(), "");
  EXPECT_EQ(TAFatalErrorCount(), reports + 3);
  EXPECT_EQ(call->Navigate2(0, nullptr), call);
}

TEST_F(TreeNavigate, TestContentComparesWholeTextsOrPrefixes) {
  vnxSyntaxe* f = call->Child(1);  // "f"
  const struct { vnxSyntaxe* node; const char* s; int n; bool equal; } rows[] = {
      {call, "f(x, y)", -1, true}, {call, "f(x, y", -1, false}, {call, "f(", 2, true}, {call, "f(x, y)z", 7, true},
      {call, "f(x, y)z", 8, false}, {call, "f", 2, false}, {call, "g(x, y)", -1, false}, {call, "", -1, false},
      {call, "", 0, false} /* first characters differ */, {f, "fg", 1, true}, {empty, ";", -1, true}};
  for (const auto& row : rows)
    EXPECT_EQ(row.node->TestContent(row.s, row.n) == 0, row.equal) << row.s << " / " << row.n;

  EXPECT_TRUE(call->TestContent(call) == 0 && call->TestContent(static_cast<vnxSyntaxe*>(nullptr)) != 0);
  EXPECT_NE(call->TestContent(assignment), 0);
  EXPECT_EQ(nullCast->Child(2)->TestContent(nullId), 1) << "different lengths";
  EXPECT_EQ(arguments->Child(1)->TestContent(arguments->Child(1)->Child(1)), 0);
}

TEST_F(TreeNavigate, OccurrencesAreLeavesInDepthFirstOrder) {
  ZELListPtr<vnxSyntaxe> found;
  EXPECT_EQ(root->FindOccurrences("T", found), 1);
  ASSERT_EQ(found.Size(), 3);
  EXPECT_EQ(found[1], nullCast->Child(1));
  EXPECT_EQ(found[2], thisCast->Child(1));
  EXPECT_EQ(found[3]->GetBegin(), 54);

  ZELListPtr<vnxSyntaxe> none, same;
  EXPECT_EQ(root->FindOccurrences("f(x, y)", none), 0) << "a node with children is not tested";
  EXPECT_EQ(none.Size(), 0);
  EXPECT_EQ(root->FindOccurrences("nothing", found), 1) << "the list already held nodes";
  vnxSyntaxe* x = arguments->Child(1)->Child(1);
  EXPECT_EQ(assignment->FindOccurrences(x, same), 1);
  EXPECT_TRUE(same.Size() == 1 && same[1] == x);
  EXPECT_EQ(root->HasOccurrences("y"), 1);
  EXPECT_EQ(root->HasOccurrences("="), 0);
  EXPECT_EQ(returnNull->HasOccurrences("a"), 0);
}

// The strings of node, each followed by '|'.
std::string strings(vnxSyntaxe* node) {
  ZELListValZELString out;
  EXPECT_EQ(node->GetListOfString(out), 1);
  std::string joined;
  for (int i = 1; i <= out.Size(); ++i) joined += std::string(out[i]) + "|";
  return joined;
}

TEST_F(TreeNavigate, ListOfStringPutsThePunctuationBackAroundEveryShape) {
  EXPECT_EQ(strings(assignment), "a|=|f|(|x|,|y|)|");
  EXPECT_EQ(strings(nullCast), "T|(|0|)|");  // a cast reads as a call of its type
  EXPECT_EQ(strings(callCast), "T|(|g|(|)|)|");
  EXPECT_EQ(strings(root), "a|=|f|(|x|,|y|)|NULL|p|=|T|(|0|)|q|=|T|(|this|)|T|(|g|(|)|)|");
  // Unary operators, indexes and blocks: "*p[i] && {k}" built by hand with the shapes the expression builder makes.
  vnxSourceFile* text = vnxSourceFile::CreateFromPreprocessedText("*p[i] && {k}", "u.cpp");
  vnxSyntaxe* top = vnxSyntaxe::CreateTAPSyntaxe(vnxSyntaxe::kExpression, text, 0, 12, 1);
  FakeNode* andNode = FakeNode::add(top, vnxSyntaxe::kExpression, 0, 12, "&&");
  FakeNode* star = FakeNode::add(andNode, vnxSyntaxe::kExpression, 0, 5, "*");
  FakeNode* index = FakeNode::add(star, vnxSyntaxe::kExpression, 1, 4, "in");
  addId(index, 1, 1);
  addId(index, 3, 1);
  addId(FakeNode::add(andNode, vnxSyntaxe::kTAPBloc, 10, 1), 10, 1);
  addId(FakeNode::add(top, vnxSyntaxe::kExpression, 1, 4, "in"), 1, 1);  // an index without its index

  StreamCapture capture;
  EXPECT_EQ(strings(top), "*|p|[|i|]|&&|{|k|}|p|[|]|");
  EXPECT_EQ(capture.lines(), std::vector<std::string>{" vnxSyntaxe:Child Bad Index"}) << "the missing index";
  top->Release();
  text->Release();
}

TEST_F(TreeNavigate, NullAndThisValuesLookThroughACast) {
  const struct { vnxSyntaxe* node; int isNull, isThis; } rows[] = {
      {nullId, 1, 0}, {nullCast, 1, 0}, {thisCast, 0, 1}, {callCast, 0, 0} /* its operand is a call */,
      {call, 0, 0}, {empty, 0, 0}, {nullCast->Child(2)->Child(1), 1, 0}};
  for (const auto& row : rows) {
    EXPECT_EQ(row.node->isSyntaxeNullValue(), row.isNull) << row.node->GetContent();
    EXPECT_EQ(row.node->isSyntaxeThisValue(), row.isThis) << row.node->GetContent();
  }
}

}  // namespace
