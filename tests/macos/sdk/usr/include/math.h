#pragma once

#include <sys/cdefs.h>

#define HUGE_VAL __builtin_huge_val()
#define HUGE_VALF __builtin_huge_valf()
#define HUGE_VALL __builtin_huge_vall()
#define INFINITY __builtin_inff()
#define NAN __builtin_nanf("")
#define FP_NAN 1
#define FP_INFINITE 2
#define FP_ZERO 3
#define FP_NORMAL 4
#define FP_SUBNORMAL 5
#define FP_ILOGB0 (-2147483647 - 1)
#define FP_ILOGBNAN (-2147483647 - 1)
#define MATH_ERRNO 1
#define MATH_ERREXCEPT 2
#define math_errhandling 2

typedef float float_t;
typedef double double_t;

__BEGIN_DECLS
double acos(double x);
float acosf(float x);
long double acosl(long double x);
double asin(double x);
float asinf(float x);
long double asinl(long double x);
double atan(double x);
float atanf(float x);
long double atanl(long double x);
double cos(double x);
float cosf(float x);
long double cosl(long double x);
double sin(double x);
float sinf(float x);
long double sinl(long double x);
double tan(double x);
float tanf(float x);
long double tanl(long double x);
double acosh(double x);
float acoshf(float x);
long double acoshl(long double x);
double asinh(double x);
float asinhf(float x);
long double asinhl(long double x);
double atanh(double x);
float atanhf(float x);
long double atanhl(long double x);
double cosh(double x);
float coshf(float x);
long double coshl(long double x);
double sinh(double x);
float sinhf(float x);
long double sinhl(long double x);
double tanh(double x);
float tanhf(float x);
long double tanhl(long double x);
double exp(double x);
float expf(float x);
long double expl(long double x);
double exp2(double x);
float exp2f(float x);
long double exp2l(long double x);
double expm1(double x);
float expm1f(float x);
long double expm1l(long double x);
double log(double x);
float logf(float x);
long double logl(long double x);
double log10(double x);
float log10f(float x);
long double log10l(long double x);
double log2(double x);
float log2f(float x);
long double log2l(long double x);
double log1p(double x);
float log1pf(float x);
long double log1pl(long double x);
double logb(double x);
float logbf(float x);
long double logbl(long double x);
double fabs(double x);
float fabsf(float x);
long double fabsl(long double x);
double cbrt(double x);
float cbrtf(float x);
long double cbrtl(long double x);
double sqrt(double x);
float sqrtf(float x);
long double sqrtl(long double x);
double erf(double x);
float erff(float x);
long double erfl(long double x);
double erfc(double x);
float erfcf(float x);
long double erfcl(long double x);
double lgamma(double x);
float lgammaf(float x);
long double lgammal(long double x);
double tgamma(double x);
float tgammaf(float x);
long double tgammal(long double x);
double ceil(double x);
float ceilf(float x);
long double ceill(long double x);
double floor(double x);
float floorf(float x);
long double floorl(long double x);
double nearbyint(double x);
float nearbyintf(float x);
long double nearbyintl(long double x);
double rint(double x);
float rintf(float x);
long double rintl(long double x);
double round(double x);
float roundf(float x);
long double roundl(long double x);
double trunc(double x);
float truncf(float x);
long double truncl(long double x);
double atan2(double x, double y);
float atan2f(float x, float y);
long double atan2l(long double x, long double y);
double hypot(double x, double y);
float hypotf(float x, float y);
long double hypotl(long double x, long double y);
double pow(double x, double y);
float powf(float x, float y);
long double powl(long double x, long double y);
double fmod(double x, double y);
float fmodf(float x, float y);
long double fmodl(long double x, long double y);
double remainder(double x, double y);
float remainderf(float x, float y);
long double remainderl(long double x, long double y);
double copysign(double x, double y);
float copysignf(float x, float y);
long double copysignl(long double x, long double y);
double nextafter(double x, double y);
float nextafterf(float x, float y);
long double nextafterl(long double x, long double y);
double fdim(double x, double y);
float fdimf(float x, float y);
long double fdiml(long double x, long double y);
double fmax(double x, double y);
float fmaxf(float x, float y);
long double fmaxl(long double x, long double y);
double fmin(double x, double y);
float fminf(float x, float y);
long double fminl(long double x, long double y);
double modf(double x, double* whole);
double ldexp(double x, int exponent);
double frexp(double x, int* exponent);
int ilogb(double x);
double scalbn(double x, int exponent);
double scalbln(double x, long exponent);
long lrint(double x);
long lround(double x);
long long llrint(double x);
long long llround(double x);
double remquo(double x, double y, int* quotient);
double nan(const char* text);
double nexttoward(double x, long double y);
double fma(double x, double y, double z);
float modff(float x, float* whole);
float ldexpf(float x, int exponent);
float frexpf(float x, int* exponent);
int ilogbf(float x);
float scalbnf(float x, int exponent);
float scalblnf(float x, long exponent);
long lrintf(float x);
long lroundf(float x);
long long llrintf(float x);
long long llroundf(float x);
float remquof(float x, float y, int* quotient);
float nanf(const char* text);
float nexttowardf(float x, long double y);
float fmaf(float x, float y, float z);
long double modfl(long double x, long double* whole);
long double ldexpl(long double x, int exponent);
long double frexpl(long double x, int* exponent);
int ilogbl(long double x);
long double scalbnl(long double x, int exponent);
long double scalblnl(long double x, long exponent);
long lrintl(long double x);
long lroundl(long double x);
long long llrintl(long double x);
long long llroundl(long double x);
long double remquol(long double x, long double y, int* quotient);
long double nanl(const char* text);
long double nexttowardl(long double x, long double y);
long double fmal(long double x, long double y, long double z);
__END_DECLS
