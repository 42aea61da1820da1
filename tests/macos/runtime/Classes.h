#pragma once

#include <span>

#include "tests/macos/runtime/Metadata.h"

namespace audrel::objcruntime {

/// What a program has for the runtime, each in a section of its own.
struct Metadata {
  std::span<Selector> selectors;  ///< each is replaced by the one address of its name
  std::span<Class* const> classes;
  std::span<Category* const> categories;
};

/// Before any of it is used. The tests' own program is registered as it starts.
void registerMetadata(const Metadata& metadata);

/// The one address of all equal names.
Selector unique(Selector name);

/// Nothing when neither the class nor one above it has the method.
Implementation find(const Class* type, Selector selector);

/// A method of that very class, not of those above it.
Implementation findOwn(const Class* type, Selector selector);

/// Null when there is none.
Class* classNamed(const char* name);

/// What constant strings have for a class stands for that of their implementation.
const Class* resolved(const Class* type);

}  // namespace audrel::objcruntime
