// vnxparse sweep: preprocesses and builds the tree of many files in one
// process, releasing each tree before the next file, and prints one summary.
// It is the proof that the library holds on real code: every failure is
// counted and the first few are named, the library's own diagnostics are kept
// off the terminal, and time, throughput and memory are measured.
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <deque>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <map>
#include <sstream>

#include "CliCommand.h"
#include "SweepInputs.h"
#include "TAFileName.h"
#include "ZELFileBuffer.h"
#include "vnxExpression.h"
#include "vnxInstruction.h"
#include "vnxResources.h"
#include "vnxSourceFile.h"
#include "vnxSyntaxe.h"
#include "wbStream.h"

namespace {

const char kUsage[] =
    "vnxparse sweep [--json] [--no-tree] [--no-read-ahead] [--expand NAME]... [--hang-seconds S] [--show N] "
    "[--files-from LIST]... [FILE]...";

struct Options {
  bool json = false;
  bool tree = true;  // false: preprocess only, to time that stage alone
  bool readAhead = true;  // false: no reader thread, each file read when due
  double hangSeconds = 10.0;
  size_t show = 5;
  std::vector<std::string> expand;
  std::vector<std::string> files;
};

// One file the sweep could not take through: its stage ("read", "prepro",
// "tree", "hang", "leak") and the first line of what the library said.
struct Failure {
  std::string stage;
  std::string file;
  std::string message;
};

// Failures or error lines that differ only by their numbers.
struct Reason {
  long long count = 0;
  std::string firstFile;
};
typedef std::map<std::string, Reason> Reasons;

struct Totals {
  long long files = 0;
  long long bytes = 0;
  long long nodes = 0;
  long long treeBytes = 0;
  double maxTreeRatio = 0;  // tree bytes per source byte, worst file
  std::string maxTreeRatioFile;
  long long unreadable = 0;
  long long preproFailures = 0;
  long long treeFailures = 0;
  long long hangs = 0;
  long long leaks = 0;  // trees that left nodes alive or kept their source
  long long errorLines = 0;
  long long warningLines = 0;
  double slowestSeconds = 0;
  std::string slowestFile;
  std::vector<Failure> failures;  // every failure, in file order
  Reasons reasons;                // by "stage: message with digits as #"
  Reasons errorReasons;           // the library's error lines, by message
};

bool parseArgs(const std::vector<std::string>& args, Options& options) {
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string& a = args[i];
    const bool hasValue = i + 1 < args.size();
    if (a == "--json") {
      options.json = true;
    } else if (a == "--no-tree") {
      options.tree = false;
    } else if (a == "--no-read-ahead") {
      options.readAhead = false;
    } else if (a == "--expand" && hasValue) {
      options.expand.push_back(args[++i]);
    } else if (a == "--files-from" && hasValue) {
      if (!sweepReadList(args[++i], options.files)) return false;
    } else if (a == "--hang-seconds" && hasValue) {
      char* end = nullptr;
      options.hangSeconds = std::strtod(args[++i].c_str(), &end);
      if (*end || !(options.hangSeconds > 0)) return false;
    } else if (a == "--show" && hasValue) {
      char* end = nullptr;
      const long n = std::strtol(args[++i].c_str(), &end, 10);
      if (*end || n < 0) return false;
      options.show = static_cast<size_t>(n);
    } else if (!a.empty() && a[0] == '-' && a != "-") {
      return false;
    } else {
      options.files.push_back(a);
    }
  }
  return !options.files.empty();
}

// Node objects and child arrays alive: read from the pools' counts, since a
// walk over every node would cost the sweep a good part of what it times.
long long liveTreeBytes() {
  return static_cast<long long>(vnxSyntaxe::GetPoolLiveCount()) * sizeof(vnxSyntaxe) +
         static_cast<long long>(vnxInstruction::GetPoolLiveCount()) * sizeof(vnxInstruction) +
         static_cast<long long>(vnxExpression::GetPoolLiveCount()) * sizeof(vnxExpression) +
         vnxSyntaxe::GetChildArrayBytes();
}

