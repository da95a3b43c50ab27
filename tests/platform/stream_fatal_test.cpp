// Output-stream retargeting and the fatal-error report.
#include <gtest/gtest.h>

#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "TAFatalError.h"
#include "ZELString.h"
#include "wbStream.h"

namespace {

TEST(PlatformStream, RetargetingNestsAndNullRestoresTheOriginalStream) {
  std::ostringstream first, second;
  EXPECT_EQ(&std::cout, wbStdout.setTarget(&first));
  wbStdout << "a" << 1 << ' ' << -2L << ' ' << 3u << ' ' << 4ul << ' ' << 5ll << ' ' << 1.5 << ' '
           << ZELString("z") << static_cast<const char*>(nullptr) << endl;
  EXPECT_EQ(&first, wbStdout.setTarget(&second));
  wbStdout << "b";
  EXPECT_EQ(&second, wbStdout.setTarget(nullptr));
  EXPECT_TRUE(wbStdout.getTarget() == &std::cout && second.str() == "b");
  // Each stream keeps its own target.
  std::ostringstream errors;
  std::ostream* previous = wbStderr.setTarget(&errors);
  wbStderr << "e";
  wbStdout.setTarget(&first);
  wbStdout << "o";
  wbStderr.setTarget(previous), wbStdout.setTarget(nullptr);
  EXPECT_EQ("e", errors.str());
  EXPECT_EQ("a1 -2 3 4 5 1.5 z\no", first.str());
}

std::vector<std::string>* gReceived = nullptr;
void recordMessage(const char* message) { gReceived->push_back(message); }

TEST(PlatformFatalError, ReportsOnlyWhenTheConditionHoldsAndCallsTheHandler) {
  std::vector<std::string> received;
  gReceived = &received;
  std::ostringstream errors;
  std::ostream* previousStream = wbStderr.setTarget(&errors);
  TAFatalErrorHandler previousHandler = TASetFatalErrorHandler(recordMessage);
  const int before = TAFatalErrorCount();

  EXPECT_TRUE(TAFatalError(0, "quiet") == 0 && TAFatalError(7, "broken invariant") == 7 && TAFatalError(1, nullptr) == 1);

  EXPECT_EQ(recordMessage, TASetFatalErrorHandler(previousHandler));
  TAFatalError(1, "after the handler is gone");
  wbStderr.setTarget(previousStream);

  EXPECT_EQ(before + 3, TAFatalErrorCount());
  EXPECT_EQ(std::vector<std::string>({"broken invariant", ""}), received);
  EXPECT_EQ("# FATAL ERROR: broken invariant\n# FATAL ERROR: \n# FATAL ERROR: after the handler is gone\n",
            errors.str());
  gReceived = nullptr;
}

}  // namespace
