// The dumps of a conditional group and of its directives on the output stream.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "TestSupport.h"
#include "vnxPreproConditionalGroup.h"
#include "vnxPreproDirectiveConditional.h"
#include "wbStream.h"

namespace {

TEST(ConditionalDump, AGroupDumpsItsDirectivesBetweenTheFrenchBanners) {
  const std::string text = "#if defined(A) || B\nx\n#else // other\ny\n#endif\n";
  vnxPreproConditionalGroup* group = vnxPreproConditionalGroup::create(nullptr, text.c_str(), 0, 1, 1, 0);
  ASSERT_NE(nullptr, group);
  StreamCapture capture(wbStdout);
  group->dump();
  const std::vector<std::string> expected = {
      "************* Groupe de directives ***************",
      "#### vnxZELPreproDirective",
      "## preproString",
      "#if defined(A) || B",
      "## preproType : Conditional",
      "   type:3",
      "   control condition: defined ( A ) || B",
      "   Debut. Pos:20 Line:2 Col:1",
      "   Fin. Pos:21 Line:2 Col:2",
      "#### vnxZELPreproDirective",
      "## preproString",
      "#else ",
      "## preproType : Conditional",
      "   type:5",
      "   control condition:",
      "   Debut. Pos:37 Line:4 Col:1",
      "   Fin. Pos:38 Line:4 Col:2",
      "#### vnxZELPreproDirective",
      "## preproString",
      "#endif",
      "## preproType : Conditional",
      "   type:6",
      "   control condition:",
      "   Debut. Pos:45 Line:5 Col:7",
      "   Fin. Pos:45 Line:5 Col:7",
      "************* Fin groupe de directives ***************",
  };
  EXPECT_EQ(expected, capture.lines());
  group->Release();
}

}  // namespace
