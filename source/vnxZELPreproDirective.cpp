#include "vnxZELPreproDirective.h"

#include <cstdlib>
#include <cstring>

#include "TAFatalError.h"
#include "platform/TAPool.h"
#include "source/vnxCommentScan.h"
#include "source/vnxTextStore.h"
#include "vnxCComment.h"
#include "vnxSourceFile.h"
#include "wbStream.h"

namespace {

TAPool<vnxZELPreproDirective> gDirectivePool;

const char* const kTypeNames[] = {"Unknown", "DefineSimple", "DefineFunction", "Include", "Conditional"};

// Where a directive scan stands: the position about to be read, its line and
// column, and the place of the character before it (the directive's last
// character when the scan stops here).
struct ScanState {
  int k;
  unsigned int line, col;
  unsigned int prevLine, prevCol;
  int backslashRun;  // backslashes immediately before k
};

void advance(const char* text, ScanState& s) {
  const char c = text[s.k];
  s.prevLine = s.line;
  s.prevCol = s.col;
  vnxscan::stepPosition(c, s.line, s.col);
  s.backslashRun = c == '\\' ? s.backslashRun + 1 : 0;
  ++s.k;
}

// A block comment inside the directive: recorded in the source's comments and
// stepped over as a whole, so a directive runs on past a comment that spans
// lines.
void skipEmbeddedComment(const char* text, vnxSourceFile* source, int outPos, ScanState& s) {
  vnxCComment* comment = vnxCComment::create(source);
  if (!comment) {
    advance(text, s);
    return;
  }
  if (comment->build(text, s.k, static_cast<int>(s.line), static_cast<int>(s.col), outPos) != 0) {
    comment->Release();
    advance(text, s);
    return;
  }
  const int last = comment->getCommentStringSize() - 1;
  const int end = comment->getPosOfCommentCharInRawStream(last);
  if (end < s.k) {  // cannot happen for text that holds "/*" at s.k
    comment->Release();
    advance(text, s);
    return;
  }
  s.prevLine = comment->getEndLineInRawStream();
  s.prevCol = comment->getEndColInRawStream();
  s.line = s.prevLine;
  s.col = s.prevCol;
  vnxscan::stepPosition(text[end], s.line, s.col);
  s.backslashRun = 0;
  s.k = end + 1;
  if (source) source->addComment(comment);
  else comment->Release();
}

// Scans the directive from s.k; answers the position of its last character
// (the NUL's when the text ends first) and leaves that character's place in
// s.prevLine / s.prevCol.
int scanDirectiveEnd(const char* text, vnxSourceFile* source, int outPos, ScanState& s) {
  char quote = 0;  // the quote of the literal the scan is in, 0 outside
  for (;;) {
    const char c = text[s.k];
    if (c == '\0') {
      s.prevLine = s.line;
      s.prevCol = s.col;
      return s.k;
    }
    // Characters that change nothing but the column are stepped over as a run.
    const size_t run = std::strcspn(text + s.k, quote == '"' ? "\"\\\n" : quote ? "'\\\n" : "\"'/\\\n");
    if (run > 0) {
      const unsigned int n = static_cast<unsigned int>(run);
      s.prevLine = s.line;
      s.prevCol = s.col + n - 1;
      s.col += n;
      s.backslashRun = 0;
      s.k += static_cast<int>(run);
      continue;
    }
    if (quote) {
      if (c == quote && s.backslashRun % 2 == 0) quote = 0;
    } else if (c == '"' || c == '\'') {
      quote = c;
    } else if (c == '/' && text[s.k + 1] == '/' && !(s.k > 0 && text[s.k - 1] == '\\')) {
      return s.k - 1;
    } else if (c == '/' && text[s.k + 1] == '*') {
      skipEmbeddedComment(text, source, outPos, s);
      continue;
    } else if (c == '\n' && !(s.k > 0 && text[s.k - 1] == '\\')) {
      return s.k - 1;
    }
    advance(text, s);
  }
}

char* copyText(const char* text, int size) {
  char* copy = static_cast<char*>(std::malloc(static_cast<size_t>(size) + 1));
  if (!copy) return nullptr;
  if (size > 0) std::memcpy(copy, text, static_cast<size_t>(size));
  copy[size] = '\0';
  return copy;
}

}  // namespace

vnxZELPreproDirective::vnxZELPreproDirective(vnxSourceFile* source) : _source(source) {}

vnxZELPreproDirective::~vnxZELPreproDirective() { resetDirective(); }

vnxZELPreproDirective* vnxZELPreproDirective::create(vnxSourceFile* source) {
  void* block = nullptr;
  vnxZELPreproDirective* directive = gDirectivePool.getNew(&block, source);
  if (directive) directive->_poolBlock = block;
  return directive;
}

