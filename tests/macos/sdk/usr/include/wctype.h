#pragma once

#include <_locale_types.h>

typedef unsigned int wctype_t;
typedef int wctrans_t;

#ifndef WEOF
#define WEOF ((wint_t) - 1)
#endif

__BEGIN_DECLS
wctype_t wctype(const char* name);
__END_DECLS
