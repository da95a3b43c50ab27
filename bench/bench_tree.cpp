// Preprocessing plus tree building over the header corpus, and sibling walks
// over a root with 100 000 top-level instructions.
#include <benchmark/benchmark.h>

#include <sstream>
#include <string>
#include <vector>

#include "BenchCorpus.h"
#include "vnxSourceFile.h"
#include "vnxSyntaxe.h"
#include "wbStream.h"

namespace {

struct Silence {
  std::ostringstream sink;
  std::ostream* previous;
  Silence() : previous(wbStderr.setTarget(&sink)) {}
  ~Silence() { wbStderr.setTarget(previous); }
};

long long countNodes(vnxSyntaxe* root) {
  long long count = 0;
  std::vector<vnxSyntaxe*> stack{root};
  while (!stack.empty()) {
    vnxSyntaxe* node = stack.back();
    stack.pop_back();
    ++count;
    for (int i = 1; i <= node->ChildCount(); ++i) stack.push_back(node->Child(i));
  }
  return count;
}

void BM_PreprocessAndBuildCorpus(benchmark::State& state) {
  const auto& files = benchCorpus();
  if (files.empty()) {
    state.SkipWithError("no corpus: run bench/corpora.sh or set VNX_BENCH_LIST");
    return;
  }
  Silence silence;
  long long nodes = 0;
  for (auto _ : state) {
    nodes = 0;
    for (const BenchFile& f : files) {
      vnxSourceFile* source = new vnxSourceFile(f.text.c_str(), nullptr, TAFileName(f.name.c_str()));
      if (source->preProcess() == 0) {
        vnxSyntaxe* root = vnxSyntaxe::CreateTAPSyntaxe(1, source, 0, source->GetSize(), 1);
        if (root) {
          root->Build(0);
          state.PauseTiming();
          nodes += countNodes(root);
          state.ResumeTiming();
          root->Release();
        }
      }
      source->Release();
    }
  }
  const double bytes = static_cast<double>(benchCorpusBytes());
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(bytes));
  state.counters["nodes_per_KB"] = static_cast<double>(nodes) / (bytes / 1024.0);
  state.counters["files"] = static_cast<double>(files.size());
}
BENCHMARK(BM_PreprocessAndBuildCorpus)->Unit(benchmark::kMillisecond);

void BM_SiblingWalkOverWideRoot(benchmark::State& state) {
  std::string text;
  for (int i = 0; i < 100000; ++i) text += "a" + std::to_string(i) + "=" + std::to_string(i) + ";";
  vnxSourceFile* source = vnxSourceFile::CreateFromPreprocessedText(text.c_str(), "wide.h");
  vnxSyntaxe* root = vnxSyntaxe::CreateTAPSyntaxe(1, source, 0, source->GetSize(), 1);
  root->Build(0);
  source->Release();
  for (auto _ : state) {
    long long visited = 0;
    for (vnxSyntaxe* n = root->Child(1); n; n = n->getNext()) ++visited;
    for (vnxSyntaxe* n = root->Child(root->ChildCount()); n; n = n->getPrevious()) ++visited;
    benchmark::DoNotOptimize(visited);
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * 2 * root->ChildCount());
  root->Release();
}
BENCHMARK(BM_SiblingWalkOverWideRoot)->Unit(benchmark::kMillisecond);

}  // namespace
