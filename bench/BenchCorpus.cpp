#include "BenchCorpus.h"

#include <dirent.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

namespace {

bool hasHeaderExtension(const std::string& name) {
  for (const char* ext : {".hxx", ".h", ".hpp", ".lxx", ".idl"}) {
    const std::string e(ext);
    if (name.size() > e.size() && name.compare(name.size() - e.size(), e.size(), e) == 0) return true;
  }
  return false;
}

void listDirectory(const std::string& dir, std::vector<std::string>& out) {
  DIR* d = opendir(dir.c_str());
  if (!d) return;
  while (dirent* e = readdir(d)) {
    const std::string name = e->d_name;
    if (name == "." || name == "..") continue;
    const std::string path = dir + "/" + name;
    if (e->d_type == DT_DIR) listDirectory(path, out);
    else if (hasHeaderExtension(name)) out.push_back(path);
  }
  closedir(d);
}

std::vector<BenchFile> load() {
  std::vector<std::string> names;
  if (const char* list = std::getenv("VNX_BENCH_LIST")) {
    std::ifstream in(list);
    std::string line;
    while (std::getline(in, line))
      if (!line.empty()) names.push_back(line);
  } else {
    listDirectory("/usr/include/opencascade", names);
  }
  std::vector<BenchFile> files;
  for (const std::string& name : names) {
    std::ifstream in(name, std::ios::binary);
    if (!in) continue;
    std::ostringstream text;
    text << in.rdbuf();
    files.push_back(BenchFile{name, text.str()});
  }
  return files;
}

}  // namespace

const std::vector<BenchFile>& benchCorpus() {
  static const std::vector<BenchFile> files = load();
  return files;
}

size_t benchCorpusBytes() {
  size_t total = 0;
  for (const BenchFile& f : benchCorpus()) total += f.text.size();
  return total;
}

const std::vector<BenchFile>* benchCorpusOrSkip(benchmark::State& state) {
  const std::vector<BenchFile>& files = benchCorpus();
  if (!files.empty()) return &files;
  state.SkipWithError("no corpus: run bench/corpora.sh or set VNX_BENCH_LIST");
  return nullptr;
}
