#pragma once

#include <sys/types.h>
#include <time.h>

#define STDOUT_FILENO 1
#define STDERR_FILENO 2

__BEGIN_DECLS
int close(int descriptor);
int isatty(int descriptor);
int pipe(int descriptors[2]);
ssize_t read(int descriptor, void* to, size_t size);
ssize_t write(int descriptor, const void* from, size_t size);
__END_DECLS
