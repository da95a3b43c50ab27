// libFuzzer target: the preprocessing pass over any text, with a few macros
// registered for expansion (names the seed files define, and short ones the
// mutator finds easily). After the pass the stream, the position map and the
// comment, directive and group lists are read back; releasing the file must
// bring every pool back to its count before the input.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "FuzzSupport.h"
#include "TAFileName.h"
#include "ZELLists.h"
#include "ZELString.h"
#include "vnxComment.h"
#include "vnxCommentAnalyzer.h"
#include "vnxPreproConditionalGroup.h"
#include "vnxSourceFile.h"
#include "vnxZELPreproDirective.h"

namespace {

using vnxfuzz::require;

const char* const kMacros[] = {"GEO_SQUARE", "GEO_SAMPLES_MIN", "MAX", "F", "EMPTY", "LONG_ONE",
                               "TAIL",       "VERSION",         "A",   "B", "M"};

// Every stream character maps to a raw character, and its line and column
// come from there.
void checkStream(vnxSourceFile* source) {
  const char* stream = source->GetStream();
  const int size = source->GetSize();
  if (!stream) {
    require(size == 0, "a size without a stream");
    return;
  }
  require(size >= 0 && std::strlen(stream) == static_cast<size_t>(size), "the stream size is not its length");
  const int* map = source->getPositionMap();
  const int rawSize = source->getRawSize();
  for (int pos = 0; pos < size; ++pos) {
    require(map[pos] >= 0 && map[pos] < rawSize, "a stream character maps outside the raw text");
    int line = 0, col = 0;
    require(source->GetPos(pos, line, col) == 0 && line >= 1 && col >= 1, "GetPos failed inside the stream");
  }
  if (size > 0) {
    source->GetPoint(0);
    source->GetPoint(size - 1);
  }
  int line = 0, col = 0;
  require(source->GetPos(size, line, col) == 1, "GetPos succeeded past the stream");
  require(source->getPosOfPreProcessedCharInRawStream(-1) == -1 || !map, "a raw position before the stream");
}

void readComments(vnxSourceFile* source) {
  ZELListPtr<vnxComment> comments;
  source->getCommentList(comments);
  for (int i = 1; i <= comments.Size(); ++i) {
    vnxComment* comment = comments[i];
    const int length = comment->getCommentStringSize();
    if (length > 0) {
      comment->getLineOfCommentCharInRawStream(length / 2);
      comment->getColOfCommentCharInRawStream(length - 1);
      comment->getPosOfCommentCharInRawStream(length / 2);
    }
    vnxCommentAnalyzer analyzer(comment);
    char* value = nullptr;
    if (analyzer.getTagValue("COPYRIGHT", value) == 0) std::free(value);
    ZELListVal<ZELString> values;
    analyzer.getTagValues("@", values);
    comment->Release();
  }
}

void readDirectives(vnxSourceFile* source) {
  ZELListPtr<vnxZELPreproDirective> directives;
  source->getPreproDirectiveList(directives);
  for (int i = 1; i <= directives.Size(); ++i) {
    vnxZELPreproDirective* directive = directives[i];
    directive->dump();
    const int length = directive->getPreproStringSize();
    if (length > 0) {
      directive->getLineOfPreproCharInRawStream(length / 2);
      directive->getColOfPreproCharInRawStream(length - 1);
    }
    directive->Release();
  }
  ZELListPtr<vnxPreproConditionalGroup> groups;
  source->getPreproConditionalGroupList(groups);
  for (int i = 1; i <= groups.Size(); ++i) {
    groups[i]->dump();
    groups[i]->Release();
  }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  vnxfuzz::setUpProcess();
  for (const char* name : kMacros) vnxSourceFile::addMacroToExpand(name);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const vnxfuzz::Text text(data, size);
  const vnxfuzz::PoolCounts baseline = vnxfuzz::PoolCounts::now();
  {
    vnxSourceFile* source = new vnxSourceFile(text.c_str(), nullptr, TAFileName());
    ZELListVal<ZELString> includes;
    source->getIncludeList(includes);  // the raw scan, before the pass
    const int status = source->preProcess();
    require(status == 0 || status == 1, "preProcess answered neither 0 nor 1");
    if (status == 0) checkStream(source);
    require(source->preProcess() == 1, "a second preProcess did not fail");
    includes.RemoveAll();
    source->getIncludeList(includes);
    for (const char* name : kMacros) source->getDefineDirective(name);
    readComments(source);
    readDirectives(source);
    source->Release();
  }
  vnxfuzz::requireSamePoolCounts(baseline);
  return 0;
}
