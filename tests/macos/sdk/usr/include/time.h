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

#define CLOCKS_PER_SEC 1000000UL
#define TIME_UTC 1

typedef enum {
  CLOCK_REALTIME = 0,
  CLOCK_MONOTONIC_RAW = 4,
  CLOCK_MONOTONIC = 6,
  CLOCK_UPTIME_RAW = 8,
} clockid_t;

/* The standard library asks for these as macros. */
#define CLOCK_REALTIME CLOCK_REALTIME
#define CLOCK_MONOTONIC_RAW CLOCK_MONOTONIC_RAW
#define CLOCK_MONOTONIC CLOCK_MONOTONIC
#define CLOCK_UPTIME_RAW CLOCK_UPTIME_RAW

__BEGIN_DECLS
char* asctime(const struct tm* fields);
clock_t clock(void);
int clock_gettime(clockid_t clock, struct timespec* to);
char* ctime(const time_t* time);
double difftime(time_t end, time_t begin);
struct tm* gmtime(const time_t* time);
struct tm* gmtime_r(const time_t* time, struct tm* to);
struct tm* localtime(const time_t* time);
struct tm* localtime_r(const time_t* time, struct tm* to);
time_t mktime(struct tm* fields);
int nanosleep(const struct timespec* time, struct timespec* remaining);
size_t strftime(char* to, size_t size, const char* format, const struct tm* fields);
size_t strftime_l(char* to, size_t size, const char* format, const struct tm* fields,
                  locale_t locale);
time_t time(time_t* to);
int timespec_get(struct timespec* to, int base);
void tzset(void);
__END_DECLS
