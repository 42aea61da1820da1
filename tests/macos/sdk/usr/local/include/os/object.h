#pragma once

#include <objc/NSObject.h>

// Objects of the system's C libraries take part in ARC.
#define OS_OBJECT_DECL(name) \
  @protocol OS_              \
  ##name<NSObject> @end      \
  typedef NSObject<OS_##name>* name##_t
#define OS_OBJECT_RETURNS_RETAINED __attribute__((ns_returns_retained))
