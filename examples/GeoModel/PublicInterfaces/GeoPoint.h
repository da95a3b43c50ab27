#ifndef GeoPoint_h
#define GeoPoint_h

#include "GeoModel.h"

// A point of 3D space.
// owner: geometry-team
struct ExportedByGeoModel GeoPoint
{
  double x, y, z;

  GeoPoint() : x(0.), y(0.), z(0.) {}
  GeoPoint(double ix, double iy, double iz) : x(ix), y(iy), z(iz) {}

  double DistanceTo(const GeoPoint & other) const;
};

typedef SEQUENCE(GeoPoint) GeoPointSequence;

enum GeoContinuity { GeoC0 = 0, GeoC1 = 1, GeoC2 = 2 };

#endif
