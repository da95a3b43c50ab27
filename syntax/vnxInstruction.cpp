// Instruction nodes: pool, creation and Build, which classifies the
// instruction by its leading keyword and creates its children.
#include "vnxInstruction.h"

#include <cstring>

#include "syntax/vnxSyntaxeAccess.h"
#include "syntax/vnxSyntaxePools.h"
#include "syntax/vnxTreeCharClass.h"
#include "vnxExpression.h"
#include "vnxSourceFile.h"

namespace {

inline bool isBlank(char c) { return vnxtreechar::isBlank(c); }
inline bool isWordChar(char c) { return vnxtreechar::isWord(c); }

bool startsWith(const char* s, int pos, int end, const char* word) {
  const int n = static_cast<int>(std::strlen(word));
  return pos + n <= end && std::memcmp(s + pos, word, static_cast<size_t>(n)) == 0;
}

int skipBlanks(const char* s, int from, int end) {
  while (from < end && isBlank(s[from])) ++from;
  return from;
}

ZELString lineAndCol(vnxSourceFile* source, int offset) {
  int line = 0, col = 0;
  source->GetPos(offset, line, col);
  return toString(line) + " col " + toString(col);
}

// [begin, end) of the identifier that names the type declared by a class,
// struct, union or interface head: its first word, export macros aside.
// Empty (at end) for an anonymous type.
void declaredTypeName(const char* s, int from, int end, int& begin, int& size) {
  for (int i = from; i < end;) {
    if (!isWordChar(s[i])) {
      ++i;
      continue;
    }
    int j = i;
    while (j < end && isWordChar(s[j])) ++j;
    if (!startsWith(s, i, j, "ExportedBy")) {
      begin = i;
      size = j - i;
      return;
    }
    i = j;
  }
  begin = end;
  size = 0;
}

// The name a typedef declares: the one inside "(*name)" for a function
// pointer, else its last word, array bounds aside. Empty when that word is
// the struct, union, enum or class keyword of an anonymous type.
void typedefName(const char* s, int from, int end, int& begin, int& size) {
  for (int i = from; i < end; ++i) {
    if (s[i] != '(') continue;
    int j = skipBlanks(s, i + 1, end);
    if (j < end && (s[j] == '*' || s[j] == '&')) {
      while (j < end && (s[j] == '*' || s[j] == '&' || isBlank(s[j]))) ++j;
      int k = j;
      while (k < end && isWordChar(s[k])) ++k;
      if (k > j) {
        begin = j;
        size = k - j;
        return;
      }
    }
    break;
  }
  int last = end;
  while (last > from && s[last - 1] == ']') {
    const int open = vnxSyntaxe::SearchBeginOfIndex(s, last - 1, from);
    if (open <= from) break;
    last = open;
    while (last > from && isBlank(s[last - 1])) --last;
  }
  int first = last;
  while (first > from && isWordChar(s[first - 1])) --first;
  static const char* const kTypeKeywords[] = {"struct", "union", "enum", "class", nullptr};
  for (const char* const* keyword = kTypeKeywords; *keyword; ++keyword)
    if (last - first == static_cast<int>(std::strlen(*keyword)) && startsWith(s, first, last, *keyword)) first = last;
  begin = first;
  size = last - first;
}

// Where the base list of a type head starts: the offset of its ':' (not one
// of a "::"), or -1.
int baseListColon(const char* s, int from, int end) {
  for (int i = from; i < end; ++i) {
    if (s[i] == '(') {
      const int close = vnxSyntaxe::SearchEndOfPar(s, i, end - 1);
      if (close == 0) return -1;
      i = close;
    } else if (s[i] == ':') {
      if (i + 1 < end && s[i + 1] == ':') {
        ++i;
        continue;
      }
      return i;
    }
  }
  return -1;
}

// The base at [from, to) without its access and virtual words.
int skipBaseQualifiers(const char* s, int from, int to) {
  static const char* const kWords[] = {"public", "protected", "private", "virtual", nullptr};
  for (bool again = true; again;) {
    again = false;
    from = skipBlanks(s, from, to);
    for (const char* const* word = kWords; *word; ++word) {
      const int n = static_cast<int>(std::strlen(*word));
      if (startsWith(s, from, to, *word) && from + n < to && isBlank(s[from + n])) {
        from += n;
        again = true;
      }
    }
  }
  return from;
}

// What follows a keyword, and so which children the instruction gets.
enum class Form {
  Expression,       // an expression on the rest
  Enumeration,      // an expression on the rest, even empty; node type 8
  Instruction,      // an instruction on the rest (inline)
  TypeHead,         // struct, union, class, interface: name, then bases
  Typedef,          // the declared name
  Control,          // the condition between parentheses, then statements
  Statements,       // the controlled statements (else, do)
  Return,           // an expression, or a null node on the ';'
  Nothing,          // no child (default)
  DeleteArray,      // the operand after the brackets
  Free,             // the parenthesised operand
  Call              // the whole text, a call (exit)
};

struct KeywordForm {
  const char* keyword;
  bool wholeWord;  // the keyword must not run on into a longer identifier
  int preciseType;
  Form form;
  int skip;  // characters of the keyword before the rest (the '(' of a control)
};

// In the order of the tests: the first keyword that opens the text decides.
const KeywordForm kKeywordForms[] = {
    {"enum ", false, vnxInstruction::tNone, Form::Enumeration, 5},
    {"static ", false, vnxInstruction::tStatic, Form::Expression, 7},
    {"virtual ", false, vnxInstruction::tVirtual, Form::Expression, 8},
    {"goto ", false, vnxInstruction::tGoto, Form::Expression, 5},
    {"inline ", false, vnxInstruction::tInline, Form::Instruction, 7},
    {"struct ", false, vnxInstruction::tNone, Form::TypeHead, 7},
    {"union ", false, vnxInstruction::tNone, Form::TypeHead, 6},
    {"typedef ", false, vnxInstruction::tNone, Form::Typedef, 8},
    {"class ", false, vnxInstruction::tNone, Form::TypeHead, 6},
    {"interface ", false, vnxInstruction::tNone, Form::TypeHead, 10},
    {"if(", false, vnxInstruction::tIf, Form::Control, 2},
    {"while(", false, vnxInstruction::tWhile, Form::Control, 5},
    {"switch(", false, vnxInstruction::tSwitch, Form::Control, 6},
    {"for(", false, vnxInstruction::tFor, Form::Control, 3},
    {"return", true, vnxInstruction::tReturn, Form::Return, 6},
    {"case", true, vnxInstruction::tCase, Form::Expression, 4},
    {"default", true, vnxInstruction::tDefault, Form::Nothing, 7},
    {"else", true, vnxInstruction::tElse, Form::Statements, 4},
    {"do", true, vnxInstruction::tDo, Form::Statements, 2},
    {"delete[", false, vnxInstruction::tDeleteCrochet, Form::DeleteArray, 6},
    {"delete ", false, vnxInstruction::tDelete, Form::Expression, 6},
    {"delete(", false, vnxInstruction::tDelete, Form::Expression, 6},
    {"free(", false, vnxInstruction::tFree, Form::Free, 4},
    {"exit(", false, vnxInstruction::tExit, Form::Call, 0},
    {"ZELExit(", false, vnxInstruction::tExit, Form::Call, 0},
    {"__except(", false, vnxInstruction::tExcept, Form::Control, 8},
};

const KeywordForm kPlainForm = {"", false, vnxInstruction::tNone, Form::Expression, 0};

constexpr int kFormCount = static_cast<int>(sizeof(kKeywordForms) / sizeof(kKeywordForms[0]));
static_assert(kFormCount <= 32, "one bit per keyword form");

// For each first character, the keyword forms that start with it (bit k for
// kKeywordForms[k]), and each keyword's length: most instructions start with
// a character no keyword starts with, and are told so by one load.
struct FormIndex {
  unsigned byFirst[256] = {};
  int length[kFormCount] = {};
  FormIndex() {
    for (int k = 0; k < kFormCount; ++k) {
      byFirst[static_cast<unsigned char>(kKeywordForms[k].keyword[0])] |= 1u << k;
      length[k] = static_cast<int>(std::strlen(kKeywordForms[k].keyword));
    }
  }
};

const FormIndex kFormIndex;

const KeywordForm& formAt(const char* s, int p, int end) {
  if (p >= end) return kPlainForm;
  // The forms are tried in table order: the first that matches decides.
  for (unsigned forms = kFormIndex.byFirst[static_cast<unsigned char>(s[p])]; forms; forms &= forms - 1) {
    const int k = __builtin_ctz(forms);
    const KeywordForm& form = kKeywordForms[k];
    const int n = kFormIndex.length[k];
    if (p + n > end || std::memcmp(s + p, form.keyword, static_cast<size_t>(n)) != 0) continue;
    // A keyword written without its following character matches only as a
    // whole word: "do" must not take "double x", nor "return" "returnCode=f()".
    if (form.wholeWord && p + n != end && isWordChar(s[p + n])) continue;
    return form;
  }
  return kPlainForm;
}

}  // namespace

