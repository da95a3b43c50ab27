#include "vnxSourceFile.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "TAPerfoAv.h"
#include "ZELFileBuffer.h"
#include "source/vnxDiag.h"
#include "source/vnxLineIndex.h"
#include "source/vnxMacroRegistry.h"
#include "vnxComment.h"
#include "vnxPreproConditionalGroup.h"
#include "vnxPreproDirectiveDefineSimple.h"
#include "vnxPreproDirectiveInclude.h"
#include "vnxResources.h"
#include "vnxZELPreproDirective.h"
#include "wbStream.h"

TAPerfoAv* vnxSourceFile::perfoFile = nullptr;
TAPerfoAv* vnxSourceFile::perfoByteRead = nullptr;
TAPerfoAv* vnxSourceFile::perfoLineProcessed = nullptr;


namespace {

const char kOutOfBounds[] = "vnxSourceFile::GetPos - Position out of bounds";

enum { kTypeDefineSimple = 1, kTypeDefineFunction = 2, kTypeInclude = 3 };

int directiveType(vnxZELPreproDirective* d) { return static_cast<int>(d->getPreproType()); }

template <class T>
void releaseAll(ZELListPtr<T>& list) {
  for (int i = 1; i <= list.Size(); ++i)
    if (T* element = list[i]) element->Release();
  list.RemoveAll();
}

template <class T>
void appendWithReference(const ZELListPtr<T>& list, ZELListPtr<T>& out) {
  for (int i = 1; i <= list.Size(); ++i) {
    T* element = list[i];
    if (!element) continue;
    element->AddRef();
    out.Append(element);
  }
}

}  // namespace

// Where the defines and includes stand in the directive list. Built at the
// first look-up, from the directives added since the last one: most files are
// never asked, and indexing each define as it is added cost a string and a
// node per define.
struct vnxSourceFile::DirectiveIndex {
  // name (owned by its directive, which the list holds) -> 1-based position
  std::unordered_map<std::string_view, int> lastDefine;
  std::vector<int> includes;  // 1-based positions, ascending
  int indexed = 0;            // directives of the list looked at so far

  void catchUp(ZELListPtr<vnxZELPreproDirective>& list) {
    for (int position = indexed + 1; position <= list.Size(); ++position) {
      vnxZELPreproDirective* directive = list[position];
      const int type = directive ? directiveType(directive) : 0;
      if (type == kTypeDefineSimple || type == kTypeDefineFunction) {
        const char* name = static_cast<vnxPreproDirectiveDefineSimple*>(directive)->getDefinedIdentifier();
        if (name) lastDefine[name] = position;
      } else if (type == kTypeInclude) {
        includes.push_back(position);
      }
    }
    indexed = list.Size();
  }
};

vnxSourceFile::vnxSourceFile(ZELFileBuffer* buffer, vnxSymbolTable* table, const TAFileName& compilationUnit) {
  init(buffer, table, compilationUnit);
}

vnxSourceFile::vnxSourceFile(const char* text, vnxSymbolTable* table, const TAFileName& compilationUnit) {
  init(ZELFileBuffer::CreateFromString(text, ""), table, compilationUnit);
}

void vnxSourceFile::init(ZELFileBuffer* buffer, vnxSymbolTable* table, const TAFileName& compilationUnit) {
  _fileBuffer = buffer;
  _symbolTable = table;
  _name = buffer ? buffer->getFileName() : "";
  _compilationUnit = compilationUnit.IsNull() ? TAFileName(_name.CastToCharPtr()) : compilationUnit;
  if (vnxResources::isPerfosMeasureActivated() && !perfoFile) {
    perfoByteRead = TAPerfoAv::Create("Bytes read");
    perfoLineProcessed = TAPerfoAv::Create("Lines read");
    perfoFile = TAPerfoAv::Create("Files read");
  }
}

