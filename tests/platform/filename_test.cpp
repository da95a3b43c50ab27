// Files: names, include resolution, and whole-file buffers with reading ahead.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

#include "TAFileName.h"
#include "ZELFileBuffer.h"
#include "wbPathFinder.h"

namespace {

// A scratch directory, removed with its files at the end of the test.
class ScratchDir {
 public:
  ScratchDir() : _path(testing::TempDir() + "vnx_platform_XXXXXX") {
    if (!mkdtemp(&_path[0])) _path.clear();
  }
  ~ScratchDir() {
    for (auto it = _created.rbegin(); it != _created.rend(); ++it) std::remove(it->c_str());
    if (!_path.empty()) rmdir(_path.c_str());
  }
  ScratchDir(const ScratchDir&) = delete;
  const std::string& path() const { return _path; }
  // Both answer the full name; files go into subdirectories made before.
  std::string file(const std::string& relative, const std::string& content) {
    std::ofstream(_path + "/" + relative, std::ios::binary) << content;
    return remember(relative);
  }
  std::string subdir(const std::string& relative) { return mkdir((_path + "/" + relative).c_str(), 0755), remember(relative); }

 private:
  std::string remember(const std::string& relative) { return _created.emplace_back(_path + "/" + relative), _created.back(); }
  std::string _path;
  std::vector<std::string> _created;
};

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

std::string contentOf(ZELFileBuffer* buffer) {
  const char* text = buffer->getBuffer();
  return text ? std::string(text, buffer->getBufferSize()) : std::string("<null>");
}

TEST(PlatformFileBuffer, ReadsWholeFilesExactlyAndTerminatesThem) {
  ScratchDir dir;
  std::string big;
  for (int i = 0; big.size() < 300000; ++i) big += "line " + std::to_string(i) + "\r\n";
  const struct { const char* name; std::string content; } rows[] = {  // "big.h" is larger than one read chunk
      {"plain.h", "int x;\n"}, {"empty.h", ""}, {"nul.h", std::string("a\0b\0", 4)}, {"big.h", big},
      {"chunk-1.h", std::string(65535, 'a')}, {"chunk.h", std::string(65536, 'b')},  // around the first read's size
      {"chunk+1.h", std::string(65537, 'c')}, {"high.h", "caf\xC3\xA9 \xFF"},
  };
  for (const auto& row : rows) {
    const std::string name = dir.file(row.name, row.content);
    ZELFileBuffer* buffer = ZELFileBuffer::CreateFromFile(name.c_str());
    EXPECT_TRUE(name == buffer->getFileName() && buffer->isReadable() == 1) << row.name;
    EXPECT_EQ(row.content, contentOf(buffer)) << row.name;
    EXPECT_EQ('\0', buffer->getBuffer()[buffer->getBufferSize()]) << row.name;
    buffer->destroy();
  }
}

// The system reports size 0 for this file; it must still be read to its end.
TEST(PlatformFileBuffer, FilesWithoutASizeAreReadToTheirEnd) {
  const char* name = "/proc/self/status";
  FILE* probe = std::fopen(name, "rb");
  if (!probe) GTEST_SKIP() << name << " is not there";
  std::string expected(4096, '\0');
  expected.resize(std::fread(&expected[0], 1, expected.size(), probe));
  std::fclose(probe);
  ZELFileBuffer* buffer = ZELFileBuffer::CreateFromFile(name);
  ASSERT_EQ(1, buffer->isReadable());
  // Only the counters change between reads: the first line, the name, is the same.
  const std::string text = contentOf(buffer);
  EXPECT_EQ(expected.substr(0, expected.find('\n')), text.substr(0, text.find('\n')));
  buffer->destroy();
}

TEST(PlatformFileBuffer, UnreadableNamesGiveANullBufferOfSizeZero) {
  ScratchDir dir;
  const std::string missing = dir.path() + "/missing.h";
  for (const char* name : {missing.c_str(), dir.path().c_str(), "", static_cast<const char*>(nullptr)}) {
    ZELFileBuffer* buffer = ZELFileBuffer::CreateFromFile(name);
    EXPECT_TRUE(buffer->isReadable() == 0 && buffer->getBuffer() == nullptr && buffer->getBufferSize() == 0u)
        << (name ? name : "null");
    EXPECT_STREQ(name ? name : "", buffer->getFileName());
    buffer->destroy();
  }
}

TEST(PlatformFileBuffer, BuffersFromStringsHoldACopy) {
  char text[] = "abc";
  ZELFileBuffer *buffer = ZELFileBuffer::CreateFromString(text, "mem.h"), *empty = ZELFileBuffer::CreateFromString(nullptr);
  text[0] = 'x';
  EXPECT_TRUE(contentOf(buffer) == "abc" && std::string("mem.h") == buffer->getFileName() && buffer->isReadable() == 1);
  EXPECT_TRUE(empty->isReadable() == 1 && contentOf(empty).empty() && std::string() == empty->getFileName());
  buffer->destroy(), empty->destroy();
}

// Whether a buffer is read, queued, being read or never asked for, it holds its own
// text, and destroying it leaves the reader thread nothing dangling.
TEST(PlatformFileBuffer, ReadAheadGivesEachBufferItsOwnTextWhateverTheTiming) {
  if (ZELFileBufferPool::isMultiThreadDisabled()) GTEST_SKIP() << "multi-threading already disabled";
  ScratchDir dir;
  std::vector<std::string> names, contents;
  for (int i = 0; i < 24; ++i) {
    contents.push_back(std::string(static_cast<size_t>(i) * 997, static_cast<char>('a' + i % 26)) + std::to_string(i));
    names.push_back(dir.file("f" + std::to_string(i) + ".h", contents.back()));
  }
  names.push_back(dir.path() + "/missing.h"), contents.push_back("<null>");
  for (int round = 0; round < 20; ++round) {
    ZELFileBufferPool pool;
    std::vector<ZELFileBuffer*> buffers;
    for (const std::string& name : names) buffers.push_back(ZELFileBuffer::CreateFromFile(name.c_str())), pool.append(buffers.back());
    EXPECT_EQ(static_cast<int>(names.size()), pool.size());
    // Last first, so most are taken back from the queue; every third is dropped unread.
    for (int i = static_cast<int>(buffers.size()) - 1; i >= 0; --i) {
      if ((i + round) % 3 != 0) { EXPECT_EQ(contents[i], contentOf(buffers[i])) << names[i] << " round " << round; }
      buffers[i]->destroy();
    }
  }
}

// Texts read ahead and not yet taken stay within the budget (plus the file
// being read when it was reached); taking or dropping them gives it back, so
// the reader goes on and the budget is whole again at the end.
TEST(PlatformFileBuffer, ReadAheadPausesAtItsBudgetAndResumesAsTextsAreTaken) {
  if (ZELFileBufferPool::isMultiThreadDisabled()) GTEST_SKIP() << "multi-threading already disabled";
  ScratchDir dir;
  const size_t kFile = size_t(1) << 20;
  const int files = static_cast<int>(3 * ZELFileBufferPool::kReadAheadBudget / kFile);
  std::vector<std::string> names;
  for (int i = 0; i < files; ++i) names.push_back(dir.file("big" + std::to_string(i) + ".h", std::string(kFile, static_cast<char>('a' + i % 26))));
  ASSERT_EQ(0u, ZELFileBufferPool::bytesReadAhead());
  ZELFileBufferPool pool;
  std::vector<ZELFileBuffer*> buffers;
  for (const std::string& name : names) buffers.push_back(ZELFileBuffer::CreateFromFile(name.c_str())), pool.append(buffers.back());
  // Wait until the reader stops: paused at the budget, having read some.
  size_t ahead = 0;
  for (int still = 0, polls = 0; still < 10 && polls < 2000; ++polls) {
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
    const size_t now = ZELFileBufferPool::bytesReadAhead();
    still = now == ahead && now > 0 ? still + 1 : 0;
    ahead = now;
  }
  EXPECT_GE(ahead, ZELFileBufferPool::kReadAheadBudget);
  EXPECT_LE(ahead, ZELFileBufferPool::kReadAheadBudget + kFile);
  for (int i = 0; i < files; ++i) {
    if (i % 3 != 1) { EXPECT_EQ(std::string(kFile, static_cast<char>('a' + i % 26)), contentOf(buffers[i])) << i; }
    buffers[i]->destroy();
  }
  EXPECT_EQ(0u, ZELFileBufferPool::bytesReadAhead());
}

// Without the reader thread a buffer is read on first need: a file removed before is unreadable.
TEST(PlatformFileBuffer, WithoutMultiThreadingBuffersReadThemselvesOnFirstNeed) {
  ScratchDir dir;
  ZELFileBufferPool pool;
  ZELFileBufferPool::disableMultiThread();
  const std::string late = dir.file("late.h", "late");
  ZELFileBuffer* lazy = ZELFileBuffer::CreateFromFile(late.c_str());
  pool.append(lazy);
  pool.append(nullptr);  // ignored
  std::remove(late.c_str());
  EXPECT_TRUE(lazy->isReadable() == 0 && pool.size() == 1);
  pool.reset();
  EXPECT_EQ(0, pool.size());
  lazy->destroy();
}

}  // namespace
