// The node itself: pool, creation, children, reference counting, positions,
// text, comparison, dump and the dump indentation.
#include "vnxSyntaxe.h"

#include <cstdlib>
#include <cstring>
#include <vector>

#include "TAFatalError.h"
#include "source/vnxDiag.h"
#include "syntax/vnxSyntaxeAccess.h"
#include "syntax/vnxSyntaxePools.h"
#include "vnxSourceFile.h"
#include "wbStream.h"

ZELString vnxSyntaxe::ErrMsg;
ZELListValZELString vnxSyntaxe::_listMacro;

TAPool<vnxSyntaxe> vnxpools::nodes;
TAPool<vnxInstruction> vnxpools::instructions;
TAPool<vnxExpression> vnxpools::expressions;

namespace {

long long childArrayBytes = 0;

// Storage of the child arrays. The capacity a node reports grows by 5 (7,
// 12, 17, ...), but the arrays behind it need not be reallocated at each
// step: most arrays are of capacity 7 or 12, and those are recycled through
// a free list each (an array of the other size class is never put on one),
// while larger ones are allocated in powers of two and only moved when the
// capacity passes one. Both save the allocator a call per growth and per
// release, which on a large tree counts in the tens of thousands.
class ChildArrays {
 public:
  // An array for capacity pointers, holding the first count of old (of
  // oldCapacity pointers, null when oldCapacity is the two inline ones).
  vnxSyntaxe** grow(vnxSyntaxe** old, int oldCapacity, int capacity) {
    if (capacity <= kSmall) return take(_small, kSmall);
    if (capacity <= kMedium) {
      vnxSyntaxe** grown = take(_medium, kMedium);
      if (grown && old) {
        std::memcpy(grown, old, sizeof(vnxSyntaxe*) * oldCapacity);
        give(_small, old);
      }
      return grown;
    }
    if (oldCapacity > kMedium && roomFor(capacity) == roomFor(oldCapacity)) return old;
    auto* grown = static_cast<vnxSyntaxe**>(std::realloc(old, sizeof(vnxSyntaxe*) * roomFor(capacity)));
    return grown;
  }

  void free(vnxSyntaxe** array, int capacity) {
    if (capacity <= kSmall) give(_small, array);
    else if (capacity <= kMedium) give(_medium, array);
    else std::free(array);
  }

 private:
  static constexpr int kSmall = 7;
  static constexpr int kMedium = 12;

  // Pointers held by an array of more than kMedium: the capacity rounded up
  // to a power of two.
  static int roomFor(int capacity) {
    int room = 16;
    while (room < capacity) room *= 2;
    return room;
  }

  // A free list links its arrays through their first pointer.
  static vnxSyntaxe** take(void*& list, int capacity) {
    if (void* head = list) {
      list = *static_cast<void**>(head);
      return static_cast<vnxSyntaxe**>(head);
    }
    return static_cast<vnxSyntaxe**>(std::malloc(sizeof(vnxSyntaxe*) * capacity));
  }
  static void give(void*& list, vnxSyntaxe** array) {
    *reinterpret_cast<void**>(array) = list;
    list = array;
  }

  void* _small = nullptr;
  void* _medium = nullptr;
};

ChildArrays gChildArrays;  // constant-initialised

// The release under way: the nodes whose last hold is gone and that are not
// freed yet, linked through their _nextCache (a memo nobody reads any more).
// The walk takes them from this list instead of recursing, so any depth is
// safe, and a node's children are pushed last first, so that a tree is freed
// in the order it was built, which is the order of its nodes in the pools'
// blocks.
struct ReleaseWalk {
  vnxSyntaxe* dead = nullptr;
  bool running = false;
};

ReleaseWalk gWalk;  // constant-initialised

}  // namespace

// --- creation ---------------------------------------------------------------------

vnxSyntaxe* vnxSyntaxe::CreateTAPSyntaxe(int type, vnxSourceFile* file, int begin, int size, int posInFather) {
  void* block = nullptr;
  vnxSyntaxe* node = vnxpools::nodes.getNew(&block);
  if (!node) return nullptr;
  node->_ownerBlock = block;
  node->_poolKind = vnxpools::kNodes;
  node->create(type, file, begin, size, posInFather);
  return node;
}

