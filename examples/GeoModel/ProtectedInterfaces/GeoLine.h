#ifndef GeoLine_h
#define GeoLine_h

#include "GeoCurve.h"

/* A straight segment between two points.
 * owner: geometry-team
 */
class ExportedByGeoModel GeoLine : public GeoCurve
{
  ZELDeclareClass;

public:
  GeoLine(const GeoPoint & start, const GeoPoint & end);
  virtual ~GeoLine();

  GeoPoint Evaluate(double t) const;

private:
  GeoPoint _start;
  GeoPoint _end;
};

#endif
