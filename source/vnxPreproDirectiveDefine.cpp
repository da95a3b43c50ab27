#include <cstdlib>
#include <cstring>

#include "platform/TAPool.h"
#include "source/vnxCommentScan.h"
#include "source/vnxDiag.h"
#include "source/vnxTextStore.h"
#include "vnxPreproDirectiveDefineFunction.h"
#include "vnxPreproDirectiveDefineSimple.h"
#include "vnxSourceFile.h"
#include "vnxTokenizer.h"
#include "wbStream.h"

namespace {

TAPool<vnxPreproDirectiveDefineSimple> gSimplePool;
TAPool<vnxPreproDirectiveDefineFunction> gFunctionPool;

const char kSimpleName[] = "vnxPreproDirectiveDefineSimple";
const char kFunctionName[] = "vnxPreproDirectiveDefineFunction";

char* copyRange(const char* begin, int length) {
  char* copy = static_cast<char*>(std::malloc(static_cast<size_t>(length) + 1));
  if (!copy) return nullptr;
  if (length > 0) std::memcpy(copy, begin, static_cast<size_t>(length));
  copy[length] = '\0';
  return copy;
}

// "<file name>:<line>) : <directive text>", the tail of the define warnings.
ZELString placeOf(const vnxZELPreproDirective& d) {
  const char* file = d.getSource() ? d.getSource()->GetName() : "";
  return ZELString(file) + ":" + toString(static_cast<int>(d.getBeginLineInRawStream())) + ") : " +
         d.getPreproString();
}

// Where the macro name of a define directive text lies: [begin, end).
struct NameSpan {
  int begin;
  int end;
};

// Steps 1 and 2 shared by both kinds of define: check the text, step over
// '#', the keyword and the layout after it. Answers the name's span, or
// begin -1 after writing the failure line (messages name the class).
NameSpan findDefinedName(const char* text, int size, const char* className) {
  // Built only for a message: a define that reads well costs no string.
  const auto in = [className]() { return ZELString(" in ") + className + "::buildDefine"; };
  if (!text || size <= 0) {
    vnxdiag::plain(ZELString(" -> !! Bad input") + in());
    return {-1, -1};
  }
  if (text[0] != '#') {
    vnxdiag::plain(ZELString(" -> !! Bad Position") + in());
    return {-1, -1};
  }
  int k = 1;
  while (vnxscan::isBlankOrTab(text[k])) ++k;
  if (text[k] == '\0') {
    vnxdiag::plain(ZELString(" -> !! keyword include not found") + in());
    return {-1, -1};
  }
  for (int letters = 0; letters < 6 && text[k] != '\0'; ++letters) ++k;
  k = vnxscan::skipLayoutAndContinuations(text, k);
  if (text[k] == '\n') {
    vnxdiag::plain(ZELString(" -> !! ") + className + "::buildDefine Begin of _definedIdentifier not found");
    return {-1, -1};
  }
  int end = k;
  while (vnxscan::isMacroNameChar(text[end])) ++end;
  if (end == k) {  // the end of the text, or nothing a name is made of
    vnxdiag::plain(ZELString(" -> !! begin of _definedIdentifier not found") + in());
    return {-1, -1};
  }
  return {k, end};
}

bool mayFollowName(const char* text, int k) {
  const char c = text[k];
  return c == '\0' || vnxscan::isLayout(c) || (c == '\\' && text[k + 1] == '\n');
}

// The replacement after position k: the first character after the layout,
// or null at the end of the text or of the line.
const char* replacementFrom(const char* text, int k) {
  k = vnxscan::skipLayoutAndContinuations(text, k);
  return text[k] == '\0' || text[k] == '\n' ? nullptr : text + k;
}

bool isBackslash(const vnxToken& t) { return t.getKind() == vnxToken::kUnknown && t.getStart()[0] == '\\'; }

// A backslash that ends a line: the next token is the newline.
bool continuesLine(const vnxTokenIterator& it) {
  vnxTokenIterator ahead(it);
  vnxToken next;
  return ahead.getNextToken(next) && next.getKind() == vnxToken::kNewline;
}

bool isLayoutToken(int kind) {
  return kind == vnxToken::kNewline || kind == vnxToken::kBlockComment || kind == vnxToken::kLineComment;
}

}  // namespace

