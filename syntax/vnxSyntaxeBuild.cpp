// Build of a File, Header or TAPBloc node: the stretch is cut into brace
// blocks and instructions, blocks are built recursively (one C++ frame per
// level, hence the depth cap) and instructions are handed to vnxInstruction.
#include "syntax/vnxSyntaxeAccess.h"
#include "syntax/vnxSyntaxeScan.h"
#include "vnxInstruction.h"
#include "vnxSourceFile.h"
#include "vnxSyntaxe.h"

namespace {

ZELString lineAndCol(vnxSourceFile* source, int offset) {
  int line = 0, col = 0;
  source->GetPos(offset, line, col);
  return toString(line) + " col " + toString(col);
}

}  // namespace

// Attaches child (created by this builder, count 1) and builds it when asked;
// the builder's own hold is dropped either way, the father keeps the child.
// Answers the child's build status.
static int attachChild(vnxSyntaxe* father, vnxSyntaxe* child, bool build) {
  if (!child) return 0;
  vnxSyntaxeAccess::adopt(father, child);
  const int status = build ? child->Build(0) : 0;
  vnxSyntaxeAccess::builtByBuilder();
  return status;
}

int vnxSyntaxe::Build(int withNullInstructions) {
  if (_depth > kMaxDepth) {
    ErrMsg = "Depth too high when building a vnxSyntaxe : " + toString(_depth);
    return 1;
  }
  if (!_source || !_streamAtBegin) return 1;
  if (_size < 1) return 0;
  const char* s = _source->GetStream();
  const vnxscan::MatchMemoScope memo(s, _source->GetSize());
  const bool buildChildren = _type != kHeader;
  int begin = _begin;
  int size = _size;
  for (;;) {
    while (size > 0 && s[begin] == ' ') ++begin, --size;
    while (size > 0 && s[begin + size - 1] == ' ') --size;
    if (size <= 0) return 0;
    const int last = begin + size - 1;

    if (s[begin] == '{') {
      const int end = SearchEndOfTAPBloc(s, begin, last, 0);
      if (end == 0) {
        ErrMsg = "Missing TAPBloc end at line " + lineAndCol(_source, begin) + " length=" + toString(size);
        return 1;
      }
      vnxSyntaxe* block = CreateTAPSyntaxe(kTAPBloc, this, begin + 1, end - begin - 1, _childCount + 1);
      if (attachChild(this, block, buildChildren)) return 1;
      size -= end + 1 - begin;
      begin = end + 1;
      continue;
    }

    int end = vnxscan::endOfInstruction(s, begin, last);
    if (end == vnxscan::kFailed) {
      ErrMsg = "Missing Instruction end for Instruction starting line " + lineAndCol(_source, begin);
      return 1;
    }
    if (end > last) end = last;
    if (end < begin) {
      // Only a '{' at begin gives this, and blocks are taken above; still make
      // sure the walk moves on.
      const int step = end + 1 > begin ? end + 1 - begin : 1;
      begin += step;
      size -= step;
      continue;
    }
    int instructionSize = end - begin;
    int type = kInstruction;
    if (s[end] != ';' && s[end] != ':') {
      // Ends with a block's '}' or runs to the end of the stretch.
      instructionSize = end - begin + 1;
      if (_type == kFile && end < last && s[end + 1] == '{') type = kDeclaration;
    } else if (end == begin) {
      if (withNullInstructions) attachChild(this, CreateTAPSyntaxe(kSyntaxeNULL, this, begin, 1, _childCount + 1), false);
      ++begin;
      --size;
      continue;
    }
    vnxSyntaxe* instruction = vnxInstruction::CreateTAPInstruction(this, begin, instructionSize, _childCount + 1);
    if (instruction && type != kInstruction) vnxSyntaxeAccess::setType(instruction, type);
    if (attachChild(this, instruction, buildChildren)) return 1;
    size -= end + 1 - begin;
    begin = end + 1;
  }
}
