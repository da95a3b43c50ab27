// ZELFileBuffer and its pool: whole-file reads into NUL-terminated buffers,
// unreadable files, and reading ahead.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

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

// The reader thread and the caller share each queued buffer: whichever way a
// buffer is reached (already read, still queued, being read, never asked
// for), it holds its own file's text, and destroying it in any of those
// states leaves the reader nothing dangling. Several rounds vary the timing.
TEST(PlatformFileBuffer, ReadAheadGivesEachBufferItsOwnTextWhateverTheTiming) {
  if (ZELFileBufferPool::isMultiThreadDisabled()) GTEST_SKIP() << "multi-threading already disabled";
  ScratchDir dir;
  const int kFiles = 24;
  std::vector<std::string> names, contents;
  for (int i = 0; i < kFiles; ++i) {
    contents.push_back(std::string(static_cast<size_t>(i) * 997, static_cast<char>('a' + i % 26)) + std::to_string(i));
    names.push_back(dir.file("f" + std::to_string(i) + ".h", contents.back()));
  }
  names.push_back(dir.path() + "/missing.h");
  contents.push_back("<null>");
  for (int round = 0; round < 20; ++round) {
    ZELFileBufferPool pool;
    std::vector<ZELFileBuffer*> buffers;
    for (const std::string& name : names) {
      buffers.push_back(ZELFileBuffer::CreateFromFile(name.c_str()));
      pool.append(buffers.back());
    }
    EXPECT_EQ(static_cast<int>(names.size()), pool.size());
    // Last first, so that most are taken back from the queue; every third
    // is dropped unread; the rest are read in between.
    for (int i = static_cast<int>(buffers.size()) - 1; i >= 0; --i) {
      if ((i + round) % 3 != 0) {
        EXPECT_EQ(contents[i], contentOf(buffers[i])) << names[i] << " round " << round;
      }
      buffers[i]->destroy();
    }
  }
}

// Once multi-threading is off, an appended buffer is only read when asked
// for: a file removed in between is found unreadable.
TEST(PlatformFileBuffer, WithoutMultiThreadingBuffersReadThemselvesOnFirstNeed) {
  ScratchDir dir;
  ZELFileBufferPool pool;
  ZELFileBufferPool::disableMultiThread();
  EXPECT_EQ(1, ZELFileBufferPool::isMultiThreadDisabled());
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
