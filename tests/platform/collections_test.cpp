// The framework's lists: 1-based positions, clamped insertions, answers out of range, sorts.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "ZELLists.h"
#include "wbPathFinder.h"

namespace {

template <class List, class F>
auto itemsOf(const List& list, F get) {
  std::vector<decltype(get(list[1]))> out;
  for (int i = 1; i <= list.Size(); ++i) out.push_back(get(list[i]));
  return out;
}
std::vector<int> items(const ZELListVal<int>& list) { return itemsOf(list, [](int v) { return v; }); }

void* num(intptr_t v) { return reinterpret_cast<void*>(v); }

TEST(PlatformLists, ValueListsAreOneBasedWithClampedInsertions) {
  ZELListVal<int> list, other;
  list.Append(20);
  list.InsertAt(1, 10);
  list.InsertAt(0, 5);    // before the start: goes first
  list.InsertAt(99, 30);  // past the end: goes last
  list.InsertAt(4, 25);
  EXPECT_EQ(std::vector<int>({5, 10, 20, 25, 30}), items(list));
  EXPECT_TRUE(list.Locate(20) == 3 && list.Locate(21) == 0);
  for (int position : {0, 6, 1}) list.RemovePosition(position);  // only 1 is in range
  other.Append(1);
  list.Append(other);
  list.Append(list);
  EXPECT_EQ(std::vector<int>({10, 20, 25, 30, 1, 10, 20, 25, 30, 1}), items(list));
  list.RemoveAll(ZELCollec::KeepMemory);
  EXPECT_EQ(0, list.Size());
}

TEST(PlatformListsDeathTest, ValueListAccessOutOfRangeIsFatal) {
  ZELListVal<int> list;
  list.Append(1);
  EXPECT_DEATH(list[2], "position out of range");
  EXPECT_DEATH(list[0], "position out of range");
}

TEST(PlatformLists, PointerAndRawListsAnswerNullOrZeroOutOfRange) {
  int a = 1, b = 2;
  ZELListPtr<int> list;
  list.Append(&a);
  list.InsertAt(1, &b);
  EXPECT_TRUE(list[1] == &b && list[2] == &a && list[0] == nullptr && list[3] == nullptr);
  EXPECT_EQ(2, list.Locate(&a));
  list.Append(list);
  EXPECT_TRUE(list.Size() == 4 && list[4] == &a);
  list.RemovePosition(1);
  EXPECT_EQ(&a, list[1]);
  list.RemoveAll();
  EXPECT_EQ(nullptr, list[1]);

  ZELRawCollint ints, same;
  ints.Append(3);
  ints.InsertAt(-4, 1);
  const ZELRawCollint& constInts = ints;
  EXPECT_TRUE(constInts[1] == 1 && constInts[0] == 0 && constInts[3] == 0 && ints.Locate(3) == 2);
  ints[2] = 7;
  same.Append(1);
  same.Append(7);
  EXPECT_TRUE(ints == same);
  same.RemovePosition(5);
  same.RemovePosition(1);
  EXPECT_TRUE(ints != same);

  ZELRawCollPV pointers;
  pointers.Append(&a);
  pointers.Set(2, &b);  // out of range: ignored
  pointers.InsertAt(100, &b);
  EXPECT_TRUE(pointers[2] == &b && pointers[3] == nullptr && pointers[0] == nullptr && pointers.Locate(&b) == 2);
  pointers.Set(1, &b);
  EXPECT_EQ(1, pointers.Locate(&b));
}

int compareStrings(const void* a, const void* b) { return std::strcmp(static_cast<const char*>(a), static_cast<const char*>(b)); }
intptr_t numOf(const void* p) { return reinterpret_cast<intptr_t>(p); }
int compareNumbers(const void* a, const void* b) { return (numOf(a) > numOf(b)) - (numOf(a) < numOf(b)); }
int alwaysLess(const void*, const void*) { return -1; }

TEST(PlatformLists, RawPointerQuickSortOrdersElementsByTheCompareFunction) {
  ZELRawCollPV list, numbers, mixed;
  for (const char* w : {"pear", "apple", "fig", "apple", "", "Zebra"}) list.Append(const_cast<char*>(w));
  list.QuickSort(nullptr);  // no order given: nothing moves
  EXPECT_STREQ("pear", static_cast<const char*>(list[1]));
  list.QuickSort(compareStrings);
  const auto asString = [](void* p) { return std::string(static_cast<const char*>(p)); };
  EXPECT_EQ(std::vector<std::string>({"", "Zebra", "apple", "apple", "fig", "pear"}), itemsOf(list, asString));

  // A long descending run must not go quadratic or lose elements.
  const int n = 200000;
  for (intptr_t i = n; i > 0; --i) numbers.Append(num(i));
  numbers.QuickSort(compareNumbers);
  ASSERT_EQ(n, numbers.Size());
  for (int i = 1; i <= n; i += 1999) EXPECT_EQ(num(i), numbers[i]);

  // An inconsistent order still leaves a permutation: nothing lost, nothing invented.
  long expected = 0, sum = 0;
  for (intptr_t i = 0; i < 1000; ++i) mixed.Append(num(i % 7)), expected += i % 7;
  mixed.QuickSort(alwaysLess);
  ASSERT_EQ(1000, mixed.Size());
  for (int i = 1; i <= mixed.Size(); ++i) sum += numOf(mixed[i]);
  EXPECT_EQ(expected, sum);
}

TEST(PlatformLists, StringQuickSortUsesByteOrder) {
  ZELListValZELString list;
  for (const char* s : {"b", "a\xC3\xA9", "B", "", "a", "b", "az"}) list.Append(ZELString(s));
  wbUsefull::QuickSortZELString(list);
  // Bytes of 128 and above sort after ASCII letters.
  EXPECT_EQ(std::vector<std::string>({"", "B", "a", "az", "a\xC3\xA9", "b", "b"}),
            itemsOf(list, [](const ZELString& s) { return s.str(); }));
}

}  // namespace
