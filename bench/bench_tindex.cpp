// TAIndex look-ups per second at 100 000 keys, for keys present (hits) and
// absent (misses), with names shaped like the symbol table's.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "TAIndex.h"

namespace {

std::string keyName(int i) { return "GeoModel::GeoCurve" + std::to_string(i) + "::Evaluate"; }

struct IndexFixture {
  TAIndex index;
  std::vector<std::string> hits;
  std::vector<std::string> misses;

  explicit IndexFixture(int keys) {
    for (int i = 0; i < keys; ++i) {
      hits.push_back(keyName(i));
      index.Append(hits.back().c_str(), nullptr);
      misses.push_back(keyName(i) + "_absent");
    }
    // Look up in an order unrelated to insertion.
    std::mt19937 random(12345);
    std::shuffle(hits.begin(), hits.end(), random);
    std::shuffle(misses.begin(), misses.end(), random);
  }
};

const IndexFixture& fixture(int keys) {
  static std::unique_ptr<IndexFixture> cached;
  if (!cached || cached->index.Size() != keys) cached.reset(new IndexFixture(keys));
  return *cached;
}

void lookUp(benchmark::State& state, const std::vector<std::string>& keys, const TAIndex& index) {
  int found = 0;
  for (auto _ : state) {
    for (const std::string& key : keys) found += index.IsIn(key.c_str()) >= 0 ? 1 : 0;
    benchmark::DoNotOptimize(found);
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(keys.size()));
}

void BM_TAIndexIsInHits(benchmark::State& state) {
  const IndexFixture& f = fixture(static_cast<int>(state.range(0)));
  lookUp(state, f.hits, f.index);
}
BENCHMARK(BM_TAIndexIsInHits)->Arg(100000)->Unit(benchmark::kMillisecond);

void BM_TAIndexIsInMisses(benchmark::State& state) {
  const IndexFixture& f = fixture(static_cast<int>(state.range(0)));
  lookUp(state, f.misses, f.index);
}
BENCHMARK(BM_TAIndexIsInMisses)->Arg(100000)->Unit(benchmark::kMillisecond);

}  // namespace
