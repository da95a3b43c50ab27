// vnxparse mutate: writes damaged copies of a sample of real files, so that a
// sweep over them reaches the error paths real code seldom takes (unclosed
// strings, comments and blocks, stray bytes, text cut anywhere). The random
// generator is our own, so a seed gives the same files on every platform.
#include <sys/stat.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iostream>

#include "CliCommand.h"
#include "SweepInputs.h"

namespace {

const char kUsage[] = "vnxparse mutate --out DIR [--seed N] [--count N] [--files-from LIST]... [FILE]...";

// splitmix64: small, fast and fully specified.
class Random {
 public:
  explicit Random(uint64_t seed) : _state(seed) {}
  uint64_t next() {
    uint64_t z = (_state += 0x9E3779B97F4A7C15ULL);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
    return z ^ (z >> 31);
  }
  // Uniform in [0, n); 0 when n is 0.
  size_t below(size_t n) { return n ? static_cast<size_t>(next() % n) : 0; }

 private:
  uint64_t _state;
};

// Bytes that open or close what the scanners track, and a few others.
const char kSyntax[] = "{}()[];:,\"'/*#\\<>=?\n ";

char randomByte(Random& random) {
  // Mostly syntax, sometimes any byte, NUL included.
  if (random.below(4) != 0) return kSyntax[random.below(sizeof kSyntax - 1)];
  return static_cast<char>(random.below(256));
}

// One to four damages: cut, insert, delete, flip.
void mutate(std::string& text, Random& random) {
  const size_t damages = 1 + random.below(4);
  for (size_t d = 0; d < damages; ++d) {
    const size_t at = random.below(text.size() + 1);
    switch (random.below(4)) {
      case 0:  // cut: keep a prefix only
        text.resize(at);
        break;
      case 1: {  // insert 1 to 8 bytes
        const size_t n = 1 + random.below(8);
        std::string bytes;
        for (size_t k = 0; k < n; ++k) bytes += randomByte(random);
        text.insert(at, bytes);
        break;
      }
      case 2:  // delete 1 to 16 bytes
        text.erase(at, 1 + random.below(16));
        break;
      default:  // flip one to eight bits of one byte
        if (at < text.size()) text[at] = static_cast<char>(text[at] ^ static_cast<char>(1 + random.below(255)));
        break;
    }
  }
}

std::string baseName(const std::string& path) {
  const size_t slash = path.find_last_of('/');
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

int run(const std::vector<std::string>& args) {
  std::string out;
  uint64_t seed = 1;
  size_t count = 300;
  std::vector<std::string> files;
  bool ok = true;
  for (size_t i = 0; i < args.size() && ok; ++i) {
    const std::string& a = args[i];
    const bool hasValue = i + 1 < args.size();
    char* end = nullptr;
    if (a == "--out" && hasValue) {
      out = args[++i];
    } else if (a == "--seed" && hasValue) {
      seed = std::strtoull(args[++i].c_str(), &end, 10);
      ok = !*end;
    } else if (a == "--count" && hasValue) {
      count = std::strtoul(args[++i].c_str(), &end, 10);
      ok = !*end;
    } else if (a == "--files-from" && hasValue) {
      ok = sweepReadList(args[++i], files);
    } else if (!a.empty() && a[0] == '-') {
      ok = false;
    } else {
      files.push_back(a);
    }
  }
  if (!ok || out.empty() || files.empty()) {
    std::cerr << "usage: " << kUsage << "\n";
    return kCliBadInput;
  }
  mkdir(out.c_str(), 0777);

  // A sample of count files, drawn without repetition, kept in list order.
  Random random(seed);
  std::vector<size_t> order(files.size());
  for (size_t i = 0; i < order.size(); ++i) order[i] = i;
  count = std::min(count, files.size());
  for (size_t i = 0; i < count; ++i) std::swap(order[i], order[i + random.below(order.size() - i)]);
  order.resize(count);
  std::sort(order.begin(), order.end());

  std::ofstream list(out + "/mutated.list");
  std::ofstream origins(out + "/origins.txt");
  for (size_t k = 0; k < order.size(); ++k) {
    const std::string& source = files[order[k]];
    std::string text;
    if (!cliReadFile(source, text)) return kCliBadInput;
    mutate(text, random);
    char prefix[32];
    std::snprintf(prefix, sizeof prefix, "%04zu_", k + 1);
    const std::string target = out + "/" + prefix + baseName(source);
    std::ofstream file(target, std::ios::binary);
    file.write(text.data(), static_cast<std::streamsize>(text.size()));
    if (!file) {
      std::cerr << "vnxparse: cannot write " << target << "\n";
      return kCliBadInput;
    }
    list << target << "\n";
    origins << target << "\t" << source << "\n";
  }
  if (!list || !origins) {
    std::cerr << "vnxparse: cannot write in " << out << "\n";
    return kCliBadInput;
  }
  std::cout << order.size() << " files written to " << out << "/mutated.list\n";
  return kCliOk;
}

const CliCommand command(
    91, "mutate", kUsage,
    "For sweeping the error paths: draws N files (--count, 300 by default) from\n"
    "the FILEs and LISTs with the seed N (--seed, 1 by default), damages each one\n"
    "one to four times (cut at a random point, random bytes inserted, deleted or\n"
    "flipped) and writes the copies to DIR as NNNN_NAME, with DIR/mutated.list\n"
    "(one name per line, for 'sweep --files-from') and DIR/origins.txt (copy TAB\n"
    "original). The same seed and inputs give the same files.",
    run);

}  // namespace
