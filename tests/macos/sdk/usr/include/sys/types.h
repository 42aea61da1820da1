#pragma once

#include <stddef.h>
#include <stdint.h>
#include <sys/cdefs.h>

typedef long ssize_t;
typedef long time_t;
typedef long long off_t;
typedef int pid_t;
