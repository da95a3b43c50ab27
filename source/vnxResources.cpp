#include "vnxResources.h"

#include <cstdlib>

#include "ZELFileBuffer.h"
#include "source/vnxDiag.h"

namespace {
TAFileName gDefaultHeader;
const char* gOsBuildtime = nullptr;
const char* gOsRuntime = nullptr;  // never filled: see getOS_Runtime
const char* gRootPath = nullptr;
bool gRootPathRead = false;
int gPerfos = 0;
}  // namespace

TAFileName vnxResources::getDefaultHeaderPath() { return gDefaultHeader; }

void vnxResources::setDefaultHeader(const TAFileName& path) { gDefaultHeader = path; }

const char* vnxResources::getOS_Buildtime() {
  if (gOsBuildtime) return gOsBuildtime;
  gOsBuildtime = std::getenv("vnxOS_Buildtime");
  if (!gOsBuildtime) gOsBuildtime = std::getenv("vnxOS_Runtime");
  return gOsBuildtime;
}

// Checkers have always called this to prime the build-time name; the answer
// itself stays null, and callers rely on that.
const char* vnxResources::getOS_Runtime() {
  if (gOsRuntime) return gOsRuntime;
  gOsBuildtime = std::getenv("vnxOS_Runtime");
  return gOsRuntime;
}

const char* vnxResources::get_ROOT_PATH() {
  if (!gRootPathRead) {
    gRootPath = std::getenv("vnxROOT_PATH");
    gRootPathRead = true;
  }
  return gRootPath;
}

void vnxResources::activatePerfosMeasure() { gPerfos = 1; }

int vnxResources::isPerfosMeasureActivated() { return gPerfos; }

void vnxResources::disableMultiThread() { ZELFileBufferPool::disableMultiThread(); }

void vnxResources::exitingWithSrcError(int status) {
  vnxdiag::error("--> exiting");
  std::exit(status);
}
