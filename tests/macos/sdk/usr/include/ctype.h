#pragma once

#include <_locale_types.h>

#define _CTYPE_A 0x00000100L
#define _CTYPE_C 0x00000200L
#define _CTYPE_D 0x00000400L
#define _CTYPE_L 0x00001000L
#define _CTYPE_P 0x00002000L
#define _CTYPE_S 0x00004000L
#define _CTYPE_U 0x00008000L
#define _CTYPE_X 0x00010000L
#define _CTYPE_B 0x00020000L
#define _CTYPE_R 0x00040000L

typedef unsigned int __uint32_t;

/* The table of the "C" locale: the standard library reads __runetype of it, and nothing before
   that may differ in size. */
typedef struct {
  char __magic[8];
  char __encoding[32];
  void* __functions[2];
  int __invalid_rune;
  unsigned int __runetype[256];
  int __maplower[256];
  int __mapupper[256];
} _RuneLocale;

__BEGIN_DECLS
int isalnum(int character);
int isalpha(int character);
int isblank(int character);
int iscntrl(int character);
int isdigit(int character);
int isdigit_l(int character, locale_t locale);
int isgraph(int character);
int islower(int character);
int isprint(int character);
int ispunct(int character);
int isspace(int character);
int isupper(int character);
int isxdigit(int character);
int isxdigit_l(int character, locale_t locale);
int isascii(int character);
int tolower(int character);
int toupper(int character);
__END_DECLS
