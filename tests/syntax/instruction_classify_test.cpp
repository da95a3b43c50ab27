// Instructions: precise type from the leading keyword, children of each form (as compact trees), failures, depth.
#include <gtest/gtest.h>

#include <algorithm>

#include "TestSupport.h"
#include "expression_render.h"

using exprtest::ParsedText;

namespace {

using Row = exprtest::TreeRow;

template <size_t N>
void expectTrees(const Row (&rows)[N]) { exprtest::expectTrees<exprtest::ParsedText>(rows); }

TEST(InstructionBuild, EachKeywordSetsItsPreciseTypeAndItsChildren) {
  static const Row rows[] = {
      {"a=1; b=2;", "stmt[=(a,1)] | stmt[=(b,2)]"},
      {"return; return x; return(x);", "return[;] | return[x] | return[x]"},
      {"delete[] p; delete p; delete(p); free(p);", "delete[][p] | delete[p] | delete[p] | free[p]"},
      {"free();", "free['']"}, {"ZELExit(1); exit(2);", "exit[mt(ZELExit,args(1))] | exit[mt(exit,args(2))]"},
      {"goto end;", "goto[end]"}, {"static int x = 3;", "static[=(dc(int,x),3)]"},
      {"virtual void f() = 0;", "virtual[=(mt(dc(void,f),args()),0)]"},
      {"inline int f();", "inline[stmt[mt(dc(int,f),args())]]"},
      {"inline static int f();", "inline[static[mt(dc(int,f),args())]]"},
      {"ExportedByFoo int f();", "stmt[mt(dc(int,f),args())]"}, {"ExportedByFoo;", "stmt[ExportedByFoo]"},
      {"switch(c){ case 1: break; default: f(); }",
       "switch[c,{case[1];stmt[break];default[];stmt[mt(f,args())]}]"},
      {"case A::B: x;", "case[::(A,B)] | stmt[x]"}, {"public: int a;", "stmt[public] | stmt[dc(int,a)]"},
      {"__except(1){ h(); }", "except[1,{stmt[mt(h,args())]}]"}, {";", ";"},
      // Commas between brackets separate no arguments (IDL attributes, subscripts).
      {"f([in,out] long* p,m[1,2]);", "stmt[mt(f,args(*(dc(in(~,,(in,out)),long),p),in(m,,(1,2))))]"},
  };
  expectTrees(rows);
}

TEST(InstructionBuild, KeywordsWithoutTrailingCharacterMatchOnlyAsWholeWords) {
  static const Row rows[] = {
      {"double x;", "stmt[dc(double,x)]"}, {"do_it();", "stmt[mt(do_it,args())]"},
      {"returnCode=f();", "stmt[=(returnCode,mt(f,args()))]"}, {"defaultValue=1;", "stmt[=(defaultValue,1)]"},
      {"cases++;", "stmt[++(cases)]"}, {"elsewhere=0;", "stmt[=(elsewhere,0)]"}, {"deleted=1;", "stmt[=(deleted,1)]"},
      {"iffy(1);", "stmt[mt(iffy,args(1))]"}, {"exitCode=2;", "stmt[=(exitCode,2)]"}, {"return-1;", "return[-(1)]"},
      {"case'a': x;", "case[st:'a'] | stmt[x]"},
  };
  expectTrees(rows);
}

TEST(InstructionBuild, ControlledStatementsBecomeBlocksInstructionsOrNullNodes) {
  static const Row rows[] = {
      {"if(a)b;", "if[a,stmt[b]]"}, {"if(a);", "if[a,;]"},
      {"if(x) y=1; else y=2;", "if[x,stmt[=(y,1)]] | else[stmt[=(y,2)]]"},
      {"if(a){x;}else{y;}", "if[a,{stmt[x]}] | else[{stmt[y]}]"},
      // The else of the inner if stays inside the outer one, after the inner if.
      {"if(a)if(b) x; else y;", "if[a,if[b,stmt[x]],else[stmt[y]]]"},
      {"if(a) if(b) x; else y;", "if[a,if[b,stmt[x]]] | else[stmt[y]]"}, {"else if(b) x;", "else[if[b,stmt[x]]]"},
      {"while(x) { x--; }", "while[x,{stmt[--(x)]}]"}, {"while(*p++);", "while[*(++(p)),;]"},
      {"for(i=0;i<n;i++){ s+=i; }", "for[;(;(=(i,0),<(i,n)),++(i)),{stmt[+=(s,i)]}]"}, {"for(;;);", "for[;(;,~),;]"},
      {"do{ i++; }while(i<3);", "do[{stmt[++(i)]}] | while[<(i,3),;]"},
      {"do x++; while(x<3);", "do[stmt[++(x)]] | while[<(x,3),;]"},
      {"{ if(c) do{x;}while(y); }", "{if[c,do[{stmt[x]}]];while[y,;]}"},
      // Written against the parenthesis, the while belongs to the if's
      // statement; it follows the do as its own instruction there too.
      {"if(c)do{x;}while(y);", "if[c,do[{stmt[x]}],while[y,;]]"},
      {"if(a) f(\"{\");", "if[a,stmt[mt(f,args(st:\"{\"))]]"},
  };
  expectTrees(rows);
}

TEST(InstructionBuild, TypeDeclarationsNameTheTypeThenListTheirBasesTheLastOneAsLastLeaf) {
  static const Row rows[] = {
      {"class A : public B { int x; };", "decl:stmt[#A,B] | {stmt[dc(int,x)]} | ;"},
      {"class ExportedByXYZ Foo : public Bar { };", "decl:stmt[#Foo,Bar] | {} | ;"},
      {"interface I : public J, private virtual K<A,B> {};", "decl:stmt[#I,J,,(<(K,A),>(B,~))] | {} | ;"},
      {"class D : public ns::Base {};", "decl:stmt[#D,::(ns,Base)] | {} | ;"}, {"struct Foo;", "decl:stmt[#Foo]"},
      {"struct { int a; } s;", "decl:stmt[#] | {stmt[dc(int,a)]} | stmt[s]"},
      {"union U { int i; float f; };", "decl:stmt[#U] | {stmt[dc(int,i)];stmt[dc(float,f)]} | ;"},
      {"typedef struct X { int a; } Y;", "decl:stmt[#X] | {stmt[dc(int,a)]} | stmt[Y]"},
      {"typedef struct { int a; } Y;", "decl:stmt[#] | {stmt[dc(int,a)]} | stmt[Y]"},
      {"typedef unsigned long ULONG;", "decl:stmt[#ULONG]"}, {"typedef void (*handler)(int);", "decl:stmt[#handler]"},
      {"typedef int Table[16];", "decl:stmt[#Table]"}, {"enum E { A, B };", "decl:stmt[E] | {stmt[,(A,B)]} | ;"},
      {"enum { A };", "decl:stmt[''] | {stmt[A]} | ;"},
      {"void f() { return; }", "decl:stmt[mt(dc(void,f),args())] | {return[;]}"},
  };
  expectTrees(rows);
  ParsedText parsed("class ExportedByXYZ Foo : public Bar, protected Baz {};"), typedefs("typedef struct P0 {} P;");
  EXPECT_STREQ(parsed.root()->Child(1)->GetLastLeaf()->GetContent(), "Baz");
  EXPECT_STREQ(typedefs.root()->Child(3)->GetLastLeaf()->GetContent(), "P");
}

// Builds an instruction over text's first `size` characters directly under a root; gives status and tree.
int buildDirect(const std::string& text, int size, std::string& tree) {
  exprtest::RootedText base(text, "direct.cpp");
  vnxInstruction* instruction = vnxInstruction::CreateTAPInstruction(base.root(), 0, size, 1);
  const int status = instruction->Build(0);
  tree = exprtest::render(instruction);
  instruction->Release();
  return status;
}

TEST(InstructionBuild, FailuresSetTheirMessageKeepEarlierChildrenAndBlanksMakeANullInstruction) {
  static const struct { const char* text; const char* message; const char* tree; } rows[] = {
      {"delete[ p", "Problem : missing end of [ in delete[]", "delete[][]"}, {"if(a", "Missing )", "if[]"},
      {"if(a){ x;", "Missing TAPBloc end at line 1 col 6", "if[a]"},
      {"if(a)\n  {\n x;", "Missing TAPBloc end at line 2 col 3", "if[a]"},
      // Cut before its '}': the block closes past the instruction's end.
      {"while(a){ x; } y", "End of TAPBloc not coherent, internal error at line 1 col 9", "while[a]"},
      {"if(a) f(x); g(y", "Missing Instruction end for Instruction starting line 1 col 13", "if[a,stmt[mt(f,args(x))]]"},
      {"if(a) x = f(y", "Missing Instruction end for Instruction starting line 1 col 7", "if[a]"},
      {"return g(\"x)", "Missing )", "return['']"},
  };
  std::string tree;
  for (const auto& row : rows) {
    const std::string text = row.text;
    EXPECT_EQ(buildDirect(text, static_cast<int>(std::min(text.find('}'), text.size())), tree), 1) << row.text;
    EXPECT_STREQ(vnxSyntaxe::GetErrMsg().CastToCharPtr(), row.message) << row.text;
    EXPECT_EQ(tree, row.tree) << row.text;
  }
  for (const std::string text : {"   ", " ; ", ""}) {
    EXPECT_EQ(buildDirect(text, static_cast<int>(text.size()), tree), 0);
    EXPECT_EQ(tree, "nil[]") << '"' << text << '"';
  }
}

TEST(InstructionBuild, DumpTagsTheInstructionsWithTheirPreciseType) {
  ParsedText parsed("return x; while(a) b; x = 1;");
  StreamCapture capture;
  parsed.root()->Dump("", 1);
  for (const char* line :
       {"vnxInstruction [tReturn]  return x", "vnxInstruction [tWhile]  while(a) b", "vnxExpression [=]   x = 1"})
    EXPECT_NE(capture.text().find(line), std::string::npos) << capture.text();
}

TEST(InstructionDepth, AnInstructionBeyondDepth900FailsWithItsOwnMessage) {
  // 899 nested blocks put the inline instruction at depth 900 and the instruction it qualifies at 901.
  const int instructions = vnxInstruction::GetPoolLiveCount();
  {
    ParsedText tooDeep(std::string(899, '{') + "inline f;" + std::string(899, '}'));
    EXPECT_EQ(tooDeep.status(), 1);
    EXPECT_STREQ(vnxSyntaxe::GetErrMsg().CastToCharPtr(), "Depth too high when building a vnxInstruction : 901");
    // Two blocks less: inline 898, its instruction 899, the word f 900.
    ParsedText fits(std::string(897, '{') + "inline f;" + std::string(897, '}'));
    EXPECT_EQ(fits.status(), 0) << vnxSyntaxe::GetErrMsg().CastToCharPtr();
  }
  EXPECT_EQ(vnxInstruction::GetPoolLiveCount(), instructions);
}

}  // namespace
