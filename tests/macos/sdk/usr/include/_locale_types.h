#pragma once

#include <sys/types.h>

struct _xlocale;
typedef struct _xlocale* locale_t;
typedef int wint_t;

typedef union {
  char __mbstate8[128];
  long long _mbstateL;
} mbstate_t;
