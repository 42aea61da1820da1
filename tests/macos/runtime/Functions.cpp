// The rest of the runtime's functions that compiled code and the adapters call.

#include <cstddef>
#include <cstdlib>

#include "tests/macos/runtime/Classes.h"

namespace objc = audrel::objcruntime;
using objc::Class;
using objc::Object;
using objc::Selector;

extern "C" {

void objc_msgSend();
Object* objc_retain(Object* object);
void objc_release(Object* object);
Object* objc_autorelease(Object* object);

/// The selector is a unique one.
static Object* sendForObject(void* receiver, Selector selector) {
  return reinterpret_cast<Object* (*)(void*, Selector)>(&objc_msgSend)(receiver, selector);
}

Object* objc_alloc(Class* type) {
  static const Selector alloc = objc::unique("alloc");
  return sendForObject(type, alloc);
}

Object* objc_alloc_init(Class* type) {
  static const Selector init = objc::unique("init");
  return sendForObject(objc_alloc(type), init);
}

Selector sel_registerName(const char* name) {
  return objc::unique(name);
}

const char* sel_getName(Selector selector) {
  return selector;
}

static Object** variableAt(Object* object, std::ptrdiff_t offset) {
  return reinterpret_cast<Object**>(reinterpret_cast<char*>(object) + offset);
}

Object* objc_getProperty(Object* object, Selector, std::ptrdiff_t offset, bool) {
  return objc_autorelease(objc_retain(*variableAt(object, offset)));
}

static void setRetained(Object* object, std::ptrdiff_t offset, Object* value) {
  Object** variable = variableAt(object, offset);
  Object* previous = *variable;
  *variable = value;
  objc_release(previous);
}

void objc_setProperty_atomic(Object* object, Selector, Object* value, std::ptrdiff_t offset) {
  setRetained(object, offset, objc_retain(value));
}

void objc_setProperty_atomic_copy(Object* object, Selector, Object* value, std::ptrdiff_t offset) {
  static const Selector copy = objc::unique("copy");
  setRetained(object, offset, value == nullptr ? nullptr : sendForObject(value, copy));
}

/// Between fields of structures, under a lock in the real runtime.
void objc_copyStruct(void* to, const void* from, std::ptrdiff_t size, bool, bool) {
  __builtin_memcpy(to, from, static_cast<std::size_t>(size));
}

}  // extern "C"
