#pragma once

#include <_locale_types.h>

#define LC_CTYPE 2
#define LC_COLLATE_MASK 1
#define LC_CTYPE_MASK 2
#define LC_MESSAGES_MASK 4
#define LC_MONETARY_MASK 8
#define LC_NUMERIC_MASK 16
#define LC_TIME_MASK 32

__BEGIN_DECLS
char* setlocale(int category, const char* locale);
__END_DECLS
