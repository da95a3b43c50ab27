#include "vnxDefinePreproDirectiveExpander.h"

#include <climits>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "ZELLists.h"
#include "ZELString.h"
#include "source/vnxCommentScan.h"
#include "source/vnxDiag.h"
#include "vnxPreproDirectiveDefineFunction.h"
#include "vnxPreproDirectiveDefineSimple.h"
#include "vnxSourceFile.h"
#include "vnxTokenizer.h"

namespace {

// An argument list longer than this is taken for a parenthesis that is never
// closed: it keeps a text full of unclosed calls from being read to its end
// once per call.
const int kMaxArgumentListLength = 64 * 1024;

// Macro names are runs of letters, digits, '_' and '$', as #define reads them.
using vnxscan::isMacroNameChar;
inline bool isNameHead(char c) { return isMacroNameChar(c) && !vnxscan::isDigit(c); }
inline bool isSpace(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f' || c == '\v'; }

int nameLengthAt(const char* text) {
  int n = 0;
  while (isMacroNameChar(text[n])) ++n;
  return n;
}

// End (one past) of the string or character literal opening at k, or -1
// when no unescaped closing quote stands on its line.
int literalEnd(const char* text, int k) {
  const char quote = text[k++];
  while (text[k] != '\0' && text[k] != '\n') {
    if (text[k] == '\\' && text[k + 1] != '\0') {
      k += 2;
      continue;
    }
    if (text[k++] == quote) return k;
  }
  return -1;
}

// End (one past) of the comment opening at k ("/*" or "//"), or -1 when a
// block comment is not closed before offset limit (or the NUL). A line
// comment ends before its newline.
int commentEnd(const char* text, int k, int limit) {
  if (text[k + 1] == '/') {
    while (text[k] != '\0' && text[k] != '\n') ++k;
    return k;
  }
  for (k += 2; k < limit && text[k] != '\0'; ++k) {
    if (text[k] == '*' && text[k + 1] == '/') return k + 2;
  }
  return -1;
}

bool spellsParameter(const vnxToken& token, const ZELString& parameter) {
  return token.getLength() == static_cast<unsigned int>(parameter.GetLengthInChar()) &&
         std::memcmp(token.getStart(), parameter.CastToCharPtr(), token.getLength()) == 0;
}

// Rank (0-based) of the parameter a token names, or -1.
int parameterRank(const vnxToken& token, const ZELListVal<ZELString>& parameters) {
  if (token.getKind() != vnxToken::kIdentifier) return -1;
  for (int k = 1; k <= parameters.Size(); ++k) {
    if (spellsParameter(token, parameters[k])) return k - 1;
  }
  return -1;
}

// A backslash before every double quote, apostrophe and backslash, and
// double quotes around the whole.
std::string stringize(const std::string& text) {
  std::string quoted = "\"";
  for (char c : text) {
    if (c == '"' || c == '\'' || c == '\\') quoted += '\\';
    quoted += c;
  }
  quoted += '"';
  return quoted;
}

// 1 when both texts cut into the same token spellings.
bool sameTokens(const std::string& a, const std::string& b) {
  vnxTokenizer left(a.c_str());
  vnxTokenizer right(b.c_str());
  vnxTokenIterator l = left.getTokenIterator();
  vnxTokenIterator r = right.getTokenIterator();
  vnxToken x;
  vnxToken y;
  for (;;) {
    const int more = l.getNextToken(x);
    if (more != r.getNextToken(y)) return false;
    if (!more) return true;
    if (x != y) return false;
  }
}

}  // namespace

// One argument of a call: its text as written (comments dropped, blanks
// squeezed) and, once needed, its text with the macros in it expanded.
struct vnxDefinePreproDirectiveExpander::Argument {
  std::string raw;
  std::string expanded;
  bool isExpanded = false;
};

vnxDefinePreproDirectiveExpander::vnxDefinePreproDirectiveExpander(vnxSourceFile* source) : _source(source) {
  vnxSourceFile::getMacrosToExpand(_macros);
  for (int k = 0; k < _macros.Size(); ++k) {
    _macros.SetValue(k, nullptr);
    const size_t length = std::strlen(_macros.GetKey(k));
    if (_shortestName == 0 || length < _shortestName) _shortestName = length;
    if (length > _longestName) _longestName = length;
  }
}

vnxDefinePreproDirectiveExpander::~vnxDefinePreproDirectiveExpander() { _source = nullptr; }

int vnxDefinePreproDirectiveExpander::expand(const char* text, char*& replacement, int& replacedLength) {
  replacement = nullptr;
  replacedLength = 0;
  if (!text || !_source) return 1;
  _work = 0;
  _workLimit = _failedWork >= kMaxFailedWork ? kReducedWork : kMaxWork;
  std::string out;
  int length = 0;
  if (expandLocal(text, 0, out, length) != kExpanded) {
    _failedWork += _work;
    return 1;
  }
  char* copy = static_cast<char*>(std::malloc(out.size() + 1));
  if (!copy) return 1;
  std::memcpy(copy, out.c_str(), out.size() + 1);
  replacement = copy;
  replacedLength = length;
  return 0;
}

// --- the registry copy -------------------------------------------------------------

int vnxDefinePreproDirectiveExpander::activePosition(const char* name, size_t length) {
  if (length < _shortestName || length > _longestName) return -1;
  _nameScratch.assign(name, length);
  const int position = _macros.IsIn(_nameScratch.c_str());
  return position >= 0 && _macros.GetValue(position) == nullptr ? position : -1;
}

void vnxDefinePreproDirectiveExpander::setActive(int position, bool active) {
  _macros.SetValue(position, active ? nullptr : this);
}

bool vnxDefinePreproDirectiveExpander::append(std::string& out, const char* text, size_t length) {
  _work += static_cast<long long>(length);
  if (_work > _workLimit || out.size() + length > static_cast<size_t>(kMaxOutputSize)) return false;
  out.append(text, length);
  return true;
}

// --- one macro -----------------------------------------------------------------------

// Expands the macro named at text into out: its replacement (arguments
// substituted), then rescanned with the macro taken out of the set, so that
// the macros it names expand in turn but it never expands inside itself.
vnxDefinePreproDirectiveExpander::Status vnxDefinePreproDirectiveExpander::expandLocal(const char* text, int depth,
                                                                                       std::string& out,
                                                                                       int& replacedLength) {
  out.clear();
  replacedLength = 0;
  if (depth >= kMaxDepth) return kAbort;
  const int nameLength = nameLengthAt(text);
  if (nameLength == 0) return kNotExpanded;
  const std::string name(text, static_cast<size_t>(nameLength));
  const int position = activePosition(name.c_str(), name.size());
  if (position < 0) {
    vnxdiag::warning(ZELString("Problem in vnxDefinePreproDirectiveExpander::expandLocal: <") + name.c_str() +
                     "> is not in macro list. File name : " + _source->GetName());
    return kNotExpanded;
  }
  vnxZELPreproDirective* define = _source->getDefineDirective(name.c_str());
  if (!define) return kNotExpanded;

  std::string body;
  int replaced = nameLength;
  Status status = kNotExpanded;
  switch (define->getPreproType()) {
    case vnxZELPreproDirective::DefineSimple:
      status = expandObject(static_cast<vnxPreproDirectiveDefineSimple*>(define), body);
      break;
    case vnxZELPreproDirective::DefineFunction:
      // The arguments are expanded while the macro is still in the set: a
      // call in an argument of the same macro is an ordinary call.
      status = expandFunction(static_cast<vnxPreproDirectiveDefineFunction*>(define), text, nameLength, depth, body,
                              replaced);
      break;
    default:
      vnxdiag::warning(
          "vnxDefinePreproDirectiveExpander::expand Handling an unknown vnxZELPreproDirective, unable to expand.");
      return kNotExpanded;
  }
  if (status != kExpanded) return status;

  setActive(position, false);
  int replacements = 0;
  status = expandText(body.c_str(), depth + 1, out, replacements);
  setActive(position, true);
  if (status == kAbort) return kAbort;
  replacedLength = replaced;
  return kExpanded;
}

// The replacement tokens, each followed by one blank, except that "##" joins
// its neighbours without one.
vnxDefinePreproDirectiveExpander::Status vnxDefinePreproDirectiveExpander::expandObject(
    vnxPreproDirectiveDefineSimple* define, std::string& body) {
  ZELListVal<vnxToken> tokens;
  define->getReplacementTokenList(tokens);
  for (int k = 1; k <= tokens.Size(); ++k) {
    const vnxToken& token = tokens[k];
    if (token.getKind() == vnxToken::kHashHash) {
      if (!body.empty() && body.back() == ' ') body.pop_back();
      continue;
    }
    if (!append(body, token.getStart(), token.getLength()) || !append(body, " ", 1)) return kAbort;
  }
  return kExpanded;
}

// Reads the argument list after the name, binds the arguments to the
// parameters and substitutes them: "#p" gives the argument stringized, a
// parameter next to "##" the argument as written, any other parameter the
// argument with its macros expanded.
vnxDefinePreproDirectiveExpander::Status vnxDefinePreproDirectiveExpander::expandFunction(
    vnxPreproDirectiveDefineFunction* define, const char* text, int nameLength, int depth, std::string& body,
    int& replacedLength) {
  ZELListVal<ZELString> parameters;
  if (define->getArgumentList(parameters) != 0) return kNotExpanded;

  // The call: blanks, newlines and comments may stand between the name and '('.
  int k = nameLength;
  for (;;) {
    if (isSpace(text[k])) {
      ++k;
    } else if (text[k] == '/' && (text[k + 1] == '*' || text[k + 1] == '/')) {
      k = commentEnd(text, k, k + kMaxArgumentListLength);
      if (k < 0) return kNotExpanded;
    } else {
      break;
    }
  }
  if (text[k] != '(') return kNotExpanded;

  std::vector<Argument> arguments(1);
  const int open = k++;
  int nesting = 0;
  bool pendingBlank = false;
  for (;;) {
    if (k - open > kMaxArgumentListLength) return kNotExpanded;
    const char c = text[k];
    if (c == '\0') return kNotExpanded;
    if (isSpace(c) || (c == '\\' && text[k + 1] == '\n')) {
      pendingBlank = true;
      k += c == '\\' ? 2 : 1;
      continue;
    }
    if (c == '/' && (text[k + 1] == '*' || text[k + 1] == '/')) {
      k = commentEnd(text, k, open + kMaxArgumentListLength);
      if (k < 0) return kNotExpanded;
      pendingBlank = true;
      continue;
    }
    if (nesting == 0 && (c == ',' || c == ')')) {
      ++k;
      if (c == ')') break;
      arguments.emplace_back();
      pendingBlank = false;
      continue;
    }
    std::string& raw = arguments.back().raw;
    if (pendingBlank && !raw.empty()) raw += ' ';
    pendingBlank = false;
    if (c == '"' || c == '\'') {
      const int end = literalEnd(text, k);
      if (end < 0) return kNotExpanded;
      raw.append(text + k, static_cast<size_t>(end - k));
      k = end;
      continue;
    }
    if (c == '(') ++nesting;
    if (c == ')') --nesting;
    raw += c;
    ++k;
  }
  replacedLength = k;

  // "F()" passes no argument to a macro without parameters; missing
  // arguments are empty; more arguments than parameters is no call of this
  // macro, which is left as written.
  if (parameters.Size() == 0 && arguments.size() == 1 && arguments[0].raw.empty()) arguments.clear();
  if (static_cast<int>(arguments.size()) > parameters.Size()) return kNotExpanded;
  arguments.resize(static_cast<size_t>(parameters.Size()));

  ZELListVal<vnxToken> tokens;
  define->getReplacementTokenList(tokens);
  const int count = tokens.Size();
  for (int t = 1; t <= count; ++t) {
    const vnxToken& token = tokens[t];
    if (token.getKind() == vnxToken::kHashHash) {
      if (!body.empty() && body.back() == ' ') body.pop_back();
      continue;
    }
    if (token.getKind() == vnxToken::kHash && t < count) {
      const int rank = parameterRank(tokens[t + 1], parameters);
      if (rank >= 0) {
        const std::string quoted = stringize(arguments[static_cast<size_t>(rank)].raw);
        if (!append(body, quoted.c_str(), quoted.size()) || !append(body, " ", 1)) return kAbort;
        ++t;
        continue;
      }
    }
    const int rank = parameterRank(token, parameters);
    if (rank < 0) {
      if (!append(body, token.getStart(), token.getLength()) || !append(body, " ", 1)) return kAbort;
      continue;
    }
    Argument& argument = arguments[static_cast<size_t>(rank)];
    const bool pasted = (t > 1 && tokens[t - 1].getKind() == vnxToken::kHashHash) ||
                        (t < count && tokens[t + 1].getKind() == vnxToken::kHashHash);
    if (!pasted && !argument.isExpanded) {
      const Status status = expandArgument(argument, depth + 1);
      if (status != kExpanded) return status;
    }
    const std::string& value = pasted ? argument.raw : argument.expanded;
    if (!append(body, value.c_str(), value.size()) || !append(body, " ", 1)) return kAbort;
  }
  return kExpanded;
}

// Expands the macros of an argument on its own, pass after pass, until a pass
// changes nothing: a pass may bring a function-like name next to the '(' of
// the text after it.
vnxDefinePreproDirectiveExpander::Status vnxDefinePreproDirectiveExpander::expandArgument(Argument& argument,
                                                                                          int depth) {
  std::string current = argument.raw;
  for (int pass = 0; pass < kMaxArgumentPasses; ++pass) {
    std::string next;
    int replacements = 0;
    if (expandText(current.c_str(), depth, next, replacements) == kAbort) return kAbort;
    const bool settled = replacements == 0 || sameTokens(current, next);
    current.swap(next);
    if (settled) {
      argument.expanded.swap(current);
      argument.isExpanded = true;
      return kExpanded;
    }
  }
  return kAbort;
}

// Copies text to out with every name of a macro that may expand now replaced
// by its expansion. Literals and comments are copied as they stand; a name
// that cannot expand stays as written.
vnxDefinePreproDirectiveExpander::Status vnxDefinePreproDirectiveExpander::expandText(const char* text, int depth,
                                                                                      std::string& out,
                                                                                      int& replacements) {
  int copied = 0;  // text before this offset is in out already
  int k = 0;
  // Once a block comment is found open to the end, so is every later one.
  bool openComment = false;
  while (text[k] != '\0') {
    const char c = text[k];
    if (c == '"' || c == '\'') {
      const int end = literalEnd(text, k);
      k = end < 0 ? k + 1 : end;
      continue;
    }
    if (c == '/' && (text[k + 1] == '/' || (text[k + 1] == '*' && !openComment))) {
      const int end = commentEnd(text, k, INT_MAX);
      openComment = end < 0;
      k = end < 0 ? k + 1 : end;
      continue;
    }
    if (!isMacroNameChar(c)) {
      ++k;
      continue;
    }
    const int length = nameLengthAt(text + k);
    if (!isNameHead(c) || activePosition(text + k, static_cast<size_t>(length)) < 0) {
      k += length;
      continue;
    }
    std::string expansion;
    int used = 0;
    const Status status = expandLocal(text + k, depth, expansion, used);
    if (status == kAbort) return kAbort;
    if (status != kExpanded) {
      k += length;
      continue;
    }
    if (!append(out, text + copied, static_cast<size_t>(k - copied)) ||
        !append(out, expansion.c_str(), expansion.size())) {
      return kAbort;
    }
    ++replacements;
    k += used;
    // The expansion ends with its own blank: one is enough.
    if (!expansion.empty() && expansion.back() == ' ' && text[k] == ' ') ++k;
    copied = k;
  }
  if (!append(out, text + copied, static_cast<size_t>(k - copied))) return kAbort;
  return kExpanded;
}
