#pragma once

#include <_locale_types.h>

struct timespec {
  time_t tv_sec;
  long tv_nsec;
};

struct tm {
  int tm_sec;
  int tm_min;
  int tm_hour;
  int tm_mday;
  int tm_mon;
  int tm_year;
  int tm_wday;
  int tm_yday;
  int tm_isdst;
  long tm_gmtoff;
  char* tm_zone;
};

__BEGIN_DECLS
struct tm* localtime_r(const time_t* time, struct tm* to);
int nanosleep(const struct timespec* time, struct timespec* remaining);
time_t time(time_t* to);
void tzset(void);
__END_DECLS
