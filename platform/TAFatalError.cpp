#include "TAFatalError.h"

#include "wbStream.h"

namespace {
TAFatalErrorHandler gHandler = nullptr;
int gReports = 0;
}  // namespace

int TAFatalError(int condition, const char* message) {
  if (!condition) return 0;
  ++gReports;
  wbStderr << "# FATAL ERROR: " << (message ? message : "") << endl;
  if (gHandler) gHandler(message ? message : "");
  return condition;
}

TAFatalErrorHandler TASetFatalErrorHandler(TAFatalErrorHandler handler) {
  TAFatalErrorHandler previous = gHandler;
  gHandler = handler;
  return previous;
}

int TAFatalErrorCount() { return gReports; }
