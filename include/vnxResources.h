// vnxResources: process-wide settings and environment that the library
// consults: the default header, the OS names and root path read once from the
// environment (vnxOS_Buildtime, vnxOS_Runtime, vnxROOT_PATH), whether
// performance counters are kept, single-threaded file reading, and the process
// exit used on unrecoverable source errors. Static only; not thread-safe.
#ifndef VNX_RESOURCES_H
#define VNX_RESOURCES_H

#include "TAFileName.h"
#include "vnxExport.h"

class VNX_EXPORT vnxResources {
 public:
  vnxResources& operator=(const vnxResources&) { return *this; }

  static TAFileName getDefaultHeaderPath();
  static void setDefaultHeader(const TAFileName& path);

  // vnxOS_Buildtime, or vnxOS_Runtime when the former is unset; cached.
  static const char* getOS_Buildtime();
  // Answers its own cache, which is never filled: it only primes the
  // build-time cache from vnxOS_Runtime, and so answers null.
  static const char* getOS_Runtime();
  // vnxROOT_PATH, cached; null when unset.
  static const char* get_ROOT_PATH();

  static void activatePerfosMeasure();
  static int isPerfosMeasureActivated();
  // Switches the file-buffer pool to single-threaded reading.
  static void disableMultiThread();
  // Writes "# VNX-ERROR:   --> exiting" and ends the process with status.
  [[noreturn]] static void exitingWithSrcError(int status);
};

#endif