vnxSyntaxe* vnxSyntaxe::CreateTAPSyntaxe(int type, vnxSyntaxe* father, int begin, int size, int posInFather) {
  return vnxSyntaxeAccess::placeNew<vnxSyntaxe>(vnxpools::nodes, vnxpools::kNodes, type, father, begin, size,
                                                posInFather);
}

void vnxSyntaxe::create(int type, vnxSourceFile* file, int begin, int size, int posInFather) {
  if (!file) return;
  _type = type;
  _begin = begin;
  _size = size < 0 ? 0 : size;
  _posInFather = posInFather;
  _father = nullptr;
  _depth = 0;
  _source = file;
  file->AddRef();
  _streamAtBegin = vnxSyntaxeAccess::streamAt(file, begin);
}

void vnxSyntaxe::create(int type, vnxSyntaxe* father, int begin, int size, int posInFather) {
  vnxSyntaxeAccess::place(this, _ownerBlock, type, father, begin, size, posInFather);
}

vnxSyntaxe& vnxSyntaxe::operator=(const vnxSyntaxe& other) = default;

// --- children and reference counting ------------------------------------------------

void vnxSyntaxe::Append(vnxSyntaxe* child) {
  if (!child) return;
  if (_childCount >= _childCapacity) {
    // Growing by a fixed step keeps small nodes small; the arrays behind
    // the capacity are recycled or grown in powers of two (ChildArrays).
    const int capacity = _childCapacity + 5;
    vnxSyntaxe** grown = gChildArrays.grow(_childArray, _childCapacity, capacity);
    if (__builtin_expect(!grown, 0)) {
      TAFatalError(1, "vnxSyntaxe::Append out of memory");
      return;
    }
    if (!_childArray) {
      grown[0] = _firstChildren[0];
      grown[1] = _firstChildren[1];
    }
    _childArray = grown;
    childArrayBytes += static_cast<long long>(sizeof(vnxSyntaxe*)) * (capacity - (_childCapacity > 2 ? _childCapacity : 0));
    _childCapacity = capacity;
  }
  ++child->_refCount;
  if (_childArray) _childArray[_childCount] = child;
  else _firstChildren[_childCount] = child;
  ++_childCount;
}

inline void vnxSyntaxeAccess::dropHold(vnxSyntaxe* node) {
  if (__builtin_expect(node->_refCount <= 0, 0)) {
    TAFatalError(1, "vnxSyntaxe::Release of a node already released");
    return;
  }
  if (--node->_refCount > 0) return;
  node->_nextCache = gWalk.dead;
  gWalk.dead = node;
}

// A node that no library pool holds dies through its own virtual operations.
__attribute__((noinline)) static void buryForeign(vnxSyntaxe* node) {
  vnxSyntaxeAccess::bury(node);
}

inline void vnxSyntaxeAccess::buryLeaf(vnxSyntaxe* node) {
  if (node->_source) node->_source->Release();
  if (node->_contentCache) std::free(node->_contentCache);
  freeSlot(node);
}

inline void vnxSyntaxeAccess::dropChildHold(vnxSyntaxe* node) {
  if (__builtin_expect(node->_refCount <= 0, 0)) {
    TAFatalError(1, "vnxSyntaxe::Release of a node already released");
    return;
  }
  if (--node->_refCount > 0) return;
  // Leaves are a third of a tree: freed here, they skip the release list.
  if (node->_childCount == 0 && pooled(node)) {
    buryLeaf(node);
    return;
  }
  node->_nextCache = gWalk.dead;
  gWalk.dead = node;
}

inline void vnxSyntaxeAccess::freeSlot(vnxSyntaxe* node) {
  const unsigned char kind = node->_poolKind;
  if (node->_childArray) {
    gChildArrays.free(node->_childArray, node->_childCapacity);
    childArrayBytes -= static_cast<long long>(sizeof(vnxSyntaxe*)) * node->_childCapacity;
  }
  void* const block = node->_ownerBlock;
  if (kind == vnxpools::kExpressions) vnxpools::expressions.releaseExact(static_cast<vnxExpression*>(node), block);
  else if (kind == vnxpools::kInstructions) vnxpools::instructions.releaseExact(static_cast<vnxInstruction*>(node), block);
  else vnxpools::nodes.releaseExact(node, block);
}

