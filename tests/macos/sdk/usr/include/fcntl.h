#pragma once

#include <sys/types.h>

#define O_RDONLY 0
#define O_WRONLY 1
#define O_RDWR 2
#define O_NONBLOCK 4
#define F_GETFD 1
#define F_SETFD 2
#define F_GETFL 3
#define F_SETFL 4
#define FD_CLOEXEC 1

__BEGIN_DECLS
int fcntl(int descriptor, int command, ...);
int open(const char* path, int flags, ...);
__END_DECLS
