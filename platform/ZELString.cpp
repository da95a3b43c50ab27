#include "ZELString.h"

#include <cstring>

#include "ZELUnicodeString.h"

ZELString::ZELString(const char* text) {
  if (text) _text.assign(text);
}

ZELString::ZELString(const char* text, int length) {
  if (text && length > 0) _text.assign(text, static_cast<size_t>(length));
}

ZELString ZELString::SubString(int start, int length) const {
  const int size = GetLengthInChar();
  if (start < 0) {
    length += start;
    start = 0;
  }
  if (start >= size || length <= 0) return ZELString();
  if (length > size - start) length = size - start;
  return ZELString(_text.substr(static_cast<size_t>(start), static_cast<size_t>(length)));
}

void ZELString::RemoveTail(int count) {
  if (count <= 0) return;
  if (count >= GetLengthInChar()) {
    _text.clear();
  } else {
    _text.resize(_text.size() - static_cast<size_t>(count));
  }
}

ZELString& ZELString::Append(const char* text, int length) {
  if (text && length > 0) _text.append(text, static_cast<size_t>(length));
  return *this;
}

ZELString operator+(const ZELString& a, const ZELString& b) { return ZELString(a.str() + b.str()); }
ZELString operator+(const ZELString& a, const char* b) {
  ZELString r(a);
  r += b;
  return r;
}
ZELString operator+(const char* a, const ZELString& b) {
  ZELString r(a);
  r += b;
  return r;
}
ZELString operator+(const ZELString& a, char b) {
  ZELString r(a);
  r += b;
  return r;
}
bool operator==(const ZELString& a, const ZELString& b) { return a.str() == b.str(); }
bool operator==(const ZELString& a, const char* b) { return std::strcmp(a.CastToCharPtr(), b ? b : "") == 0; }
bool operator==(const char* a, const ZELString& b) { return b == a; }
bool operator!=(const ZELString& a, const ZELString& b) { return !(a == b); }
bool operator!=(const ZELString& a, const char* b) { return !(a == b); }
bool operator!=(const char* a, const ZELString& b) { return !(b == a); }
bool operator<(const ZELString& a, const ZELString& b) { return a.str() < b.str(); }

ZELString toString(int value) { return ZELString(std::to_string(value)); }

// --- ZELUnicodeString ------------------------------------------------------

namespace {

// Length of the valid UTF-8 sequence at p (1 to 4), or 0 when it is not one.
int utf8SequenceLength(const unsigned char* p, size_t left, char32_t& cp) {
  const unsigned char c = p[0];
  int n = 0;
  if (c < 0x80) {
    cp = c;
    return 1;
  }
  if ((c & 0xE0) == 0xC0) { n = 2; cp = c & 0x1F; }
  else if ((c & 0xF0) == 0xE0) { n = 3; cp = c & 0x0F; }
  else if ((c & 0xF8) == 0xF0) { n = 4; cp = c & 0x07; }
  else return 0;
  if (left < static_cast<size_t>(n)) return 0;
  for (int k = 1; k < n; ++k) {
    if ((p[k] & 0xC0) != 0x80) return 0;
    cp = (cp << 6) | (p[k] & 0x3F);
  }
  static const char32_t kMin[5] = {0, 0, 0x80, 0x800, 0x10000};
  if (cp < kMin[n] || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) return 0;
  return n;
}

void appendUtf8(std::string& out, char32_t cp) {
  if (cp < 0x80) {
    out += static_cast<char>(cp);
  } else if (cp < 0x800) {
    out += static_cast<char>(0xC0 | (cp >> 6));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  } else if (cp < 0x10000) {
    out += static_cast<char>(0xE0 | (cp >> 12));
    out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (cp >> 18));
    out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  }
}

}  // namespace

ZELUnicodeString::ZELUnicodeString(const ZELString& utf8) : ZELUnicodeString(utf8.CastToCharPtr()) {}

ZELUnicodeString::ZELUnicodeString(const char* utf8) {
  if (!utf8) return;
  const unsigned char* p = reinterpret_cast<const unsigned char*>(utf8);
  size_t left = std::strlen(utf8);
  while (left > 0) {
    char32_t cp = 0;
    int n = utf8SequenceLength(p, left, cp);
    if (n == 0) {  // not UTF-8: take the byte as Latin-1
      cp = *p;
      n = 1;
    }
    if (cp >= 0x10000) {
      cp -= 0x10000;
      _text += static_cast<char16_t>(0xD800 + (cp >> 10));
      _text += static_cast<char16_t>(0xDC00 + (cp & 0x3FF));
    } else {
      _text += static_cast<char16_t>(cp);
    }
    p += n;
    left -= static_cast<size_t>(n);
  }
}

ZELString ZELUnicodeString::ConvertToChar() const {
  std::string out;
  for (size_t i = 0; i < _text.size(); ++i) {
    char32_t cp = _text[i];
    if (cp >= 0xD800 && cp <= 0xDBFF && i + 1 < _text.size() && _text[i + 1] >= 0xDC00 &&
        _text[i + 1] <= 0xDFFF) {
      cp = 0x10000 + ((cp - 0xD800) << 10) + (_text[i + 1] - 0xDC00);
      ++i;
    }
    appendUtf8(out, cp);
  }
  return ZELString(out);
}
