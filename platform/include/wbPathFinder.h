// wbFileName: a resolved file name. wbPathFinder: the workspace's ordered list
// of include directories, used to resolve an include name to an existing file.
#ifndef WB_PATH_FINDER_H
#define WB_PATH_FINDER_H

#include <string>
#include <vector>
#include "ZELLists.h"
#include "vnxExport.h"

class VNX_EXPORT wbFileName {
 public:
  wbFileName() = default;
  explicit wbFileName(const char* fullName) : _fullName(fullName ? fullName : "") {}

  // The full name; "" for the null name.
  const char* GetPtrToFullname() const { return _fullName.c_str(); }
  int IsNull() const { return _fullName.empty() ? 1 : 0; }
  // The same name with its extension (after the last '.' of the last path
  // element) replaced by extension, given without the dot; added when there is none.
  wbFileName WithExtension(const char* extension) const;

 private:
  std::string _fullName;
};

class VNX_EXPORT wbPathFinder {
 public:
  wbPathFinder() = default;
  // Appends a directory to the search list (empty names are ignored).
  void AddDirectory(const char* directory);
  int GetDirectoryCount() const { return static_cast<int>(_directories.size()); }
  const char* GetDirectory(int position) const;  // 1-based; null out of range

  // Resolves name: an absolute name is answered as it is when the file exists;
  // otherwise the first directory (in order) holding a regular file of that
  // relative name wins. The null name (IsNull) means not found.
  wbFileName SearchFor(const char* name) const;

 private:
  std::vector<std::string> _directories;
};

namespace wbUsefull {
// Sorts the list in ascending strcmp order.
VNX_EXPORT void QuickSortZELString(ZELListValZELString& list);
}

#endif
