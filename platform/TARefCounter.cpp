#include "TARefCounter.h"

#include "TAFatalError.h"

TARefCounter::~TARefCounter() = default;

void TARefCounter::reportDead(const char* message) { TAFatalError(1, message); }