long long liveNodes() {
  return static_cast<long long>(vnxSyntaxe::GetPoolLiveCount()) + vnxInstruction::GetPoolLiveCount() +
         vnxExpression::GetPoolLiveCount();
}

std::string firstLine(const std::string& text) {
  const size_t end = text.find('\n');
  return end == std::string::npos ? text : text.substr(0, end);
}

// The first error line the library wrote, else its first line, else fallback.
std::string firstMessage(const std::string& diagnostics, const std::string& fallback) {
  const size_t error = diagnostics.find("# VNX-ERROR:");
  if (error != std::string::npos) return firstLine(diagnostics.substr(error));
  if (!fallback.empty()) return firstLine(fallback);
  return firstLine(diagnostics);
}

// Groups messages that differ only by their numbers or by the name of the
// file they come from.
std::string reasonKey(const std::string& stage, const std::string& message, const std::string& file) {
  std::string text = message;
  for (size_t at = 0; !file.empty() && (at = text.find(file, at)) != std::string::npos; at += 4) {
    text.replace(at, file.size(), "FILE");
  }
  std::string key = stage + ": ";
  bool inDigits = false;
  for (char c : text) {
    const bool digit = c >= '0' && c <= '9';
    if (digit && !inDigits) key += '#';
    if (!digit) key += c;
    inDigits = digit;
  }
  return key;
}

void addReason(Reasons& reasons, const std::string& key, const std::string& file) {
  Reason& reason = reasons[key];
  if (reason.count++ == 0) reason.firstFile = file;
}

// Counts the library's error and warning lines; error lines are also grouped.
void countDiagnostics(const std::string& text, const std::string& file, Totals& totals) {
  static const std::string kError = "# VNX-ERROR:";
  static const std::string kWarning = "# VNX-WARNING:";
  for (size_t at = 0; at < text.size();) {
    size_t end = text.find('\n', at);
    if (end == std::string::npos) end = text.size();
    if (text.compare(at, kError.size(), kError) == 0) {
      ++totals.errorLines;
      size_t from = at + kError.size();
      while (from < end && (text[from] == ' ' || text[from] == '\t')) ++from;
      addReason(totals.errorReasons, reasonKey("error", text.substr(from, end - from), file), file);
    } else if (text.compare(at, kWarning.size(), kWarning) == 0) {
      ++totals.warningLines;
    }
    at = end + 1;
  }
}

long long peakRssKiB() {
  struct rusage usage;
  if (getrusage(RUSAGE_SELF, &usage) != 0) return 0;
  return usage.ru_maxrss;  // KiB on Linux
}

