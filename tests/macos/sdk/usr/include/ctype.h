#pragma once

#include <_locale_types.h>

#define _CTYPE_A 0x00000100L
#define _CTYPE_C 0x00000200L
#define _CTYPE_D 0x00000400L
#define _CTYPE_G 0x00000800L
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
extern _RuneLocale _DefaultRuneLocale;
int isalnum(int character);
int isalnum_l(int character, locale_t locale);
int isalpha(int character);
int isalpha_l(int character, locale_t locale);
int isblank(int character);
int isblank_l(int character, locale_t locale);
int iscntrl(int character);
int iscntrl_l(int character, locale_t locale);
int isdigit(int character);
int isdigit_l(int character, locale_t locale);
int isgraph(int character);
int isgraph_l(int character, locale_t locale);
int islower(int character);
int islower_l(int character, locale_t locale);
int isprint(int character);
int isprint_l(int character, locale_t locale);
int ispunct(int character);
int ispunct_l(int character, locale_t locale);
int isspace(int character);
int isspace_l(int character, locale_t locale);
int isupper(int character);
int isupper_l(int character, locale_t locale);
int isxdigit(int character);
int isxdigit_l(int character, locale_t locale);
int isascii(int character);
int tolower(int character);
int toupper(int character);
int tolower_l(int character, locale_t locale);
int toupper_l(int character, locale_t locale);
__END_DECLS
