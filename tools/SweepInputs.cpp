#include "SweepInputs.h"

#include <cstdio>
#include <fstream>
#include <iostream>

bool sweepReadList(const std::string& listFile, std::vector<std::string>& files) {
  std::ifstream file;
  std::istream* in = &std::cin;
  if (listFile != "-") {
    file.open(listFile);
    in = &file;
  }
  if (!*in) {
    std::cerr << "vnxparse: cannot read " << listFile << "\n";
    return false;
  }
  std::string line;
  while (std::getline(*in, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (!line.empty()) files.push_back(line);
  }
  if (in->bad()) {
    std::cerr << "vnxparse: cannot read " << listFile << "\n";
    return false;
  }
  return true;
}

namespace {

// Length of the well-formed UTF-8 sequence at text[i], 0 when it is not one.
size_t utf8Length(const std::string& text, size_t i) {
  const unsigned char c = static_cast<unsigned char>(text[i]);
  size_t length;
  unsigned int min;
  unsigned int value;
  if (c >= 0xC2 && c <= 0xDF) {
    length = 2, min = 0x80, value = c & 0x1F;
  } else if (c >= 0xE0 && c <= 0xEF) {
    length = 3, min = 0x800, value = c & 0x0F;
  } else if (c >= 0xF0 && c <= 0xF4) {
    length = 4, min = 0x10000, value = c & 0x07;
  } else {
    return 0;
  }
  if (i + length > text.size()) return 0;
  for (size_t k = 1; k < length; ++k) {
    const unsigned char next = static_cast<unsigned char>(text[i + k]);
    if ((next & 0xC0) != 0x80) return 0;
    value = (value << 6) | (next & 0x3F);
  }
  if (value < min || value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF)) return 0;
  return length;
}

}  // namespace

std::string sweepJsonEscape(const std::string& text) {
  std::string out;
  out.reserve(text.size() + 2);
  for (size_t i = 0; i < text.size(); ++i) {
    const unsigned char c = static_cast<unsigned char>(text[i]);
    if (c == '"' || c == '\\') {
      out += '\\';
      out += static_cast<char>(c);
    } else if (c == '\n') {
      out += "\\n";
    } else if (c == '\t') {
      out += "\\t";
    } else if (c == '\r') {
      out += "\\r";
    } else if (c < 0x20 || c == 0x7F) {
      char code[8];
      std::snprintf(code, sizeof code, "\\u%04x", c);
      out += code;
    } else if (c < 0x80) {
      out += static_cast<char>(c);
    } else if (size_t length = utf8Length(text, i)) {
      out.append(text, i, length);
      i += length - 1;
    } else {
      out += "\\ufffd";
    }
  }
  return out;
}
