// vnxSyntaxe: one node of the tolerant syntax tree.
//
// A node holds no text: it designates a stretch (begin, size) of the
// preprocessed stream of one vnxSourceFile, on which it holds a reference, and
// knows its father (not owned), its children (one reference each) and its type.
// Nodes come only from the per-class pools (CreateTAPSyntaxe and the subclass
// factories) and go back there on their last Release; releasing a root releases
// the whole tree without recursing on the C++ stack. Building (Build) cuts a
// File, Header or TAPBloc node into blocks and instructions; vnxInstruction and
// vnxExpression extend it. Not thread-safe: pools, ErrMsg, the statement-macro
// list and the dump indentation are process-wide.
#ifndef VNX_SYNTAXE_H
#define VNX_SYNTAXE_H

#include "ZELLists.h"
#include "ZELString.h"
#include "vnxExport.h"

class vnxSourceFile;
class vnxSyntaxe;

typedef ZELListPtr<vnxSyntaxe> ZELListPtrvnxSyntaxe;

// Navigation codes of vnxSyntaxe::Navigate / Navigate2 (each followed by the
// number of arguments given in brackets).
enum vnxSyntaxeNavigationCode : int {
  SNAV_Father = 101,          // [0] move to the father
  SNAV_Child = 102,           // [1: int index from 1] move to that child
  SNAV_Test = 200,            // [1: int node type] node must have that type
  SNAV_ExprTest = 201,        // [1: const char* operator] expression with that operator text
  SNAV_InstTest = 202,        // [1: int precise type] instruction of that precise type
  SNAV_SyntaxeContent = 203,  // [1: vnxSyntaxe*] same text as that node
  SNAV_StringContent = 204,   // [1: const char*] text equal to the string
  SNAV_IsNull = 205,          // [1: dummy, skipped] node must be a SyntaxeNULL
  SNAV_BeginWith = 206,       // [1: const char*] text begins with the string
  SNAV_Previous = 207,        // [0] move to the previous sibling
  SNAV_Next = 208             // [0] move to the next sibling
};

class VNX_EXPORT vnxSyntaxe {
 public:
  // Node types (GetType).
  enum NodeType : int {
    kFile = 1,            // "File": root of a source file
    kTAPBloc = 2,         // "TAPBloc": inside of { }, both braces excluded
    kInstruction = 3,     // "vnxInstruction"
    kExpression = 4,      // "vnxExpression"
    kTAPIdentifiant = 5,  // "TAPIdentifiant": identifier leaf
    kArguments = 6,       // "Arguments": argument list
    kHeader = 7,          // "Header": root of a header file, only its top level cut
    kDeclaration = 8,     // "Declaration": file-level instruction followed by a block
    kSyntaxeNULL = 9      // "SyntaxeNULL": empty instruction
  };

  // --- creation -------------------------------------------------------------
  // A root over file's preprocessed stream (a reference on file is taken).
  // Count 1, not attached anywhere. A null file gives an untyped, sourceless node.
  // Null only when memory runs out.
  static vnxSyntaxe* CreateTAPSyntaxe(int type, vnxSourceFile* file, int begin, int size, int posInFather);
  // A node under father (same source, depth + 1); the caller appends it.
  static vnxSyntaxe* CreateTAPSyntaxe(int type, vnxSyntaxe* father, int begin, int size, int posInFather);

  // Deliberately shallow: the copy shares children, content cache and source
  // without taking references. Never Release a copy.
  vnxSyntaxe(const vnxSyntaxe& other) = default;
  vnxSyntaxe& operator=(const vnxSyntaxe& other);

  // --- virtual operations ---------------------------------------------------
  // Drops one hold; at zero the node's children are released and the node goes
  // back to its pool. Also empties the statement-macro list, on every call.
  // Subclasses do not override it: they override Reset and ReturnToPool.
  virtual void Release();
  // Cuts this File (1), Header (7) or TAPBloc (2) node into children: 0, or 1
  // with ErrMsg set. withNullInstructions: a lone ';' becomes a SyntaxeNULL.
  virtual int Build(int withNullInstructions);
  // Writes the node (and, when recursive, its subtree) to wbStderr: 0, or 1
  // for a node without a source or of unknown type ("Unknown type").
  virtual int Dump(ZELString indent, int recursive);
  // Precise type of an instruction (vnxInstruction overrides it with exactly
  // this signature); 0 for every other node.
  virtual int GetPreciseType() const;
  // Operator text of an expression (vnxExpression overrides it with exactly
  // this signature, never null); null for every other node.
  virtual const char* GetOperator() const;

