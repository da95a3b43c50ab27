// The dumps of a conditional group and of its directives on the output stream.
#include <gtest/gtest.h>

#include <string>

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
  const char* const head = "#### vnxZELPreproDirective\n## preproString\n";
  const char* const kind = "## preproType : Conditional\n   type:";
  EXPECT_EQ(std::string("************* Groupe de directives ***************\n") + head + "#if defined(A) || B\n" +
                kind + "3\n   control condition: defined ( A ) || B\n" +
                "   Debut. Pos:20 Line:2 Col:1\n   Fin. Pos:21 Line:2 Col:2\n" + head + "#else \n" + kind +
                "5\n   control condition:\n   Debut. Pos:37 Line:4 Col:1\n   Fin. Pos:38 Line:4 Col:2\n" + head +
                "#endif\n" + kind + "6\n   control condition:\n   Debut. Pos:45 Line:5 Col:7\n" +
                "   Fin. Pos:45 Line:5 Col:7\n************* Fin groupe de directives ***************\n",
            capture.text());
  group->Release();
}

}  // namespace
