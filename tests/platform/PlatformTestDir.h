// A scratch directory for the platform tests, removed with its files at the
// end of the test.
#ifndef VNX_PLATFORM_TEST_DIR_H
#define VNX_PLATFORM_TEST_DIR_H

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

class ScratchDir {
 public:
  ScratchDir() {
    std::string pattern = testing::TempDir() + "vnx_platform_XXXXXX";
    std::vector<char> buffer(pattern.begin(), pattern.end());
    buffer.push_back('\0');
    if (mkdtemp(buffer.data())) _path = buffer.data();
  }
  ~ScratchDir() {
    for (auto it = _created.rbegin(); it != _created.rend(); ++it) std::remove(it->c_str());
    if (!_path.empty()) rmdir(_path.c_str());
  }
  ScratchDir(const ScratchDir&) = delete;
  ScratchDir& operator=(const ScratchDir&) = delete;

  const std::string& path() const { return _path; }
  // Writes a file (parents created by subdir) and answers its full name.
  std::string file(const std::string& relative, const std::string& content) {
    const std::string name = _path + "/" + relative;
    std::ofstream(name, std::ios::binary) << content;
    _created.push_back(name);
    return name;
  }
  std::string subdir(const std::string& relative) {
    const std::string name = _path + "/" + relative;
    mkdir(name.c_str(), 0755);
    _created.push_back(name);
    return name;
  }

 private:
  std::string _path;
  std::vector<std::string> _created;
};

#endif
