// vnxZELPreproDirective: one preprocessor directive line of a source file, as
// the preprocessing pass met it: an owned copy of its raw text (from the '#'
// to its last character, continued lines and embedded block comments
// included), where it stood in the raw text, and its kind. Subclasses add
// what a kind needs (defines, includes, conditionals).
//
// Reference-counted pool objects: create() hands out an object with count 1,
// the last Release() gives it back to its class's pool. The source file is
// borrowed (never owned) and must outlive the directive.
#ifndef VNX_ZEL_PREPRO_DIRECTIVE_H
#define VNX_ZEL_PREPRO_DIRECTIVE_H

#include "vnxExport.h"

class vnxSourceFile;
class vnxDefSource;
template <class T, int kSlots>
class TAPool;

// Writing a subclass: give it a static TAPool<Sub> in its .cpp, befriend
// TAPool (template <class, int> friend class TAPool;) so the pool may
// construct and destroy it, and follow this pattern:
//
//   Sub* Sub::create(vnxSourceFile* source) {
//     void* block = nullptr;
//     Sub* d = pool.getNew(&block, source);   // constructor Sub(vnxSourceFile*)
//     if (d) d->_poolBlock = block;
//     return d;
//   }
//   int Sub::Release() {
//     const int count = dropReference();
//     if (count == 0) pool.release(this, _poolBlock);
//     return count;
//   }
//
// A subclass's build() normally calls vnxZELPreproDirective::build() first
// and then reads getPreproString(); its destructor frees its own fields (the
// base destructor frees the base's through resetDirective()).
class VNX_EXPORT vnxZELPreproDirective {
 protected:
  // Declared first so that it takes the first virtual slot; only the pool
  // destroys directives (through Release).
  virtual ~vnxZELPreproDirective();

 public:
  // Kinds of directive, as getPreproType() answers them.
  enum vnxPreproType { Unknown = 0, DefineSimple = 1, DefineFunction = 2, Include = 3, Conditional = 4 };

  // A new directive of kind Unknown from this class's pool, count 1, fields
  // cleared, source set (source may be null). Null only when memory runs out.
  static vnxZELPreproDirective* create(vnxSourceFile* source);
  // Objects of exactly this class alive in its pool, and the pool's blocks.
  static int getPoolLiveCount();
  static int getPoolBlockCount();

  // Records the directive that starts at text[pos] (normally its '#'), whose
  // '#' stands at line, col, met when the preprocessed output held outPos
  // characters. The directive runs to the end of its line, continued lines
  // (backslash-newline) and block comments included, and stops before a line
  // comment; block comments found inside are added to the source's comments.
  // At the end of text the terminating NUL is counted in the length. Answers 0,
  // or 1 for a null text, pos < 0, line < 1, col < 1 or outPos < 0.
  virtual int build(const char* text, int pos, int line, int col, int outPos);
  // The class name: "vnxZELPreproDirective" here.
  virtual const char* IsA() const;
  // Answers the new count.
  int AddRef();
  // Answers the new count; at 0 the object goes back to its pool.
  virtual int Release();

 protected:
  // Fill the lazy per-character line and column tables.
  virtual void internalComputeLineOfPreproCharInRawStream();
  virtual void internalComputeColOfPreproCharInRawStream();

 public:
  // Writes the directive on wbStdout, one item per line.
  virtual void dump();

  // Line and column of character k of the directive text; (unsigned)-1 when k
  // is outside 0..length-1.
  unsigned int getLineOfPreproCharInRawStream(int k);
  unsigned int getColOfPreproCharInRawStream(int k);
  // Raw position of character k (begin position + k); -1 out of range.
  int getPosOfPreproCharInRawStream(int k) const;

  // The directive text (owned by the directive), null before build.
  const char* getPreproString() const { return _preproString; }
  int getPreproStringSize() const { return _preproStringSize; }
  vnxPreproType getPreproType() const { return _preproType; }

  // The word after '#' of a directive of unknown kind; set once (null, empty
  // and later values are ignored). Null when none.
  void setDirectiveIdentifier(const char* identifier);
  const char* getDirectiveIdentifier() const { return _directiveIdentifier; }

  vnxSourceFile* getSource() const { return _source; }
  void setDefSource(vnxDefSource* defSource) { _defSource = defSource; }
  vnxDefSource* getDefSource() const { return _defSource; }

  unsigned int getBeginLineInRawStream() const { return _beginLine; }
  unsigned int getBeginColInRawStream() const { return _beginCol; }
  int getBeginPosInRawStream() const { return _beginPos; }
  unsigned int getEndLineInRawStream() const { return _endLine; }
  unsigned int getEndColInRawStream() const { return _endCol; }
  // Length of the preprocessed output when the directive was met.
  int getOutputPosition() const { return _outputPosition; }

  vnxZELPreproDirective(const vnxZELPreproDirective&) = delete;
  vnxZELPreproDirective& operator=(const vnxZELPreproDirective&) = delete;

 protected:
  template <class, int>
  friend class TAPool;

  explicit vnxZELPreproDirective(vnxSourceFile* source);

  // Decrements the count and answers it; a Release on a dead count is reported
  // and answers -1 without touching anything.
  int dropReference();
  // Frees the text, identifier and tables and clears the base's fields
  // (pool block, count and source are kept).
  void resetDirective();

 private:
  // Gives the text back to the store it came from and clears its fields.
  void releaseText();

 protected:
  void* _poolBlock = nullptr;
  int _refCount = 1;
  vnxSourceFile* _source = nullptr;
  vnxDefSource* _defSource = nullptr;
  char* _preproString = nullptr;
  int _preproStringSize = 0;
  char* _directiveIdentifier = nullptr;
  unsigned int* _lineTable = nullptr;
  unsigned int* _colTable = nullptr;
  int _outputPosition = 0;
  unsigned int _beginLine = 0;
  unsigned int _beginCol = 0;
  int _beginPos = 0;
  unsigned int _endLine = 0;
  unsigned int _endCol = 0;
  vnxPreproType _preproType = Unknown;
};

#endif
