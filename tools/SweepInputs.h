// Shared by the commands that walk many files (sweep, mutate): collecting the
// file names from the command line and from list files.
#ifndef VNXPARSE_SWEEP_INPUTS_H
#define VNXPARSE_SWEEP_INPUTS_H

#include <string>
#include <vector>

// Appends the names listed in listFile, one per line ("-" reads standard
// input). Blank lines are skipped and a trailing carriage return is dropped.
// On failure writes "vnxparse: cannot read LIST" to standard error and
// answers false.
bool sweepReadList(const std::string& listFile, std::vector<std::string>& files);

// Answers the text with JSON's mandatory escapes (quote, backslash, control
// characters); bytes of 0x80 and above are copied, invalid UTF-8 becoming
// U+FFFD so that the result always parses.
std::string sweepJsonEscape(const std::string& text);

#endif
