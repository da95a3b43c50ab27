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
    if (mkdtemp(&pattern[0])) _path = pattern;
  }
  ~ScratchDir() {
    for (auto it = _created.rbegin(); it != _created.rend(); ++it) std::remove(it->c_str());
    if (!_path.empty()) rmdir(_path.c_str());
  }
  ScratchDir(const ScratchDir&) = delete;
  const std::string& path() const { return _path; }
  // Writes a file (parents created by subdir) and answers its full name.
  std::string file(const std::string& relative, const std::string& content) {
    std::ofstream(_path + "/" + relative, std::ios::binary) << content;
    return remember(relative);
  }
  std::string subdir(const std::string& relative) {
    mkdir((_path + "/" + relative).c_str(), 0755);
    return remember(relative);
  }

 private:
  std::string remember(const std::string& relative) { return _created.emplace_back(_path + "/" + relative), _created.back(); }
  std::string _path;
  std::vector<std::string> _created;
};

#endif