// --- pool ---------------------------------------------------------------------------

vnxInstruction* vnxInstruction::CreateTAPInstruction(vnxSyntaxe* father, int begin, int size, int posInFather) {
  return vnxSyntaxeAccess::placeNew<vnxInstruction>(vnxpools::instructions, vnxpools::kInstructions, kInstruction,
                                                    father, begin, size, posInFather);
}

void vnxInstruction::Reset() {
  vnxSyntaxe::Reset();
  _preciseType = 0;
}

void vnxInstruction::ReturnToPool() { vnxpools::instructions.release(this, _ownerBlock); }

int vnxInstruction::GetPoolLiveCount() { return vnxpools::instructions.liveCount(); }
int vnxInstruction::GetPoolBlockCount() { return vnxpools::instructions.blockCount(); }

// --- build --------------------------------------------------------------------------

int vnxInstruction::Build(int) {
  if (_depth > kMaxDepth) {
    ErrMsg = "Depth too high when building a vnxInstruction : " + toString(_depth);
    return 1;
  }
  const char* s = _source ? _source->GetStream() : nullptr;
  if (!s || !_streamAtBegin || _begin < 0 || _begin + _size > _source->GetSize()) return 1;

  Text text;
  text.rawEnd = _begin + _size;
  text.begin = skipBlanks(s, _begin, text.rawEnd);
  text.end = text.rawEnd;
  while (text.end > text.begin && isBlank(s[text.end - 1])) --text.end;
  text.exprEnd = text.end;
  if (text.exprEnd > text.begin) {
    const char c = s[text.exprEnd - 1];
    const bool scope = c == ':' && text.exprEnd - 2 >= text.begin && s[text.exprEnd - 2] == ':';
    if (c == ';' || (c == ':' && !scope)) --text.exprEnd;
  }
  while (text.exprEnd > text.begin && isBlank(s[text.exprEnd - 1])) --text.exprEnd;
  if (text.exprEnd <= text.begin && text.end - text.begin <= 1) {
    _preciseType = tTAPSyntaxeNULL;
    return 0;
  }

  int p = text.begin;
  if (startsWith(s, p, text.rawEnd, "ExportedBy")) {
    // The export macro in front of a declaration says nothing of its kind.
    int q = p;
    while (q < text.exprEnd && isWordChar(s[q])) ++q;
    q = skipBlanks(s, q, text.exprEnd);
    if (q < text.exprEnd) p = q;
  }
  return classify(s, text, p);
}

