#pragma once

#include <_locale_types.h>

typedef unsigned int wctype_t;
typedef int wctrans_t;

#ifndef WEOF
#define WEOF ((wint_t) - 1)
#endif

__BEGIN_DECLS
int iswalnum(wint_t character);
int iswalnum_l(wint_t character, locale_t locale);
int iswalpha(wint_t character);
int iswalpha_l(wint_t character, locale_t locale);
int iswblank(wint_t character);
int iswblank_l(wint_t character, locale_t locale);
int iswcntrl(wint_t character);
int iswcntrl_l(wint_t character, locale_t locale);
int iswdigit(wint_t character);
int iswdigit_l(wint_t character, locale_t locale);
int iswgraph(wint_t character);
int iswgraph_l(wint_t character, locale_t locale);
int iswlower(wint_t character);
int iswlower_l(wint_t character, locale_t locale);
int iswprint(wint_t character);
int iswprint_l(wint_t character, locale_t locale);
int iswpunct(wint_t character);
int iswpunct_l(wint_t character, locale_t locale);
int iswspace(wint_t character);
int iswspace_l(wint_t character, locale_t locale);
int iswupper(wint_t character);
int iswupper_l(wint_t character, locale_t locale);
int iswxdigit(wint_t character);
int iswxdigit_l(wint_t character, locale_t locale);
int iswctype(wint_t character, wctype_t type);
wctype_t wctype(const char* name);
wint_t towlower(wint_t character);
wint_t towupper(wint_t character);
wint_t towlower_l(wint_t character, locale_t locale);
wint_t towupper_l(wint_t character, locale_t locale);
wint_t towctrans(wint_t character, wctrans_t mapping);
wctrans_t wctrans(const char* name);
__END_DECLS
