#include "wbPathFinder.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstring>

namespace {
bool isRegularFile(const std::string& name) {
  struct stat info;
  return stat(name.c_str(), &info) == 0 && S_ISREG(info.st_mode);
}
}  // namespace

wbFileName wbFileName::WithExtension(const char* extension) const {
  std::string name = _fullName;
  const size_t slash = name.rfind('/');
  const size_t dot = name.rfind('.');
  if (dot != std::string::npos && (slash == std::string::npos || dot > slash)) name.erase(dot);
  name += '.';
  name += extension ? extension : "";
  return wbFileName(name.c_str());
}

void wbPathFinder::AddDirectory(const char* directory) {
  if (directory && *directory) _directories.emplace_back(directory);
}

const char* wbPathFinder::GetDirectory(int position) const {
  if (position < 1 || position > GetDirectoryCount()) return nullptr;
  return _directories[static_cast<size_t>(position - 1)].c_str();
}

wbFileName wbPathFinder::SearchFor(const char* name) const {
  if (!name || !*name) return wbFileName();
  if (name[0] == '/') return isRegularFile(name) ? wbFileName(name) : wbFileName();
  for (const std::string& dir : _directories) {
    std::string candidate = dir;
    if (candidate.back() != '/') candidate += '/';
    candidate += name;
    if (isRegularFile(candidate)) return wbFileName(candidate.c_str());
  }
  return wbFileName();
}

namespace wbUsefull {
void QuickSortZELString(ZELListValZELString& list) {
  const int n = list.Size();
  if (n < 2) return;
  std::vector<ZELString> items;
  items.reserve(static_cast<size_t>(n));
  for (int i = 1; i <= n; ++i) items.push_back(list[i]);
  std::sort(items.begin(), items.end(), [](const ZELString& a, const ZELString& b) {
    return std::strcmp(a.CastToCharPtr(), b.CastToCharPtr()) < 0;
  });
  list.RemoveAll();
  for (const ZELString& s : items) list.Append(s);
}
}  // namespace wbUsefull
