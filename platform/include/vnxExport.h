// Export control for the vnxParser shared library.
// Everything is hidden by default; classes and free functions that callers use
// are marked VNX_EXPORT.
#ifndef VNX_EXPORT_H
#define VNX_EXPORT_H

#if defined(_WIN32)
#  if defined(VNX_BUILDING_LIBRARY)
#    define VNX_EXPORT __declspec(dllexport)
#  else
#    define VNX_EXPORT __declspec(dllimport)
#  endif
#else
#  define VNX_EXPORT __attribute__((visibility("default")))
#endif

#endif
