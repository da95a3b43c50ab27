#ifndef GeoCurve_h
#define GeoCurve_h

// COPYRIGHT GEOMODEL 2024
//===================================================================
// GeoCurve: a parametric curve of the geometric model.
//   owner: geometry-team
//   stability: stable
//===================================================================

#include "GeoModel.h"
#include "GeoPoint.h"
#include <ZELBaseUnknown.h>

class GeoCurveEvaluator;

/**
 * Parametric curve.
 * @role  base class of every 1D geometric element
 * @tag   Geometry
 */
class ExportedByGeoModel GeoCurve : public ZELBaseUnknown
{
  ZELDeclareClass;

public:
  GeoCurve();
  virtual ~GeoCurve();

  /** Point at parameter t (t in [0,1]). */
  virtual GeoPoint Evaluate(double t) const = 0;

  /** Length of the curve, computed by sampling. */
  double GetLength(int samples = 32) const;

  /** Sub-curves of a composite curve (empty for a simple one). */
  HRESULT GetChildren(ZELLISTP(GeoCurve) & children) const;

  static int    GetInstanceCount();

protected:
  int           _evaluations;   // number of calls to Evaluate
  ZELLISTV(double) _knots;

private:
  GeoCurve(const GeoCurve &);            // not implemented
  GeoCurve & operator=(const GeoCurve &); // not implemented

  static int    _instanceCount;
};

#if defined(GEO_DEBUG) && !defined(GEO_NO_TRACE)
extern ExportedByGeoModel void GeoTraceCurve(const GeoCurve * curve);
#endif

#endif