  // --- structure ------------------------------------------------------------
  void AddRef() { ++_refCount; }
  int GetRefCount() const { return _refCount; }
  // Child i, 1-based; null (and " vnxSyntaxe:Child Bad Index" on wbStderr)
  // outside 1..ChildCount(). Inline: tree walks call it for every node.
  vnxSyntaxe* Child(int i) { return i >= 1 && i <= _childCount ? childAt(i) : badChildIndex(); }
  int ChildCount() const { return _childCount; }
  vnxSyntaxe* GetParent() const { return _father; }
  int GetPosInFather() const { return _posInFather; }
  int GetType() const { return _type; }
  int GetDepth() const { return _depth; }
  vnxSourceFile* GetTAPSourceFile() const { return _source; }
  // Last child, repeatedly; this node when it has no children.
  vnxSyntaxe* GetLastLeaf();
  // Sibling after / before this node; null for a root, at the ends, or when the
  // father does not hold this node. Memorised on first call: ask finished trees.
  vnxSyntaxe* getNext();
  vnxSyntaxe* getPrevious();
  // Appends the positions in father from the root's child down to this node
  // (nothing for a root). Answers 0.
  int GetTAPSyntaxePath(ZELRawCollint& positions);

  // --- positions and text (offsets in the preprocessed stream) --------------
  int GetBegin() const { return _begin; }
  int GetSize() const { return _size; }
  int GetEnd() const { return _begin + _size; }
  // Line and column of begin / of the last character / of one past the end;
  // untouched without a source.
  void GetPos(int& line, int& col) const;
  void GetEndPos(int& line, int& col) const;
  void GetPosEndOfScope(int& line, int& col) const;
  // begin / last character as raw-stream offsets; -1 without a source.
  int getBeginPosInChar();
  int getEndPosInChar();
  // Name of the source file; null without a source.
  const char* GetSource() const;
  // The node's first character in the stream (not terminated at the node's
  // end); "" when the size is 0 or there is no source.
  const char* GetStream() const;
  // The node's text, NUL-terminated, copied once and kept until the node dies;
  // null without a source.
  const char* GetContent();
  // TAPBloc only: lines from its first to its last character (1 when empty);
  // 0 for other types or without a source.
  int GetBlocSize() const;
  // 1 when the text begins / ends with s; 0 when s is longer or there is no source.
  int StartWith(const char* s) const;
  int EndWith(const char* s) const;
  // 1 when the text is at least 2 long and ends with "*".
  int IsPointer() const;
  // 1 when the text is at least 5 long and ends with "_var".
  int IsHandler() const;

  // Same source name (or both sourceless), same begin and size.
  bool operator==(const vnxSyntaxe& other) const;
  bool operator==(const vnxSyntaxe* other) const;  // false for null
  bool operator!=(const vnxSyntaxe& other) const { return !(*this == other); }
  bool operator!=(const vnxSyntaxe* other) const { return !(*this == other); }

  // --- navigation and content queries ---------------------------------------
  // Codes and their arguments, ended by a 0 (an argument 0 or null ends the
  // list too). Null when a move or a test fails.
  vnxSyntaxe* Navigate(int code, ...);
  // The same over a list of count pointer-sized values (codes and ints stored
  // as integers cast to pointers).
  vnxSyntaxe* Navigate2(int count, const char** list);
  // 0 when the text equals s (n == -1) or begins with its n first characters;
  // non-zero otherwise or without a stream.
  int TestContent(const char* s, int n);
  // 0 when both texts are equal; non-zero otherwise (null other, no stream).
  int TestContent(vnxSyntaxe* other);
  // Appends every leaf (in depth-first order) whose text equals s / other's
  // text; 1 when the list is not empty afterwards. No reference is added: the
  // nodes live as long as the tree.
  int FindOccurrences(const char* s, ZELListPtr<vnxSyntaxe>& found);
  int FindOccurrences(vnxSyntaxe* other, ZELListPtr<vnxSyntaxe>& found);
  // 1 at the first leaf whose text equals s.
  int HasOccurrences(const char* s);
  // Appends the tokens of an expression with its punctuation put back. Answers 1.
  int GetListOfString(ZELListValZELString& out);
  // 1 when the text (or the operand of a cast) is "0" or "NULL" / "this".
  int isSyntaxeNullValue();
  int isSyntaxeThisValue();

