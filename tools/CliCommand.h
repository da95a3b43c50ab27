// Command registry of the vnxparse tool. Each command lives in its own
// cmd_*.cpp and registers itself with a static CliCommand object, so adding a
// command never touches main.cpp.
#ifndef VNXPARSE_CLI_COMMAND_H
#define VNXPARSE_CLI_COMMAND_H

#include <string>
#include <vector>

struct CliCommand {
  typedef int (*Run)(const std::vector<std::string>& args);  // args exclude the command name

  // order sorts the commands in --help; usage is the synopsis line; help the
  // explanation (may span lines).
  CliCommand(int order, const char* name, const char* usage, const char* help, Run run);

  int order;
  const char* name;
  const char* usage;
  const char* help;
  Run run;

  static std::vector<const CliCommand*>& all();
};

// Exit statuses shared by the commands.
enum CliStatus {
  kCliOk = 0,
  kCliFailure = 1,    // the library reported a failure
  kCliBadInput = 2,   // bad command line, missing or unreadable file
  kCliBuildFailed = 3 // the tree could not be built
};

// Reads a whole file into text. On failure writes "vnxparse: cannot read FILE"
// to standard error and answers false.
bool cliReadFile(const std::string& name, std::string& text);

// Escapes backslash, newline, carriage return and tab as \\ \n \r \t.
std::string cliEscape(const char* text, size_t length);

#endif
