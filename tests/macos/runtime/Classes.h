#pragma once

#include "tests/macos/runtime/Metadata.h"

namespace audrel::objcruntime {

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
