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
void BM_PreprocessCorpus(benchmark::State& state) {
  const std::vector<BenchFile>* corpus = benchCorpusOrSkip(state);
  if (!corpus) return;
  const std::vector<BenchFile>& files = *corpus;
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

// blocks of declarations, each with two expansions, a conditional group,
// comments, an extern "C" block and a list macro.
std::string syntheticText(int blocks) {
  std::string text;
  for (int i = 0; i < blocks; ++i) {
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
  const std::string text = syntheticText(static_cast<int>(state.range(0)));
  Silence silence;
  for (auto _ : state) {
    vnxSourceFile* source = new vnxSourceFile(text.c_str(), nullptr, TAFileName("synthetic.h"));
    benchmark::DoNotOptimize(source->preProcess());
    source->Release();
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(text.size()));
}
// Bytes per second must not fall as the text grows: each expansion's cost
// may not depend on how much text follows it.
BENCHMARK(BM_PreprocessSynthetic)->Arg(1000)->Arg(4000)->Arg(16000)->Unit(benchmark::kMillisecond);

}  // namespace
