#pragma once

// Pages are below https://developer.apple.com/documentation/os/
#include <os/availability.h>
#include <os/object.h>

extern "C" {

OS_OBJECT_DECL(os_log);

typedef uint8_t os_log_type_t;  // oslogtype
enum : uint8_t {
  OS_LOG_TYPE_DEFAULT = 0x00,
  OS_LOG_TYPE_INFO = 0x01,
  OS_LOG_TYPE_DEBUG = 0x02,
  OS_LOG_TYPE_ERROR = 0x10,
  OS_LOG_TYPE_FAULT = 0x11,
};

extern void* __dso_handle;

// os_log_create
os_log_t _Nonnull os_log_create(const char* _Nonnull subsystem,
                                const char* _Nonnull category) OS_OBJECT_RETURNS_RETAINED
    API_AVAILABLE(macos(10.12));

// os_log_type_enabled
bool os_log_type_enabled(os_log_t _Nonnull log, os_log_type_t type) API_AVAILABLE(macos(10.12));

// What the macro below calls: exported by the system, not documented.
void _os_log_impl(void* _Nonnull image, os_log_t _Nonnull log, os_log_type_t type,
                  const char* _Nonnull format, uint8_t* _Nonnull arguments, uint32_t size)
    API_AVAILABLE(macos(10.12));

}  // extern "C"

// os_log_with_type. The format is a literal; the compiler lays out the arguments, and says which
// of them are public, in the way that the log reads.
#define os_log_with_type(log, type, format, ...)                                               \
  __extension__({                                                                              \
    os_log_t audrelLog = (log);                                                                \
    os_log_type_t audrelType = (type);                                                         \
    if (os_log_type_enabled(audrelLog, audrelType)) {                                          \
      alignas(16)                                                                              \
          uint8_t audrelArguments[__builtin_os_log_format_buffer_size(format, ##__VA_ARGS__)]; \
      _os_log_impl(&__dso_handle, audrelLog, audrelType, format,                               \
                   (uint8_t*)__builtin_os_log_format(audrelArguments, format, ##__VA_ARGS__),  \
                   (uint32_t)sizeof audrelArguments);                                          \
    }                                                                                          \
  })
