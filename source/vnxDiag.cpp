#include "source/vnxDiag.h"

#include "wbStream.h"

namespace vnxdiag {
namespace {
bool gQuiet = false;
long long gEmitted = 0;

void emit(const char* prefix, const ZELString& text) {
  ++gEmitted;
  if (gQuiet) return;
  wbStderr << prefix << text << endl;
}
}  // namespace

void error(const ZELString& text) { emit("# VNX-ERROR:   ", text); }
void warning(const ZELString& text) { emit("# VNX-WARNING: ", text); }
void plain(const ZELString& text) { emit("", text); }

bool setQuiet(bool quiet) {
  const bool previous = gQuiet;
  gQuiet = quiet;
  return previous;
}
bool isQuiet() { return gQuiet; }
long long emittedCount() { return gEmitted; }

}  // namespace vnxdiag