  // --- control-flow predicates (defined with the control-flow code) ---------
  int isSyntaxeTry();
  int isSyntaxeCatch();
  int isSyntaxeThrow();
  int isSyntaxeRethrow();
  int launchThrow(vnxSyntaxe** found);
  int launchReThrow(vnxSyntaxe** found);
  int isReturnOrFollowedByReturn(int limit);
  int isExitOrFollowedByExit(int limit);
  int isFollowedByReturn(int limit);
  int isFollowedByExit(int limit);
  int isFollowedByZELAssertNull(int limit);
  int isFollowedByGoto(int limit);
  int isGotoOrFollowedByGoto(int limit);
  int isZELAssertNullOrFollowedByZELAssertNull(int limit);

  // --- scanners ---------------------------------------------------------------
  // Over s, starting at offset from, never examining past limit (inclusive) nor
  // below lowest. Forward ones answer the closing character's offset, backward
  // ones the opening one's; 0 on failure. Some set ErrMsg ("Missing \"",
  // "Missing '", "Missing */").
  static int SearchEndOfTAPBloc(const char* s, int from, int limit, int withComments);
  static int SearchEndOfPar(const char* s, int from, int limit);
  static int SearchEndOfIndex(const char* s, int from, int limit);
  static int SearchEndOfString(const char* s, int from, int limit);
  static int SearchEndOfString2(const char* s, int from, int limit);
  // Ends a "//" comment (at its newline); the names of these two are crossed.
  static int SearchEndOfCComment(const char* s, int from, int limit);
  // Ends a "/* */" comment (at its closing '/').
  static int SearchEndOfCPPComment(const char* s, int from, int limit);
  static int SearchBeginOfTAPBloc(const char* s, int from, int lowest);
  static int SearchBeginOfPar(const char* s, int from, int lowest);
  static int SearchBeginOfIndex(const char* s, int from, int lowest);
  static int SearchBeginOfString(const char* s, int from, int lowest);
  static int SearchBeginOfString2(const char* s, int from, int lowest);
  // Offset of the last character of the instruction starting at from: its ';'
  // or ':', the '}' of a block it owns, the character before a '{' that opens
  // the next block, or limit. 0 for an unclosed string, literal or parenthesis,
  // and for statements nested deeper than kMaxInstructionNesting.
  static int SearchEndOfTAPInstruction(const char* s, int from, int limit, int nested, int pendingQuestion);
  // 1 for ASCII letters, digits and '_'.
  static int isAlphaNumOrUnderScoreChar(const char& c);
  // 0 when the operator candidate at pos is not part of a longer operator
  // (defined with the expression code).
  static int ExistLongerOp(const char* text, int begin, int end, int pos, int length);

  static constexpr int kMaxDepth = 900;               // deepest node that is built
  static constexpr int kMaxInstructionNesting = 900;  // controlled statements in a row

  // --- class-wide state -----------------------------------------------------
  // Last failure of Build or Dump (a copy).
  static ZELString GetErrMsg() { return ErrMsg; }
  static ZELString ErrMsg;
  // Dump tag of an instruction precise type (" [tReturn]" ...); "" when none.
  static const char* GetPreciseTypeTag(int preciseType);
  // Printed name of a node type; null for an unknown type.
  static const char* GetTypeName(int type);
  // Keyword tables, each ended by a null entry.
  static const char* const operator_2[];
  static const char* const operator_3[];
  static const char* const basicTypes[];
  static const char* const tryInstructions[];
  static const char* const catchInstructions[];
  static const char* const throwInstructions[];
  static const char* const rethrowInstructions[];

