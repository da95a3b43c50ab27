// vnxparse prepro: the preprocessed stream of one file.
#include <iostream>

#include "CliCommand.h"
#include "CliSource.h"
#include "vnxSourceFile.h"

namespace {

const char kUsage[] = "vnxparse prepro [--expand NAME]... FILE";

int run(const std::vector<std::string>& args) {
  CliPreproOptions options;
  if (!cliParsePreproArgs(args, kUsage, options)) return kCliBadInput;
  int status = 0;
  vnxSourceFile* source = cliPreprocess(options, status);
  if (!source) return kCliBadInput;
  if (source->GetStream()) std::cout.write(source->GetStream(), source->GetSize());
  std::cout << '\n';
  source->Release();
  return status == 0 ? kCliOk : kCliFailure;
}

const CliCommand command(
    20, "prepro", kUsage,
    "Preprocesses FILE on its own (no include directories, no default header) and\n"
    "prints the preprocessed stream followed by one newline. Each --expand NAME\n"
    "registers a macro to expand before the pass; other macros are never expanded.\n"
    "Diagnostics go to standard error. Exit 0 when the pass succeeded, 1 when it failed.",
    run);

}  // namespace
