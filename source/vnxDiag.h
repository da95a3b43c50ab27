// The one diagnostic sink of the library (internal). Every "# VNX-ERROR:   " /
// "# VNX-WARNING: " line and every unprefixed helper line (" -> !! ...") goes
// through here to wbStderr, so that tests capture the stream in one place and
// light rebuilds can run quiet.
#ifndef VNX_DIAG_H
#define VNX_DIAG_H

#include "ZELString.h"

namespace vnxdiag {

// "# VNX-ERROR:   " + text
void error(const ZELString& text);
// "# VNX-WARNING: " + text
void warning(const ZELString& text);
// text as it is (the directive helpers' " -> !! " lines)
void plain(const ZELString& text);

// While quiet, nothing is written. Answers the previous setting.
bool setQuiet(bool quiet);
bool isQuiet();

// Count of lines written (or suppressed while quiet) since the process began.
long long emittedCount();

}  // namespace vnxdiag

#endif
