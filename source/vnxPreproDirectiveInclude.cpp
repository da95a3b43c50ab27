#include "vnxPreproDirectiveInclude.h"

#include <cstdlib>
#include <cstring>

#include "platform/TAPool.h"
#include "source/vnxCommentScan.h"
#include "source/vnxDiag.h"
#include "source/vnxTextStore.h"
#include "vnxSourceFile.h"
#include "wbStream.h"

namespace {

TAPool<vnxPreproDirectiveInclude> gIncludePool;

const char kIn[] = " in vnxPreproDirectiveInclude::buildIncludeString";

// The include string holds no NUL, so its length gives back its block size.
char* copyRange(const char* begin, int length) { return vnxtext::copy(begin, length); }

void releaseRange(char* text) {
  if (text) vnxtext::release(text, std::strlen(text) + 1);
}

// The first '"' or '>' from k (either closes either form); -1 when none.
int findCloser(const char* text, int k) {
  for (; text[k] != '\0'; ++k)
    if (text[k] == '"' || text[k] == '>') return k;
  return -1;
}

}  // namespace

vnxPreproDirectiveInclude::vnxPreproDirectiveInclude(vnxSourceFile* source) : vnxZELPreproDirective(source) {
  _preproType = Include;
}

vnxPreproDirectiveInclude::~vnxPreproDirectiveInclude() { releaseRange(_includeString); }

vnxPreproDirectiveInclude* vnxPreproDirectiveInclude::create(vnxSourceFile* source) {
  void* block = nullptr;
  vnxPreproDirectiveInclude* directive = gIncludePool.getNew(&block, source);
  if (directive) directive->_poolBlock = block;
  return directive;
}

int vnxPreproDirectiveInclude::getPoolLiveCount() { return gIncludePool.liveCount(); }
int vnxPreproDirectiveInclude::getPoolBlockCount() { return gIncludePool.blockCount(); }

const char* vnxPreproDirectiveInclude::IsA() const { return "vnxPreproDirectiveInclude"; }

int vnxPreproDirectiveInclude::Release() {
  const int count = dropReference();
  if (count == 0) gIncludePool.release(this, _poolBlock);
  return count;
}

int vnxPreproDirectiveInclude::build(const char* text, int pos, int line, int col, int outPos) {
  if (vnxZELPreproDirective::build(text, pos, line, col, outPos) != 0) return 1;
  return buildIncludeString();
}

int vnxPreproDirectiveInclude::buildIncludeString() {
  releaseRange(_includeString);
  _includeString = nullptr;
  const char* text = _preproString;
  if (!text || text[0] == '\0') {
    vnxdiag::plain(ZELString(" -> !! Bad input") + kIn);
    return 1;
  }
  if (text[0] != '#') {
    vnxdiag::plain(ZELString(" -> !! Bad Position") + kIn);
    return 1;
  }
  int k = 1;
  while (vnxscan::isBlankOrTab(text[k])) ++k;
  if (text[k] == '\0') {
    vnxdiag::plain(ZELString(" -> !! keyword include not found") + kIn);
    return 1;
  }
  for (int letters = 0; letters < 7 && text[k] != '\0'; ++letters) ++k;
  k = vnxscan::skipLayoutAndContinuations(text, k);
  // Nothing named on the line: the directive stands, with no include string.
  if (text[k] == '\n' || text[k] == '\0') return 0;

  if (text[k] != '"' && text[k] != '<') {  // a macro-named include keeps the whole rest
    _includeString = copyRange(text + k, static_cast<int>(std::strlen(text + k)));
    return _includeString ? 0 : 1;
  }
  const int begin = k + 1;
  int end = text[begin] == '\0' ? -1 : findCloser(text, begin);
  if (end < 0) {
    const char* file = _source ? _source->GetName() : "";
    vnxdiag::plain(ZELString(" !! include syntax in invalid (") + file + ":" + toString(static_cast<int>(_beginLine)) +
                   ") : " + text);
    end = begin + static_cast<int>(std::strlen(text + begin));
  }
  if (end == begin) return 0;  // "" or <>: no name to look for
  _includeString = copyRange(text + begin, end - begin);
  return _includeString ? 0 : 1;
}

void vnxPreproDirectiveInclude::dump() {
  vnxZELPreproDirective::dump();
  wbStdout << "## IncludeString :" << (_includeString ? _includeString : "") << endl;
}