vnxSourceFile* vnxSourceFile::CreateFromPreprocessedText(const char* text, const char* name) {
  vnxSourceFile* source = new vnxSourceFile(static_cast<ZELFileBuffer*>(nullptr), nullptr, TAFileName(name));
  source->_name = name ? name : "";
  source->_compilationUnit = TAFileName(name);
  source->_preProcessed = 1;
  const int size = text ? static_cast<int>(std::strlen(text)) : 0;
  source->_rawSize = size;
  source->buildLineAndColumnTables(text ? text : "", size);
  source->_preProcessedStream = static_cast<char*>(std::malloc(static_cast<size_t>(size) + 1));
  if (size) std::memcpy(source->_preProcessedStream, text, static_cast<size_t>(size));
  source->_preProcessedStream[size] = '\0';
  source->_preProcessedStreamSize = size;
  source->_positionMap = static_cast<int*>(std::malloc(sizeof(int) * (static_cast<size_t>(size) + 1)));
  for (int k = 0; k <= size; ++k) source->_positionMap[k] = k;
  source->countLines();
  return source;
}

vnxSourceFile::~vnxSourceFile() {
  releaseAll(_commentList);
  releaseAll(_directiveList);
  releaseAll(_conditionalGroupList);
  delete _directiveIndex;
  if (_fileBuffer) _fileBuffer->destroy();
  std::free(_searchCopy);
  std::free(_preProcessedStream);
  delete _lineIndex;
  std::free(_positionMap);
}

// --- positions -------------------------------------------------------------

void vnxSourceFile::buildLineAndColumnTables(const char* raw, int rawSize) {
  if (!_lineIndex) _lineIndex = new vnxLineIndex();
  _lineIndex->build(raw, rawSize);
}

const unsigned int* vnxSourceFile::getRawLineTable() const {
  return _lineIndex ? _lineIndex->lineTable() : nullptr;
}

const unsigned int* vnxSourceFile::getRawColumnTable() const {
  return _lineIndex ? _lineIndex->columnTable() : nullptr;
}

namespace {

// How many times the line of map[k] rises above the line of map[k - 1], for k
// in [1, count), plus one when the first line is not 0: every position of map
// lies in the line table. The map stays on one line for long stretches (the
// text of a line, copied or squeezed, with the odd step back), and an entry
// on the line of the one before adds nothing: those stretches are passed
// over four entries at a time, and only an entry that leaves the line is
// looked up.
//
// The stretch is checked against the current line's positions, which lie in
// the file; every entry looked up is first checked against [0, rawSize).
// Answers -1, having read no table entry outside the file, when an entry
// lies outside.
int countCodeLines(const int* map, int count, const vnxLineIndex& index, unsigned int rawSize) {
  if (count <= 0) return 0;
  if (static_cast<unsigned int>(map[0]) >= rawSize) return -1;
  vnxLineIndex::Walker lines(index);
  unsigned int previous = lines.line(map[0]);
  int codeLines = previous != 0 ? 1 : 0;
  int k = 1;
  while (k < count) {
    // [from, from + span): the raw positions of the current line, within the file.
    const unsigned int from = lines.from();
    const unsigned int span = lines.span() <= rawSize - from ? lines.span() : rawSize - from;
#if defined(__SSE2__)
    // Unsigned p - from < span, as a signed compare with both sides offset.
    const __m128i bias = _mm_set1_epi32(INT_MIN);
    const __m128i first = _mm_set1_epi32(static_cast<int>(from));
    const __m128i limit = _mm_xor_si128(_mm_set1_epi32(static_cast<int>(span)), bias);
    const auto insideBits = [&](int at) {
      const __m128i offsets = _mm_sub_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(map + at)), first);
      return _mm_movemask_ps(_mm_castsi128_ps(_mm_cmplt_epi32(_mm_xor_si128(offsets, bias), limit)));
    };
    while (k + 8 <= count) {
      const int inside = insideBits(k) | insideBits(k + 4) << 4;
      if (inside != 0xFF) {
        k += __builtin_ctz(~static_cast<unsigned int>(inside));
        break;
      }
      k += 8;
    }
#endif
    while (k < count && static_cast<unsigned int>(map[k]) - from < span) ++k;
    if (k >= count) break;
    if (static_cast<unsigned int>(map[k]) >= rawSize) return -1;
    const unsigned int line = lines.line(map[k]);
    codeLines += line > previous ? 1 : 0;
    previous = line;
    ++k;
  }
  return codeLines;
}

}  // namespace

