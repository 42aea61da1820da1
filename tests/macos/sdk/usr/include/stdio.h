#pragma once

#include <_locale_types.h>
#include <stdarg.h>

typedef struct __sFILE FILE;
typedef long long fpos_t;

#define EOF (-1)

#define __printflike(format, first) __attribute__((__format__(__printf__, format, first)))

__BEGIN_DECLS
int asprintf_l(char** to, locale_t locale, const char* format, ...);
int remove(const char* path);
int snprintf(char* to, size_t size, const char* format, ...) __printflike(3, 4);
int snprintf_l(char* to, size_t size, locale_t locale, const char* format, ...);
int sscanf(const char* from, const char* format, ...);
int sscanf_l(const char* from, locale_t locale, const char* format, ...);
__END_DECLS
