#include "vnxComment.h"

#include <cstdlib>
#include <cstring>

#include "TAFatalError.h"
#include "TAPerfoAv.h"
#include "platform/TAPool.h"
#include "source/vnxCommentScan.h"
#include "source/vnxTextStore.h"
#include "vnxCComment.h"
#include "vnxCppComment.h"
#include "vnxResources.h"

namespace {

TAPool<vnxCComment> gBlockCommentPool;
TAPool<vnxCppComment> gLineCommentPool;

// Counters kept while performance measuring is on: one sample per comment
// built from the text, and its length in bytes.
struct CommentCounters {
  TAPerfoAv* comments;
  TAPerfoAv* bytes;
};

CommentCounters* countersFor(int lineComment) {
  static CommentCounters block = {nullptr, nullptr};
  static CommentCounters line = {nullptr, nullptr};
  if (!vnxResources::isPerfosMeasureActivated()) return nullptr;
  CommentCounters& c = lineComment ? line : block;
  if (!c.comments) {
    c.comments = TAPerfoAv::Create(lineComment ? "Line comments read" : "Block comments read");
    c.bytes = TAPerfoAv::Create(lineComment ? "Line comment bytes read" : "Block comment bytes read");
  }
  return &c;
}

void countComment(int lineComment, int size) {
  CommentCounters* c = countersFor(lineComment);
  if (!c) return;
  c->comments->Add(1);
  c->bytes->Add(size);
}

bool badPlace(const char* text, int pos, int line, int col, int outPos) {
  return !text || pos < 0 || line < 1 || col < 1 || outPos < 0;
}

// Walks text from pos to last (inclusive, last >= pos - 1) counting lines and
// columns from (line, col); answers the place of the last character.
void placeOfLast(const char* text, int pos, int last, unsigned int& line, unsigned int& col) {
  if (last <= pos) return;
  const char* p = text + pos;
  const char* const stop = text + last;
  const char* lastNewline = nullptr;
  while (const void* hit = std::memchr(p, '\n', static_cast<size_t>(stop - p))) {
    lastNewline = static_cast<const char*>(hit);
    ++line;
    p = lastNewline + 1;
  }
  if (lastNewline) col = static_cast<unsigned int>(stop - lastNewline);
  else col += static_cast<unsigned int>(last - pos);
}

// End of a block comment opened at pos: the first '/' after a '*' that stands
// more than two characters after pos; the last character before the NUL when
// there is none.
int blockCommentEnd(const char* text, int pos) {
  for (const char* p = text + pos; (p = std::strchr(p, '/')) != nullptr; ++p) {
    if (p - text > pos + 2 && p[-1] == '*') return static_cast<int>(p - text);
  }
  return pos + static_cast<int>(std::strlen(text + pos)) - 1;
}

// End of a line comment opened at pos: the character before the first newline
// that no backslash precedes, or the last character of the text. One pass
// also gives the place of that character from (line, col): the newlines
// before it are the continued ones.
int lineCommentEnd(const char* text, int pos, unsigned int& line, unsigned int& col) {
  const char* p = text + pos;
  const char* lastBreak = nullptr;      // the last continued newline
  const char* previousBreak = nullptr;  // the one before it
  unsigned int breaks = 0;
  int last;
  for (;;) {
    const char* newline = std::strchr(p, '\n');
    if (!newline) {
      last = static_cast<int>(p - text + std::strlen(p)) - 1;
      break;
    }
    const int k = static_cast<int>(newline - text);
    if (!(k > pos && text[k - 1] == '\\')) {
      last = k - 1;
      break;
    }
    previousBreak = lastBreak;
    lastBreak = newline;
    ++breaks;
    p = newline + 1;
  }
  if (last <= pos) return last;
  // A continued newline may itself be the last character (an empty line
  // after it, or the end of the text): it does not count for its own place.
  if (lastBreak == text + last) {
    lastBreak = previousBreak;
    --breaks;
  }
  if (lastBreak) {
    line += breaks;
    col = static_cast<unsigned int>(text + last - lastBreak);
  } else {
    col += static_cast<unsigned int>(last - pos);
  }
  return last;
}

}  // namespace

// --- base ---------------------------------------------------------------------

vnxComment::~vnxComment() { resetComment(); }

int vnxComment::AddRef() {
  if (TAFatalError(_refCount <= 0, "vnxComment::AddRef on a released comment")) return _refCount;
  return ++_refCount;
}

// The kind is known from the line-comment flag, which saves a virtual call on
// the hottest release path.
int vnxComment::Release() {
  // The report is called only when it has something to say: this is the
  // release path of every comment of every file.
  if (_refCount <= 0) {
    TAFatalError(1, "vnxComment::Release on a released comment");
    return -1;
  }
  if (--_refCount > 0) return _refCount;
  if (_lineComment) gLineCommentPool.release(static_cast<vnxCppComment*>(this), _poolBlock);
  else gBlockCommentPool.release(static_cast<vnxCComment*>(this), _poolBlock);
  return 0;
}