void vnxSourceFile::countLines() {
  _nbCodeLine = 0;
  _nbLine = 0;
  const int size = _preProcessedStreamSize;
  if (!_lineIndex || !_lineIndex->built() || !_positionMap || size <= 0) return;
  const int* map = _positionMap;
  const unsigned int rawSize = static_cast<unsigned int>(_rawSize);
  // The count checks the positions it reads, which is enough for a map that
  // lies in the file, the usual case.
  const int codeLines = countCodeLines(map, size, *_lineIndex, rawSize);
  if (codeLines >= 0) {
    _nbCodeLine = codeLines;
    _nbLine = static_cast<int>(_lineIndex->line(_positionMap[size - 1]));
    return;
  }
  // A position outside the file stops the count there.
  int counted = 0;
  while (static_cast<unsigned int>(map[counted]) < rawSize) ++counted;
  _nbCodeLine = countCodeLines(map, counted, *_lineIndex, rawSize);
  vnxdiag::error(ZELString("Problem in processing of file ") + _name);
  vnxdiag::error(ZELString("\t file content has certainly excedeeded buffer [rawStreamSize=") +
                 toString(_rawSize) + ", posInRawStream=" + toString(map[counted]) + "]");
}

int vnxSourceFile::GetPos(int pos, int& line, int& col) const {
  if (!_positionMap || !_lineIndex || !_lineIndex->built()) return 1;
  if (pos < 0 || pos >= _preProcessedStreamSize || _positionMap[pos] < 0 || _positionMap[pos] >= _rawSize) {
    _errMsg = kOutOfBounds;
    return 1;
  }
  line = static_cast<int>(_lineIndex->line(_positionMap[pos]));
  col = static_cast<int>(_lineIndex->column(_positionMap[pos]));
  return 0;
}

int vnxSourceFile::getPosOfPreProcessedCharInRawStream(int pos) {
  if (!_positionMap) return 1;
  if (pos < 0 || pos >= _preProcessedStreamSize) {
    _errMsg = kOutOfBounds;
    return -1;
  }
  return _positionMap[pos];
}

vnxSyntaxePoint vnxSourceFile::GetPoint(int pos) {
  if (!_positionMap || !_lineIndex || !_lineIndex->built()) return vnxSyntaxePoint(0, 0);
  if (pos == 0 && _preProcessedStreamSize == 0) return vnxSyntaxePoint(0, 0);
  if (pos < 0 || pos >= _preProcessedStreamSize || _positionMap[pos] < 0 || _positionMap[pos] >= _rawSize) {
    // A position outside the stream is a caller bug, not bad input: stop hard.
    wbStdout << _name << " _preProcessedStreamSize : " << _preProcessedStreamSize << endl;
    wbStdout << "    b :   " << pos << endl;
    std::abort();
  }
  return vnxSyntaxePoint(static_cast<int>(_lineIndex->line(_positionMap[pos])),
                         static_cast<int>(_lineIndex->column(_positionMap[pos])));
}

// --- comments, directives, groups -------------------------------------------

void vnxSourceFile::getCommentList(ZELListPtr<vnxComment>& out) {
  sortComments();
  appendWithReference(_commentList, out);
}

void vnxSourceFile::getPreproDirectiveList(ZELListPtr<vnxZELPreproDirective>& out) {
  appendWithReference(_directiveList, out);
}

void vnxSourceFile::getPreproConditionalGroupList(ZELListPtr<vnxPreproConditionalGroup>& out) {
  appendWithReference(_conditionalGroupList, out);
}

