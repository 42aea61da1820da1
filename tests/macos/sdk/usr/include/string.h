#pragma once

#include <_locale_types.h>

__BEGIN_DECLS
void* memchr(const void* bytes, int value, size_t size);
int memcmp(const void* left, const void* right, size_t size);
void* memcpy(void* to, const void* from, size_t size);
void* memmove(void* to, const void* from, size_t size);
void* memset(void* to, int value, size_t size);
char* strcat(char* to, const char* from);
char* strchr(const char* text, int character);
int strcmp(const char* left, const char* right);
int strcoll(const char* left, const char* right);
int strcoll_l(const char* left, const char* right, locale_t locale);
char* strcpy(char* to, const char* from);
size_t strcspn(const char* text, const char* stops);
char* strerror(int error);
int strerror_r(int error, char* to, size_t size);
size_t strlen(const char* text);
char* strncat(char* to, const char* from, size_t size);
int strncmp(const char* left, const char* right, size_t size);
char* strncpy(char* to, const char* from, size_t size);
char* strpbrk(const char* text, const char* accepted);
char* strrchr(const char* text, int character);
size_t strspn(const char* text, const char* accepted);
char* strstr(const char* text, const char* part);
char* strtok(char* text, const char* separators);
size_t strxfrm(char* to, const char* from, size_t size);
size_t strxfrm_l(char* to, const char* from, size_t size, locale_t locale);
__END_DECLS
