// Navigation lists, content tests, occurrence searches and the flattening of
// an expression into strings. Texts are compared in place in the stream.
#include <cstdarg>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "TAFatalError.h"
#include "syntax/vnxSyntaxeAccess.h"
#include "vnxSourceFile.h"
#include "vnxSyntaxe.h"

namespace {

inline const char* asElement(intptr_t value) { return reinterpret_cast<const char*>(value); }
inline int asInt(const char* element) { return static_cast<int>(reinterpret_cast<intptr_t>(element)); }

// The operator text of an expression node, "" for anything else.
const char* operatorOf(const vnxSyntaxe* node) {
  const char* op = node->GetType() == vnxSyntaxe::kExpression ? node->GetOperator() : nullptr;
  return op ? op : "";
}

bool hasOperator(const vnxSyntaxe* node, const char* op) { return std::strcmp(operatorOf(node), op) == 0; }

// Compares the operator's first character, and its second one when the first
// is not NUL: "<<" also accepts "<<=".
bool operatorMatches(const vnxSyntaxe* node, const char* wanted) {
  if (node->GetType() != vnxSyntaxe::kExpression || !wanted) return false;
  const char* op = operatorOf(node);
  if (op[0] != wanted[0]) return false;
  return op[0] == '\0' || op[1] == wanted[1];
}

// One step of a navigation list: the node reached (null ends the walk) and
// how many list elements the step used.
struct Step {
  vnxSyntaxe* node;
  int used;
};

// Whether the code at i has its argument in the list. A missing one is
// reported with the code's own name, except for the operator and precise-type
// tests, whose check never fired in the original and stays silent.
bool argumentPresent(int code, const char* name, int i, int count) {
  if (i + 1 < count) return true;
  if (code != SNAV_ExprTest && code != SNAV_InstTest) {
    static std::string message;
    message = std::string("vnxSyntaxe::Navigate not enought args for ") + name;
    TAFatalError(1, message.c_str());
  }
  return false;
}

Step test(vnxSyntaxe* node, bool passed) { return {passed ? node : nullptr, 2}; }

Step navigateOne(vnxSyntaxe* node, const char** list, int i, int count) {
  const int code = asInt(list[i]);
  switch (code) {
    case SNAV_Father: return {node->GetParent(), 1};
    case SNAV_Previous: return {node->getPrevious(), 1};
    case SNAV_Next: return {node->getNext(), 1};
    case SNAV_IsNull: return test(node, node->GetType() == vnxSyntaxe::kSyntaxeNULL);
    default: break;
  }
  static const struct {
    int code;
    const char* name;
  } kNames[] = {{SNAV_Child, "SNAV_Child"},
                {SNAV_Test, "SNAV_Test"},
                {SNAV_ExprTest, "SNAV_ExprTest"},
                {SNAV_InstTest, "SNAV_InstTest"},
                {SNAV_SyntaxeContent, "SNAV_SyntaxeContent"},
                {SNAV_StringContent, "SNAV_StringContent"},
                {SNAV_BeginWith, "SNAV_BeginWith"}};
  const char* name = nullptr;
  for (const auto& entry : kNames)
    if (entry.code == code) name = entry.name;
  if (!name) {
    TAFatalError(1, "vnxSyntaxe::Navigate bad argument");
    return {node, 1};
  }
  // Without its argument the step is passed over and the walk goes on.
  if (!argumentPresent(code, name, i, count)) return {node, 2};
  const char* argument = list[i + 1];
  switch (code) {
    case SNAV_Child: {
      const int index = asInt(argument);
      if (index > node->ChildCount()) return {nullptr, 2};
      return {node->Child(index), 2};
    }
    case SNAV_Test: return test(node, node->GetType() == asInt(argument));
    case SNAV_ExprTest: return test(node, operatorMatches(node, argument));
    case SNAV_InstTest:
      return test(node, node->GetType() == vnxSyntaxe::kInstruction && node->GetPreciseType() == asInt(argument));
    case SNAV_SyntaxeContent:
      return test(node, node->TestContent(reinterpret_cast<vnxSyntaxe*>(const_cast<char*>(argument))) == 0);
    case SNAV_StringContent: return test(node, argument && node->TestContent(argument, -1) == 0);
    default:  // SNAV_BeginWith
      return test(node, argument && node->TestContent(argument, static_cast<int>(std::strlen(argument))) == 0);
  }
}

}  // namespace

vnxSyntaxe* vnxSyntaxe::Navigate(int code, ...) {
  // Each argument is read with the type its code gives it, then kept as a
  // pointer-sized element; a 0 (code, index, kind or null pointer) ends the list.
  std::vector<const char*> list;
  va_list args;
  va_start(args, code);
  for (int current = code; current != 0; current = va_arg(args, int)) {
    list.push_back(asElement(current));
    intptr_t argument = 0;
    switch (current) {
      case SNAV_Child:
      case SNAV_Test:
      case SNAV_InstTest:
      case SNAV_IsNull: argument = va_arg(args, int); break;
      case SNAV_ExprTest:
      case SNAV_StringContent:
      case SNAV_BeginWith: argument = reinterpret_cast<intptr_t>(va_arg(args, const char*)); break;
      case SNAV_SyntaxeContent: argument = reinterpret_cast<intptr_t>(va_arg(args, vnxSyntaxe*)); break;
      default: continue;  // moves (and unknown codes) take no argument
    }
    if (argument == 0) break;
    list.push_back(asElement(argument));
  }
  va_end(args);
  return Navigate2(static_cast<int>(list.size()), list.data());
}

