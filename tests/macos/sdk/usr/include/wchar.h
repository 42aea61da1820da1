#pragma once

#include <_locale_types.h>
#include <stdarg.h>
#include <stdio.h>
#include <time.h>

#ifndef WEOF
#define WEOF ((wint_t) - 1)
#endif

__BEGIN_DECLS
int wcwidth(wchar_t character);
wchar_t* wcschr(const wchar_t* text, wchar_t character);
wchar_t* wcspbrk(const wchar_t* text, const wchar_t* accepted);
wchar_t* wcsrchr(const wchar_t* text, wchar_t character);
wchar_t* wcsstr(const wchar_t* text, const wchar_t* part);
wchar_t* wmemchr(const wchar_t* text, wchar_t character, size_t size);
__END_DECLS