void vnxSourceFile::addComment(vnxComment* comment) {
  if (!comment) return;
  // The raw position of its first character (-1 for an empty comment).
  const int position = comment->getCommentStringSize() > 0 ? comment->getBeginPosInRawStream() : -1;
  if (_commentList.Size() > 0 && position < _lastCommentPosition) _commentsUnsorted = true;
  else _lastCommentPosition = position;
  _commentList.Append(comment);
}

// A stable sort by first position gives the order of inserting each comment
// after the last one that does not start after it.
void vnxSourceFile::sortComments() {
  if (!_commentsUnsorted || _commentList.Size() == 0) return;
  std::vector<std::pair<int, vnxComment*>> items;
  items.reserve(static_cast<size_t>(_commentList.Size()));
  for (int i = 1; i <= _commentList.Size(); ++i) {
    vnxComment* c = _commentList[i];
    items.emplace_back(c->getPosOfCommentCharInRawStream(0), c);
  }
  std::stable_sort(items.begin(), items.end(),
                   [](const std::pair<int, vnxComment*>& a, const std::pair<int, vnxComment*>& b) {
                     return a.first < b.first;
                   });
  _commentList.RemoveAll(ZELCollec::KeepMemory);
  for (const auto& item : items) _commentList.Append(item.second);
  _lastCommentPosition = items.back().first;
  _commentsUnsorted = false;
}

void vnxSourceFile::addPreproDirective(vnxZELPreproDirective* directive) {
  if (!directive) return;
  _directiveList.Append(directive);
}

vnxSourceFile::DirectiveIndex* vnxSourceFile::directiveIndex() {
  if (_directiveList.Size() == 0) return nullptr;
  if (!_directiveIndex) _directiveIndex = new DirectiveIndex();
  _directiveIndex->catchUp(_directiveList);
  return _directiveIndex;
}

void vnxSourceFile::addPreproConditionalGroup(vnxPreproConditionalGroup* group) {
  if (!group) return;
  _conditionalGroupList.Append(group);
}

// --- define look-up ----------------------------------------------------------

vnxZELPreproDirective* vnxSourceFile::getDefineDirective(const char* name) {
  if (!name || !*name) return nullptr;
  if (!_symbolTable) {
    // No table, no included file to look into (resolveIncludedSource): the
    // answer is this file's last define. The pass asks this for every
    // #ifdef, and walking the includes for nothing cost thousands of
    // instructions a question in files with many of them.
    DirectiveIndex* const index = directiveIndex();
    if (!index) return nullptr;
    const auto local = index->lastDefine.find(name);
    return local == index->lastDefine.end() ? nullptr : _directiveList[local->second];
  }
  TAIndex visited;
  visited.Append(_name, nullptr);
  return searchDefine(name, visited);
}

// Walking the directives from the last to the first, the first define of the
// name or the first include whose file defines it wins: so only includes that
// come after this file's last define of the name can hide it.
vnxZELPreproDirective* vnxSourceFile::searchDefine(const char* name, TAIndex& visited) {
  DirectiveIndex* const index = directiveIndex();
  if (!index) return nullptr;
  const auto local = index->lastDefine.find(name);
  const int localPosition = local == index->lastDefine.end() ? 0 : local->second;
  const std::vector<int>& includes = index->includes;
  for (auto it = includes.rbegin(); it != includes.rend() && *it > localPosition; ++it) {
    auto* include = static_cast<vnxPreproDirectiveInclude*>(_directiveList[*it]);
    const char* includeName = include->getIncludeString();
    if (!includeName || visited.IsIn(includeName) >= 0) continue;
    visited.Append(includeName, nullptr);
    if (vnxSourceFile* included = resolveIncludedSource(includeName)) {
      if (vnxZELPreproDirective* found = included->searchDefine(name, visited)) return found;
    }
  }
  return localPosition ? _directiveList[localPosition] : nullptr;
}

