#pragma once

#include <_locale_types.h>

typedef struct {
  int quot, rem;
} div_t;
typedef struct {
  long quot, rem;
} ldiv_t;
typedef struct {
  long long quot, rem;
} lldiv_t;

__BEGIN_DECLS
void abort(void) __dead2;
div_t div(int dividend, int divisor);
ldiv_t ldiv(long dividend, long divisor);
lldiv_t lldiv(long long dividend, long long divisor);
void free(void* memory);
char* getenv(const char* name);
void* malloc(size_t size);
void* realloc(void* memory, size_t size);
double strtod_l(const char* text, char** end, locale_t locale);
float strtof_l(const char* text, char** end, locale_t locale);
long double strtold_l(const char* text, char** end, locale_t locale);
long long strtoll_l(const char* text, char** end, int base, locale_t locale);
unsigned long long strtoull_l(const char* text, char** end, int base, locale_t locale);
__END_DECLS
