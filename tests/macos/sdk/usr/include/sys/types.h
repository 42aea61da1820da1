#pragma once

#include <stddef.h>
#include <stdint.h>
#include <sys/cdefs.h>

typedef long ssize_t;
typedef long time_t;
typedef long long off_t;
typedef int pid_t;
typedef int suseconds_t;
typedef unsigned int uid_t;
typedef unsigned int gid_t;
typedef unsigned int useconds_t;
typedef unsigned long clock_t;
typedef unsigned short mode_t;
