// Reference counts, weak references and autorelease pools.

#include <atomic>
#include <cstdlib>
#include <mutex>
#include <new>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "tests/macos/runtime/Blocks.h"
#include "tests/macos/runtime/Classes.h"
#include "tests/macos/runtime/Runtime.h"

namespace objc = audrel::objcruntime;
using objc::Class;
using objc::Object;
using objc::Selector;

extern "C" void objc_msgSend();

namespace {

/// Stands before every object.
struct alignas(16) Header {
  std::atomic<long> references = 1;
  std::atomic<bool> isWeaklyReferred = false;
};

struct Bookkeeping {
  std::mutex mutex;
  std::unordered_map<const Object*, std::unordered_set<Object**>> weakReferences;
  std::vector<const Object*> withoutPool;
};

Bookkeeping& bookkeeping() {
  static auto* const bookkeeping = new Bookkeeping;
  return *bookkeeping;
}

/// All pools of a thread, the innermost last. Null stands where one begins.
struct Pools {
  std::vector<Object*> objects;
  std::size_t depth = 0;
};
thread_local Pools pools;

Header& headerOf(Object* object) {
  return *(reinterpret_cast<Header*>(object) - 1);
}

/// Classes and constant strings are not counted, nor what has no class: the main queue.
bool isCounted(const Object* object) {
  const Class* type = object->isa;
  return type != nullptr && objc::resolved(type) == type &&
         (type->data().flags & objc::isMetaclass) == 0;
}

/// The C++ members of an object's own class and those above it.
void callOwnOfEach(Object* object, Selector selector, bool fromTheRoot) {
  std::vector<const Class*> line;
  for (const Class* type = object->isa; type != nullptr; type = type->superclass) {
    line.insert(fromTheRoot ? line.begin() : line.end(), type);
  }
  for (const Class* type : line) {
    if (const auto method = objc::findOwn(type, selector)) {
      reinterpret_cast<void (*)(Object*, Selector)>(method)(object, selector);
    }
  }
}

}  // namespace

namespace audrel::objcruntime {

std::size_t autoreleasedWithoutPool() {
  const std::lock_guard lock(bookkeeping().mutex);
  return bookkeeping().withoutPool.size();
}

}  // namespace audrel::objcruntime

extern "C" {

Object* audrelMakeInstance(Class* type) {
  void* memory = std::calloc(1, sizeof(Header) + type->data().instanceSize);
  auto* object = reinterpret_cast<Object*>(new (memory) Header + 1);
  object->isa = type;
  static const Selector construct = objc::unique(".cxx_construct");
  callOwnOfEach(object, construct, true);
  objc::instancesOf(type).fetch_add(1, std::memory_order_relaxed);
  return object;
}

void audrelDestroyInstance(Object* object) {
  static const Selector destruct = objc::unique(".cxx_destruct");
  callOwnOfEach(object, destruct, false);
  objc::instancesOf(object->isa).fetch_sub(1, std::memory_order_relaxed);
  std::free(&headerOf(object));
}

Object* objc_retain(Object* object) {
  if (object == nullptr) {
    return nullptr;
  }
  if (objc::isBlock(object)) {
    return static_cast<Object*>(_Block_copy(object));
  }
  if (isCounted(object)) {
    headerOf(object).references.fetch_add(1, std::memory_order_relaxed);
  }
  return object;
}

void objc_release(Object* object) {
  if (object == nullptr) {
    return;
  }
  if (objc::isBlock(object)) {
    _Block_release(object);
    return;
  }
  if (!isCounted(object) ||
      headerOf(object).references.fetch_sub(1, std::memory_order_acq_rel) != 1) {
    return;
  }
  if (headerOf(object).isWeaklyReferred.load(std::memory_order_relaxed)) {
    const std::lock_guard lock(bookkeeping().mutex);
    const auto found = bookkeeping().weakReferences.find(object);
    if (found != bookkeeping().weakReferences.end()) {
      for (Object** reference : found->second) {
        *reference = nullptr;
      }
      bookkeeping().weakReferences.erase(found);
    }
  }
  static const Selector dealloc = objc::unique("dealloc");
  reinterpret_cast<void (*)(Object*, Selector)>(&objc_msgSend)(object, dealloc);
}

Object* objc_autorelease(Object* object) {
  if (object == nullptr) {
    return nullptr;
  }
  if (pools.depth == 0) {
    if (isCounted(object)) {
      const std::lock_guard lock(bookkeeping().mutex);
      bookkeeping().withoutPool.push_back(object);
    }
    return object;
  }
  pools.objects.push_back(object);
  return object;
}

void* objc_autoreleasePoolPush() {
  ++pools.depth;
  pools.objects.push_back(nullptr);
  return reinterpret_cast<void*>(pools.objects.size());
}

/// With the pools inside it that an exception left behind.
void objc_autoreleasePoolPop(void* pool) {
  const std::size_t beginning = reinterpret_cast<std::size_t>(pool);
  while (pools.objects.size() >= beginning) {
    Object* object = pools.objects.back();
    pools.objects.pop_back();
    pools.depth -= object == nullptr ? 1 : 0;
    objc_release(object);
  }
}

Object* objc_retainAutorelease(Object* object) {
  return objc_autorelease(objc_retain(object));
}

Object* objc_autoreleaseReturnValue(Object* object) {
  return objc_autorelease(object);
}

Object* objc_retainAutoreleaseReturnValue(Object* object) {
  return objc_retainAutorelease(object);
}

Object* objc_retainAutoreleasedReturnValue(Object* object) {
  return objc_retain(object);
}

Object* objc_unsafeClaimAutoreleasedReturnValue(Object* object) {
  return object;
}

void objc_storeStrong(Object** reference, Object* object) {
  Object* previous = *reference;
  *reference = objc_retain(object);
  objc_release(previous);
}

Object* objc_initWeak(Object** reference, Object* object) {
  const std::lock_guard lock(bookkeeping().mutex);
  *reference = object;
  if (object != nullptr) {
    bookkeeping().weakReferences[object].insert(reference);
    if (isCounted(object)) {
      headerOf(object).isWeaklyReferred.store(true, std::memory_order_relaxed);
    }
  }
  return object;
}

void objc_destroyWeak(Object** reference) {
  const std::lock_guard lock(bookkeeping().mutex);
  if (*reference != nullptr) {
    bookkeeping().weakReferences[*reference].erase(reference);
  }
  *reference = nullptr;
}

Object* objc_storeWeak(Object** reference, Object* object) {
  objc_destroyWeak(reference);
  return objc_initWeak(reference, object);
}

Object* objc_loadWeakRetained(Object** reference) {
  const std::lock_guard lock(bookkeeping().mutex);
  Object* object = *reference;
  if (object == nullptr || !isCounted(object)) {
    return object;
  }
  auto& references = headerOf(object).references;
  long count = references.load(std::memory_order_relaxed);
  while (count > 0) {
    if (references.compare_exchange_weak(count, count + 1, std::memory_order_relaxed)) {
      return object;
    }
  }
  return nullptr;
}

void objc_moveWeak(Object** to, Object** from) {
  Object* object = objc_loadWeakRetained(from);
  objc_initWeak(to, object);
  objc_release(object);
  objc_destroyWeak(from);
}

}  // extern "C"
