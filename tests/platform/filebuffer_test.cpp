// ZELFileBuffer and its pool: whole-file reads into NUL-terminated buffers,
// unreadable files, and reading ahead.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "PlatformTestDir.h"
#include "ZELFileBuffer.h"

namespace {

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
  ZELFileBuffer* buffer = ZELFileBuffer::CreateFromString(text, "mem.h");
  text[0] = 'x';
  EXPECT_TRUE(contentOf(buffer) == "abc" && std::string("mem.h") == buffer->getFileName() && buffer->isReadable() == 1);
  buffer->destroy();
  ZELFileBuffer* empty = ZELFileBuffer::CreateFromString(nullptr);
  EXPECT_TRUE(empty->isReadable() == 1 && contentOf(empty).empty() && std::string() == empty->getFileName());
  empty->destroy();
}

// A file removed after being appended to the pool keeps its text (it was read
// ahead); once multi-threading is off, buffers read lazily.
TEST(PlatformFileBuffer, ThePoolReadsAheadUntilMultiThreadingIsDisabled) {
  ScratchDir dir;
  ZELFileBufferPool pool;
  int appended = 0;
  if (!ZELFileBufferPool::isMultiThreadDisabled()) {
    const std::string early = dir.file("early.h", "early");
    ZELFileBuffer* ahead = ZELFileBuffer::CreateFromFile(early.c_str());
    pool.append(ahead), ++appended;
    std::remove(early.c_str());
    EXPECT_EQ("early", contentOf(ahead));
    ahead->destroy();
  }
  ZELFileBufferPool::disableMultiThread();
  EXPECT_EQ(1, ZELFileBufferPool::isMultiThreadDisabled());
  const std::string late = dir.file("late.h", "late");
  ZELFileBuffer* lazy = ZELFileBuffer::CreateFromFile(late.c_str());
  pool.append(lazy), ++appended;
  pool.append(nullptr);  // ignored
  std::remove(late.c_str());
  EXPECT_TRUE(lazy->isReadable() == 0 && pool.size() == appended);
  pool.reset();
  EXPECT_EQ(0, pool.size());
  lazy->destroy();
}

}  // namespace
