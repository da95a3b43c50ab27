// vnxInstruction: one statement or declaration of the tree (node type 3).
//
// Build classifies the instruction by its leading keyword into a precise type
// and creates its children: expressions for conditions and operands, blocks,
// nested instructions and null nodes for controlled statements, identifier
// leaves for declared type names. It does not resolve types or names. Nodes
// come from the instruction pool and are reference-counted like every node;
// the father holds its children. Not thread-safe (pool and ErrMsg are shared).
#ifndef VNX_INSTRUCTION_H
#define VNX_INSTRUCTION_H

#include "vnxExport.h"
#include "vnxSyntaxe.h"

template <class T, int kSlots>
class TAPool;

class VNX_EXPORT vnxInstruction : public vnxSyntaxe {
 public:
  // Precise types (GetPreciseType).
  enum PreciseType : int {
    tNone = 0,             // plain expression statement or declaration
    tTAPSyntaxeNULL = 9,   // nothing but blanks and a ';'
    tReturn = 20,          // "return"
    tDelete = 21,          // "delete " / "delete("
    tDeleteCrochet = 22,   // "delete["
    tVirtual = 23,         // "virtual "
    tStatic = 24,          // "static "
    tInline = 25,          // "inline "
    tFree = 26,            // "free("
    tFor = 30,             // "for("
    tIf = 31,              // "if("
    tWhile = 32,           // "while("
    tSwitch = 33,          // "switch("
    tElse = 34,            // "else"
    tDo = 35,              // "do"
    tCase = 36,            // "case"
    tDefault = 37,         // "default"
    tGoto = 38,            // "goto "
    tExit = 39,            // "exit(" / "ZELExit("
    tExcept = 100          // "__except("
  };

  // A node of type 3, precise type 0, under father (same source, depth + 1),
  // not yet appended. A null father gives an unplaced, sourceless node; null
  // only when memory runs out.
  static vnxInstruction* CreateTAPInstruction(vnxSyntaxe* father, int begin, int size, int posInFather);

  // Classifies the instruction and builds its children (flag is not used).
  // 0, or 1 with ErrMsg set; children built before a failure stay attached.
  int Build(int flag) override;
  int GetPreciseType() const override { return _preciseType; }

  // Cuts an "Arguments" node (type 6) whose extent is the text between a
  // call's parentheses into one expression per top-level comma-separated
  // argument (an empty argument becomes a SyntaxeNULL of size 0); a top-level
  // ';' ends the list. 0, or 1 with ErrMsg set ("Missing )", "Missing \"",
  // "Missing '", or the depth message of a vnxListOfArgs).
  static int BuildListOfArgs(vnxSyntaxe* arguments);

  // Instructions alive, and blocks held, in the instruction pool.
  static int GetPoolLiveCount();
  static int GetPoolBlockCount();

 protected:
  void Reset() override;
  void ReturnToPool() override;

 private:
  template <class T, int kSlots>
  friend class TAPool;

  vnxInstruction() {}  // not defaulted: see vnxSyntaxe()
  explicit vnxInstruction(const Placement& at) : vnxSyntaxe(at) {}
  ~vnxInstruction() override = default;

  // The instruction's text as Build reads it: [begin, end) without outer
  // blanks, exprEnd before a final ';' or ':', rawEnd the node's own end.
  struct Text {
    int begin;
    int end;
    int exprEnd;
    int rawEnd;
  };

  // Precise type and children from the keyword at p.
  int classify(const char* s, const Text& text, int p);
  // if( while( switch( for( __except( with its '(' at open: the condition,
  // then the controlled statements.
  int buildControl(const char* s, const Text& text, int open);
  // The statements from `from` to the end: blocks, instructions and null
  // nodes; a null node for an empty body.
  int buildStatements(const char* s, const Text& text, int from);
  // struct, union, class, interface (name, then bases) and typedef (name).
  int buildTypeDeclaration(const char* s, const Text& text, int from, bool isTypedef);
  int buildReturn(const char* s, const Text& text, int p);
  // Children over [from, to); an empty expression is created only when always.
  int addExpression(int from, int to, bool always = false);
  int addInstruction(int from, int to);
  // The block opening at open, which must close inside the text: its '}', or
  // -1 with ErrMsg set.
  int addBlock(const char* s, const Text& text, int open);
  void addLeaf(int type, int begin, int size);
  // One argument of BuildListOfArgs over [from, to) of s.
  static int addArgument(vnxSyntaxe* arguments, const char* s, int from, int to);

  int _preciseType = 0;
};

#endif
