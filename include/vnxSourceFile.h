// vnxSourceFile: one loaded source file.
//
// Holds the raw text (through its file buffer) until preProcess runs; the pass
// turns it into the preprocessed stream (one line of normalised text), a map
// from each preprocessed character to its raw position, and per-raw-character
// line and column tables, then drops the raw text. It also keeps the comments,
// directives and conditional groups the pass found (each reference-counted;
// list getters hand out one reference per element, which the caller releases).
//
// Reference-counted (count 1 at creation). Not thread-safe: the macro registry
// and the performance counters are process-wide.
#ifndef VNX_SOURCE_FILE_H
#define VNX_SOURCE_FILE_H

#include "TAEvents.h"
#include "TAFileName.h"
#include "TAIndex.h"
#include "TARefCounter.h"
#include "ZELLists.h"
#include "ZELString.h"
#include "vnxExport.h"
#include "vnxSyntaxePoint.h"

class ZELFileBuffer;
class TAPerfoAv;
class vnxComment;
class vnxZELPreproDirective;
class vnxPreproConditionalGroup;
class vnxSymbolTable;
class vnxPreprocessor;
class vnxLineIndex;

class VNX_EXPORT vnxSourceFile : public TACallbackPublisher, public TARefCounter {
 public:
  // Takes ownership of buffer; the name comes from it. A null compilation unit
  // is replaced by the file's own name.
  vnxSourceFile(ZELFileBuffer* buffer, vnxSymbolTable* table, const TAFileName& compilationUnit);
  // Makes its own buffer holding a copy of text; the name is "".
  vnxSourceFile(const char* text, vnxSymbolTable* table, const TAFileName& compilationUnit);
  virtual ~vnxSourceFile();
  // A source whose preprocessed stream is text itself, no pass run: every
  // character maps to itself and lines and columns are counted over text. For
  // tools and tests that start from already-normalised text. Count 1.
  static vnxSourceFile* CreateFromPreprocessedText(const char* text, const char* name);

  vnxSourceFile(const vnxSourceFile&) = delete;
  vnxSourceFile& operator=(const vnxSourceFile&) = delete;

  const char* GetName() const { return _name.CastToCharPtr(); }
  const char* GetErrMsg() const { return _errMsg.CastToCharPtr(); }
  // The preprocessed stream, NUL-terminated; null before preProcess.
  const char* GetStream() const { return _preProcessedStream; }
  int GetSize() const { return _preProcessedStreamSize; }
  int GetNbLine() const { return _nbLine; }
  int GetNbCodeLine() const { return _nbCodeLine; }
  vnxSymbolTable* getSymbolTable() const { return _symbolTable; }
  TAFileName getCompilationUnit() const { return _compilationUnit; }

  // Line and column of preprocessed position pos: 0, or 1 when the tables are
  // missing (no message) or pos is out of range (message set).
  int GetPos(int pos, int& line, int& col) const;
  // Raw position of preprocessed position pos; 1 when the map is missing, -1
  // (message set) out of range.
  int getPosOfPreProcessedCharInRawStream(int pos);
  // (line, column) of preprocessed position pos; (0, 0) without tables or for
  // 0 on an empty stream. Out of range is a caller bug: two lines go to
  // wbStdout and the process aborts.
  vnxSyntaxePoint GetPoint(int pos);

  // Append every element, adding one reference to each.
  void getCommentList(ZELListPtr<vnxComment>& out);
  void getPreproDirectiveList(ZELListPtr<vnxZELPreproDirective>& out);
  void getPreproConditionalGroupList(ZELListPtr<vnxPreproConditionalGroup>& out);
  // Take over the caller's reference. Null is ignored. Comments stay sorted by
  // the raw position of their first character, equal positions in arrival order.
  void addComment(vnxComment* comment);
  void addPreproDirective(vnxZELPreproDirective* directive);
  void addPreproConditionalGroup(vnxPreproConditionalGroup* group);

  // The preprocessing pass: 0 on success or for an empty text; 1 without a
  // file buffer (never loaded or already preprocessed) or when the pass aborts.
  int preProcess();
  // Include names: before the pass, from a raw scan of the text; afterwards,
  // from the include directives, in order.
  void getIncludeList(ZELListVal<ZELString>& out);
  // The define directive of name visible from this file, or null.
  vnxZELPreproDirective* getDefineDirective(const char* name);

  // Process-wide macro registry.
  static void addMacroToExpand(const char* name);
  static void getMacrosToExpand(TAIndex& out);
  static void addMacroWithSemicolon(ZELListVal<ZELString>* list);
  static void getMacroWithSemicolon(ZELListVal<ZELString>& out);

  // Raw-side tables (valid after preProcess; null before). One entry per raw
  // character; lines and columns from 1. Made at the first call: the file
  // itself keeps only where each line starts.
  const unsigned int* getRawLineTable() const;
  const unsigned int* getRawColumnTable() const;
  int getRawSize() const { return _rawSize; }
  const int* getPositionMap() const { return _positionMap; }

  // Performance counters, created when measuring is active (null otherwise).
  static TAPerfoAv* perfoFile;
  static TAPerfoAv* perfoByteRead;
  static TAPerfoAv* perfoLineProcessed;

 private:
  friend class vnxPreprocessor;

  void init(ZELFileBuffer* buffer, vnxSymbolTable* table, const TAFileName& compilationUnit);
  void buildLineAndColumnTables(const char* raw, int rawSize);
  void countLines();
  void sortComments();
  vnxZELPreproDirective* searchDefine(const char* name, TAIndex& visited);
  vnxSourceFile* resolveIncludedSource(const char* includeName);
  void scanRawIncludes(ZELListVal<ZELString>& out);

  TAFileName _compilationUnit;
  ZELFileBuffer* _fileBuffer = nullptr;
  char* _searchCopy = nullptr;
  int _searchCopySpare = 0;
  char* _preProcessedStream = nullptr;
  int _preProcessedStreamSize = 0;
  int _nbLine = 0;
  int _nbCodeLine = 0;
  int _preProcessed = 0;
  int _rawSize = 0;
  vnxLineIndex* _lineIndex = nullptr;  // of the raw text; null before the pass
  int* _positionMap = nullptr;
  ZELListPtr<vnxComment> _commentList;
  // Comments are appended as they come and put in order when the list is
  // read: dead branches arrive at position 0 after everything before them.
  bool _commentsUnsorted = false;
  int _lastCommentPosition = 0;
  ZELListPtr<vnxZELPreproDirective> _directiveList;
  ZELListPtr<vnxPreproConditionalGroup> _conditionalGroupList;
  ZELString _name;
  mutable ZELString _errMsg;
  vnxSymbolTable* _symbolTable = nullptr;
  // Look-up aids kept beside the directive list: the last define of each name
  // and the positions of the include directives.
  struct DirectiveIndex;
  DirectiveIndex* directiveIndex();
  DirectiveIndex* _directiveIndex = nullptr;
};

#endif
