#pragma once

#include <sys/types.h>

typedef int sig_atomic_t;
typedef unsigned int sigset_t;
struct __siginfo;

struct sigaction {
  union {
    void (*__sa_handler)(int);
    void (*__sa_sigaction)(int, struct __siginfo*, void*);
  } __sigaction_u;
  sigset_t sa_mask;
  int sa_flags;
};
#define sa_handler __sigaction_u.__sa_handler

#define SIGHUP 1
#define SIGINT 2
#define SIGPIPE 13
#define SIGTERM 15
#define SIGCONT 19
#define SIGXFSZ 25
#define SIGWINCH 28
#define SIG_IGN ((void (*)(int))1)
#define SA_RESTART 2

__BEGIN_DECLS
void (*signal(int number, void (*handler)(int)))(int);
int sigaction(int number, const struct sigaction* action, struct sigaction* previous);
int sigemptyset(sigset_t* set);
__END_DECLS
