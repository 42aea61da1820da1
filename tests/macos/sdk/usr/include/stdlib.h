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

#define EXIT_SUCCESS 0
#define EXIT_FAILURE 1
#define RAND_MAX 0x7fffffff
#define MB_CUR_MAX ((size_t)___mb_cur_max())
#define MB_CUR_MAX_L(locale) (___mb_cur_max_l(locale))

__BEGIN_DECLS
int ___mb_cur_max(void);
int ___mb_cur_max_l(locale_t locale);
void abort(void) __dead2;
int abs(int value);
long labs(long value);
long long llabs(long long value);
void* aligned_alloc(size_t alignment, size_t size);
int atexit(void (*function)(void));
int at_quick_exit(void (*function)(void));
double atof(const char* text);
int atoi(const char* text);
long atol(const char* text);
long long atoll(const char* text);
void* bsearch(const void* key, const void* first, size_t count, size_t size,
              int (*compare)(const void*, const void*));
void* calloc(size_t count, size_t size);
div_t div(int dividend, int divisor);
ldiv_t ldiv(long dividend, long divisor);
lldiv_t lldiv(long long dividend, long long divisor);
void exit(int status) __dead2;
void _Exit(int status) __dead2;
void quick_exit(int status) __dead2;
void free(void* memory);
char* getenv(const char* name);
void* malloc(size_t size);
int mblen(const char* text, size_t size);
size_t mbstowcs(wchar_t* to, const char* from, size_t size);
int mbtowc(wchar_t* to, const char* from, size_t size);
int posix_memalign(void** memory, size_t alignment, size_t size);
void qsort(void* first, size_t count, size_t size, int (*compare)(const void*, const void*));
int rand(void);
void* realloc(void* memory, size_t size);
void srand(unsigned int seed);
double strtod(const char* text, char** end);
float strtof(const char* text, char** end);
long double strtold(const char* text, char** end);
long strtol(const char* text, char** end, int base);
long long strtoll(const char* text, char** end, int base);
unsigned long strtoul(const char* text, char** end, int base);
unsigned long long strtoull(const char* text, char** end, int base);
double strtod_l(const char* text, char** end, locale_t locale);
float strtof_l(const char* text, char** end, locale_t locale);
long double strtold_l(const char* text, char** end, locale_t locale);
long strtol_l(const char* text, char** end, int base, locale_t locale);
long long strtoll_l(const char* text, char** end, int base, locale_t locale);
unsigned long strtoul_l(const char* text, char** end, int base, locale_t locale);
unsigned long long strtoull_l(const char* text, char** end, int base, locale_t locale);
int system(const char* command);
size_t wcstombs(char* to, const wchar_t* from, size_t size);
int wctomb(char* to, wchar_t character);
__END_DECLS
