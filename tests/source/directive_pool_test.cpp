// Directive pools: one pool per class, blocks of 1024 handed back when every
// directive in them is released, Release through the base finding the right
// pool.
#include <gtest/gtest.h>

#include <vector>

#include "vnxPreproDirectiveDefineFunction.h"
#include "vnxPreproDirectiveDefineSimple.h"
#include "vnxPreproDirectiveInclude.h"
#include "vnxZELPreproDirective.h"

namespace {

int liveInAllPools() {
  return vnxZELPreproDirective::getPoolLiveCount() + vnxPreproDirectiveDefineSimple::getPoolLiveCount() +
         vnxPreproDirectiveDefineFunction::getPoolLiveCount() + vnxPreproDirectiveInclude::getPoolLiveCount();
}

TEST(DirectivePool, ABlockHolds1024DirectivesAndIsFreedWithItsLastOne) {
  ASSERT_EQ(0, liveInAllPools());
  std::vector<vnxZELPreproDirective*> directives;
  for (int i = 0; i < 1025; ++i) directives.push_back(vnxZELPreproDirective::create(nullptr));
  EXPECT_EQ(1025, vnxZELPreproDirective::getPoolLiveCount());
  EXPECT_EQ(2, vnxZELPreproDirective::getPoolBlockCount());
  EXPECT_EQ(2, directives[0]->AddRef());
  for (int i = 1023; i >= 0; --i) directives[i]->Release();  // the first one is still held
  EXPECT_EQ(2, vnxZELPreproDirective::getPoolBlockCount());
  EXPECT_EQ(0, directives[0]->Release());
  EXPECT_EQ(1, vnxZELPreproDirective::getPoolBlockCount());
  directives[1024]->Release();
  EXPECT_EQ(0, vnxZELPreproDirective::getPoolBlockCount());
}

TEST(DirectivePool, EveryClassHasItsOwnPoolAndReleaseThroughTheBaseFindsIt) {
  vnxZELPreproDirective* directives[] = {vnxPreproDirectiveDefineSimple::create(nullptr),
                                         vnxPreproDirectiveDefineFunction::create(nullptr),
                                         vnxPreproDirectiveInclude::create(nullptr)};
  EXPECT_EQ(0, vnxZELPreproDirective::getPoolLiveCount());
  EXPECT_EQ(3, vnxPreproDirectiveDefineSimple::getPoolLiveCount() +
                   vnxPreproDirectiveDefineFunction::getPoolLiveCount() +
                   vnxPreproDirectiveInclude::getPoolLiveCount());
  for (vnxZELPreproDirective* d : directives) EXPECT_EQ(0, d->Release());
  EXPECT_EQ(0, liveInAllPools());
}

}  // namespace