inline void vnxSyntaxeAccess::bury(vnxSyntaxe* node) {
  const unsigned char kind = node->_poolKind;
  if (kind == vnxpools::kForeign) {
    node->Reset();
    node->_refCount = 1;
    node->ReturnToPool();
    return;
  }
  // A pooled node is never seen again once its slot is freed: only what it
  // holds is given back, none of its fields is cleared.
  if (node->_source) node->_source->Release();
  if (node->_contentCache) std::free(node->_contentCache);
  if (const int count = node->_childCount) {
    vnxSyntaxe* const* children = node->_childArray ? node->_childArray : node->_firstChildren;
    for (int i = count - 1; i >= 0; --i) dropChildHold(children[i]);
  }
  freeSlot(node);
}

void vnxSyntaxe::Release() {
  vnxSyntaxeAccess::emptyListMacro();
  vnxSyntaxeAccess::dropHold(this);
  // Inside a release under way (a subclass's Reset releasing something), the
  // walk below takes the node.
  if (gWalk.running) return;
  gWalk.running = true;
  while (vnxSyntaxe* node = gWalk.dead) {
    gWalk.dead = node->_nextCache;
    if (vnxSyntaxeAccess::pooled(node)) vnxSyntaxeAccess::bury(node);
    else buryForeign(node);
  }
  gWalk.running = false;
}

void vnxSyntaxe::Reset() {
  if (_source) _source->Release();
  _source = nullptr;
  _streamAtBegin = nullptr;
  if (_contentCache) {
    std::free(_contentCache);
    _contentCache = nullptr;
  }
  if (_childCount > 0) {
    // Reset runs only inside a release, whose walk frees the children left
    // without a hold.
    vnxSyntaxe* const* children = _childArray ? _childArray : _firstChildren;
    for (int i = _childCount - 1; i >= 0; --i) vnxSyntaxeAccess::dropHold(children[i]);
  }
  if (_childArray) {
    gChildArrays.free(_childArray, _childCapacity);
    childArrayBytes -= static_cast<long long>(sizeof(vnxSyntaxe*)) * _childCapacity;
    _childArray = nullptr;
  }
  _firstChildren[0] = _firstChildren[1] = nullptr;
  _childCount = 0;
  _childCapacity = 2;
  _nextKnown = _previousKnown = 0;
  _nextCache = _previousCache = nullptr;
}

void vnxSyntaxe::ReturnToPool() { vnxpools::nodes.release(this, _ownerBlock); }

int vnxSyntaxe::GetPoolLiveCount() { return vnxpools::nodes.liveCount(); }
int vnxSyntaxe::GetPoolBlockCount() { return vnxpools::nodes.blockCount(); }
long long vnxSyntaxe::GetChildArrayBytes() { return childArrayBytes; }

vnxSyntaxe* vnxSyntaxe::badChildIndex() {
  vnxdiag::plain(" vnxSyntaxe:Child Bad Index");
  return nullptr;
}

vnxSyntaxe* vnxSyntaxe::GetLastLeaf() {
  vnxSyntaxe* node = this;
  while (node->_childCount > 0) node = node->childAt(node->_childCount);
  return node;
}

vnxSyntaxe* vnxSyntaxe::getNext() {
  if (_nextKnown) return _nextCache;
  vnxSyntaxe* next = nullptr;
  if (_father) {
    const int position = vnxSyntaxeAccess::positionAmongChildren(_father, this);
    if (position >= 1 && position < _father->_childCount) next = _father->childAt(position + 1);
  }
  _nextCache = next;
  _nextKnown = 1;
  return next;
}

vnxSyntaxe* vnxSyntaxe::getPrevious() {
  if (_previousKnown) return _previousCache;
  vnxSyntaxe* previous = nullptr;
  if (_father) {
    const int position = vnxSyntaxeAccess::positionAmongChildren(_father, this);
    if (position > 1) previous = _father->childAt(position - 1);
  }
  _previousCache = previous;
  _previousKnown = 1;
  return previous;
}

int vnxSyntaxe::GetTAPSyntaxePath(ZELRawCollint& positions) {
  std::vector<int> chain;
  for (vnxSyntaxe* node = this; node->_father; node = node->_father) chain.push_back(node->_posInFather);
  for (auto it = chain.rbegin(); it != chain.rend(); ++it) positions.Append(*it);
  return 0;
}