long long currentRssKiB() {
  std::ifstream statm("/proc/self/statm");
  long long pages = 0, resident = 0;
  if (!(statm >> pages >> resident)) return 0;
  return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

void addFailure(Totals& totals, const char* stage, const std::string& file, const std::string& message) {
  totals.failures.push_back(Failure{stage, file, message});
  addReason(totals.reasons, reasonKey(stage, message, file), file);
}

// Takes one file through the pass and the tree, as 'vnxparse tree' does.
// The buffer (read ahead, or read now) becomes the source's.
void sweepFile(const std::string& name, ZELFileBuffer* buffer, std::ostringstream& sink, const Options& options,
               Totals& totals) {
  typedef std::chrono::steady_clock Clock;
  const Clock::time_point start = Clock::now();
  sink.str("");
  sink.clear();

  // Reading a directory fails here; the check is for systems where it gives
  // an empty text instead.
  if (!buffer->isReadable() || (buffer->getBufferSize() == 0 && TAFileName(name.c_str()).IsDirectory())) {
    buffer->destroy();
    ++totals.unreadable;
    addFailure(totals, "read", name, "cannot read the file");
    return;
  }
  ++totals.files;
  const long long bytes = buffer->getBufferSize();
  totals.bytes += bytes;

  vnxSourceFile* source = new vnxSourceFile(buffer, nullptr, TAFileName());
  const long long nodesBefore = liveNodes();
  const long long bytesBefore = liveTreeBytes();
  if (source->preProcess() != 0) {
    ++totals.preproFailures;
    addFailure(totals, "prepro", name, firstMessage(sink.str(), source->GetErrMsg()));
  } else if (options.tree) {
    vnxSyntaxe* root = vnxSyntaxe::CreateTAPSyntaxe(1, source, 0, source->GetSize(), 1);
    if (!root) {
      ++totals.treeFailures;
      addFailure(totals, "tree", name, "cannot create the tree");
    } else {
      if (root->Build(0) != 0) {
        ++totals.treeFailures;
        addFailure(totals, "tree", name, firstLine(vnxSyntaxe::GetErrMsg().CastToCharPtr()));
      }
      // Whatever is alive now and was not before is this tree.
      const long long nodes = liveNodes() - nodesBefore;
      const long long treeBytes = liveTreeBytes() - bytesBefore;
      totals.nodes += nodes;
      totals.treeBytes += treeBytes;
      const double ratio = bytes > 0 ? static_cast<double>(treeBytes) / bytes : 0;
      if (ratio > totals.maxTreeRatio) {
        totals.maxTreeRatio = ratio;
        totals.maxTreeRatioFile = name;
      }
      root->Release();
    }
  }
  // Our own reference must be the last one: the tree gave back every node
  // and its hold on the source.
  const long long nodesAlive = liveNodes() - nodesBefore;
  const bool sourceKept = source->Release() != 0;
  if (sourceKept || nodesAlive != 0) {
    ++totals.leaks;
    addFailure(totals, "leak", name,
               sourceKept ? "the source outlived its tree"
                          : "nodes alive after release: " + std::to_string(nodesAlive));
  }

  countDiagnostics(sink.str(), name, totals);

  const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
  if (seconds > totals.slowestSeconds) {
    totals.slowestSeconds = seconds;
    totals.slowestFile = name;
  }
  if (seconds > options.hangSeconds) {
    ++totals.hangs;
    char text[64];
    std::snprintf(text, sizeof text, "took %.1f s", seconds);
    addFailure(totals, "hang", name, text);
  }
}

class Progress {
 public:
  explicit Progress(size_t total) : _total(total), _enabled(isatty(STDERR_FILENO) != 0) {}
  void update(size_t done, const std::string& name) {
    if (!_enabled) return;
    const auto now = std::chrono::steady_clock::now();
    if (done != 0 && now - _last < std::chrono::milliseconds(100)) return;
    _last = now;
    std::string shown = name.size() > 50 ? "..." + name.substr(name.size() - 47) : name;
    std::fprintf(stderr, "\r\033[K[%zu/%zu] %s", done + 1, _total, shown.c_str());
    std::fflush(stderr);
  }
  void finish() {
    if (_enabled) std::fprintf(stderr, "\r\033[K");
  }

 private:
  size_t _total;
  bool _enabled;
  std::chrono::steady_clock::time_point _last;
};

struct Rates {
  double seconds, mbPerSecond, filesPerSecond, treeRatio;
};

Rates rates(const Totals& t, double seconds) {
  Rates r;
  r.seconds = seconds;
  r.mbPerSecond = seconds > 0 ? t.bytes / 1e6 / seconds : 0;
  r.filesPerSecond = seconds > 0 ? t.files / seconds : 0;
  r.treeRatio = t.bytes > 0 ? static_cast<double>(t.treeBytes) / t.bytes : 0;
  return r;
}

// The reasons, most frequent first.
std::vector<std::pair<std::string, Reason>> sortedReasons(const Reasons& map) {
  std::vector<std::pair<std::string, Reason>> reasons(map.begin(), map.end());
  std::stable_sort(reasons.begin(), reasons.end(),
                   [](const std::pair<std::string, Reason>& a, const std::pair<std::string, Reason>& b) {
                     return a.second.count > b.second.count;
                   });
  return reasons;
}

void printReasons(const char* title, const Reasons& map) {
  if (map.empty()) return;
  std::printf("%s\n", title);
  for (const auto& reason : sortedReasons(map)) {
    std::printf("  %6lld  %s  (first in %s)\n", reason.second.count, reason.first.c_str(),
                reason.second.firstFile.c_str());
  }
}

void jsonReasons(std::ostringstream& out, const Reasons& map) {
  out << "[";
  bool first = true;
  for (const auto& reason : sortedReasons(map)) {
    out << (first ? "" : ", ") << "{\"reason\": \"" << sweepJsonEscape(reason.first)
        << "\", \"count\": " << reason.second.count << ", \"first_file\": \""
        << sweepJsonEscape(reason.second.firstFile) << "\"}";
    first = false;
  }
  out << "]";
}

void printText(const Totals& t, const Options& o, const Rates& r, long long rssFirst, long long rssLast) {
  std::printf("files:                    %lld\n", t.files);
  std::printf("bytes:                    %lld\n", t.bytes);
  std::printf("unreadable files:         %lld\n", t.unreadable);
  std::printf("preprocessing failures:   %lld\n", t.preproFailures);
  std::printf("tree-building failures:   %lld\n", t.treeFailures);
  std::printf("hangs (over %g s):        %lld\n", o.hangSeconds, t.hangs);
  std::printf("leaked trees:             %lld\n", t.leaks);
  std::printf("diagnostics:              %lld errors, %lld warnings\n", t.errorLines, t.warningLines);
  std::printf("nodes:                    %lld\n", t.nodes);
  std::printf("tree bytes:               %lld (%.2f per source byte, at most %.2f in %s)\n", t.treeBytes,
              r.treeRatio, t.maxTreeRatio, t.maxTreeRatioFile.empty() ? "-" : t.maxTreeRatioFile.c_str());
  std::printf("peak memory:              %lld KiB (resident %lld KiB after the first file, %lld KiB at the end)\n",
              peakRssKiB(), rssFirst, rssLast);
  std::printf("wall time:                %.3f s, %.1f MB/s, %.0f files/s\n", r.seconds, r.mbPerSecond,
              r.filesPerSecond);
  std::printf("slowest file:             %.3f s %s\n", t.slowestSeconds,
              t.slowestFile.empty() ? "-" : t.slowestFile.c_str());
  printReasons("failure reasons:", t.reasons);
  printReasons("error diagnostics:", t.errorReasons);
  if (t.failures.empty() || o.show == 0) return;
  std::printf("first failures:\n");
  for (size_t i = 0; i < t.failures.size() && i < o.show; ++i) {
    const Failure& f = t.failures[i];
    std::printf("  %s: %s: %s\n", f.stage.c_str(), f.file.c_str(), f.message.c_str());
  }
}

void printJson(const Totals& t, const Options& o, const Rates& r, long long rssFirst, long long rssLast) {
  std::ostringstream out;
  out.setf(std::ios::fixed);
  out.precision(3);
  out << "{\"files\": " << t.files << ", \"bytes\": " << t.bytes << ", \"unreadable\": " << t.unreadable
      << ", \"preprocessing_failures\": " << t.preproFailures << ", \"tree_failures\": " << t.treeFailures
      << ", \"hangs\": " << t.hangs << ", \"hang_seconds\": " << o.hangSeconds << ", \"leaks\": " << t.leaks
      << ", \"error_lines\": " << t.errorLines << ", \"warning_lines\": " << t.warningLines
      << ", \"nodes\": " << t.nodes << ", \"tree_bytes\": " << t.treeBytes
      << ", \"tree_bytes_per_source_byte\": " << r.treeRatio
      << ", \"max_tree_bytes_per_source_byte\": " << t.maxTreeRatio << ", \"max_tree_bytes_file\": \""
      << sweepJsonEscape(t.maxTreeRatioFile) << "\", \"peak_rss_kib\": " << peakRssKiB()
      << ", \"rss_first_kib\": " << rssFirst << ", \"rss_last_kib\": " << rssLast
      << ", \"wall_seconds\": " << r.seconds << ", \"mb_per_second\": " << r.mbPerSecond
      << ", \"files_per_second\": " << r.filesPerSecond << ", \"slowest_seconds\": " << t.slowestSeconds
      << ", \"slowest_file\": \"" << sweepJsonEscape(t.slowestFile) << "\", \"failure_reasons\": ";
  jsonReasons(out, t.reasons);
  out << ", \"error_reasons\": ";
  jsonReasons(out, t.errorReasons);
  out << ", \"failures\": [";
  for (size_t i = 0; i < t.failures.size() && i < o.show; ++i) {
    const Failure& f = t.failures[i];
    out << (i ? ", " : "") << "{\"stage\": \"" << f.stage << "\", \"file\": \"" << sweepJsonEscape(f.file)
        << "\", \"message\": \"" << sweepJsonEscape(f.message) << "\"}";
  }
  out << "]}\n";
  std::fputs(out.str().c_str(), stdout);
}

int run(const std::vector<std::string>& args) {
  Options options;
  if (!parseArgs(args, options)) {
    std::cerr << "usage: " << kUsage << "\n";
    return kCliBadInput;
  }
  for (const std::string& name : options.expand) vnxSourceFile::addMacroToExpand(name.c_str());
  if (!options.readAhead) vnxResources::disableMultiThread();

  Totals totals;
  std::ostringstream sink;
  std::ostream* previous = wbStderr.setTarget(&sink);
  Progress progress(options.files.size());
  long long rssFirst = 0;
  const auto start = std::chrono::steady_clock::now();
  // The next files are read ahead by the buffer pool's reader while this one
  // is processed, as the symbol table does with a file's includes. They are
  // queued a large batch at a time: the reader outruns this loop and sleeps
  // when its queue is empty, and a wake-up costs more than a small file.
  const size_t kAhead = 4096;
  ZELFileBufferPool pool;
  std::deque<ZELFileBuffer*> ahead;
  size_t queued = 0;
  for (size_t i = 0; i < options.files.size(); ++i) {
    if (ahead.size() <= kAhead / 2) {
      while (queued < options.files.size() && ahead.size() < kAhead) {
        ahead.push_back(ZELFileBuffer::CreateFromFile(options.files[queued++].c_str()));
        pool.append(ahead.back());
      }
    }
    ZELFileBuffer* buffer = ahead.front();
    ahead.pop_front();
    progress.update(i, options.files[i]);
    sweepFile(options.files[i], buffer, sink, options, totals);
    if (i == 0) rssFirst = currentRssKiB();
  }
  pool.reset();
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  progress.finish();
  wbStderr.flush();
  wbStderr.setTarget(previous);

  const Rates r = rates(totals, seconds);
  if (options.json) {
    printJson(totals, options, r, rssFirst, currentRssKiB());
  } else {
    printText(totals, options, r, rssFirst, currentRssKiB());
  }
  std::fflush(stdout);
  if (totals.unreadable) return kCliBadInput;
  if (totals.hangs || totals.leaks) return kCliFailure;
  return kCliOk;
}

const CliCommand command(
    90, "sweep", kUsage,
    "Takes every FILE, and every file named in each LIST (one name per line, '-'\n"
    "for standard input), through the preprocessing pass and the tree building as\n"
    "'tree' does, releasing each tree before the next file, and prints one summary:\n"
    "files, bytes, preprocessing and tree-building failures (grouped by message,\n"
    "the first N named; --show N, 5 by default), nodes, tree bytes (node objects\n"
    "and child arrays) per source byte, peak memory, wall time with MB/s (10^6\n"
    "bytes) and files/s. The library's diagnostics are counted, not shown. A file\n"
    "taking over S seconds (--hang-seconds, 10 by default) is reported as a hang;\n"
    "a tree that leaves nodes alive or keeps its source after its release, as a\n"
    "leak. --no-tree stops each file after its preprocessing, to time that stage\n"
    "alone. The next files are read ahead on the buffer pool's reader thread while\n"
    "one is processed; --no-read-ahead reads each on this thread when it is due.\n"
    "--json prints the summary as one JSON object. On a terminal, progress\n"
    "goes to standard error. Exit 0 when every file was read and none hung or\n"
    "leaked (failures are counted, not fatal), 1 on a hang or a leak, 2 on bad\n"
    "usage or an unreadable file or list.",
    run);

}  // namespace
