// Helpers shared by the libFuzzer targets: quiet output streams, a fatal-error
// handler that stops the run, an exactly sized NUL-terminated copy of the
// input, and the pool live counts that must come back to where they were once
// an input has been processed (a pooled node that is never released keeps its
// pool block reachable, so LeakSanitizer cannot see it).
#ifndef VNX_FUZZ_SUPPORT_H
#define VNX_FUZZ_SUPPORT_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <ostream>
#include <streambuf>

#include "TAFatalError.h"
#include "vnxCComment.h"
#include "vnxCppComment.h"
#include "vnxExpression.h"
#include "vnxInstruction.h"
#include "vnxPreproDirectiveConditional.h"
#include "vnxPreproDirectiveDefineFunction.h"
#include "vnxPreproDirectiveDefineSimple.h"
#include "vnxPreproDirectiveInclude.h"
#include "vnxSyntaxe.h"
#include "vnxZELPreproDirective.h"
#include "wbStream.h"

namespace vnxfuzz {

// Swallows everything: dumps and diagnostics are exercised, not printed.
class NullBuffer : public std::streambuf {
 protected:
  int overflow(int c) override { return c == EOF ? 0 : c; }
  std::streamsize xsputn(const char*, std::streamsize n) override { return n; }
};

inline std::ostream& nullStream() {
  static NullBuffer buffer;
  static std::ostream stream(&buffer);
  return stream;
}

// Reports are for internal inconsistencies, never for bad input: one reached
// from an input is a bug.
inline void trapOnFatalError(const char* message) {
  std::fprintf(stderr, "vnxfuzz: fatal-error report: %s\n", message ? message : "");
  __builtin_trap();
}

// Once per process: quiet streams, trapping fatal-error handler.
inline void setUpProcess() {
  wbStderr.setTarget(&nullStream());
  wbStdout.setTarget(&nullStream());
  TASetFatalErrorHandler(trapOnFatalError);
}

// The input as a heap buffer of exactly size + 1 bytes, the last one NUL, so
// that AddressSanitizer sees any read past the terminator. Embedded NULs stay:
// they end the text for the library, which must cope with that.
class Text {
 public:
  Text(const uint8_t* data, size_t size) : _size(size), _bytes(new char[size + 1]) {
    if (size) std::memcpy(_bytes.get(), data, size);
    _bytes[size] = '\0';
  }
  const char* c_str() const { return _bytes.get(); }
  size_t size() const { return _size; }
  // Length up to the first NUL.
  size_t length() const { return std::strlen(_bytes.get()); }

 private:
  size_t _size;
  std::unique_ptr<char[]> _bytes;
};

// Stops the run when cond does not hold; the message says which invariant broke.
inline void require(bool cond, const char* what) {
  if (cond) return;
  std::fprintf(stderr, "vnxfuzz: invariant broken: %s\n", what);
  __builtin_trap();
}

// Live objects of every pooled class.
struct PoolCounts {
  int counts[10];

  static PoolCounts now() {
    return {{vnxSyntaxe::GetPoolLiveCount(), vnxInstruction::GetPoolLiveCount(),
             vnxExpression::GetPoolLiveCount(), vnxZELPreproDirective::getPoolLiveCount(),
             vnxPreproDirectiveConditional::getPoolLiveCount(), vnxPreproDirectiveInclude::getPoolLiveCount(),
             vnxPreproDirectiveDefineSimple::getPoolLiveCount(),
             vnxPreproDirectiveDefineFunction::getPoolLiveCount(), vnxCComment::getPoolLiveCount(),
             vnxCppComment::getPoolLiveCount()}};
  }
};

// Traps when a pool holds more (or fewer) live objects than at the baseline.
inline void requireSamePoolCounts(const PoolCounts& baseline) {
  static const char* const kNames[] = {"vnxSyntaxe",
                                       "vnxInstruction",
                                       "vnxExpression",
                                       "vnxZELPreproDirective",
                                       "vnxPreproDirectiveConditional",
                                       "vnxPreproDirectiveInclude",
                                       "vnxPreproDirectiveDefineSimple",
                                       "vnxPreproDirectiveDefineFunction",
                                       "vnxCComment",
                                       "vnxCppComment"};
  const PoolCounts after = PoolCounts::now();
  bool same = true;
  for (int i = 0; i < 10; ++i) {
    if (after.counts[i] == baseline.counts[i]) continue;
    std::fprintf(stderr, "vnxfuzz: pool %s: %d live objects before the input, %d after\n", kNames[i],
                 baseline.counts[i], after.counts[i]);
    same = false;
  }
  if (!same) __builtin_trap();
}

}  // namespace vnxfuzz

#endif