// --- positions and text -------------------------------------------------------------

void vnxSyntaxe::GetPos(int& line, int& col) const {
  if (_source) _source->GetPos(_begin, line, col);
}

void vnxSyntaxe::GetEndPos(int& line, int& col) const {
  if (_source) _source->GetPos(_begin + _size - 1, line, col);
}

void vnxSyntaxe::GetPosEndOfScope(int& line, int& col) const {
  if (_source) _source->GetPos(_begin + _size, line, col);
}

int vnxSyntaxe::getBeginPosInChar() {
  return _source ? _source->getPosOfPreProcessedCharInRawStream(_begin) : -1;
}

int vnxSyntaxe::getEndPosInChar() {
  return _source ? _source->getPosOfPreProcessedCharInRawStream(_begin + _size - 1) : -1;
}

const char* vnxSyntaxe::GetSource() const { return _source ? _source->GetName() : nullptr; }

const char* vnxSyntaxe::GetStream() const {
  if (!_source || _size == 0 || !_streamAtBegin) return "";
  return _streamAtBegin;
}

const char* vnxSyntaxe::GetContent() {
  if (!_source || !_streamAtBegin) return nullptr;
  if (!_contentCache) {
    // A node reaching past its stream (a caller's mistake) is cut at its end.
    const int available = _source->GetSize() - _begin;
    const int length = _size < available ? _size : available;
    _contentCache = static_cast<char*>(std::malloc(static_cast<size_t>(length) + 1));
    if (!_contentCache) return nullptr;
    std::memcpy(_contentCache, _streamAtBegin, static_cast<size_t>(length));
    _contentCache[length] = '\0';
  }
  return _contentCache;
}

int vnxSyntaxe::GetBlocSize() const {
  if (_type != kTAPBloc || !_source) return 0;
  if (_size == 0) return 1;
  int firstLine = 0, lastLine = 0, col = 0;
  _source->GetPos(_begin, firstLine, col);
  _source->GetPos(_begin + _size - 1, lastLine, col);
  return lastLine - firstLine + 1;
}

int vnxSyntaxe::StartWith(const char* s) const {
  const char* text = nullptr;
  int length = 0;
  if (!s || !vnxSyntaxeAccess::text(this, text, length)) return 0;
  const size_t n = std::strlen(s);
  if (n > static_cast<size_t>(length)) return 0;
  return std::memcmp(text, s, n) == 0 ? 1 : 0;
}

int vnxSyntaxe::EndWith(const char* s) const {
  const char* text = nullptr;
  int length = 0;
  if (!s || !vnxSyntaxeAccess::text(this, text, length)) return 0;
  const size_t n = std::strlen(s);
  if (n > static_cast<size_t>(length)) return 0;
  return std::memcmp(text + length - n, s, n) == 0 ? 1 : 0;
}

int vnxSyntaxe::IsPointer() const { return _size >= 2 && EndWith("*") ? 1 : 0; }

int vnxSyntaxe::IsHandler() const { return _size >= 5 && EndWith("_var") ? 1 : 0; }

bool vnxSyntaxe::operator==(const vnxSyntaxe& other) const {
  if ((_source == nullptr) != (other._source == nullptr)) return false;
  if (_source && std::strcmp(_source->GetName(), other._source->GetName()) != 0) return false;
  return _begin == other._begin && _size == other._size;
}

bool vnxSyntaxe::operator==(const vnxSyntaxe* other) const { return other && *this == *other; }

// --- subclass hooks -----------------------------------------------------------------

int vnxSyntaxe::GetPreciseType() const { return 0; }
const char* vnxSyntaxe::GetOperator() const { return nullptr; }

// --- dump -------------------------------------------------------------------------

const char* vnxSyntaxe::GetTypeName(int type) {
  static const char* const kNames[] = {nullptr,          "File",           "TAPBloc",   "vnxInstruction",
                                       "vnxExpression",  "TAPIdentifiant", "Arguments", "Header",
                                       "Declaration",    "SyntaxeNULL"};
  return type >= 1 && type <= 9 ? kNames[type] : nullptr;
}

