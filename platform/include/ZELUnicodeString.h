// ZELUnicodeString: a UTF-16 string value, converted from and to UTF-8 ZELString.
// Invalid UTF-8 bytes are taken one by one as Latin-1 code points, so no input
// is ever rejected.
#ifndef ZEL_UNICODE_STRING_H
#define ZEL_UNICODE_STRING_H

#include <string>
#include "ZELString.h"
#include "vnxExport.h"

class VNX_EXPORT ZELUnicodeString {
 public:
  ZELUnicodeString() = default;
  explicit ZELUnicodeString(const ZELString& utf8);
  explicit ZELUnicodeString(const char* utf8);

  // Number of UTF-16 code units.
  int GetLengthInChar() const { return static_cast<int>(_text.size()); }
  const char16_t* GetBuffer() const { return _text.c_str(); }
  ZELString ConvertToChar() const;  // back to UTF-8

  bool operator==(const ZELUnicodeString& other) const { return _text == other._text; }
  bool operator!=(const ZELUnicodeString& other) const { return _text != other._text; }

 private:
  std::u16string _text;
};

#endif
