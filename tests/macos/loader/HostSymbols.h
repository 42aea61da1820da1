#pragma once

#include <string>

namespace audrel::macho {

/// What a program for macOS imports, as this process has it: the frameworks and the runtime of the
/// tests, the C library of Linux, and LLVM's C++ library, which macOS has too.
///
/// Names of the C++ language itself (exceptions, type information, new and delete) come from the
/// library that this process was linked to, and LLVM's takes them from there as well, so that there
/// is one of each. The clock is `scriptedTime`.
void* hostSymbol(const std::string& name);

/// Microseconds since 1970, for the program alone.
extern long long scriptedTime;

}  // namespace audrel::macho
