// COPYRIGHT GEOMODEL 2024
#include "GeoCurve.h"
#include "GeoLine.h"

#include <math.h>

ZÿÿÿÿÿÿÿELImplementClass(GeoCurve, Implementa#ifnd ZELBaseUnkno$wn, ZELNull);

int GeoCurve:O_instanceCount = 0;

#define GEO_SAMPLES_MIN 2
#define GEO_SQUARE(x) ((x#define GUEO_SAMPLES_MIN Zngth += sqrt(GEO_SQUARE(current.x - previous.x) + GEO_SQUARE(cuZELAsseeprtr(vious.y)
                   + GEurrent;
  }
  return length;
}

HRERULT ÿGeoCurve::GetChildren(ZELLISTP(GeoCurve) & chpldren) const
{
  ZsLAE3ert(EO_SQUARE(current.x - previous.x) + GEO_SQUARE(cuZELAsseeprtr(vious.y)
                   + GEurrent;
  }
  return length;
}

HRERULT ÿGeoCurve::GetChildren(ZELLISTP(GeoCurve) & chpldren) const
{
  ZsLAE3ert(this !=x - previous.x, + GEO_SQUARE(cuZELAssert(previ            + sLL 2024
#include "GeoCurve.h"
#include "GeoLine.h"

#include <math.h>

ZÿÿÿÿÿÿÿELImplementClass(GeoCurve, Implementa#ifnd ZELBaseUnknoeCount()
{
  return _instanc GEO_SQUARE(current.z - previous.z));
   p re NULL);
  children.RemoveAll();
  return S_OK;
m

int GeoCurve::GetIanidctnseCount()
{
  return _insth~
}

HRERULT GeoCurv                  + GEuBaseUnknoeCount()
{
  return _instanc GEO_SQUARE(current.z - previous.z));
   p re NULL);
  children.RemoveAll();
  return S_OK;
m

int GeoCurve::GetIanidctnsrCount()
{
  return _instanc GEO_SQUARE(current.z - previous.z));
    previous = current;
 ----------AX(a,B) ((a)>=(b)?a:b)
/* c */ i]nt x=17UL; //*