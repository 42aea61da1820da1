#pragma once

// Pages are below https://developer.apple.com/documentation/dispatch/
#include <os/availability.h>
#include <os/object.h>
#include <stddef.h>

extern "C" {

OS_OBJECT_DECL(dispatch_object);      // dispatch_object_t
OS_OBJECT_DECL(dispatch_queue);       // dispatch_queue_t
OS_OBJECT_DECL(dispatch_queue_attr);  // dispatch_queue_attr_t

@protocol OS_dispatch_source <OS_dispatch_object>
@end
typedef NSObject<OS_dispatch_source>* dispatch_source_t;  // dispatch_source_t

typedef void (*dispatch_function_t)(void* _Nullable);  // dispatch_function_t
typedef unsigned int dispatch_qos_class_t;

// QOS_CLASS_USER_INITIATED: dispatchqos/qosclass/userinitiated
enum : unsigned int { QOS_CLASS_USER_INITIATED = 0x19 };

// A serial queue's attributes: dispatch_queue_serial
#define DISPATCH_QUEUE_SERIAL nil

// dispatch_autorelease_frequency_t
enum dispatch_autorelease_frequency_t : unsigned long {
  DISPATCH_AUTORELEASE_FREQUENCY_INHERIT = 0,
  DISPATCH_AUTORELEASE_FREQUENCY_WORK_ITEM = 1,
  DISPATCH_AUTORELEASE_FREQUENCY_NEVER = 2,
};

// dispatch_queue_attr_make_with_qos_class. The result is the system's own, not retained.
dispatch_queue_attr_t _Nonnull dispatch_queue_attr_make_with_qos_class(
    dispatch_queue_attr_t _Nullable attributes, dispatch_qos_class_t qos, int relativePriority)
    API_AVAILABLE(macos(10.10));

// dispatch_queue_attr_make_with_autorelease_frequency. The same.
dispatch_queue_attr_t _Nonnull dispatch_queue_attr_make_with_autorelease_frequency(
    dispatch_queue_attr_t _Nullable attributes, dispatch_autorelease_frequency_t frequency)
    API_AVAILABLE(macos(10.12));

// dispatch_queue_create
dispatch_queue_t _Nonnull dispatch_queue_create(const char* _Nullable label,
                                                dispatch_queue_attr_t _Nullable attributes)
    OS_OBJECT_RETURNS_RETAINED API_AVAILABLE(macos(10.6));

// dispatch_async_f
void dispatch_async_f(dispatch_queue_t _Nonnull queue, void* _Nullable context,
                      dispatch_function_t _Nonnull work) API_AVAILABLE(macos(10.6));

// dispatch_sync_f
void dispatch_sync_f(dispatch_queue_t _Nonnull queue, void* _Nullable context,
                     dispatch_function_t _Nonnull work) API_AVAILABLE(macos(10.6));

// dispatch_get_main_queue
struct dispatch_queue_s;
extern struct dispatch_queue_s _dispatch_main_q;
static inline dispatch_queue_t _Nonnull dispatch_get_main_queue(void) {
  return (__bridge dispatch_queue_t)(void*)&_dispatch_main_q;
}

// DISPATCH_SOURCE_TYPE_SIGNAL: dispatch_source_type_signal
struct dispatch_source_type_s;
typedef const struct dispatch_source_type_s* dispatch_source_type_t;
extern const struct dispatch_source_type_s _dispatch_source_type_signal;
#define DISPATCH_SOURCE_TYPE_SIGNAL (&_dispatch_source_type_signal)

// dispatch_source_create
dispatch_source_t _Nonnull dispatch_source_create(
    dispatch_source_type_t _Nonnull type, uintptr_t handle, uintptr_t mask,
    dispatch_queue_t _Nullable queue) OS_OBJECT_RETURNS_RETAINED API_AVAILABLE(macos(10.6));

// dispatch_source_set_event_handler_f
void dispatch_source_set_event_handler_f(dispatch_source_t _Nonnull source,
                                         dispatch_function_t _Nullable handler)
    API_AVAILABLE(macos(10.6));

// dispatch_activate
void dispatch_activate(dispatch_object_t _Nonnull object) API_AVAILABLE(macos(10.12));

}  // extern "C"