int vnxZELPreproDirective::getPoolLiveCount() { return gDirectivePool.liveCount(); }
int vnxZELPreproDirective::getPoolBlockCount() { return gDirectivePool.blockCount(); }

int vnxZELPreproDirective::AddRef() {
  if (TAFatalError(_refCount <= 0, "vnxZELPreproDirective::AddRef on a released directive")) return _refCount;
  return ++_refCount;
}

int vnxZELPreproDirective::dropReference() {
  if (_refCount <= 0) {  // the report is called only when it has something to say
    TAFatalError(1, "vnxZELPreproDirective::Release on a released directive");
    return -1;
  }
  return --_refCount;
}

int vnxZELPreproDirective::Release() {
  const int count = dropReference();
  if (count == 0) gDirectivePool.release(this, _poolBlock);
  return count;
}

void vnxZELPreproDirective::releaseText() {
  if (_preproString) vnxtext::release(_preproString, static_cast<size_t>(_preproStringSize) + 1);
  _preproString = nullptr;
  _preproStringSize = 0;
}

void vnxZELPreproDirective::resetDirective() {
  releaseText();
  if (_directiveIdentifier) std::free(_directiveIdentifier);
  if (_lineTable) std::free(_lineTable);
  if (_colTable) std::free(_colTable);
  _defSource = nullptr;
  _directiveIdentifier = nullptr;
  _lineTable = nullptr;
  _colTable = nullptr;
  _outputPosition = 0;
  _beginLine = _beginCol = 0;
  _beginPos = 0;
  _endLine = _endCol = 0;
  _preproType = Unknown;
}

const char* vnxZELPreproDirective::IsA() const { return "vnxZELPreproDirective"; }

int vnxZELPreproDirective::build(const char* text, int pos, int line, int col, int outPos) {
  if (!text || pos < 0 || line < 1 || col < 1 || outPos < 0) return 1;
  // A rebuilt directive forgets its former text; its kind and identifier stay.
  releaseText();
  if (_lineTable) std::free(_lineTable);
  if (_colTable) std::free(_colTable);
  _lineTable = nullptr;
  _colTable = nullptr;
  _beginLine = static_cast<unsigned int>(line);
  _beginCol = static_cast<unsigned int>(col);
  _beginPos = pos;
  _outputPosition = outPos;

  ScanState s{pos, _beginLine, _beginCol, _beginLine, _beginCol, 0};
  const int last = scanDirectiveEnd(text, _source, outPos, s);
  const int size = last - pos + 1;
  _preproString = vnxtext::copy(text + pos, size < 0 ? 0 : size);
  if (!_preproString) return 1;
  _preproStringSize = size < 0 ? 0 : size;
  _endLine = size > 0 ? s.prevLine : _beginLine;
  _endCol = size > 0 ? s.prevCol : _beginCol;
  return 0;
}

void vnxZELPreproDirective::setDirectiveIdentifier(const char* identifier) {
  if (!identifier || !*identifier || _directiveIdentifier) return;
  _directiveIdentifier = copyText(identifier, static_cast<int>(std::strlen(identifier)));
}

void vnxZELPreproDirective::internalComputeLineOfPreproCharInRawStream() {
  vnxscan::buildPlaceTable(_preproString, _preproStringSize, _beginLine, true, _lineTable);
}

void vnxZELPreproDirective::internalComputeColOfPreproCharInRawStream() {
  vnxscan::buildPlaceTable(_preproString, _preproStringSize, _beginCol, false, _colTable);
}

unsigned int vnxZELPreproDirective::getLineOfPreproCharInRawStream(int k) {
  if (k > 0 && k < _preproStringSize - 1) internalComputeLineOfPreproCharInRawStream();
  return vnxscan::placeAt(k, _preproStringSize, _beginLine, _endLine, _lineTable);
}

unsigned int vnxZELPreproDirective::getColOfPreproCharInRawStream(int k) {
  if (k > 0 && k < _preproStringSize - 1) internalComputeColOfPreproCharInRawStream();
  return vnxscan::placeAt(k, _preproStringSize, _beginCol, _endCol, _colTable);
}

int vnxZELPreproDirective::getPosOfPreproCharInRawStream(int k) const {
  if (k < 0 || k > _preproStringSize - 1) return -1;
  return _beginPos + k;
}

void vnxZELPreproDirective::dump() {
  wbStdout << "#### vnxZELPreproDirective" << endl;
  wbStdout << "## preproString" << endl;
  wbStdout << (_preproString ? _preproString : "") << endl;
  const int type = static_cast<int>(_preproType);
  wbStdout << "## preproType : " << (type >= 0 && type <= 4 ? kTypeNames[type] : "Unknown") << endl;
  if (_directiveIdentifier) wbStdout << "## directiveIdentifier : " << _directiveIdentifier << endl;
}