// --- object-like defines ----------------------------------------------------------

vnxPreproDirectiveDefineSimple::vnxPreproDirectiveDefineSimple(vnxSourceFile* source, vnxPreproType type)
    : vnxZELPreproDirective(source) {
  _preproType = type;
}

vnxPreproDirectiveDefineSimple::~vnxPreproDirectiveDefineSimple() { resetDefine(); }

void vnxPreproDirectiveDefineSimple::resetDefine() {
  if (_definedIdentifier) vnxtext::release(_definedIdentifier, std::strlen(_definedIdentifier) + 1);
  _definedIdentifier = nullptr;
  _replacementString = nullptr;
  _replacementTokens.RemoveAll();
  _tokensComputed = 0;
}

vnxPreproDirectiveDefineSimple* vnxPreproDirectiveDefineSimple::create(vnxSourceFile* source) {
  void* block = nullptr;
  vnxPreproDirectiveDefineSimple* directive = gSimplePool.getNew(&block, source);
  if (directive) directive->_poolBlock = block;
  return directive;
}

int vnxPreproDirectiveDefineSimple::getPoolLiveCount() { return gSimplePool.liveCount(); }
int vnxPreproDirectiveDefineSimple::getPoolBlockCount() { return gSimplePool.blockCount(); }

const char* vnxPreproDirectiveDefineSimple::IsA() const { return kSimpleName; }

int vnxPreproDirectiveDefineSimple::Release() {
  const int count = dropReference();
  if (count == 0) gSimplePool.release(this, _poolBlock);
  return count;
}

int vnxPreproDirectiveDefineSimple::build(const char* text, int pos, int line, int col, int outPos) {
  if (vnxZELPreproDirective::build(text, pos, line, col, outPos) != 0) return 1;
  return buildDefine();
}

int vnxPreproDirectiveDefineSimple::buildDefine() {
  resetDefine();
  const char* text = _preproString;
  const NameSpan name = findDefinedName(text, _preproStringSize, kSimpleName);
  if (name.begin < 0) return 1;
  if (!mayFollowName(text, name.end))
    vnxdiag::plain(ZELString(" !! define line contains an invalid character, check spelling (") + placeOf(*this));
  _definedIdentifier = vnxtext::copy(text + name.begin, name.end - name.begin);
  if (!_definedIdentifier) return 1;
  _replacementString = replacementFrom(text, name.end);
  return 0;
}

int vnxPreproDirectiveDefineSimple::computeReplacementTokens() {
  if (_tokensComputed) return 0;
  _tokensComputed = 1;
  _replacementTokens.RemoveAll();
  if (!_replacementString) return 0;
  vnxTokenizer tokenizer(_replacementString);
  vnxTokenIterator it = tokenizer.getTokenIterator();
  vnxToken token;
  while (it.getNextToken(token)) {
    if (isLayoutToken(token.getKind())) continue;
    if (isBackslash(token) && continuesLine(it)) continue;  // its newline goes as layout
    _replacementTokens.Append(token);
  }
  return 0;
}

int vnxPreproDirectiveDefineSimple::getReplacementTokenList(ZELListVal<vnxToken>& tokens) {
  computeReplacementTokens();
  tokens.Append(_replacementTokens);
  return 0;
}

void vnxPreproDirectiveDefineSimple::dump() {
  vnxZELPreproDirective::dump();
  if (_definedIdentifier) wbStdout << "## definedIdentifier : " << _definedIdentifier << endl;
  if (_replacementString) wbStdout << "## replacementString : " << _replacementString << endl;
}

// --- function-like defines ---------------------------------------------------------

vnxPreproDirectiveDefineFunction::vnxPreproDirectiveDefineFunction(vnxSourceFile* source)
    : vnxPreproDirectiveDefineSimple(source, DefineFunction) {}

