// ZELString's clipping rules, ZELUnicodeString's UTF-8 handling, the output streams' targets
// and the fatal-error report.
#include <gtest/gtest.h>

#include <climits>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "TAFatalError.h"
#include "ZELString.h"
#include "ZELUnicodeString.h"
#include "wbStream.h"

namespace {

TEST(PlatformString, SubStringAndRemoveTailClipToTheString) {
  const ZELString s("abcdef");
  const struct { int start, length; const char* expected; } rows[] = {
      {0, 3, "abc"}, {4, 100, "ef"}, {-2, 5, "abc"}, {6, 1, ""}, {2, -1, ""}, {-10, 3, ""}, {1, INT_MAX, "bcdef"},
  };
  for (const auto& row : rows)
    EXPECT_STREQ(row.expected, s.SubString(row.start, row.length)) << row.start << "," << row.length;

  ZELString t("abcdef");
  t.RemoveTail(2), t.RemoveTail(-1);
  EXPECT_STREQ("abcd", t);
  t.RemoveTail(10);
  EXPECT_EQ(1, t.IsNull());
}

TEST(PlatformString, EmbeddedNulsCountInTheLengthButCutTheCStringViewAndBytesCompareUnsigned) {
  const ZELString s("a\0b", 3);
  EXPECT_EQ(3, s.GetLengthInChar());
  EXPECT_STREQ("a", s.CastToCharPtr());
  EXPECT_TRUE(s != ZELString("a") && s == "a");  // comparison with a C string sees the C-string view
  ZELString built;
  built.Append("xyz", 2).Append(nullptr, 3).Append("q", -1);
  EXPECT_STREQ("xy", built);
  const char* const none = nullptr;
  EXPECT_TRUE(ZELString() == none && ZELString(none, 5).GetLengthInChar() == 0);
  // Comparison, number conversion and concatenation.
  EXPECT_LT(ZELString("ab").Compare(ZELString("b")), 0);
  EXPECT_GT(ZELString("\xC3").Compare(ZELString("z")), 0);  // bytes compare unsigned
  EXPECT_TRUE(ZELString("a") < ZELString("ab"));
  EXPECT_STREQ("-2147483648", toString(INT_MIN));
  EXPECT_STREQ("xab-c", "x" + ZELString("a") + "b" + '-' + ZELString("c"));
}

TEST(PlatformUnicodeString, ValidUtf8RoundTripsThroughUtf16) {
  const struct { const char* utf8; int units; } rows[] = {
      {"", 0}, {"plain", 5}, {"caf\xC3\xA9", 4}, {"\xEF\xBF\xBF", 1},  // U+00E9, U+FFFF
      {"\xF0\x9F\x98\x80", 2}, {"\xF4\x8F\xBF\xBF", 2},  // U+1F600 (a surrogate pair), U+10FFFF (the last)
  };
  for (const auto& row : rows) {
    const ZELUnicodeString u(row.utf8);
    EXPECT_EQ(row.units, u.GetLengthInChar()) << row.utf8;
    EXPECT_STREQ(row.utf8, u.ConvertToChar());
    EXPECT_TRUE(u == ZELUnicodeString(ZELString(row.utf8)));
  }
  const ZELUnicodeString pair("\xF0\x9F\x98\x80");
  EXPECT_TRUE(pair.GetBuffer()[0] == 0xD83D && pair.GetBuffer()[1] == 0xDE00);
  EXPECT_EQ(0, ZELUnicodeString(static_cast<const char*>(nullptr)).GetLengthInChar());
}

TEST(PlatformUnicodeString, InvalidUtf8BytesAreTakenAsLatin1) {
  const struct { const char* input; std::u16string units; } rows[] = {
      {"\xC3", u"\u00C3"}, {"a\xE2\x82", u"a\u00E2\u0082"},  // truncated sequences
      {"\xC0\xAF", u"\u00C0\u00AF"},                          // overlong '/'
      {"\xED\xA0\x80", u"\u00ED\u00A0\u0080"},  // an encoded surrogate
      {"\xF5\x80\x80\x80", u"\u00F5\u0080\u0080\u0080"},  // beyond U+10FFFF
      {"\x80x", u"\u0080x"}, {"\xFF\xFE", u"\u00FF\u00FE"},  // a lone continuation byte, never-valid bytes
  };
  for (const auto& row : rows) {
    const ZELUnicodeString u(row.input);
    EXPECT_EQ(row.units, std::u16string(u.GetBuffer(), static_cast<size_t>(u.GetLengthInChar())));
    // Converting back gives valid UTF-8 of those Latin-1 characters.
    EXPECT_TRUE(ZELUnicodeString(u.ConvertToChar()) == u);
  }
}

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