// Included files are reached through the symbol table that loaded this file;
// a source on its own has none, and its look-up stays inside the file
// (getDefineDirective counts on that: without a table it never comes here).
vnxSourceFile* vnxSourceFile::resolveIncludedSource(const char* /*includeName*/) { return nullptr; }

// --- macro registry ----------------------------------------------------------

void vnxSourceFile::addMacroToExpand(const char* name) { vnxmacro::add(name); }

void vnxSourceFile::getMacrosToExpand(TAIndex& out) { vnxmacro::names(out); }

void vnxSourceFile::addMacroWithSemicolon(ZELListVal<ZELString>* list) { vnxmacro::setMacrosWithSemicolon(list); }

void vnxSourceFile::getMacroWithSemicolon(ZELListVal<ZELString>& out) {
  if (ZELListVal<ZELString>* list = vnxmacro::macrosWithSemicolon()) out.Append(*list);
}

// --- include list ------------------------------------------------------------

void vnxSourceFile::getIncludeList(ZELListVal<ZELString>& out) {
  if (!_preProcessed) {
    scanRawIncludes(out);
    return;
  }
  DirectiveIndex* const index = directiveIndex();
  if (!index) return;
  for (int position : index->includes) {
    auto* include = static_cast<vnxPreproDirectiveInclude*>(_directiveList[position]);
    if (const char* name = include->getIncludeString()) out.Append(name);
  }
}

// Finds "#include" lines in the raw text before any pass has run, so that the
// loader can load a file's includes first. Only a '#' that opens its line and
// does not stand inside a block comment counts.
void vnxSourceFile::scanRawIncludes(ZELListVal<ZELString>& out) {
  if (!_fileBuffer) return;
  const char* text = _fileBuffer->getBuffer();
  const int size = static_cast<int>(_fileBuffer->getBufferSize());
  if (!text || size <= 0) return;

  int commentScan = 0;  // text before this offset has been scanned for comment state
  bool inComment = false;
  auto insideBlockComment = [&](int upTo) {
    while (commentScan < upTo) {
      if (!inComment && text[commentScan] == '/' && commentScan + 1 < upTo && text[commentScan + 1] == '*') {
        inComment = true;
        commentScan += 2;
      } else if (inComment && text[commentScan] == '*' && commentScan + 1 < upTo && text[commentScan + 1] == '/') {
        inComment = false;
        commentScan += 2;
      } else {
        ++commentScan;
      }
    }
    return inComment;
  };

  vnxmacro::searchAll(vnxmacro::includePattern(), text, size, false, [&](int pos) {
    int k = pos - 1;
    while (k >= 0 && (text[k] == ' ' || text[k] == '\t')) --k;
    if (k < 0 || text[k] != '#') return;
    const int hash = k;
    --k;
    while (k >= 0 && (text[k] == ' ' || text[k] == '\t')) --k;
    if (k >= 0 && text[k] != '\n') return;
    if (insideBlockComment(hash)) return;

    int i = pos + 7;
    for (;;) {
      while (i < size && (text[i] == ' ' || text[i] == '\t' || text[i] == '\n' || text[i] == '\r')) ++i;
      if (i + 1 < size && text[i] == '/' && text[i + 1] == '*') {
        const char* end = static_cast<const char*>(std::memchr(text + i + 2, '*', static_cast<size_t>(size - i - 2)));
        while (end && !(end + 1 < text + size && end[1] == '/'))
          end = static_cast<const char*>(std::memchr(end + 1, '*', static_cast<size_t>(text + size - end - 1)));
        if (!end) return;
        i = static_cast<int>(end - text) + 2;
        continue;
      }
      break;
    }
    if (i >= size || (text[i] != '"' && text[i] != '<')) return;
    const char closer = text[i] == '"' ? '"' : '>';
    const int begin = i + 1;
    const char* end = static_cast<const char*>(std::memchr(text + begin, closer, static_cast<size_t>(size - begin)));
    if (!end) return;
    const int length = static_cast<int>(end - (text + begin));
    if (length >= 4096) return;
    out.Append(ZELString(text + begin, length));
  });
}
