// Directives of every kind, as a header holds them.
#pragma once
#  define VERSION 3
#define MAX(a, b) ((a) > (b) ? (a) : (b))
#define EMPTY
#define LONG_ONE first \
  second
int between;
#include "local.h"
  #include <system.h>
#include CONFIG_HEADER
#undef VERSION
#error stop /* here */ now
#
#define TAIL 1 // not part of it
#define F(x, y) x ## y
