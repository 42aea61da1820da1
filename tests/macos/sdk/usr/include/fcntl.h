#pragma once

#include <sys/types.h>

#define O_NONBLOCK 4
#define F_SETFD 2
#define F_SETFL 4
#define FD_CLOEXEC 1

__BEGIN_DECLS
int fcntl(int descriptor, int command, ...);
__END_DECLS
