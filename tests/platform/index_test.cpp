// TAIndex: first-position look-ups with duplicates, shifting removals, owned keys, copies.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "TAIndex.h"

namespace {

void* value(long v) { return reinterpret_cast<void*>(v); }

TEST(PlatformIndex, DuplicatesAreKeptLookUpsAnswerTheFirstPositionAndKeysAreCopied) {
  TAIndex index;
  char key[] = "a";
  EXPECT_EQ(0, index.Append(key, value(1)));
  EXPECT_EQ(1, index.Append("b", value(2)));
  EXPECT_EQ(2, index.Append("a", value(3)));
  key[0] = 'z';  // the index holds its own copy
  EXPECT_EQ(-1, index.Append(nullptr, value(4)));
  EXPECT_EQ(3, index.Append("", value(5)));  // an empty key is ordinary
  EXPECT_TRUE(index.Size() == 4 && index.IsIn("a") == 0 && index.IsIn("b") == 1 && index.IsIn("") == 3);
  for (const char* absent : {"z", "A", "c", static_cast<const char*>(nullptr)}) EXPECT_EQ(-1, index.IsIn(absent));
  EXPECT_EQ(value(3), index.GetValue(2));
  EXPECT_STREQ("a", index.GetKey(2));

  // Out-of-range positions answer null and ignore writes.
  EXPECT_TRUE(index.GetKey(4) == nullptr && index.GetKey(-1) == nullptr && index.GetValue(4) == nullptr);
  for (int position : {4, -1}) index.SetValue(position, value(9)), index.RemovePosition(position);
  EXPECT_EQ(4, index.Size());
  index.SetValue(0, value(8));
  EXPECT_EQ(value(8), index.GetValue(0));

  index.RemovePosition(1);  // Reset with a removal still pending
  index.Reset();
  EXPECT_TRUE(index.Size() == 0 && index.IsIn("b") == -1);
  EXPECT_TRUE(index.Append("b", nullptr) == 0 && index.IsIn("b") == 0);
}

TEST(PlatformIndex, CopiesAreIndependentEvenFromAnIndexWithPendingRemovals) {
  TAIndex original, assigned;
  for (const char* key : {"a", "b", "a"}) original.Append(key, value(original.Size() + 1));
  original.RemovePosition(0);  // look-ups not rebuilt yet
  TAIndex copy(original);
  EXPECT_TRUE(copy.Size() == 2 && copy.IsIn("a") == 1 && copy.GetValue(1) == value(3));
  original.Reset();
  EXPECT_TRUE(copy.IsIn("b") == 0 && std::string("b") == copy.GetKey(0));

  assigned.Append("zzz", nullptr);
  assigned = copy;
  EXPECT_TRUE(assigned.IsIn("zzz") == -1 && assigned.IsIn("a") == 1);
  TAIndex& alias = assigned;
  assigned = alias;
  EXPECT_TRUE(assigned.Size() == 2 && assigned.IsIn("b") == 0);
}

TEST(PlatformIndex, HundredThousandKeysAreFoundAtTheirPositions) {
  TAIndex index;
  const int n = 100000;
  const auto key = [](int i) { return "key" + std::to_string(i); };
  for (int i = 0; i < n; ++i) index.Append(key(i).c_str(), value(i));
  for (int i = 0; i < n; i += 997) EXPECT_EQ(i, index.IsIn(key(i).c_str()));
  EXPECT_EQ(-1, index.IsIn(key(n).c_str()));
  for (int i = 0; i < 10; ++i) index.RemovePosition(0);
  EXPECT_TRUE(index.IsIn("key10") == 0 && index.IsIn(key(n - 1).c_str()) == n - 11);
}

TEST(PlatformIndex, LookUpsAgreeWithAPlainListWhileTheSizeCrossesTheHashingThreshold) {
  std::mt19937 random(7);
  TAIndex index;
  std::vector<std::string> reference;
  const char* const keys[] = {"a", "b", "c", "d", "e", "f", "g", "h", "i", "j", "k"};
  for (int step = 0; step < 4000; ++step) {
    const unsigned roll = random() % 10;
    if (roll < 6 && reference.size() < 20) {
      reference.push_back(keys[random() % 11]);
      EXPECT_EQ(static_cast<int>(reference.size()) - 1, index.Append(reference.back().c_str(), nullptr));
    } else if (roll < 9 && !reference.empty()) {
      const int position = static_cast<int>(random() % reference.size());
      index.RemovePosition(position), reference.erase(reference.begin() + position);
    } else if (roll == 9) {
      index.Reset(), reference.clear();
    }
    ASSERT_EQ(static_cast<int>(reference.size()), index.Size());
    if (random() % 3 == 0) continue;  // some changes pile up before a look-up, checked against a plain list
    for (const char* key : keys) {
      const auto found = std::find(reference.begin(), reference.end(), key);
      const int expected = found == reference.end() ? -1 : static_cast<int>(found - reference.begin());
      ASSERT_EQ(expected, index.IsIn(key)) << "key " << key << " at step " << step;
    }
  }
}

}  // namespace
