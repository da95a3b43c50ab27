#include "vnxEventGetBuffer.h"

const char* vnxEventGetBuffer::isA() const { return "EventGetBuffer"; }
