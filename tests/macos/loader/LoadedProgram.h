#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "tests/macos/runtime/Classes.h"

namespace audrel::macho {

/// The clock of such programs: microseconds since 1970.
extern long long scriptedTime;

/// A program for macOS as it lies in this process, which makeelf.py wrote. Both systems call
/// functions alike, so it runs where everything that it imports is there.
struct LoadedProgram {
  template <typename T>
  struct Part {
    T* begin;
    T* end;

    std::span<T> span() const { return {begin, end}; }
  };

  /// Once, before it runs: protects code and constants as macOS does, and registers its classes.
  void prepare() const;

  /// The program's main.
  int run(std::vector<std::string> arguments) const;

  int (*entry)(int count, char** arguments);
  Part<objcruntime::Selector> selectors;
  Part<objcruntime::Class* const> classes;
  Part<std::byte> code;
  Part<std::byte> constants;
};

}  // namespace audrel::macho
