#pragma once

#include <sys/cdefs.h>

struct pollfd {
  int fd;
  short events;
  short revents;
};
typedef unsigned int nfds_t;

#define POLLIN 1

__BEGIN_DECLS
int poll(struct pollfd* descriptors, nfds_t count, int milliseconds);
__END_DECLS
