// vnxparse: command-line front end of the vnxParser library.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <sstream>

#if defined(__GLIBC__)
#include <malloc.h>
#endif
#if defined(__linux__)
#include <sys/mman.h>
#include <unistd.h>
#endif

#include "CliCommand.h"

CliCommand::CliCommand(int order_, const char* name_, const char* usage_, const char* help_, Run run_)
    : order(order_), name(name_), usage(usage_), help(help_), run(run_) {
  all().push_back(this);
}

std::vector<const CliCommand*>& CliCommand::all() {
  static std::vector<const CliCommand*> commands;
  return commands;
}

bool cliReadFile(const std::string& name, std::string& text) {
  std::ifstream in(name, std::ios::binary);
  if (in) {
    std::ostringstream content;
    content << in.rdbuf();
    if (!in.bad()) {
      text = content.str();
      return true;
    }
  }
  std::cerr << "vnxparse: cannot read " << name << "\n";
  return false;
}

std::string cliEscape(const char* text, size_t length) {
  std::string out;
  out.reserve(length);
  for (size_t i = 0; i < length; ++i) {
    switch (text[i]) {
      case '\\': out += "\\\\"; break;
      case '\n': out += "\\n"; break;
      case '\r': out += "\\r"; break;
      case '\t': out += "\\t"; break;
      default: out += text[i]; break;
    }
  }
  return out;
}

namespace {

std::vector<const CliCommand*> sortedCommands() {
  std::vector<const CliCommand*> commands = CliCommand::all();
  std::sort(commands.begin(), commands.end(),
            [](const CliCommand* a, const CliCommand* b) { return a->order < b->order; });
  return commands;
}

void printHelp(std::ostream& out) {
  out << "vnxparse - read C, C++ and IDL sources with the vnxParser library\n\n"
         "Usage: vnxparse COMMAND [OPTIONS] FILE...\n"
         "       vnxparse --help\n\nCommands:\n";
  for (const CliCommand* c : sortedCommands()) {
    out << "\n  " << c->usage << "\n";
    std::istringstream lines(c->help);
    std::string line;
    while (std::getline(lines, line)) out << "      " << line << "\n";
  }
  out << "\nExit status: 0 success, 1 the library reported a failure, 2 bad usage or\n"
         "unreadable file, 3 the syntax tree could not be built.\n";
}

}  // namespace

// Every command reads file after file and frees each file's buffers and tree
// before the next. glibc's default policy hands such large freed blocks back
// to the kernel (trimming the heap top, unmapping big blocks), so every file
// would fault all its pages in again: a sixth of a sweep's time went there.
// Keeping them costs no more than the peak the largest file needs anyway.
static void keepFreedMemory() {
#if defined(__GLIBC__)
  mallopt(M_MMAP_THRESHOLD, 32 << 20);
  mallopt(M_TRIM_THRESHOLD, 256 << 20);
  // The file-buffer pool's reader thread allocates the texts the main thread
  // frees: in one arena they are reused at once, where an arena of the
  // reader's own would hold a second peak of its own.
  mallopt(M_ARENA_MAX, 1);
#endif
}

// A large file's tables, stream and tree are written once, page after page:
// on 4 KB pages every one of them is a fault, and the faults of the largest
// file's first touch were about a twelfth of a sweep. The heap is grown once,
// far enough for any ordinary peak (only address space: nothing is touched),
// and marked for transparent huge pages, which the kernel here gives only to
// ranges that ask. Growth past it still works, on small pages.
static void preferHugePages() {
#if defined(__GLIBC__) && defined(__linux__) && defined(MADV_HUGEPAGE)
  const size_t kReserve = size_t(192) << 20;
  const uintptr_t kHuge = uintptr_t(2) << 20;
  mallopt(M_TOP_PAD, static_cast<int>(kReserve));
  const uintptr_t from = reinterpret_cast<uintptr_t>(sbrk(0));
  // A request beyond the heap's top makes malloc extend it by the request
  // and the pad; freed, the extension stays as the heap's free top.
  // (The volatile keeps the compiler from dropping the unused pair.)
  void* volatile probe = std::malloc(size_t(1) << 20);
  std::free(probe);
  const uintptr_t to = reinterpret_cast<uintptr_t>(sbrk(0));
  mallopt(M_TOP_PAD, 128 << 10);
  const uintptr_t first = (from + kHuge - 1) & ~(kHuge - 1);
  const uintptr_t last = to & ~(kHuge - 1);
  if (last > first) madvise(reinterpret_cast<void*>(first), last - first, MADV_HUGEPAGE);
#endif
}

int main(int argc, char** argv) {
  keepFreedMemory();
  preferHugePages();
  if (argc < 2) {
    printHelp(std::cerr);
    return kCliBadInput;
  }
  const std::string command = argv[1];
  if (command == "--help" || command == "-h" || command == "help") {
    printHelp(std::cout);
    return kCliOk;
  }
  for (const CliCommand* c : CliCommand::all()) {
    if (command == c->name) return c->run(std::vector<std::string>(argv + 2, argv + argc));
  }
  std::cerr << "vnxparse: unknown command '" << command << "' (see vnxparse --help)\n";
  return kCliBadInput;
}
