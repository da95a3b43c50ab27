// vnxparse comments: the comments the preprocessing pass recorded.
#include <iostream>

#include "CliCommand.h"
#include "CliSource.h"
#include "vnxComment.h"
#include "vnxSourceFile.h"

namespace {

const char kUsage[] = "vnxparse comments [--expand NAME]... FILE";

int body(vnxSourceFile& file, int status) {
  vnxSourceFile* source = &file;
  ZELListPtr<vnxComment> comments;
  source->getCommentList(comments);
  for (int i = 1; i <= comments.Size(); ++i) {
    vnxComment* c = comments[i];
    const int last = c->getCommentStringSize() - 1;
    std::cout << c->IsA() << '\t' << c->getLineOfCommentCharInRawStream(0) << ':'
              << c->getColOfCommentCharInRawStream(0) << '\t' << c->getLineOfCommentCharInRawStream(last) << ':'
              << c->getColOfCommentCharInRawStream(last) << '\t'
              << cliEscape(c->getCommentString(), static_cast<size_t>(c->getCommentStringSize())) << '\n';
    c->Release();
  }
  return status == 0 ? kCliOk : kCliFailure;
}

const CliCommand command(
    30, "comments", kUsage,
    "Preprocesses FILE as 'prepro' does and prints every comment it recorded, in\n"
    "raw-position order, one per line:\n"
    "  KIND<TAB>LINE:COL<TAB>ENDLINE:ENDCOL<TAB>TEXT\n"
    "KIND is vnxCComment (block comments, and dead conditional branches, which are\n"
    "recorded at 1:1) or vnxCppComment (line comments); the positions are those of\n"
    "the first and last characters; TEXT is escaped as in 'tokens'.",
    [](const std::vector<std::string>& args) { return cliRunOnSource(args, kUsage, body); });

}  // namespace