const char* vnxSyntaxe::GetPreciseTypeTag(int preciseType) {
  switch (preciseType) {
    case 9: return " [tTAPSyntaxeNULL]";
    case 20: return " [tReturn]";
    case 21: return " [tDelete]";
    case 22: return " [tDeleteCrochet]";
    case 23: return " [tVirtual]";
    case 24: return " [tStatic]";
    case 25: return " [tInline]";
    case 26: return " [tFree]";
    case 30: return " [tFor]";
    case 31: return " [tIf]";
    case 32: return " [tWhile]";
    case 33: return " [tSwitch]";
    case 34: return " [tElse]";
    case 35: return " [tDo]";
    case 36: return " [tCase]";
    case 37: return " [tDefault]";
    case 38: return " [tGoto]";
    case 39: return " [tExit]";
    case 100: return " [tExcept]";
    default: return "";
  }
}

int vnxSyntaxe::Dump(ZELString indent, int recursive) {
  if (!_source) return 1;
  const char* name = GetTypeName(_type);
  if (!name) {
    wbStderr << indent << "Unknown !" << endl;
    ErrMsg = "Unknown type";
    return 1;
  }
  ZELString line = indent + name;
  switch (_type) {
    case kFile:
    case kHeader:
      line += GetSource();
      line += "\n";  // the empty line after a root's banner is part of the format
      break;
    case kTAPBloc:
    case kArguments:
      break;
    default: {
      if (const char* op = GetOperator()) {
        line += " [";
        line += op;
        line += "] ";
      } else {
        line += GetPreciseTypeTag(GetPreciseType());
      }
      line += "  ";
      const char* text = nullptr;
      int length = 0;
      if (vnxSyntaxeAccess::text(this, text, length)) {
        line.Append(text, length < 59 ? length : 59);
        if (length > 60) line += "...";
      }
      break;
    }
  }
  wbStderr << line << endl;
  if (recursive) {
    const ZELString childIndent = indent + "  ";
    for (int i = 1; i <= _childCount; ++i) childAt(i)->Dump(childIndent, 1);
  }
  return 0;
}

// --- dump indentation -----------------------------------------------------------------

ZELString* getcscindent() {
  static ZELString* indent = new ZELString;
  return indent;
}

ZELString cscincrement() {
  ZELString* indent = getcscindent();
  ZELString before = *indent;
  *indent += "   ";
  return before;
}

ZELString cscdecrement() {
  ZELString* indent = getcscindent();
  indent->RemoveTail(3);
  return *indent;
}

// --- keyword tables -------------------------------------------------------------------

const char* const vnxSyntaxe::operator_2[] = {"::", "->", ".*", "++", "--", "<<", ">>", "<=", ">=", "==", "!=",
                                              "&&", "||", "+=", "-=", "*=", "/=", "%=", "&=", "|=", "^=", nullptr};
const char* const vnxSyntaxe::operator_3[] = {"<<=", ">>=", "->*", nullptr};
const char* const vnxSyntaxe::basicTypes[] = {"void",  "long",   "short",  "char",    "int",
                                              "double", "float", "HANDLE", "DWORD",   "time_t",
                                              "size_t", "clock_t", "signed", "unsigned", nullptr};
// The framework's exception macros. Matching is by prefix, so "ZELThrow" also
// covers every longer name beginning with it.
const char* const vnxSyntaxe::tryInstructions[] = {"ZELTry", "ZELAFTry", nullptr};
const char* const vnxSyntaxe::catchInstructions[] = {"ZELCatch", "ZELCatchOthers", "ZELAFCatch", nullptr};
const char* const vnxSyntaxe::throwInstructions[] = {"ZELThrow",
                                                     "ZELSubdBlockThrow",
                                                     "ZELThrowIfNull",
                                                     "ThrowIfNull",
                                                     "ZELHybBlockThrow",
                                                     "ThrowBadTopology",
                                                     "THROW_INTERNAL",
                                                     "ZELThrowForNullPointer",
                                                     "ZELThrowForNullPointerReturnValue",
                                                     "ZELMfRaise",
                                                     "throw",
                                                     nullptr};
const char* const vnxSyntaxe::rethrowInstructions[] = {"ZELRethrow", nullptr};
