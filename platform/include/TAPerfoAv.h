// TAPerfoAv: a named averaging counter (count of samples, their total and
// average). Counters register themselves in a process-wide list on creation
// so that they can all be printed; they live until the process ends.
#ifndef TA_PERFO_AV_H
#define TA_PERFO_AV_H

#include <string>
#include "vnxExport.h"

class wbOutStream;

class VNX_EXPORT TAPerfoAv {
 public:
  // A new registered counter. Counters are never destroyed.
  static TAPerfoAv* Create(const char* name);
  // The registered counter of that name, or null.
  static TAPerfoAv* Find(const char* name);
  // Prints every counter, one line each: name, samples, total, average.
  static void PrintAll(wbOutStream& out);

  void Add(double value);
  const char* GetName() const { return _name.c_str(); }
  long long GetCount() const { return _count; }
  double GetTotal() const { return _total; }
  double GetAverage() const { return _count ? _total / static_cast<double>(_count) : 0.0; }
  void Print(wbOutStream& out) const;

  TAPerfoAv(const TAPerfoAv&) = delete;
  TAPerfoAv& operator=(const TAPerfoAv&) = delete;

 private:
  explicit TAPerfoAv(const char* name) : _name(name ? name : "") {}
  std::string _name;
  long long _count = 0;
  double _total = 0.0;
};

#endif
