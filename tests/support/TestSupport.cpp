#include "TestSupport.h"

#include <fstream>

StreamCapture::StreamCapture(wbOutStream& stream) : _stream(stream) {
  _previous = _stream.setTarget(&_buffer);
}

StreamCapture::~StreamCapture() { _stream.setTarget(_previous); }

std::vector<std::string> StreamCapture::lines() const {
  std::vector<std::string> out;
  std::istringstream in(_buffer.str());
  std::string line;
  while (std::getline(in, line)) out.push_back(line);
  return out;
}

std::string readTextFile(const std::string& name) {
  std::ifstream in(name, std::ios::binary);
  std::ostringstream content;
  content << in.rdbuf();
  return content.str();
}
