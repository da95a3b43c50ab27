// A program outside the project that uses the installed library.
#include <cstdio>
#include <cstring>

#include "TAIndex.h"
#include "vnxSourceFile.h"

int main() {
  TAIndex index;
  index.Append("GeoCurve", nullptr);
  vnxSourceFile* source = vnxSourceFile::CreateFromPreprocessedText("class A{int x;};", "a.h");
  int line = 0, col = 0;
  const bool ok = index.IsIn("GeoCurve") == 0 && source->GetPos(9, line, col) == 0 && line == 1 && col == 10;
  source->Release();
  std::printf(ok ? "consumer ok\n" : "consumer FAILED\n");
  return ok ? 0 : 1;
}