void vnxComment::resetComment() {
  if (_commentString) vnxtext::release(_commentString, static_cast<size_t>(_commentStringSize) + 1);
  if (_lineTable) std::free(_lineTable);
  if (_colTable) std::free(_colTable);
  _commentString = nullptr;
  _commentStringSize = 0;
  _lineTable = nullptr;
  _colTable = nullptr;
  _outputPosition = 0;
  _beginLine = _beginCol = 0;
  _beginPos = 0;
  _endLine = _endCol = 0;
}

int vnxComment::record(const char* text, int pos, int size, int line, int col, unsigned int endLine,
                       unsigned int endCol, int outPos) {
  // A comment is built once, fresh from its pool: there is nothing to free,
  // and every field is written below.
  if (_commentString || _lineTable || _colTable) resetComment();
  char* copy = vnxtext::copy(text + pos, size);
  if (!copy) return 1;
  _commentString = copy;
  _commentStringSize = size;
  _beginLine = static_cast<unsigned int>(line);
  _beginCol = static_cast<unsigned int>(col);
  _beginPos = pos;
  _endLine = endLine;
  _endCol = endCol;
  _outputPosition = outPos;
  return 0;
}

int vnxComment::buildFromString(const char* string, int line, int col, int pos, int outPos) {
  if (badPlace(string, pos, line, col, outPos) || string[0] == '\0') return 1;
  const int size = static_cast<int>(std::strlen(string));
  unsigned int endLine = static_cast<unsigned int>(line);
  unsigned int endCol = static_cast<unsigned int>(col);
  placeOfLast(string, 0, size - 1, endLine, endCol);
  if (record(string, 0, size, line, col, endLine, endCol, outPos) != 0) return 1;
  _beginPos = pos;
  return 0;
}

void vnxComment::internalComputeLineOfCommentCharInRawStream() {
  vnxscan::buildPlaceTable(_commentString, _commentStringSize, _beginLine, true, _lineTable);
}

void vnxComment::internalComputeColOfCommentCharInRawStream() {
  vnxscan::buildPlaceTable(_commentString, _commentStringSize, _beginCol, false, _colTable);
}

unsigned int vnxComment::getLineOfCommentCharInRawStream(int k) {
  if (k > 0 && k < _commentStringSize - 1) internalComputeLineOfCommentCharInRawStream();
  return vnxscan::placeAt(k, _commentStringSize, _beginLine, _endLine, _lineTable);
}

unsigned int vnxComment::getColOfCommentCharInRawStream(int k) {
  if (k > 0 && k < _commentStringSize - 1) internalComputeColOfCommentCharInRawStream();
  return vnxscan::placeAt(k, _commentStringSize, _beginCol, _endCol, _colTable);
}

int vnxComment::getPosOfCommentCharInRawStream(int k) const {
  if (k < 0 || k > _commentStringSize - 1) return -1;
  return _beginPos + k;
}

// --- block comments -------------------------------------------------------------

vnxCComment* vnxCComment::create(vnxSourceFile* source) {
  void* block = nullptr;
  vnxCComment* comment = gBlockCommentPool.getNew(&block, source);
  if (comment) comment->_poolBlock = block;
  return comment;
}

int vnxCComment::getPoolLiveCount() { return gBlockCommentPool.liveCount(); }
int vnxCComment::getPoolBlockCount() { return gBlockCommentPool.blockCount(); }

int vnxCComment::build(const char* text, int pos, int line, int col, int outPos) {
  if (badPlace(text, pos, line, col, outPos)) return 1;
  const int last = blockCommentEnd(text, pos);
  unsigned int endLine = static_cast<unsigned int>(line);
  unsigned int endCol = static_cast<unsigned int>(col);
  placeOfLast(text, pos, last, endLine, endCol);
  if (record(text, pos, last - pos + 1, line, col, endLine, endCol, outPos) != 0) return 1;
  countComment(0, _commentStringSize);
  return 0;
}

// --- line comments --------------------------------------------------------------

vnxCppComment* vnxCppComment::create(vnxSourceFile* source) {
  void* block = nullptr;
  vnxCppComment* comment = gLineCommentPool.getNew(&block, source);
  if (comment) comment->_poolBlock = block;
  return comment;
}

int vnxCppComment::getPoolLiveCount() { return gLineCommentPool.liveCount(); }
int vnxCppComment::getPoolBlockCount() { return gLineCommentPool.blockCount(); }

int vnxCppComment::build(const char* text, int pos, int line, int col, int outPos) {
  if (badPlace(text, pos, line, col, outPos)) return 1;
  unsigned int endLine = static_cast<unsigned int>(line);
  unsigned int endCol = static_cast<unsigned int>(col);
  const int last = lineCommentEnd(text, pos, endLine, endCol);
  if (record(text, pos, last - pos + 1, line, col, endLine, endCol, outPos) != 0) return 1;
  countComment(1, _commentStringSize);
  return 0;
}
