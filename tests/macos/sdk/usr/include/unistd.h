#pragma once

#include <sys/types.h>
#include <time.h>

#define STDIN_FILENO 0
#define STDOUT_FILENO 1
#define STDERR_FILENO 2
#define _SC_NPROCESSORS_ONLN 58

__BEGIN_DECLS
int close(int descriptor);
int isatty(int descriptor);
int pipe(int descriptors[2]);
ssize_t read(int descriptor, void* to, size_t size);
long sysconf(int name);
ssize_t write(int descriptor, const void* from, size_t size);
pid_t getpid(void);
__END_DECLS
