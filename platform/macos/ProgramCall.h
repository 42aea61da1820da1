#pragma once

#include <exception>

namespace audrel::macos {

/// Logs that the program failed to answer `call`.
void logFailedCall(const char* call, const char* reason) noexcept;

/// Calls into the program from a frame of the frameworks, named `call`. An exception must not cross
/// such a frame: it is logged, and the program goes on, because a recording may be running.
template <typename Work>
void callProgram(const char* call, Work work) noexcept {
  try {
    work();
  } catch (const std::exception& error) {
    logFailedCall(call, error.what());
  } catch (...) {
    logFailedCall(call, "unknown exception");
  }
}

}  // namespace audrel::macos
