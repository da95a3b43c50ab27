// The infrastructure's fatal-error report: for internal inconsistencies, never
// for bad input. When the condition holds, the message goes to wbStderr as one
// line and the installed handler (if any) is called. By default the report
// returns, and the caller goes on with its failure value.
#ifndef TA_FATAL_ERROR_H
#define TA_FATAL_ERROR_H

#include "vnxExport.h"

typedef void (*TAFatalErrorHandler)(const char* message);

// Reports message when condition is non-zero; returns the condition.
VNX_EXPORT int TAFatalError(int condition, const char* message);
// Installs handler (null restores the default) and returns the previous one.
VNX_EXPORT TAFatalErrorHandler TASetFatalErrorHandler(TAFatalErrorHandler handler);
// Number of reports made so far in this process (for tests and tools).
VNX_EXPORT int TAFatalErrorCount();

#endif
