#pragma once

// Pages are below https://developer.apple.com/documentation/
#include <stdint.h>

typedef uint8_t UInt8;          // kernel/uint8
typedef int16_t SInt16;         // kernel/sint16
typedef int32_t SInt32;         // kernel/sint32
typedef uint32_t UInt32;        // kernel/uint32
typedef uint64_t UInt64;        // kernel/uint64
typedef float Float32;          // kernel/float32
typedef double Float64;         // kernel/float64
typedef SInt32 OSStatus;        // kernel/osstatus
typedef unsigned char Boolean;  // kernel/boolean
