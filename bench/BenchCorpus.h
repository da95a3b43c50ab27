// Loading a corpus of real files into memory for the benchmarks.
#ifndef VNX_BENCH_CORPUS_H
#define VNX_BENCH_CORPUS_H

#include <benchmark/benchmark.h>

#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include "wbStream.h"

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

// The corpus, or null after marking the benchmark skipped when there is none.
const std::vector<BenchFile>* benchCorpusOrSkip(benchmark::State& state);

// Keeps the library's diagnostics off the terminal while alive.
struct Silence {
  std::ostringstream sink;
  std::ostream* previous;
  Silence() : previous(wbStderr.setTarget(&sink)) {}
  ~Silence() { wbStderr.setTarget(previous); }
};

#endif
