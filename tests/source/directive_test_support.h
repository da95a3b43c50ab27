// Helpers shared by the source tests.
#ifndef VNX_DIRECTIVE_TEST_SUPPORT_H
#define VNX_DIRECTIVE_TEST_SUPPORT_H

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "../../source/vnxPreproDirectiveParser.h"
#include "TAFileName.h"
#include "TestSupport.h"
#include "ZELFileBuffer.h"
#include "vnxSourceFile.h"

// A heap copy with no slack after the NUL, so that AddressSanitizer sees a read past the end of the text.
inline std::unique_ptr<char[]> exactCopy(const std::string& text) {
  std::unique_ptr<char[]> copy(new char[text.size() + 1]);
  std::memcpy(copy.get(), text.c_str(), text.size() + 1);
  return copy;
}

// A source file to hang comments and directives on, holding the given #define lines; released on scope exit.
struct ScopedSource {
  explicit ScopedSource(const char* name = "f.h", const std::vector<std::string>& defines = {})
      : source(vnxSourceFile::CreateFromPreprocessedText("", name)) {
    for (const std::string& line : defines) {
      const std::string text = line + "\n";
      if (vnxZELPreproDirective* d = vnxPreproDirectiveParser(source).parse(text.c_str(), 0, 1, 1, 0))
        source->addPreproDirective(d);
    }
  }
  ~ScopedSource() {
    if (source) source->Release();
  }
  ScopedSource(const ScopedSource&) = delete;
  ScopedSource& operator=(const ScopedSource&) = delete;
  vnxSourceFile* source;
};

// Runs the preprocessing pass over raw (as file name) and keeps what it made and wrote.
struct Preprocessed { int status = -1; std::string stream, errors; };
inline Preprocessed preprocess(const std::string& raw, const char* name = "t.h") {
  StreamCapture capture;
  vnxSourceFile* source = new vnxSourceFile(ZELFileBuffer::CreateFromString(raw.c_str(), name), nullptr, TAFileName());
  Preprocessed result;
  result.status = source->preProcess();
  if (source->GetStream()) result.stream.assign(source->GetStream(), static_cast<size_t>(source->GetSize()));
  result.errors = capture.text();
  source->Release();
  return result;
}

// T's pool: blocks of 1024 objects, one freed when its last object dies, even a late one held by a reference.
template <class T>
void expectPoolBlocksOf1024FreedWithTheirLast() {
  std::vector<T*> objects;
  for (int i = 0; i < 1025; ++i) objects.push_back(T::create(nullptr));
  EXPECT_EQ(1025, T::getPoolLiveCount());
  EXPECT_EQ(2, T::getPoolBlockCount());
  EXPECT_EQ(2, objects[0]->AddRef());
  for (int i = 1023; i >= 0; --i) objects[static_cast<size_t>(i)]->Release();
  EXPECT_EQ(2, T::getPoolLiveCount());
  EXPECT_EQ(2, T::getPoolBlockCount());
  EXPECT_EQ(0, objects[0]->Release());
  EXPECT_EQ(1, T::getPoolBlockCount());
  objects[1024]->Release();
  EXPECT_EQ(0, T::getPoolBlockCount());
}

inline std::string orNull(const char* text) { return text ? std::string(text) : std::string("<null>"); }

// Every character's place in a comment or directive agrees with a plain count over text; outside it, -1.
template <class R>
void expectPlacesCountedOverText(R* record, const char* text, int size, unsigned line, unsigned col, int pos,
                                 unsigned (R::*lineOf)(int), unsigned (R::*colOf)(int), int (R::*posOf)(int) const) {
  for (int k = 0; k < size; ++k) {
    EXPECT_EQ(line, (record->*lineOf)(k)) << "character " << k;
    EXPECT_EQ(col, (record->*colOf)(k)) << "character " << k;
    EXPECT_EQ(pos + k, (record->*posOf)(k));
    line += text[k] == '\n' ? 1 : 0;
    col = text[k] == '\n' ? 1 : col + 1;
  }
  for (int k : {-1, size}) {
    EXPECT_EQ(static_cast<unsigned>(-1), (record->*lineOf)(k));
    EXPECT_EQ(static_cast<unsigned>(-1), (record->*colOf)(k));
    EXPECT_EQ(-1, (record->*posOf)(k));
  }
}

#endif
