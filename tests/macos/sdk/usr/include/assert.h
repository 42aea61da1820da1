#pragma once

#include <sys/cdefs.h>

__BEGIN_DECLS
void __assert_rtn(const char* function, const char* file, int line, const char* text) __dead2;
__END_DECLS

#define assert(condition) \
  ((condition) ? (void)0 : __assert_rtn(__func__, __FILE__, __LINE__, #condition))
