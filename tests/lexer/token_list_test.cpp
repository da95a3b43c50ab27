// ZELListValvnxToken: owned copies, 1-based positions, deep copies and
// equality by spelling.
#include <gtest/gtest.h>

#include <type_traits>

#include "TAFatalError.h"
#include "TestSupport.h"
#include "ZELListValvnxToken.h"

static_assert(std::is_same<ZELListVal<vnxToken>, ZELListValvnxToken>::value,
              "the generic spelling must name the token list");

namespace {

const char kText[] = "alpha beta gamma delta";

vnxToken word(int index) {
  static const int starts[] = {0, 6, 11, 17}, lengths[] = {5, 4, 5, 5};
  return vnxToken(kText + starts[index], static_cast<unsigned>(lengths[index]), vnxToken::kIdentifier);
}

std::string spelled(const ZELListValvnxToken& list) {
  std::string out;
  for (int i = 1; i <= list.Size(); ++i) out.append(i > 1 ? " " : "").append(list[i].getStart(), list[i].getLength());
  return out;
}

ZELListValvnxToken listOf(std::initializer_list<int> indexes) {
  ZELListValvnxToken list;
  for (int i : indexes) list.Append(word(i));
  return list;
}

TEST(LexerTokenList, AppendStoresCopiesRemovalsCloseTheGapsAndCopiesAreDeep) {
  ZELListValvnxToken list;
  vnxToken t = word(0);
  list.Append(t);
  t = word(1);  // the stored copy does not follow the original
  list.Append(t);
  list.Append(listOf({2, 3}));
  EXPECT_EQ("alpha beta gamma delta", spelled(list));
  list.Append(list);  // appending a list to itself doubles it
  EXPECT_EQ(8, list.Size());

  for (int position : {2, 7, 0, 7}) list.RemovePosition(position);  // 0 and the second 7 are out of range
  EXPECT_EQ("alpha gamma delta alpha beta gamma", spelled(list));
  list[1] = word(3);
  ZELListValvnxToken copy(list);
  ZELListValvnxToken assigned = listOf({3, 3, 3});
  assigned = list;
  ZELListValvnxToken& alias = assigned;
  assigned = alias;
  list.RemoveAll(ZELCollec::KeepMemory);
  list.Append(word(1));
  EXPECT_EQ("beta", spelled(list));
  EXPECT_EQ("delta gamma delta alpha beta gamma", spelled(copy));
  EXPECT_EQ(spelled(copy), spelled(assigned));
}

TEST(LexerTokenList, EqualityComparesSpellingsPositionByPosition) {
  const char other[] = "beta alpha";
  ZELListValvnxToken a = listOf({0, 1});
  ZELListValvnxToken b;
  b.Append(vnxToken(other + 5, 5, vnxToken::kString));  // same spelling, other buffer and kind
  b.Append(vnxToken(other, 4, vnxToken::kUnknown));
  EXPECT_TRUE(a == b && !(a != b) && !(a != a));
  EXPECT_TRUE(a != listOf({1, 0}) && !(a == listOf({1, 0})) && a != listOf({0}) && !(a == listOf({0})));
  EXPECT_TRUE(ZELListValvnxToken() == ZELListValvnxToken());
}

TEST(LexerTokenList, OutOfRangeAccessIsReportedAndAnswersTheNullToken) {
  StreamCapture quiet;
  ZELListValvnxToken list = listOf({0});
  const ZELListValvnxToken& constList = list;
  const int before = TAFatalErrorCount();
  EXPECT_TRUE(constList[0].getStart() == nullptr && constList[2].getStart() == nullptr);
  list[5] = word(1);  // writing through a bad position harms nothing
  EXPECT_EQ(0u, list[-1].getLength());
  EXPECT_EQ(before + 4, TAFatalErrorCount());
  EXPECT_EQ("alpha", spelled(list));
}

}  // namespace
