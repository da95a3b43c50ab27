// Internal: the library's own helpers reach the protected parts of a node
// through this one friend, so the public header stays free of them.
#ifndef VNX_SYNTAX_SYNTAXE_ACCESS_H
#define VNX_SYNTAX_SYNTAXE_ACCESS_H

#include "TAFatalError.h"
#include "vnxSourceFile.h"
#include "vnxSyntaxe.h"

struct vnxSyntaxeAccess {
  // One hold less; at zero the node is reset (its children queued for release)
  // and handed back to its pool.
  static void dropHold(vnxSyntaxe* node) {
    if (node->_refCount <= 0) {
      TAFatalError(1, "vnxSyntaxe::Release of a node already released");
      return;
    }
    if (--node->_refCount > 0) return;
    node->Reset();
    node->_refCount = 1;
    node->ReturnToPool();
  }

  // The node's characters, when its whole extent lies inside its stream.
  static bool text(const vnxSyntaxe* node, const char*& text, int& length) {
    if (!node->_source || !node->_streamAtBegin) return false;
    if (node->_begin + node->_size > node->_source->GetSize()) return false;
    text = node->_streamAtBegin;
    length = node->_size;
    return true;
  }

  static vnxSyntaxe* childAt(const vnxSyntaxe* node, int i) { return node->childAt(i); }

  // Position of child among father's children (1-based), 0 when absent. The
  // child's own position answers at once in a finished tree; the search from
  // the end is the fallback for a node placed elsewhere.
  static int positionAmongChildren(const vnxSyntaxe* father, const vnxSyntaxe* child) {
    const int count = father->_childCount;
    const int hint = child->_posInFather;
    if (hint >= 1 && hint <= count && father->childAt(hint) == child) return hint;
    for (int i = count; i >= 1; --i)
      if (father->childAt(i) == child) return i;
    return 0;
  }

  static ZELListValZELString& listMacro() { return vnxSyntaxe::_listMacro; }
  static void setType(vnxSyntaxe* node, int type) { node->_type = type; }
  // Append, with the two inline children taken here.
  static void append(vnxSyntaxe* father, vnxSyntaxe* child) {
    if (child && father->_childCount < 2) {
      ++child->_refCount;
      father->_firstChildren[father->_childCount++] = child;
      return;
    }
    father->Append(child);
  }

  // Release of the hold a builder keeps on a child it appended: the father
  // holds it too, so the count only goes down; what Release does on every
  // call (emptying the statement-macro list) is done all the same.
  static void dropBuilderHold(vnxSyntaxe* child) {
    if (child->_refCount < 2) {
      child->Release();
      return;
    }
    vnxSyntaxe::_listMacro.RemoveAll();
    --child->_refCount;
  }
};

#endif
