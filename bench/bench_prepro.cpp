// Throughput of the preprocessing pass: over a real header corpus, and over a
// synthetic file heavy in comments, directives and registered macros.
#include <benchmark/benchmark.h>

#include <sstream>
#include <string>

#include "BenchCorpus.h"
#include "vnxSourceFile.h"
#include "wbStream.h"

namespace {

// Diagnostics of odd corpus files would otherwise dominate the timing.
struct Silence {
  std::ostringstream sink;
  std::ostream* previous;
  Silence() : previous(wbStderr.setTarget(&sink)) {}
  ~Silence() { wbStderr.setTarget(previous); }
};

void BM_PreprocessCorpus(benchmark::State& state) {
  const auto& files = benchCorpus();
  if (files.empty()) {
    state.SkipWithError("no corpus: run bench/corpora.sh or set VNX_BENCH_LIST");
    return;
  }
  Silence silence;
  for (auto _ : state) {
    for (const BenchFile& f : files) {
      vnxSourceFile* source = new vnxSourceFile(f.text.c_str(), nullptr, TAFileName(f.name.c_str()));
      benchmark::DoNotOptimize(source->preProcess());
      source->Release();
    }
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(benchCorpusBytes()));
  state.counters["files"] = static_cast<double>(files.size());
}
BENCHMARK(BM_PreprocessCorpus)->Unit(benchmark::kMillisecond);

std::string syntheticText() {
  std::string text;
  for (int i = 0; i < 4000; ++i) {
    const std::string n = std::to_string(i);
    text += "/**\n * Block comment " + n + " describing the next declaration.\n * @owner team" + n + "\n */\n";
    text += "#ifdef FEATURE_" + n + "\nint feature" + n + "(int a, int b);   // trailing comment\n#else\n";
    text += "#define FALLBACK_" + n + "(x)  ((x) + " + n + ")\n#endif\n";
    text += "extern \"C\" { void  __stdcall  c_entry" + n + "( void ); }\n";
    text += "ZELLISTP(GeoCurve) list" + n + " ; double v" + n + " = BENCH_SQUARE( BENCH_ONE ) ;\n";
  }
  return "#define BENCH_ONE 1.0\n#define BENCH_SQUARE(x) ((x) * (x))\n" + text;
}

void BM_PreprocessSynthetic(benchmark::State& state) {
  vnxSourceFile::addMacroToExpand("BENCH_ONE");
  vnxSourceFile::addMacroToExpand("BENCH_SQUARE");
  const std::string text = syntheticText();
  Silence silence;
  for (auto _ : state) {
    vnxSourceFile* source = new vnxSourceFile(text.c_str(), nullptr, TAFileName("synthetic.h"));
    benchmark::DoNotOptimize(source->preProcess());
    source->Release();
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(text.size()));
}
BENCHMARK(BM_PreprocessSynthetic)->Unit(benchmark::kMillisecond);

}  // namespace
