// Loading a corpus of real files into memory for the benchmarks.
#ifndef VNX_BENCH_CORPUS_H
#define VNX_BENCH_CORPUS_H

#include <string>
#include <vector>

struct BenchFile {
  std::string name;
  std::string text;
};

// The files named, one per line, in the list file given by the environment
// variable VNX_BENCH_LIST; without it, every .hxx/.h/.hpp file under
// /usr/include/opencascade (Debian's libocct-foundation-dev, which
// bench/corpora.sh installs). Loaded once per process.
const std::vector<BenchFile>& benchCorpus();
size_t benchCorpusBytes();

#endif
