// Shared helpers for the unit tests.
#ifndef VNX_TEST_SUPPORT_H
#define VNX_TEST_SUPPORT_H

#include <sstream>
#include <string>
#include <vector>

#include "wbStream.h"

// Captures wbStderr (and optionally wbStdout) for its lifetime.
class StreamCapture {
 public:
  explicit StreamCapture(wbOutStream& stream = wbStderr);
  ~StreamCapture();
  StreamCapture(const StreamCapture&) = delete;
  StreamCapture& operator=(const StreamCapture&) = delete;

  std::string text() const { return _buffer.str(); }
  // The captured text cut at newlines (no trailing empty line).
  std::vector<std::string> lines() const;
  void clear() { _buffer.str(std::string()); }

 private:
  wbOutStream& _stream;
  std::ostringstream _buffer;
  std::ostream* _previous;
};

// Reads a whole file; empty when it cannot be read.
std::string readTextFile(const std::string& name);

#endif
