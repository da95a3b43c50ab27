// TAFileName: a file-name value. Joining uses '/'; nothing is resolved or
// normalised except where a method says so.
#ifndef TA_FILE_NAME_H
#define TA_FILE_NAME_H

#include <string>
#include "vnxExport.h"

class VNX_EXPORT TAFileName {
 public:
  TAFileName() = default;
  TAFileName(const char* name);                          // null gives the null name
  TAFileName(const TAFileName& dir, const char* child);  // dir + '/' + child

  operator const char*() const { return _name.c_str(); }
  const char* CastToCharPtr() const { return _name.c_str(); }

  // 1 for the empty name.
  int IsNull() const { return _name.empty() ? 1 : 0; }
  // 1 when the name designates an existing directory.
  int IsDirectory() const;
  // This name joined with child by one '/' (no doubled separator).
  TAFileName Join(const char* child) const;
  // Everything before the last '/', "." when there is none, "/" for a root entry.
  TAFileName dirname() const;
  // Everything after the last '/'.
  TAFileName basename() const;

  bool operator==(const TAFileName& other) const { return _name == other._name; }
  bool operator!=(const TAFileName& other) const { return _name != other._name; }

 private:
  std::string _name;
};

#endif
