#pragma once

#include <_locale_types.h>

__BEGIN_DECLS
int memcmp(const void* left, const void* right, size_t size);
void* memcpy(void* to, const void* from, size_t size);
void* memmove(void* to, const void* from, size_t size);
size_t strlen(const char* text);
__END_DECLS
