#include "CliSource.h"

#include <iostream>

#include "CliCommand.h"
#include "TAFileName.h"
#include "ZELFileBuffer.h"
#include "vnxSourceFile.h"

bool cliParsePreproArgs(const std::vector<std::string>& args, const char* usage, CliPreproOptions& options) {
  for (size_t i = 0; i < args.size(); ++i) {
    if (args[i] == "--expand") {
      if (i + 1 >= args.size()) break;
      options.expand.push_back(args[++i]);
    } else if (options.file.empty() && (args[i].empty() || args[i][0] != '-' || args[i] == "-")) {
      options.file = args[i];
    } else {
      options.file.clear();
      break;
    }
  }
  if (options.file.empty()) {
    std::cerr << "usage: " << usage << "\n";
    return false;
  }
  return true;
}

vnxSourceFile* cliPreprocess(const CliPreproOptions& options, int& passStatus) {
  for (const std::string& name : options.expand) vnxSourceFile::addMacroToExpand(name.c_str());
  ZELFileBuffer* buffer = ZELFileBuffer::CreateFromFile(options.file.c_str());
  if (!buffer->isReadable() || TAFileName(options.file.c_str()).IsDirectory()) {
    buffer->destroy();
    std::cerr << "vnxparse: cannot read " << options.file << "\n";
    return nullptr;
  }
  vnxSourceFile* source = new vnxSourceFile(buffer, nullptr, TAFileName());
  passStatus = source->preProcess();
  return source;
}

int cliRunOnSource(const std::vector<std::string>& args, const char* usage, CliSourceBody body) {
  CliPreproOptions options;
  if (!cliParsePreproArgs(args, usage, options)) return kCliBadInput;
  int passStatus = 0;
  vnxSourceFile* source = cliPreprocess(options, passStatus);
  if (!source) return kCliBadInput;
  const int status = body(*source, passStatus);
  source->Release();
  return status;
}
