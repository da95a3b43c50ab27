// vnxparse directives: the dump of every directive and conditional group.
#include <iostream>

#include "CliCommand.h"
#include "CliSource.h"
#include "vnxPreproConditionalGroup.h"
#include "vnxSourceFile.h"
#include "vnxZELPreproDirective.h"
#include "wbStream.h"

namespace {

const char kUsage[] = "vnxparse directives [--expand NAME]... FILE";

int body(vnxSourceFile& file, int status) {
  vnxSourceFile* source = &file;
  ZELListPtr<vnxZELPreproDirective> directives;
  source->getPreproDirectiveList(directives);
  for (int i = 1; i <= directives.Size(); ++i) {
    directives[i]->dump();
    directives[i]->Release();
  }
  ZELListPtr<vnxPreproConditionalGroup> groups;
  source->getPreproConditionalGroupList(groups);
  for (int i = 1; i <= groups.Size(); ++i) {
    groups[i]->dump();
    groups[i]->Release();
  }
  wbStdout.flush();
  return status == 0 ? kCliOk : kCliFailure;
}

const CliCommand command(
    40, "directives", kUsage,
    "Preprocesses FILE as 'prepro' does, then prints the dump of every directive\n"
    "in the order the pass met them (the directives of conditional groups\n"
    "included), followed by the dump of every conditional group.",
    [](const std::vector<std::string>& args) { return cliRunOnSource(args, kUsage, body); });

}  // namespace
