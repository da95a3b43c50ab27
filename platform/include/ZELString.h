// ZELString: the framework's narrow string value type.
// Owns its characters; always NUL-terminated, so the const char* conversion is
// valid until the string is modified or destroyed. Embedded NULs are allowed in
// the stored length but are cut by the C-string view.
#ifndef ZEL_STRING_H
#define ZEL_STRING_H

#include <string>
#include "vnxExport.h"

class VNX_EXPORT ZELString {
 public:
  ZELString() = default;
  ZELString(const char* text);              // null gives the empty string
  ZELString(const char* text, int length);  // copies exactly length characters
  ZELString(const std::string& text) : _text(text) {}

  operator const char*() const { return _text.c_str(); }
  const char* CastToCharPtr() const { return _text.c_str(); }
  const std::string& str() const { return _text; }

  // Number of characters (bytes).
  int GetLengthInChar() const { return static_cast<int>(_text.size()); }
  int GetLengthInByte() const { return static_cast<int>(_text.size()); }
  int IsNull() const { return _text.empty() ? 1 : 0; }
  void Reset() { _text.clear(); }

  // Characters [start, start+length) clipped to the string.
  ZELString SubString(int start, int length) const;
  // Drops the last count characters (all of them when count >= length).
  void RemoveTail(int count);

  ZELString& operator+=(const ZELString& other) { _text += other._text; return *this; }
  ZELString& operator+=(const char* other) { if (other) _text += other; return *this; }
  ZELString& operator+=(char c) { _text += c; return *this; }
  ZELString& Append(const char* text, int length);

  // strcmp-like three-way comparison.
  int Compare(const ZELString& other) const { return _text.compare(other._text); }

 private:
  std::string _text;
};

VNX_EXPORT ZELString operator+(const ZELString& a, const ZELString& b);
VNX_EXPORT ZELString operator+(const ZELString& a, const char* b);
VNX_EXPORT ZELString operator+(const char* a, const ZELString& b);
VNX_EXPORT ZELString operator+(const ZELString& a, char b);
VNX_EXPORT bool operator==(const ZELString& a, const ZELString& b);
VNX_EXPORT bool operator==(const ZELString& a, const char* b);
VNX_EXPORT bool operator==(const char* a, const ZELString& b);
VNX_EXPORT bool operator!=(const ZELString& a, const ZELString& b);
VNX_EXPORT bool operator!=(const ZELString& a, const char* b);
VNX_EXPORT bool operator!=(const char* a, const ZELString& b);
VNX_EXPORT bool operator<(const ZELString& a, const ZELString& b);

// Decimal text of an integer.
VNX_EXPORT ZELString toString(int value);

#endif