vnxSyntaxe* vnxSyntaxe::Navigate2(int count, const char** list) {
  if (count < 1) return this;
  if (!list) return nullptr;
  vnxSyntaxe* node = this;
  for (int i = 0; node && i < count;) {
    const Step step = navigateOne(node, list, i, count);
    node = step.node;
    i += step.used;
  }
  return node;
}

// --- content tests ----------------------------------------------------------------

int vnxSyntaxe::TestContent(const char* s, int n) {
  const char* text = nullptr;
  int length = 0;
  if (!vnxSyntaxeAccess::text(this, text, length) || !s) return 1;
  if (length != 0 && s[0] != text[0]) return 1;
  const size_t wanted = std::strlen(s);
  if (n < 0) {
    if (wanted != static_cast<size_t>(length)) return 1;
    return std::strncmp(s, text, static_cast<size_t>(length));
  }
  if (wanted < static_cast<size_t>(n) || length < n) return 1;
  return std::strncmp(s, text, static_cast<size_t>(n));
}

int vnxSyntaxe::TestContent(vnxSyntaxe* other) {
  const char* text = nullptr;
  const char* otherText = nullptr;
  int length = 0, otherLength = 0;
  if (!other || !vnxSyntaxeAccess::text(this, text, length) || !vnxSyntaxeAccess::text(other, otherText, otherLength)) return 1;
  if (length != otherLength) return 1;
  return std::memcmp(text, otherText, static_cast<size_t>(length));
}

// --- occurrences ------------------------------------------------------------------

namespace {

// Visits the leaves under root in depth-first order until visit answers true.
// An explicit stack keeps deep trees off the C++ stack.
template <class Visit>
bool visitLeaves(vnxSyntaxe* root, Visit visit) {
  std::vector<vnxSyntaxe*> pending{root};
  while (!pending.empty()) {
    vnxSyntaxe* node = pending.back();
    pending.pop_back();
    const int count = node->ChildCount();
    if (count == 0) {
      if (visit(node)) return true;
      continue;
    }
    for (int i = count; i >= 1; --i) pending.push_back(vnxSyntaxeAccess::childAt(node, i));
  }
  return false;
}

}  // namespace

int vnxSyntaxe::FindOccurrences(const char* s, ZELListPtr<vnxSyntaxe>& found) {
  visitLeaves(this, [&](vnxSyntaxe* leaf) {
    if (leaf->TestContent(s, -1) == 0) found.Append(leaf);
    return false;
  });
  return found.Size() > 0 ? 1 : 0;
}

int vnxSyntaxe::FindOccurrences(vnxSyntaxe* other, ZELListPtr<vnxSyntaxe>& found) {
  visitLeaves(this, [&](vnxSyntaxe* leaf) {
    if (leaf->TestContent(other) == 0) found.Append(leaf);
    return false;
  });
  return found.Size() > 0 ? 1 : 0;
}

int vnxSyntaxe::HasOccurrences(const char* s) {
  return visitLeaves(this, [&](vnxSyntaxe* leaf) { return leaf->TestContent(s, -1) == 0; }) ? 1 : 0;
}

// --- strings of an expression --------------------------------------------------------

namespace {

void appendText(vnxSyntaxe* node, ZELListValZELString& out) {
  const char* text = nullptr;
  int length = 0;
  if (vnxSyntaxeAccess::text(node, text, length)) out.Append(ZELString(text, length));
}

bool isOneOf(const char* op, std::initializer_list<const char*> ops) {
  for (const char* candidate : ops)
    if (std::strcmp(op, candidate) == 0) return true;
  return false;
}

}  // namespace

int vnxSyntaxe::GetListOfString(ZELListValZELString& out) {
  const int count = _childCount;
  auto child = [&](int i) {
    if (vnxSyntaxe* node = Child(i)) node->GetListOfString(out);
  };
  const char* op = operatorOf(this);
  if (_type == kExpression && count == 2 && isOneOf(op, {",", "=", "&&", "&", "*"})) {
    child(1);
    out.Append(op);
    child(2);
  } else if (_type == kExpression && count == 1 && isOneOf(op, {"&&", "&", "*"})) {
    out.Append(op);
    child(1);
  } else if (_type == kExpression && count >= 1 && hasOperator(this, "in")) {
    child(1);
    out.Append("[");
    child(2);
    out.Append("]");
  } else if (_type == kExpression && (hasOperator(this, "mt") || hasOperator(this, "ct"))) {
    child(1);
    out.Append("(");
    if (count == 2) child(2);
    out.Append(")");
  } else if ((_type == kExpression && hasOperator(this, "id")) || _type == kTAPIdentifiant) {
    appendText(this, out);
  } else if (_type == kArguments) {
    for (int i = 1; i <= count; ++i) {
      if (i > 1) out.Append(",");
      child(i);
    }
  } else if (_type == kTAPBloc) {
    out.Append("{");
    for (int i = 1; i <= count; ++i) child(i);
    out.Append("}");
  } else {
    for (int i = 1; i <= count; ++i) child(i);
  }
  return 1;
}

// --- value predicates ---------------------------------------------------------------

namespace {

// The node itself, or the operand of a cast when it is a plain identifier.
vnxSyntaxe* valueNode(vnxSyntaxe* node) {
  if (hasOperator(node, "ct") && node->ChildCount() >= 2) {
    vnxSyntaxe* operand = vnxSyntaxeAccess::childAt(node, 2);
    if (hasOperator(operand, "id")) return operand;
  }
  return node;
}

}  // namespace

int vnxSyntaxe::isSyntaxeNullValue() {
  vnxSyntaxe* node = valueNode(this);
  return node->TestContent("0", -1) == 0 || node->TestContent("NULL", -1) == 0 ? 1 : 0;
}

int vnxSyntaxe::isSyntaxeThisValue() { return valueNode(this)->TestContent("this", -1) == 0 ? 1 : 0; }
