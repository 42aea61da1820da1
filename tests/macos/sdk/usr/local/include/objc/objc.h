#pragma once

// Pages are below https://developer.apple.com/documentation/objectivec/
#include <stdbool.h>
#include <stdint.h>

typedef struct objc_class* Class;  // class
struct objc_object {
  Class isa;
};
typedef struct objc_object* id;     // id
typedef struct objc_selector* SEL;  // sel

// bool on arm64, signed char on x86_64: objc_bool
#if __OBJC_BOOL_IS_BOOL
typedef bool BOOL;
#else
typedef signed char BOOL;
#endif
#define YES __objc_yes
#define NO __objc_no
#define nil nullptr

typedef long NSInteger;            // nsinteger
typedef unsigned long NSUInteger;  // nsuinteger

extern "C" {
SEL _Nonnull sel_registerName(const char* _Nonnull name);  // sel_registername(_:)
const char* _Nonnull sel_getName(SEL _Nonnull selector);   // sel_getname(_:)
}
