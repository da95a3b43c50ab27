// wbStderr / wbStdout: the build tool's output streams. Each forwards to a
// std::ostream (std::cerr and std::cout by default) that callers, the CLI and
// tests may swap. `endl` writes a newline and flushes.
#ifndef WB_STREAM_H
#define WB_STREAM_H

#include <iosfwd>
#include "vnxExport.h"

class ZELString;

class VNX_EXPORT wbOutStream {
 public:
  explicit wbOutStream(std::ostream* target) : _target(target) {}
  // Points the stream at target (null restores the default); answers the previous target.
  std::ostream* setTarget(std::ostream* target);
  std::ostream* getTarget() const { return _target; }

  wbOutStream& operator<<(const char* text);  // null prints nothing
  wbOutStream& operator<<(const ZELString& text);
  wbOutStream& operator<<(char c);
  wbOutStream& operator<<(int value);
  wbOutStream& operator<<(unsigned int value);
  wbOutStream& operator<<(long value);
  wbOutStream& operator<<(unsigned long value);
  wbOutStream& operator<<(long long value);
  wbOutStream& operator<<(double value);
  wbOutStream& operator<<(wbOutStream& (*manipulator)(wbOutStream&)) { return manipulator(*this); }
  void flush();

 private:
  std::ostream* _target;
  std::ostream* _default = nullptr;
  friend VNX_EXPORT wbOutStream& endl(wbOutStream&);
};

VNX_EXPORT wbOutStream& endl(wbOutStream& stream);

extern VNX_EXPORT wbOutStream wbStderr;
extern VNX_EXPORT wbOutStream wbStdout;

#endif
