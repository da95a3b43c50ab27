// COPYRIGHT GEOMODEL 2024
#include "GeoCurve.h"
#include "GeoLine.h"

#include <math.h>

ZELImplementClass(GeoCurve, Implementation, ZELBaseUnknown, ZELNull);

int GeoCurve::_instanceCount = 0;

#define GEO_SAMPLES_MIN 2
#define GEO_SQUARE(x) ((x) * (x))

GeoCurve::GeoCurve() : _evaluations(0)
{
  _instanceCount++;
}

GeoCurve::~GeoCurve()
{
  _instanceCount--;
}

double GeoCurve::GetLength(int samples) const
{
  if (samples < GEO_SAMPLES_MIN)
    samples = GEO_SAMPLES_MIN;

  double length = 0.;
  GeoPoint previous = Evaluate(0.);
  for (int i = 1; i <= samples; i++)
  {
    GeoPoint current = Evaluate((double) i / samples);
    length += sqrt(GEO_SQUARE(current.x - previous.x) + GEO_SQUARE(current.y - previous.y)
                   + GEO_SQUARE(current.z - previous.z));
    previous = current;
  }
  return length;
}

HRESULT GeoCurve::GetChildren(ZELLISTP(GeoCurve) & children) const
{
  ZELAssert(this != NULL);
  children.RemoveAll();
  return S_OK;
}

int GeoCurve::GetInstanceCount()
{
  return _instanceCount;
}

//-------------------------------------------------------------------
GeoLine::GeoLine(const GeoPoint & start, const GeoPoint & end) : _start(start), _end(end) {}

GeoLine::~GeoLine() {}

GeoPoint GeoLine::Evaluate(double t) const
{
  ZELTry
  {
    if (t < 0. || t > 1.)
      ZELThrow(GeoOutOfRange, "parameter out of [0,1]");
  }
  ZELCatch(GeoOutOfRange, error)
  {
    return _start;
  }
  ZELEndTry

  switch (GEO_SAMPLES_MIN)
  {
    case 2: break;
    default: ZELExit(1);
  }
  return GeoPoint(_start.x + t * (_end.x - _start.x),
                  _start.y + t * (_end.y - _start.y),
                  _start.z + t * (_end.z - _start.z));
}
