// vnxparse tree: the dump of a file's syntax tree.
#include <iostream>

#include "CliCommand.h"
#include "CliSource.h"
#include "vnxSourceFile.h"
#include "vnxSyntaxe.h"
#include "wbStream.h"

namespace {

const char kUsage[] = "vnxparse tree [--expand NAME]... FILE";

int body(vnxSourceFile& file, int status) {
  vnxSourceFile* source = &file;
  if (status != 0) return kCliFailure;
  vnxSyntaxe* root = vnxSyntaxe::CreateTAPSyntaxe(1, source, 0, source->GetSize(), 1);
  if (!root) {
    std::cerr << "vnxparse: cannot create the tree\n";
    return kCliBuildFailed;
  }
  int result = kCliOk;
  if (root->Build(0) != 0) {
    std::cerr << vnxSyntaxe::GetErrMsg() << "\n";
    result = kCliBuildFailed;
  } else {
    // The node dump writes to the error stream; this command's output is the dump.
    std::ostream* previous = wbStderr.setTarget(&std::cout);
    root->Dump("", 1);
    wbStderr.flush();
    wbStderr.setTarget(previous);
  }
  root->Release();
  return result;
}

const CliCommand command(
    50, "tree", kUsage,
    "Preprocesses FILE as 'prepro' does, builds the root node (type 1, \"File\")\n"
    "over the whole preprocessed stream as the loader does, and prints its dump\n"
    "(every node, indented by two blanks per level). On a build failure the\n"
    "failure message goes to standard error and the exit status is 3.",
    [](const std::vector<std::string>& args) { return cliRunOnSource(args, kUsage, body); });

}  // namespace
