#pragma once

#include <stdint.h>
#include <sys/cdefs.h>

typedef struct {
  intmax_t quot, rem;
} imaxdiv_t;

__BEGIN_DECLS
intmax_t imaxabs(intmax_t value);
imaxdiv_t imaxdiv(intmax_t dividend, intmax_t divisor);
intmax_t strtoimax(const char* text, char** end, int base);
uintmax_t strtoumax(const char* text, char** end, int base);
intmax_t wcstoimax(const __WCHAR_TYPE__* text, __WCHAR_TYPE__** end, int base);
uintmax_t wcstoumax(const __WCHAR_TYPE__* text, __WCHAR_TYPE__** end, int base);
__END_DECLS
