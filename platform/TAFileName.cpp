#include "TAFileName.h"

#include <sys/stat.h>

TAFileName::TAFileName(const char* name) {
  if (name) _name.assign(name);
}

TAFileName::TAFileName(const TAFileName& dir, const char* child) : _name(dir.Join(child)._name) {}

int TAFileName::IsDirectory() const {
  if (_name.empty()) return 0;
  struct stat info;
  if (stat(_name.c_str(), &info) != 0) return 0;
  return S_ISDIR(info.st_mode) ? 1 : 0;
}

TAFileName TAFileName::Join(const char* child) const {
  std::string joined = _name;
  std::string tail = child ? child : "";
  if (joined.empty()) return TAFileName(tail.c_str());
  if (tail.empty()) return *this;
  const bool endsWithSlash = joined.back() == '/';
  const bool startsWithSlash = tail.front() == '/';
  if (endsWithSlash && startsWithSlash) {
    joined.pop_back();
  } else if (!endsWithSlash && !startsWithSlash) {
    joined += '/';
  }
  joined += tail;
  return TAFileName(joined.c_str());
}

TAFileName TAFileName::dirname() const {
  const size_t slash = _name.rfind('/');
  if (slash == std::string::npos) return TAFileName(".");
  if (slash == 0) return TAFileName("/");
  return TAFileName(_name.substr(0, slash).c_str());
}

TAFileName TAFileName::basename() const {
  const size_t slash = _name.rfind('/');
  if (slash == std::string::npos) return *this;
  return TAFileName(_name.substr(slash + 1).c_str());
}
