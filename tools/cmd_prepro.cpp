// vnxparse prepro: the preprocessed stream of one file.
#include <iostream>

#include "CliCommand.h"
#include "CliSource.h"
#include "vnxSourceFile.h"

namespace {

const char kUsage[] = "vnxparse prepro [--expand NAME]... FILE";

int body(vnxSourceFile& file, int status) {
  vnxSourceFile* source = &file;
  if (source->GetStream()) std::cout.write(source->GetStream(), source->GetSize());
  std::cout << '\n';
  return status == 0 ? kCliOk : kCliFailure;
}

const CliCommand command(
    20, "prepro", kUsage,
    "Preprocesses FILE on its own (no include directories, no default header) and\n"
    "prints the preprocessed stream followed by one newline. Each --expand NAME\n"
    "registers a macro to expand before the pass; other macros are never expanded.\n"
    "Diagnostics go to standard error. Exit 0 when the pass succeeded, 1 when it failed.",
    [](const std::vector<std::string>& args) { return cliRunOnSource(args, kUsage, body); });

}  // namespace