vnxPreproDirectiveDefineFunction::~vnxPreproDirectiveDefineFunction() { std::free(_argumentString); }

vnxPreproDirectiveDefineFunction* vnxPreproDirectiveDefineFunction::create(vnxSourceFile* source) {
  void* block = nullptr;
  vnxPreproDirectiveDefineFunction* directive = gFunctionPool.getNew(&block, source);
  if (directive) directive->_poolBlock = block;
  return directive;
}

int vnxPreproDirectiveDefineFunction::getPoolLiveCount() { return gFunctionPool.liveCount(); }
int vnxPreproDirectiveDefineFunction::getPoolBlockCount() { return gFunctionPool.blockCount(); }

const char* vnxPreproDirectiveDefineFunction::IsA() const { return kFunctionName; }

int vnxPreproDirectiveDefineFunction::Release() {
  const int count = dropReference();
  if (count == 0) gFunctionPool.release(this, _poolBlock);
  return count;
}

int vnxPreproDirectiveDefineFunction::buildDefine() {
  resetDefine();
  std::free(_argumentString);
  _argumentString = nullptr;
  _argumentList.RemoveAll();
  _argumentsComputed = 0;
  _argumentsStatus = 0;

  const char* text = _preproString;
  const NameSpan name = findDefinedName(text, _preproStringSize, kFunctionName);
  if (name.begin < 0) return 1;
  _definedIdentifier = vnxtext::copy(text + name.begin, name.end - name.begin);
  if (!_definedIdentifier) return 1;
  const ZELString warning = "  -> !! vnxPreproDirectiveDefineFunction::buildDefine, ";
  if (text[name.end] != '(') {
    vnxdiag::plain(warning + "building a non function like macro replacement : " + placeOf(*this));
    _replacementString = replacementFrom(text, name.end);
    return 0;
  }
  const int open = name.end;
  const char* close = std::strchr(text + open + 1, ')');
  if (!close) {
    vnxdiag::plain(warning + "end of argumentString not found : " + placeOf(*this));
    _argumentString = copyRange(text + open + 1, static_cast<int>(std::strlen(text + open + 1)));
    return _argumentString ? 0 : 1;
  }
  _argumentString = copyRange(text + open + 1, static_cast<int>(close - (text + open + 1)));
  if (!_argumentString) return 1;
  _replacementString = replacementFrom(text, static_cast<int>(close - text) + 1);
  return 0;
}

int vnxPreproDirectiveDefineFunction::compute() {
  if (_argumentsComputed) return _argumentsStatus;
  _argumentsComputed = 1;
  _argumentList.RemoveAll();
  if (!_argumentString) return _argumentsStatus = 0;
  const ZELString prefix = " -> !! vnxPreproDirectiveDefineFunction::compute : ";
  vnxTokenizer tokenizer(_argumentString);
  vnxTokenIterator it = tokenizer.getTokenIterator();
  vnxToken token;
  bool expectName = true;
  while (it.getNextToken(token)) {
    const int kind = token.getKind();
    if (isLayoutToken(kind) || (isBackslash(token) && continuesLine(it))) continue;
    if (kind == vnxToken::kIdentifier || kind == vnxToken::kComma) {
      if (expectName != (kind == vnxToken::kIdentifier)) {
        vnxdiag::plain(prefix + "order of COMMA / ID not coherent in _argumentString : " + _argumentString);
        return _argumentsStatus = 1;
      }
      if (expectName) _argumentList.Append(ZELString(token.getStart(), static_cast<int>(token.getLength())));
      expectName = !expectName;
      continue;
    }
    vnxdiag::plain(prefix + "Token is neither ID nor COMMA in _argumentString : " + _argumentString);
    return _argumentsStatus = 1;
  }
  return _argumentsStatus = 0;
}

int vnxPreproDirectiveDefineFunction::getArgumentList(ZELListVal<ZELString>& arguments) {
  const int status = compute();
  arguments.Append(_argumentList);
  return status;
}

int vnxPreproDirectiveDefineFunction::getArgumentCount() {
  compute();
  return _argumentList.Size();
}
