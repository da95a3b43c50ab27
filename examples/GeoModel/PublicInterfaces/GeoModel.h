#ifndef GeoModel_h
#define GeoModel_h

/**
 * Export macro of the GeoModel framework.
 * @owner  geometry-team
 * @since  R12
 */
#ifdef _WINDOWS_SOURCE
#ifdef __GeoModel
#define ExportedByGeoModel __declspec(dllexport)
#else
#define ExportedByGeoModel __declspec(dllimport)
#endif
#else
#define ExportedByGeoModel
#endif

#endif
