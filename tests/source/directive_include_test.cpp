// Include directives: the include string read from the line, and the lines
// written for malformed ones.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "../../source/vnxPreproDirectiveParser.h"
#include "TestSupport.h"
#include "directive_test_support.h"
#include "vnxPreproDirectiveInclude.h"

namespace {

TEST(DirectiveInclude, TheIncludeStringIsTheNameBetweenEitherCloser) {
  const char* const kNone = nullptr;
  const std::string invalid = " !! include syntax in invalid (f.h:2) : ";
  struct Case {
    const char* text;
    const char* includeString;
    std::string line;  // written on the error stream
  };
  const std::vector<Case> cases = {
      {"#include \"a.h\"\n", "a.h", ""},
      {"#include <a.h>\n", "a.h", ""},
      {"#include <a.h\"\n", "a.h", ""},
      {"#include \"a.h\" extra\n", "a.h", ""},
      {"#  include   \\\n  \"b/c.h\" // x\n", "b/c.h", ""},
      // An unclosed quote opens a literal that only the end of the text closes.
      {"#include \"a.h", "a.h", invalid + "#include \"a.h"},
      {"#include <\n", kNone, invalid + "#include <"},
      {"#include \"\"\n", kNone, ""},
      // A macro-named include keeps the whole rest of the line.
      {"#include FOO(x) // c\n", "FOO(x) ", ""},
      {"#include // c\n", kNone, ""},
  };
  for (const Case& t : cases) {
    SCOPED_TRACE(t.text);
    ScopedSource file("f.h");
    StreamCapture capture;
    vnxZELPreproDirective* d = vnxPreproDirectiveParser(file.source).parse(t.text, 0, 2, 1, 0);
    ASSERT_NE(nullptr, d);
    ASSERT_EQ(vnxZELPreproDirective::Include, d->getPreproType());
    EXPECT_EQ(orNull(t.includeString), orNull(static_cast<vnxPreproDirectiveInclude*>(d)->getIncludeString()));
    EXPECT_EQ(t.line.empty() ? "" : t.line + "\n", capture.text());
    d->Release();
  }
}

}  // namespace
