// File names and include resolution: joining, dirname/basename, directory
// tests, and the path finder's search order.
#include <gtest/gtest.h>

#include <string>

#include "PlatformTestDir.h"
#include "TAFileName.h"
#include "wbPathFinder.h"

namespace {

TEST(PlatformFileName, JoinPutsExactlyOneSeparatorBetweenNonEmptyParts) {
  const struct { const char* dir; const char* child; const char* joined; } rows[] = {
      {"a", "b", "a/b"}, {"a/", "b", "a/b"}, {"a", "/b", "a/b"}, {"a/", "/b", "a/b"}, {"/", "b", "/b"},
      {"", "b", "b"},    {"a", "", "a"},     {"a", nullptr, "a"}, {"a/b", "c/d.h", "a/b/c/d.h"},
  };
  for (const auto& row : rows) {
    EXPECT_STREQ(row.joined, TAFileName(row.dir).Join(row.child)) << row.dir << " + " << (row.child ? row.child : "null");
    EXPECT_STREQ(row.joined, TAFileName(TAFileName(row.dir), row.child).CastToCharPtr());
  }
}

TEST(PlatformFileName, DirnameAndBasenameSplitAtTheLastSlash) {
  const struct { const char* name; const char* dir; const char* base; } rows[] = {
      {"a/b/c.h", "a/b", "c.h"}, {"c.h", ".", "c.h"}, {"/c.h", "/", "c.h"}, {"/", "/", ""}, {"a/", "a", ""}, {"", ".", ""},
  };
  for (const auto& row : rows) {
    EXPECT_STREQ(row.dir, TAFileName(row.name).dirname()) << row.name;
    EXPECT_STREQ(row.base, TAFileName(row.name).basename()) << row.name;
  }
}

TEST(PlatformFileName, NullNamesAndDirectoryTests) {
  EXPECT_TRUE(TAFileName().IsNull() && TAFileName(nullptr).IsNull() && TAFileName("").IsNull());
  EXPECT_EQ(0, TAFileName("x").IsNull());
  EXPECT_STREQ("", TAFileName(nullptr));  // the C-string view is never null

  ScratchDir dir;
  ASSERT_FALSE(dir.path().empty());
  const std::string file = dir.file("f.h", "x");
  const std::string sub = dir.subdir("sub");
  EXPECT_TRUE(TAFileName(dir.path().c_str()).IsDirectory() == 1 && TAFileName(sub.c_str()).IsDirectory() == 1);
  for (const std::string& no : {file, dir.path() + "/missing", std::string()})
    EXPECT_EQ(0, TAFileName(no.c_str()).IsDirectory()) << no;
  EXPECT_TRUE(TAFileName("a/b") == TAFileName("a").Join("b") && TAFileName("a/b") != TAFileName("a/c"));
}

TEST(PlatformPathFinder, TheFirstDirectoryHoldingTheFileWins) {
  ScratchDir root;
  const std::string first = root.subdir("first"), second = root.subdir("second");
  root.file("first/both.h", "1");
  const std::string secondBoth = root.file("second/both.h", "2"), onlySecond = root.file("second/only.h", "3");
  root.subdir("second/sub");
  root.file("second/sub/deep.h", "4");

  wbPathFinder finder;
  const std::string secondSlash = second + "/";
  for (const char* d : {first.c_str(), "", static_cast<const char*>(nullptr), secondSlash.c_str()}) finder.AddDirectory(d);
  EXPECT_EQ(2, finder.GetDirectoryCount());
  EXPECT_STREQ(first.c_str(), finder.GetDirectory(1));
  EXPECT_TRUE(finder.GetDirectory(0) == nullptr && finder.GetDirectory(3) == nullptr);

  EXPECT_EQ(first + "/both.h", finder.SearchFor("both.h").GetPtrToFullname());
  EXPECT_EQ(onlySecond, finder.SearchFor("only.h").GetPtrToFullname());
  EXPECT_EQ(second + "/sub/deep.h", finder.SearchFor("sub/deep.h").GetPtrToFullname());
  // Directories are not files, and absent names are not found.
  for (const char* absent : {"sub", "missing.h", "", static_cast<const char*>(nullptr)})
    EXPECT_EQ(1, finder.SearchFor(absent).IsNull()) << (absent ? absent : "null");
  // Absolute names are answered as they are, when they exist.
  EXPECT_EQ(secondBoth, finder.SearchFor(secondBoth.c_str()).GetPtrToFullname());
  EXPECT_EQ(1, finder.SearchFor((root.path() + "/nowhere.h").c_str()).IsNull());
  EXPECT_EQ(1, wbPathFinder().SearchFor("both.h").IsNull());
}

TEST(PlatformPathFinder, WithExtensionReplacesOnlyTheLastElementsExtension) {
  EXPECT_STREQ("a/b.c.idl", wbFileName("a/b.c.h").WithExtension("idl").GetPtrToFullname());
  EXPECT_STREQ("a.b/c.idl", wbFileName("a.b/c").WithExtension("idl").GetPtrToFullname());
  EXPECT_STREQ("noext.h", wbFileName("noext").WithExtension("h").GetPtrToFullname());
  EXPECT_TRUE(wbFileName().IsNull() && wbFileName(nullptr).IsNull() && std::string() == wbFileName(nullptr).GetPtrToFullname());
}

}  // namespace