  // Nodes of this class (not of subclasses) alive, and blocks held, in the pool.
  static int GetPoolLiveCount();
  static int GetPoolBlockCount();
  // Bytes of child arrays (nodes past two children) held by all nodes: with
  // the pool counts, what the trees alive cost, without walking them.
  static long long GetChildArrayBytes();

 protected:
  // Pool slots only. Written out (not defaulted) so that a pool's T() sets
  // the fields from their initialisers alone, without zeroing the slot first.
  vnxSyntaxe() {}
  virtual ~vnxSyntaxe() = default;

  // Where a pool factory places a node under a (non-null) father: the pool
  // constructs the slot with every field written once. block points to the
  // slot's block, which the pool sets before it constructs the node.
  struct Placement {
    vnxSyntaxe* father;
    void* const* block;
    int type;
    int begin;
    int size;
    int posInFather;
    unsigned char poolKind;
  };
  // The source's hold and stream pointer are the factory's to set.
  explicit vnxSyntaxe(const Placement& at)
      : _ownerBlock(*at.block),
        _depth(at.father->_depth + 1),
        _source(at.father->_source),
        _begin(at.begin),
        _size(at.size < 0 ? 0 : at.size),
        _type(at.type),
        _poolKind(at.poolKind),
        _father(at.father),
        _posInFather(at.posInFather) {}

  // Places a freshly pooled node: type, begin, size (negative -> 0), position
  // in father; source, depth and stream pointer from file (a root) or from
  // father. With a null file / father nothing is set.
  void create(int type, vnxSourceFile* file, int begin, int size, int posInFather);
  void create(int type, vnxSyntaxe* father, int begin, int size, int posInFather);
  // Holds child (refCount + 1) as the next child. Null is ignored.
  void Append(vnxSyntaxe* child);
  // Drops what the node holds: source reference, content cache, children
  // (their holds dropped; those left without one join the release under
  // way), child array, sibling memos. Runs only inside Release, and only for
  // nodes that no library pool holds: those die without it. Subclasses extend
  // it for their own fields and call this one.
  virtual void Reset();
  // Gives this dead node back to the pool it came from (it is destroyed there).
  // Each pooled subclass overrides it with its own pool and _ownerBlock.
  virtual void ReturnToPool();

  // Statement macros (names of macros whose definition ends with ';'), sorted;
  // refilled from the source files when empty, emptied by every Release.
  static ZELListValZELString _listMacro;

  void* _ownerBlock = nullptr;
  const char* _streamAtBegin = nullptr;
  int _refCount = 1;
  int _depth = 0;
  vnxSourceFile* _source = nullptr;
  int _begin = 0;
  int _size = 0;
  int _type = 0;
  // Which of the library's node pools the node came from, 0 for none (a
  // caller's own subclass); set by the factories, read when the node dies.
  // It sits in the padding after _type: the node keeps its size.
  unsigned char _poolKind = 0;
  vnxSyntaxe* _firstChildren[2] = {nullptr, nullptr};
  vnxSyntaxe** _childArray = nullptr;
  int _childCount = 0;
  int _childCapacity = 2;
  vnxSyntaxe* _father = nullptr;
  char* _contentCache = nullptr;
  int _posInFather = 0;
  vnxSyntaxe* _nextCache = nullptr;
  vnxSyntaxe* _previousCache = nullptr;
  int _nextKnown = 0;
  int _previousKnown = 0;

 private:
  template <class T, int kSlots>
  friend class TAPool;
  friend struct vnxSyntaxeAccess;  // the library's own helpers

  // Child i (1..childCount), unchecked.
  vnxSyntaxe* childAt(int i) const {
    vnxSyntaxe* const* children = _childArray ? _childArray : _firstChildren;
    return children[i - 1];
  }
  // Reports a Child index out of range; null.
  static vnxSyntaxe* badChildIndex();
};

// Dump indentation, one process-wide string: a pointer to it; a copy before
// adding three blanks; a copy after removing three.
VNX_EXPORT ZELString* getcscindent();
VNX_EXPORT ZELString cscincrement();
VNX_EXPORT ZELString cscdecrement();

#endif
