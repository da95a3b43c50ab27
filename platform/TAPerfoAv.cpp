#include "TAPerfoAv.h"

#include <cstring>
#include <vector>

#include "wbStream.h"

namespace {
std::vector<TAPerfoAv*>& registry() {
  static std::vector<TAPerfoAv*>* counters = new std::vector<TAPerfoAv*>();
  return *counters;
}
}  // namespace

TAPerfoAv* TAPerfoAv::Create(const char* name) {
  TAPerfoAv* counter = new TAPerfoAv(name);
  registry().push_back(counter);
  return counter;
}

TAPerfoAv* TAPerfoAv::Find(const char* name) {
  if (!name) return nullptr;
  for (TAPerfoAv* counter : registry())
    if (std::strcmp(counter->GetName(), name) == 0) return counter;
  return nullptr;
}

void TAPerfoAv::PrintAll(wbOutStream& out) {
  for (const TAPerfoAv* counter : registry()) counter->Print(out);
}

void TAPerfoAv::Add(double value) {
  ++_count;
  _total += value;
}

void TAPerfoAv::Print(wbOutStream& out) const {
  out << _name.c_str() << " : samples=" << _count << " total=" << _total << " average=" << GetAverage()
      << endl;
}
