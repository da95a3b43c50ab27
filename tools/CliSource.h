// Loading and preprocessing one file for the commands that need a stream.
#ifndef VNXPARSE_CLI_SOURCE_H
#define VNXPARSE_CLI_SOURCE_H

#include <string>
#include <vector>

class vnxSourceFile;

struct CliPreproOptions {
  std::vector<std::string> expand;  // macros registered before the pass
  std::string file;
};

// Parses "[--expand NAME]... FILE"; on a bad command line writes the usage to
// standard error and answers false.
bool cliParsePreproArgs(const std::vector<std::string>& args, const char* usage, CliPreproOptions& options);

// Registers the macros, reads the file and runs the pass. Answers the source
// (the caller releases it) or null when the file cannot be read (the message
// is written); passStatus receives preProcess's result.
vnxSourceFile* cliPreprocess(const CliPreproOptions& options, int& passStatus);

// Parses the arguments, preprocesses the file and hands the source to body,
// which answers the command's status (passStatus is preProcess's result).
// Answers kCliBadInput on a bad command line or an unreadable file.
typedef int (*CliSourceBody)(vnxSourceFile& source, int passStatus);
int cliRunOnSource(const std::vector<std::string>& args, const char* usage, CliSourceBody body);

#endif
