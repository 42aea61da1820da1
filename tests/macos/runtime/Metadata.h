#pragma once

#include <cstdint>

/// The Objective-C metadata that clang writes for macOS on 64 bits, after the headers of Apple's
/// published runtime.
namespace audrel::objcruntime {

using Selector = const char*;
using Implementation = void (*)();

struct Method {
  Selector name;
  const char* types;
  Implementation implementation;
};

struct MethodList {
  std::uint32_t entrySize;  ///< with flags in the lowest two bits
  std::uint32_t count;
  Method methods[1];
};

struct InstanceVariable {
  std::int32_t* offset;
  const char* name;
  const char* type;
  std::uint32_t alignment;
  std::uint32_t size;
};

struct InstanceVariableList {
  std::uint32_t entrySize;
  std::uint32_t count;
  InstanceVariable variables[1];
};

struct ClassData {
  std::uint32_t flags;
  std::uint32_t instanceStart;
  std::uint32_t instanceSize;
  std::uint32_t reserved;
  const void* strongLayout;
  const char* name;
  MethodList* methods;
  const void* protocols;
  InstanceVariableList* variables;
  const void* weakLayout;
  const void* properties;
};
inline constexpr std::uint32_t isMetaclass = 1;

struct Class {
  Class* isa;
  Class* superclass;
  void* cache;
  void* table;
  std::uintptr_t dataAndFlags;

  ClassData& data() const {
    return *reinterpret_cast<ClassData*>(dataAndFlags & ~std::uintptr_t{7});
  }
};

struct Category {
  const char* name;
  Class* extended;
  MethodList* instanceMethods;
  MethodList* classMethods;
};

struct Object {
  Class* isa;
};

}  // namespace audrel::objcruntime
