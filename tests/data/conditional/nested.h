// A header with the conditional shapes met in the framework's sources.
#ifndef GeoNested_H
#define GeoNested_H

#include "GeoModel.h"

#if defined(_WINDOWS_SOURCE) && !defined(GEO_STATIC) /* exported
   on Windows only */
#define ExportedByGeo __declspec(dllexport)
#elif defined(HARBO_CLIENT) || \
      defined(_ZEL_ANSI_STREAMS)
#define ExportedByGeo
#else
#define ExportedByGeo // nothing
#endif

class ExportedByGeo GeoNested
{
 public:
#ifdef STDMETHOD
  STDMETHOD(Compute)(int level);
#  if 0
  // "don't" keep this: it's dead
  void Old(const char* s = "#endif");
#  else
  void New();
#  endif
#endif
};

#endif // GeoNested_H
