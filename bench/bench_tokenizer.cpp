// Tokenizer throughput (bytes and tokens per second) on several megabytes of
// C++ text: the sample workspace repeated, a synthetic mix of declarations,
// comments, strings and numbers, the real header corpus when installed, and
// the preprocessor's pattern of one small tokenizer per line.
#include <benchmark/benchmark.h>

#include <dirent.h>

#include <cstdint>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "BenchCorpus.h"
#include "vnxToken.h"
#include "vnxTokenizer.h"

namespace {

const size_t kTargetBytes = 8u << 20;

bool isSourceName(const std::string& name) {
  for (const char* ext : {".h", ".hxx", ".hpp", ".cpp", ".c", ".idl"}) {
    const std::string e(ext);
    if (name.size() > e.size() && name.compare(name.size() - e.size(), e.size(), e) == 0) return true;
  }
  return false;
}

void appendSources(const std::string& dir, std::string& out) {
  DIR* d = opendir(dir.c_str());
  if (!d) return;
  while (dirent* e = readdir(d)) {
    const std::string name = e->d_name;
    if (name == "." || name == "..") continue;
    const std::string path = dir + "/" + name;
    if (e->d_type == DT_DIR) {
      appendSources(path, out);
    } else if (isSourceName(name)) {
      std::ifstream in(path, std::ios::binary);
      std::ostringstream text;
      text << in.rdbuf();
      out += text.str();
      out += '\n';
    }
  }
  closedir(d);
}

// Declarations, comments, directives, strings, characters and numbers in
// roughly the proportions of framework headers.
std::string syntheticSource(size_t bytes) {
  std::string out;
  out.reserve(bytes + 1024);
  for (unsigned i = 0; out.size() < bytes; ++i) {
    const std::string n = std::to_string(i);
    out += "/**\n * Curve evaluator " + n + ": returns the point at parameter t.\n * @owner geometry\n */\n";
    out += "#define GEO_TOLERANCE_" + n + " (1.0e-7 * " + n + "UL)\n";
    out += "class ExportedBy GeoCurve" + n + " : public GeoEntity {\n public:\n";
    out += "  virtual HRESULT Evaluate(const double t, GeoPoint** oPoint) const;  // may fail\n";
    out += "  int _count" + n + " = 0x" + n + ";\n  static const char* Name() { return \"GeoCurve" + n +
           "\\\"v2\\\"\"; }\n";
    out += "  char Separator() const { return '\\t'; }\n};\n\n";
    out += "for (int k = 0; k < _count" + n + "; ++k) { total += values[k] >> 2; if (a != b && !c) x -= y; }\n";
  }
  return out;
}

std::string repeatedExamples() {
  std::string once;
  appendSources(VNX_EXAMPLES_DIR, once);
  if (once.empty()) return syntheticSource(kTargetBytes);
  std::string out;
  out.reserve(kTargetBytes + once.size());
  while (out.size() < kTargetBytes) out += once;
  return out;
}

size_t countTokens(const char* text, unsigned int size) {
  vnxTokenizer tokenizer(text, size);
  vnxTokenIterator it = tokenizer.getTokenIterator();
  vnxToken token;
  size_t count = 0;
  while (it.getNextToken(token)) ++count;
  return count;
}

void tokenizeWhole(benchmark::State& state, const std::string& text) {
  size_t tokens = 0;
  for (auto _ : state) {
    tokens = countTokens(text.c_str(), static_cast<unsigned int>(text.size()));
    benchmark::DoNotOptimize(tokens);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(text.size()));
  state.counters["tokens"] = benchmark::Counter(static_cast<double>(tokens) * static_cast<double>(state.iterations()),
                                                benchmark::Counter::kIsRate);
  state.counters["MB"] = static_cast<double>(text.size()) / (1 << 20);
}

void BM_TokenizeExamples(benchmark::State& state) {
  static const std::string text = repeatedExamples();
  tokenizeWhole(state, text);
}
BENCHMARK(BM_TokenizeExamples)->Unit(benchmark::kMillisecond);

void BM_TokenizeSynthetic(benchmark::State& state) {
  static const std::string text = syntheticSource(kTargetBytes);
  tokenizeWhole(state, text);
}
BENCHMARK(BM_TokenizeSynthetic)->Unit(benchmark::kMillisecond);

void BM_TokenizeCorpus(benchmark::State& state) {
  static const std::string text = [] {
    std::string all;
    for (const BenchFile& f : benchCorpus()) all += f.text + '\n';
    return all;
  }();
  if (text.empty()) {
    state.SkipWithError("no corpus: run bench/corpora.sh or set VNX_BENCH_LIST");
    return;
  }
  tokenizeWhole(state, text);
}
BENCHMARK(BM_TokenizeCorpus)->Unit(benchmark::kMillisecond);

// The directive and macro code builds one tokenizer per line or replacement
// text, bounded by a size inside a larger buffer.
void BM_TokenizeLineByLine(benchmark::State& state) {
  static const std::string text = repeatedExamples();
  static const std::vector<std::pair<size_t, unsigned int>> lines = [] {
    std::vector<std::pair<size_t, unsigned int>> out;
    size_t start = 0;
    for (size_t i = 0; i < text.size(); ++i) {
      if (text[i] == '\n') {
        out.emplace_back(start, static_cast<unsigned int>(i + 1 - start));
        start = i + 1;
      }
    }
    return out;
  }();
  size_t tokens = 0;
  for (auto _ : state) {
    tokens = 0;
    for (const auto& line : lines) tokens += countTokens(text.c_str() + line.first, line.second);
    benchmark::DoNotOptimize(tokens);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(text.size()));
  state.counters["lines"] = static_cast<double>(lines.size());
}
BENCHMARK(BM_TokenizeLineByLine)->Unit(benchmark::kMillisecond);

}  // namespace
