#pragma once

#include <sys/cdefs.h>

struct option {
  const char* name;
  int has_arg;
  int* flag;
  int val;
};

#define no_argument 0
#define required_argument 1

__BEGIN_DECLS
extern char* optarg;
extern int optind;
extern int opterr;
extern int optopt;
int getopt_long(int count, char* const* arguments, const char* letters,
                const struct option* options, int* index);
__END_DECLS
