// vnxparse tokens: the tokenizer's view of a file, one token per line.
#include <iostream>

#include "CliCommand.h"
#include "TAFileName.h"
#include "vnxToken.h"
#include "vnxTokenizer.h"

namespace {

const char kUsage[] = "vnxparse tokens FILE";

int run(const std::vector<std::string>& args) {
  if (args.size() != 1 || args[0].empty() || (args[0][0] == '-' && args[0] != "-")) {
    std::cerr << "usage: " << kUsage << "\n";
    return kCliBadInput;
  }
  // A directory opens as a stream that reads as empty: refuse it like any
  // unreadable file.
  if (TAFileName(args[0].c_str()).IsDirectory()) {
    std::cerr << "vnxparse: cannot read " << args[0] << "\n";
    return kCliBadInput;
  }
  std::string text;
  if (!cliReadFile(args[0], text)) return kCliBadInput;
  // The tokenizer stops at the first NUL byte of the file, by design.
  vnxTokenizer tokenizer(text.c_str());
  vnxTokenIterator it = tokenizer.getTokenIterator();
  vnxToken token;
  while (it.getNextToken(token)) {
    std::cout << it.getTokenPosition() << '\t' << token.getKind() << '\t'
              << cliEscape(token.getStart(), token.getLength()) << '\n';
  }
  return kCliOk;
}

const CliCommand command(
    10, "tokens", kUsage,
    "Cuts the raw text of FILE (no preprocessing) into tokens with the library's\n"
    "tokenizer and prints one line per token:\n"
    "  OFFSET<TAB>KIND<TAB>TEXT\n"
    "OFFSET is the token's 0-based byte offset in the file, KIND its kind number\n"
    "(47 identifier, 48 string, 52 newline, 53/54 comments, 55 number, 56\n"
    "unknown character, ...), TEXT its characters with backslash, newline,\n"
    "carriage return and tab written as \\\\ \\n \\r \\t. Blanks, tabs and carriage\n"
    "returns between tokens are skipped; the text ends at the first NUL byte.",
    run);

}  // namespace