int vnxInstruction::classify(const char* s, const Text& text, int p) {
  // Keywords are matched on the node's own text, trailing blanks included:
  // "enum " before a '{' is still an enum head.
  const KeywordForm& form = formAt(s, p, text.rawEnd);
  _preciseType = form.preciseType;
  const int rest = p + form.skip;
  const int e = text.exprEnd;
  switch (form.form) {
    case Form::Expression: return addExpression(rest, e);
    case Form::Enumeration:
      _type = kDeclaration;
      return addExpression(rest, e, true);
    case Form::Instruction: return addInstruction(rest, text.rawEnd);
    case Form::TypeHead: return buildTypeDeclaration(s, text, rest, false);
    case Form::Typedef: return buildTypeDeclaration(s, text, rest, true);
    case Form::Control: return buildControl(s, text, rest);
    case Form::Statements: return buildStatements(s, text, rest);
    case Form::Return: return buildReturn(s, text, p);
    case Form::Nothing: return 0;
    case Form::DeleteArray: {
      const int close = SearchEndOfIndex(s, rest, e - 1);
      if (close == 0) {
        ErrMsg = "Problem : missing end of [ in delete[]";
        return 1;
      }
      return addExpression(close + 1, e);
    }
    case Form::Free: return e - p > 5 ? addExpression(rest, e) : 0;
    case Form::Call: return addExpression(p, e);
  }
  return 0;
}

int vnxInstruction::buildControl(const char* s, const Text& text, int open) {
  const int close = SearchEndOfPar(s, open, text.end - 1);
  if (close == 0) {
    ErrMsg = "Missing )";
    return 1;
  }
  if (addExpression(open + 1, close, true)) return 1;
  return buildStatements(s, text, close + 1);
}

