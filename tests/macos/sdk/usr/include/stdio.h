#pragma once

#include <_locale_types.h>
#include <stdarg.h>

typedef struct __sFILE FILE;
typedef long long fpos_t;

#define EOF (-1)
#define BUFSIZ 1024
#define FILENAME_MAX 1024
#define FOPEN_MAX 20
#define L_tmpnam 1024
#define TMP_MAX 308915776
#define SEEK_SET 0
#define SEEK_CUR 1
#define SEEK_END 2
#define _IOFBF 0
#define _IOLBF 1
#define _IONBF 2

#define stdin __stdinp
#define stdout __stdoutp
#define stderr __stderrp

#define __printflike(format, first) __attribute__((__format__(__printf__, format, first)))

__BEGIN_DECLS
extern FILE* __stdinp;
extern FILE* __stdoutp;
extern FILE* __stderrp;
int asprintf(char** to, const char* format, ...) __printflike(2, 3);
int asprintf_l(char** to, locale_t locale, const char* format, ...);
void clearerr(FILE* file);
int fclose(FILE* file);
int feof(FILE* file);
int ferror(FILE* file);
int fflush(FILE* file);
int fgetc(FILE* file);
int fgetpos(FILE* file, fpos_t* position);
char* fgets(char* to, int size, FILE* file);
int fileno(FILE* file);
FILE* fopen(const char* path, const char* mode);
int fprintf(FILE* file, const char* format, ...) __printflike(2, 3);
int fputc(int character, FILE* file);
int fputs(const char* text, FILE* file);
size_t fread(void* to, size_t size, size_t count, FILE* file);
FILE* freopen(const char* path, const char* mode, FILE* file);
int fscanf(FILE* file, const char* format, ...);
int fseek(FILE* file, long offset, int origin);
int fseeko(FILE* file, off_t offset, int origin);
int fsetpos(FILE* file, const fpos_t* position);
long ftell(FILE* file);
off_t ftello(FILE* file);
size_t fwrite(const void* from, size_t size, size_t count, FILE* file);
int getc(FILE* file);
int getchar(void);
void perror(const char* text);
int printf(const char* format, ...) __printflike(1, 2);
int putc(int character, FILE* file);
int putchar(int character);
int puts(const char* text);
int remove(const char* path);
int rename(const char* from, const char* to);
void rewind(FILE* file);
int scanf(const char* format, ...);
void setbuf(FILE* file, char* buffer);
int setvbuf(FILE* file, char* buffer, int mode, size_t size);
int snprintf(char* to, size_t size, const char* format, ...) __printflike(3, 4);
int snprintf_l(char* to, size_t size, locale_t locale, const char* format, ...);
int sprintf(char* to, const char* format, ...) __printflike(2, 3);
int sscanf(const char* from, const char* format, ...);
int sscanf_l(const char* from, locale_t locale, const char* format, ...);
FILE* tmpfile(void);
char* tmpnam(char* to);
int ungetc(int character, FILE* file);
int vasprintf(char** to, const char* format, va_list arguments);
int vasprintf_l(char** to, locale_t locale, const char* format, va_list arguments);
int vfprintf(FILE* file, const char* format, va_list arguments);
int vfscanf(FILE* file, const char* format, va_list arguments);
int vprintf(const char* format, va_list arguments);
int vscanf(const char* format, va_list arguments);
int vsnprintf(char* to, size_t size, const char* format, va_list arguments);
int vsprintf(char* to, const char* format, va_list arguments);
int vsscanf(const char* from, const char* format, va_list arguments);
__END_DECLS
