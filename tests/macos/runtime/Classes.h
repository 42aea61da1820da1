#pragma once

#include <atomic>
#include <cstddef>
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

/// How many there are of that very class. To be counted with relaxed order, like everything in this
/// runtime that threads pass through without being ordered by it on a Mac: the thread sanitizer is
/// to see what the program itself leaves without order.
std::atomic<std::size_t>& instancesOf(const Class* type);

/// What constant strings have for a class stands for that of their implementation.
const Class* resolved(const Class* type);

}  // namespace audrel::objcruntime