int vnxInstruction::buildStatements(const char* s, const Text& text, int from) {
  bool any = false;
  for (int q = skipBlanks(s, from, text.end); q < text.end; q = skipBlanks(s, q, text.end)) {
    any = true;
    if (s[q] == ';') {
      addLeaf(kSyntaxeNULL, q, 1);
      ++q;
      continue;
    }
    if (s[q] == '{') {
      const int close = addBlock(s, text, q);
      if (close < 0) return 1;
      q = close + 1;
      continue;
    }
    int end = SearchEndOfTAPInstruction(s, q, text.end - 1, 1, 0);
    if (end == 0) {
      ErrMsg = "Missing Instruction end for Instruction starting line " + lineAndCol(_source, q);
      return 1;
    }
    if (end < q) end = q;
    if (addInstruction(q, end + 1)) return 1;
    q = end + 1;
  }
  if (!any) {
    // An empty body: the ';' that ends the instruction when there is one
    // (it lies just outside an instruction cut from a block).
    const int at = text.end;
    addLeaf(kSyntaxeNULL, at, at < _source->GetSize() && s[at] == ';' ? 1 : 0);
  }
  return 0;
}

int vnxInstruction::buildReturn(const char* s, const Text& text, int p) {
  if (skipBlanks(s, p + 6, text.exprEnd) < text.exprEnd) return addExpression(p + 6, text.exprEnd);
  // return; : a null node on its ';', wherever the cut left it.
  const int size = _source->GetSize();
  int at = p + 6;
  while (at < size && isBlank(s[at])) ++at;
  addLeaf(kSyntaxeNULL, at, at < size && s[at] == ';' ? 1 : 0);
  return 0;
}

int vnxInstruction::buildTypeDeclaration(const char* s, const Text& text, int from, bool isTypedef) {
  _type = kDeclaration;
  const int end = text.exprEnd;
  const int colon = isTypedef ? -1 : baseListColon(s, from, end);
  const int headEnd = colon >= 0 ? colon : end;
  int nameBegin = headEnd;
  int nameSize = 0;
  if (isTypedef) typedefName(s, from, headEnd, nameBegin, nameSize);
  else declaredTypeName(s, from, headEnd, nameBegin, nameSize);
  addLeaf(kTAPIdentifiant, nameBegin, nameSize);
  if (colon < 0) return 0;

  // One expression per base, cut at the commas outside parentheses and
  // template brackets.
  int depth = 0;
  int baseBegin = colon + 1;
  for (int i = colon + 1; i <= end; ++i) {
    const char c = i < end ? s[i] : ',';
    if (c == '(' || c == '<') ++depth;
    else if ((c == ')' || c == '>') && depth > 0) --depth;
    else if (c == ',' && (depth == 0 || i == end)) {
      if (addExpression(skipBaseQualifiers(s, baseBegin, i), i)) return 1;
      baseBegin = i + 1;
    }
  }
  return 0;
}

// --- children -----------------------------------------------------------------------

int vnxInstruction::addExpression(int from, int to, bool always) {
  const char* s = _source->GetStream();
  from = skipBlanks(s, from, to);
  while (to > from && isBlank(s[to - 1])) --to;
  if (to <= from && !always) return 0;
  // Build checked that the instruction lies inside its stream.
  if (from <= to) return vnxExpression::addBuilt(this, s, from, to);
  vnxExpression* child = vnxExpression::CreateTAPExpression(this, from, to - from, _childCount + 1);
  if (!child) return 0;
  vnxSyntaxeAccess::adopt(this, child);
  const int status = child->Build(0);
  vnxSyntaxeAccess::builtByBuilder();
  return status;
}

int vnxInstruction::addInstruction(int from, int to) {
  vnxInstruction* child = CreateTAPInstruction(this, from, to - from, _childCount + 1);
  if (!child) return 0;
  vnxSyntaxeAccess::adopt(this, child);
  const int status = child->Build(0);
  vnxSyntaxeAccess::builtByBuilder();
  return status;
}

int vnxInstruction::addBlock(const char* s, const Text& text, int open) {
  const int close = SearchEndOfTAPBloc(s, open, _source->GetSize() - 1, 0);
  if (close == 0) {
    ErrMsg = "Missing TAPBloc end at line " + lineAndCol(_source, open);
    return -1;
  }
  if (close >= text.end) {
    ErrMsg = "End of TAPBloc not coherent, internal error at line " + lineAndCol(_source, open);
    return -1;
  }
  vnxSyntaxe* block = CreateTAPSyntaxe(kTAPBloc, this, open + 1, close - open - 1, _childCount + 1);
  if (!block) return close;
  vnxSyntaxeAccess::adopt(this, block);
  const int status = block->Build(0);
  vnxSyntaxeAccess::builtByBuilder();
  return status ? -1 : close;
}

void vnxInstruction::addLeaf(int type, int begin, int size) {
  vnxSyntaxe* leaf = CreateTAPSyntaxe(type, this, begin, size, _childCount + 1);
  vnxSyntaxeAccess::attachLeaf(this, leaf);
}
