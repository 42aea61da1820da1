#pragma once

#include <_locale_types.h>
#include <stdarg.h>
#include <stdio.h>
#include <time.h>

#ifndef WEOF
#define WEOF ((wint_t) - 1)
#endif
#define WCHAR_MAX __WCHAR_MAX__
#define WCHAR_MIN (-WCHAR_MAX - 1)

__BEGIN_DECLS
wint_t btowc(int character);
wint_t btowc_l(int character, locale_t locale);
wint_t fgetwc(FILE* file);
wchar_t* fgetws(wchar_t* to, int size, FILE* file);
wint_t fputwc(wchar_t character, FILE* file);
int fputws(const wchar_t* text, FILE* file);
int fwide(FILE* file, int mode);
int fwprintf(FILE* file, const wchar_t* format, ...);
int fwscanf(FILE* file, const wchar_t* format, ...);
wint_t getwc(FILE* file);
wint_t getwchar(void);
size_t mbrlen(const char* text, size_t size, mbstate_t* state);
size_t mbrlen_l(const char* text, size_t size, mbstate_t* state, locale_t locale);
size_t mbrtowc(wchar_t* to, const char* from, size_t size, mbstate_t* state);
size_t mbrtowc_l(wchar_t* to, const char* from, size_t size, mbstate_t* state, locale_t locale);
int mbsinit(const mbstate_t* state);
size_t mbsnrtowcs(wchar_t* to, const char** from, size_t bytes, size_t size, mbstate_t* state);
size_t mbsnrtowcs_l(wchar_t* to, const char** from, size_t bytes, size_t size, mbstate_t* state,
                    locale_t locale);
size_t mbsrtowcs(wchar_t* to, const char** from, size_t size, mbstate_t* state);
size_t mbsrtowcs_l(wchar_t* to, const char** from, size_t size, mbstate_t* state, locale_t locale);
int mbtowc_l(wchar_t* to, const char* from, size_t size, locale_t locale);
wint_t putwc(wchar_t character, FILE* file);
wint_t putwchar(wchar_t character);
int swprintf(wchar_t* to, size_t size, const wchar_t* format, ...);
int swscanf(const wchar_t* from, const wchar_t* format, ...);
wint_t ungetwc(wint_t character, FILE* file);
int vfwprintf(FILE* file, const wchar_t* format, va_list arguments);
int vfwscanf(FILE* file, const wchar_t* format, va_list arguments);
int vswprintf(wchar_t* to, size_t size, const wchar_t* format, va_list arguments);
int vswscanf(const wchar_t* from, const wchar_t* format, va_list arguments);
int vwprintf(const wchar_t* format, va_list arguments);
int vwscanf(const wchar_t* format, va_list arguments);
size_t wcrtomb(char* to, wchar_t character, mbstate_t* state);
size_t wcrtomb_l(char* to, wchar_t character, mbstate_t* state, locale_t locale);
wchar_t* wcscat(wchar_t* to, const wchar_t* from);
wchar_t* wcschr(const wchar_t* text, wchar_t character);
int wcscmp(const wchar_t* left, const wchar_t* right);
int wcscoll(const wchar_t* left, const wchar_t* right);
int wcscoll_l(const wchar_t* left, const wchar_t* right, locale_t locale);
wchar_t* wcscpy(wchar_t* to, const wchar_t* from);
size_t wcscspn(const wchar_t* text, const wchar_t* stops);
size_t wcsftime(wchar_t* to, size_t size, const wchar_t* format, const struct tm* fields);
size_t wcslen(const wchar_t* text);
wchar_t* wcsncat(wchar_t* to, const wchar_t* from, size_t size);
int wcsncmp(const wchar_t* left, const wchar_t* right, size_t size);
wchar_t* wcsncpy(wchar_t* to, const wchar_t* from, size_t size);
size_t wcsnrtombs(char* to, const wchar_t** from, size_t count, size_t size, mbstate_t* state);
size_t wcsnrtombs_l(char* to, const wchar_t** from, size_t count, size_t size, mbstate_t* state,
                    locale_t locale);
wchar_t* wcspbrk(const wchar_t* text, const wchar_t* accepted);
wchar_t* wcsrchr(const wchar_t* text, wchar_t character);
size_t wcsrtombs(char* to, const wchar_t** from, size_t size, mbstate_t* state);
size_t wcsspn(const wchar_t* text, const wchar_t* accepted);
wchar_t* wcsstr(const wchar_t* text, const wchar_t* part);
double wcstod(const wchar_t* text, wchar_t** end);
float wcstof(const wchar_t* text, wchar_t** end);
long double wcstold(const wchar_t* text, wchar_t** end);
wchar_t* wcstok(wchar_t* text, const wchar_t* separators, wchar_t** rest);
long wcstol(const wchar_t* text, wchar_t** end, int base);
long long wcstoll(const wchar_t* text, wchar_t** end, int base);
unsigned long wcstoul(const wchar_t* text, wchar_t** end, int base);
unsigned long long wcstoull(const wchar_t* text, wchar_t** end, int base);
size_t wcsxfrm(wchar_t* to, const wchar_t* from, size_t size);
size_t wcsxfrm_l(wchar_t* to, const wchar_t* from, size_t size, locale_t locale);
int wctob(wint_t character);
int wctob_l(wint_t character, locale_t locale);
wchar_t* wmemchr(const wchar_t* text, wchar_t character, size_t size);
int wmemcmp(const wchar_t* left, const wchar_t* right, size_t size);
wchar_t* wmemcpy(wchar_t* to, const wchar_t* from, size_t size);
wchar_t* wmemmove(wchar_t* to, const wchar_t* from, size_t size);
wchar_t* wmemset(wchar_t* to, wchar_t character, size_t size);
int wprintf(const wchar_t* format, ...);
int wscanf(const wchar_t* format, ...);
__END_DECLS
