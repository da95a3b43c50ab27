// The preprocessing pass of one source file (internal to vnxSourceFile).
//
// One forward scan over a working copy of the raw text writes the
// preprocessed stream and, beside it, the raw position of every character it
// writes. Registered macros are expanded in place inside the working copy, so
// the scan reads their replacement as ordinary text; everything written while
// inside an expansion maps to the position of the macro name.
#ifndef VNX_PREPROCESSOR_H
#define VNX_PREPROCESSOR_H

#include <vector>

#include "source/vnxBranchMemo.h"
#include "source/vnxMacroRegistry.h"
#include "source/vnxPreproDirectiveParser.h"

class vnxSourceFile;
class vnxDefinePreproDirectiveExpander;

class vnxPreprocessor {
 public:
  explicit vnxPreprocessor(vnxSourceFile& file);
  ~vnxPreprocessor();
  vnxPreprocessor(const vnxPreprocessor&) = delete;
  vnxPreprocessor& operator=(const vnxPreprocessor&) = delete;

  // Runs the pass; 0 on success, 1 when it aborts.
  int run();

 private:
  // kLookBehind: how far before the scan position the working text is still
  // read (a literal's opening quote, the character before a directive).
  // kSlackKept: unused output entries a finished stream may keep.
  enum { kGrowth = 8192, kListMacroWindow = 1024, kLookBehind = 64, kSlackKept = 64 };

  // What the handlers tell the scan loop.
  enum Next { kContinue, kProceed, kStop, kFail };

  void setup(const char* raw, int rawSize);
  void finish();
  void releaseWork();
  void syncBranchMemo() { _branchMemo.setText(_work, _delta, _rawFrom, _workLength); }

  int rawPosition(int i) const { return _regionActive ? _regionPosition : i - _delta; }
  // Line and column of a raw position (1 and 1 outside the text).
  struct Place {
    int line;
    int col;
  };
  Place placeOf(int raw) const;

  // Output buffer and position map.
  char last() const { return _outLength ? _out[_outLength - 1] : '\0'; }
  void ensureOut(int extra) {
    if (_outLength + extra >= _outCapacity) growOut(extra);
  }
  void growOut(int extra);
  void emit(char c, int raw);
  void removeOut(int from, int count);

  int copyPlainRun(int i);
  template <bool kInExpansion>
  int copyRun(int i, int end);
  void advanceCursor(int rawPos);
  Next tryExpand(int& i);
  bool replaceWork(int i, int replaced, const char* replacement, int length);
  Next handleComment(int& i);
  bool toNextLineComment(int& i);
  Next handleDirective(int& i);
  Next handleConditionalGroup(int& i);
  void noteBlankedAhead(int from, int to, int i);
  bool foldNestedBlock();
  void removeKeywords(int i, char c);
  Next handleListMacro(int& i);
  void removeTrailingExtern();

  vnxSourceFile& _file;
  // The working copy: _work[k] is its character k, for k from the scan
  // position less kLookBehind to its NUL; it lies in _buffer, after _workRoom
  // bytes kept for growth.
  char* _buffer = nullptr;
  char* _work = nullptr;
  int _workLength = 0;  // characters before the working copy's NUL
  int _workRoom = 0;
  char* _out = nullptr;
  int* _map = nullptr;
  bool _workLent = false;  // _buffer is the one kept between passes: given back, never freed
  int _outLength = 0;
  int _outCapacity = 0;
  int _delta = 0;
  int _foldClose = -1;  // the closing brace of the last fold in the output, and
  int _foldOpen = -1;   // the opening brace it blanked
  int _rawFrom = 0;  // working positions from here on hold raw text (w - _delta)
  vnxBranchMemo _branchMemo;
  bool _memoLent = false;  // its tables are the ones kept between passes
  bool _regionActive = false;
  int _regionPosition = 0;
  int _regionLength = 0;
  bool _stringMode = false;
  int _stringStart = 0;
  bool _charMode = false;
  char _firstNonBlank = 0;
  std::vector<vnxmacro::Occurrence> _macros;
  std::vector<bool> _macroDeleted;
  size_t _cursor = 0;
  int _cursorPosition = -1;
  vnxPreproDirectiveParser _parser;
  vnxDefinePreproDirectiveExpander* _expander = nullptr;
};

#endif
