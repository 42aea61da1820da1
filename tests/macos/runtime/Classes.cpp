#include "tests/macos/runtime/Classes.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <unordered_map>
#include <unordered_set>

#include "tests/macos/runtime/Runtime.h"

namespace objc = audrel::objcruntime;

// The linker brackets the sections that the compiler fills.
extern "C" {
extern objc::Class* __start_objc_classlist[] __attribute__((weak));
extern objc::Class* __stop_objc_classlist[] __attribute__((weak));
extern objc::Category* __start_objc_catlist[] __attribute__((weak));
extern objc::Category* __stop_objc_catlist[] __attribute__((weak));
extern objc::Selector __start_objc_selrefs[] __attribute__((weak));
extern objc::Selector __stop_objc_selrefs[] __attribute__((weak));

void* _objc_empty_cache;
objc::Class __CFConstantStringClassReference;
}

namespace audrel::objcruntime {
namespace {

struct Registry {
  std::shared_mutex mutex;
  std::unordered_set<std::string> selectors;
  std::unordered_map<std::string, Class*> classes;
  std::unordered_map<const Class*, std::unordered_map<Selector, Implementation>> methods;
  std::unordered_map<const Class*, std::atomic<std::size_t>> instances;
  std::unordered_set<const Class*> realized;
};

/// Never destroyed: objects may go after static ones.
Registry& registry() {
  static auto* const registry = new Registry;
  return *registry;
}

void addMethods(const Class* type, MethodList* list) {
  if (list == nullptr) {
    return;
  }
  const std::size_t entrySize = list->entrySize & ~3U;
  auto* at = reinterpret_cast<char*>(list->methods);
  for (std::uint32_t i = 0; i < list->count; ++i, at += entrySize) {
    const auto* method = reinterpret_cast<Method*>(at);
    registry().methods[type][unique(method->name)] = method->implementation;
  }
}

/// Moves a class's own variables behind those of a superclass that turned out larger than the
/// compiler was told.
void slideVariables(Class* type) {
  ClassData& data = type->data();
  const std::uint32_t superSize = type->superclass->data().instanceSize;
  if (data.instanceStart >= superSize) {
    return;
  }
  const std::uint32_t distance = (superSize - data.instanceStart + 15) & ~15U;
  if (data.variables != nullptr) {
    for (std::uint32_t i = 0; i < data.variables->count; ++i) {
      *data.variables->variables[i].offset += static_cast<std::int32_t>(distance);
    }
  }
  data.instanceStart += distance;
  data.instanceSize += distance;
}

void realize(Class* type) {
  if (type == nullptr || !registry().realized.insert(type).second) {
    return;
  }
  realize(type->superclass);
  addMethods(type, type->data().methods);
  addMethods(type->isa, type->isa->data().methods);
  registry().classes[type->data().name] = type;
  registry().instances[type] = 0;
  if (type->superclass != nullptr) {
    slideVariables(type);
  }
}

__attribute__((constructor(101))) void registerOwn() {
  registerMetadata({.selectors = {__start_objc_selrefs, __stop_objc_selrefs},
                    .classes = {__start_objc_classlist, __stop_objc_classlist},
                    .categories = {__start_objc_catlist, __stop_objc_catlist}});
  if (const Class* strings = classNamed("NSConstantString")) {
    __CFConstantStringClassReference = *strings;
  }
}

}  // namespace

void registerMetadata(const Metadata& metadata) {
  for (Selector& selector : metadata.selectors) {
    selector = unique(selector);
  }
  for (Class* type : metadata.classes) {
    realize(type);
  }
  for (const Category* category : metadata.categories) {
    addMethods(category->extended, category->instanceMethods);
    addMethods(category->extended->isa, category->classMethods);
  }
}

Selector unique(Selector name) {
  static std::mutex mutex;
  const std::lock_guard lock(mutex);
  return registry().selectors.insert(name).first->c_str();
}

const Class* resolved(const Class* type) {
  return type == &__CFConstantStringClassReference ? classNamed("NSConstantString") : type;
}

Class* classNamed(const char* name) {
  const std::shared_lock lock(registry().mutex);
  const auto found = registry().classes.find(name);
  return found == registry().classes.end() ? nullptr : found->second;
}

std::atomic<std::size_t>& instancesOf(const Class* type) {
  return registry().instances.at(type);
}

Implementation findOwn(const Class* type, Selector selector) {
  const auto methods = registry().methods.find(type);
  if (methods == registry().methods.end()) {
    return nullptr;
  }
  const auto method = methods->second.find(selector);
  return method == methods->second.end() ? nullptr : method->second;
}

Implementation find(const Class* type, Selector selector) {
  for (const Class* at = resolved(type); at != nullptr; at = at->superclass) {
    if (const Implementation found = findOwn(at, selector)) {
      return found;
    }
  }
  return nullptr;
}

std::size_t liveObjects() {
  std::size_t count = 0;
  for (const auto& [type, instances] : registry().instances) {
    count += instances.load(std::memory_order_relaxed);
  }
  return count;
}

std::size_t liveObjectsOf(const char* className) {
  const Class* type = classNamed(className);
  return type == nullptr ? 0 : instancesOf(type).load(std::memory_order_relaxed);
}

bool instancesRespondTo(const char* className, const char* selector) {
  const Class* type = classNamed(className);
  return type != nullptr && find(type, unique(selector)) != nullptr;
}

}  // namespace audrel::objcruntime
