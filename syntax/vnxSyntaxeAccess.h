// Internal: the library's own helpers reach the protected parts of a node
// through this one friend, so the public header stays free of them.
#ifndef VNX_SYNTAX_SYNTAXE_ACCESS_H
#define VNX_SYNTAX_SYNTAXE_ACCESS_H

#include "TAFatalError.h"
#include "vnxSourceFile.h"
#include "vnxSyntaxe.h"

struct vnxSyntaxeAccess {
  // One hold less on node; a node left without any joins the release under
  // way (defined with the release walk, the only user).
  static void dropHold(vnxSyntaxe* node);
  // Frees a node whose last hold is gone: what it holds, then its slot.
  static void bury(vnxSyntaxe* node);
  // The same for a pooled node without children, and the last step of both:
  // its child array and its slot (defined with the release walk).
  static void buryLeaf(vnxSyntaxe* node);
  static void freeSlot(vnxSyntaxe* node);
  // dropHold for a child of a node being freed: a pooled child left without
  // any hold and without children of its own is freed at once, without a
  // turn through the release under way.
  static void dropChildHold(vnxSyntaxe* node);
  // Whether node came from one of the library's pools.
  static bool pooled(const vnxSyntaxe* node) { return node->_poolKind != 0; }

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

  // Places a node already taken from its pool under father: the work of the
  // public create(type, father, ...). The factories construct the slot in
  // place instead (placeNew, placeUnder).
  static void place(vnxSyntaxe* node, void* block, int type, vnxSyntaxe* father, int begin, int size,
                    int posInFather) {
    node->_ownerBlock = block;
    if (!father) return;
    node->_type = type;
    node->_begin = begin;
    node->_size = size < 0 ? 0 : size;
    node->_posInFather = posInFather;
    node->_father = father;
    node->_depth = father->_depth + 1;
    vnxSourceFile* source = father->_source;
    node->_source = source;
    if (source) {
      source->AddRef();
      node->_streamAtBegin = streamAt(source, begin);
    }
  }

  // A node of class T (vnxSyntaxe or a subclass) from pool, placed under
  // father as place does, in one construction of the slot.
  template <class T, class Pool>
  static T* placeNew(Pool& pool, unsigned char poolKind, int type, vnxSyntaxe* father, int begin, int size,
                     int posInFather) {
    void* block = nullptr;
    if (!father) {
      T* node = pool.getNew(&block);
      if (!node) return nullptr;
      node->_ownerBlock = block;
      node->_poolKind = poolKind;
      return node;
    }
    const vnxSyntaxe::Placement at{father, &block, type, begin, size, posInFather, poolKind};
    T* node = pool.getNew(&block, at);
    if (node && node->_source) {
      node->_source->AddRef();
      node->_streamAtBegin = streamAt(node->_source, begin);
    }
    return node;
  }

  // A node of class T from pool under father, whose source is not null and
  // whose stream s is that source's, over [begin, begin + size) with begin
  // inside the stream (its end included): what placeNew makes, without the
  // checks a builder has made already. Inline, so that each builder's
  // creation of its children is one straight run of stores.
  template <class T, class Pool>
  static T* placeUnder(Pool& pool, unsigned char poolKind, int type, vnxSyntaxe* father, const char* s, int begin,
                       int size) {
    void* block = nullptr;
    const vnxSyntaxe::Placement at{father, &block, type, begin, size, father->_childCount + 1, poolKind};
    T* node = pool.getNew(&block, at);
    if (node) {
      node->_source->AddRef();
      node->_streamAtBegin = s + begin;
    }
    return node;
  }

  // Pointer to offset begin of source's stream, or null when the source has
  // no stream or begin lies outside it.
  static const char* streamAt(const vnxSourceFile* source, int begin) {
    const char* stream = source->GetStream();
    if (!stream || begin < 0 || begin > source->GetSize()) return nullptr;
    return stream + begin;
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
    emptyListMacro();
    --child->_refCount;
  }

  // A node just created by a builder (count 1, the builder's hold) handed to
  // father before the builder builds it: the builder's hold becomes the
  // father's, so that after the build only what every Release does is left
  // (builtByBuilder). The same as append, build, then dropBuilderHold, for a
  // build never drops a hold on the node it builds.
  static void adopt(vnxSyntaxe* father, vnxSyntaxe* child) {
    if (father->_childCount < 2) {
      father->_firstChildren[father->_childCount++] = child;
      return;
    }
    father->Append(child);
    --child->_refCount;
  }
  static void builtByBuilder() { emptyListMacro(); }

  // A node just created by a builder (count 1, the builder's hold) handed to
  // father, the builder keeping nothing: the same as append then
  // dropBuilderHold, the builder's hold becoming the father's.
  static void attachLeaf(vnxSyntaxe* father, vnxSyntaxe* leaf) {
    if (!leaf) return;
    if (leaf->_refCount != 1 || father->_childCount >= 2) {
      append(father, leaf);
      dropBuilderHold(leaf);
      return;
    }
    father->_firstChildren[father->_childCount++] = leaf;
    emptyListMacro();
  }

  // What every Release does first.
  static void emptyListMacro() {
    if (vnxSyntaxe::_listMacro.Size() > 0) vnxSyntaxe::_listMacro.RemoveAll();
  }
};

#endif
