// Preprocessing plus tree building over the header corpus, tree building and
// release alone, and sibling walks over a root with 100 000 top-level
// instructions.
#include <benchmark/benchmark.h>

#include <chrono>
#include <sstream>
#include <string>
#include <vector>

#include "BenchCorpus.h"
#include "vnxSourceFile.h"
#include "vnxSyntaxe.h"
#include "wbStream.h"

namespace {

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
  const std::vector<BenchFile>* corpus = benchCorpusOrSkip(state);
  if (!corpus) return;
  const std::vector<BenchFile>& files = *corpus;
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

// Tree building and release alone, over sources preprocessed once beforehand
// (bytes are those of the preprocessed streams); the build_ms and release_ms
// counters split one pass over the corpus between the two.
void BM_BuildAndReleaseTrees(benchmark::State& state) {
  const std::vector<BenchFile>* corpus = benchCorpusOrSkip(state);
  if (!corpus) return;
  const std::vector<BenchFile>& files = *corpus;
  Silence silence;
  std::vector<vnxSourceFile*> sources;
  for (const BenchFile& f : files) {
    vnxSourceFile* source = new vnxSourceFile(f.text.c_str(), nullptr, TAFileName(f.name.c_str()));
    if (source->preProcess() == 0) sources.push_back(source);
    else source->Release();
  }
  typedef std::chrono::steady_clock Clock;
  double buildSeconds = 0, releaseSeconds = 0;
  for (auto _ : state) {
    for (vnxSourceFile* source : sources) {
      const Clock::time_point start = Clock::now();
      vnxSyntaxe* root = vnxSyntaxe::CreateTAPSyntaxe(1, source, 0, source->GetSize(), 1);
      if (!root) continue;
      root->Build(0);
      const Clock::time_point built = Clock::now();
      root->Release();
      const Clock::time_point released = Clock::now();
      buildSeconds += std::chrono::duration<double>(built - start).count();
      releaseSeconds += std::chrono::duration<double>(released - built).count();
    }
  }
  long long bytes = 0;
  for (vnxSourceFile* source : sources) {
    bytes += source->GetSize();
    source->Release();
  }
  const double passes = static_cast<double>(state.iterations());
  state.SetBytesProcessed(static_cast<int64_t>(passes * static_cast<double>(bytes)));
  state.counters["build_ms"] = buildSeconds * 1000 / passes;
  state.counters["release_ms"] = releaseSeconds * 1000 / passes;
}
BENCHMARK(BM_BuildAndReleaseTrees)->Unit(benchmark::kMillisecond);

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
