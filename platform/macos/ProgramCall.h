#pragma once

#import <Foundation/Foundation.h>

#include <exception>

namespace audrel::macos {

/// Logs that the program failed to answer `call`.
void logFailedCall(const char* call, const char* reason) noexcept;
void logFailedCall(const char* call, NSException* exception) noexcept;

/// Calls into the program from a frame of the frameworks, named `call`. An exception, be it of C++
/// or raised by a framework that the program called in turn, must not cross such a frame: it is
/// logged, and the program goes on, because a recording may be running.
template <typename Work>
void callProgram(const char* call, Work work) noexcept {
  try {
    @try {
      work();
    } @catch (NSException* exception) {
      logFailedCall(call, exception);
    }
  } catch (const std::exception& error) {
    logFailedCall(call, error.what());
  } catch (...) {
    logFailedCall(call, "unknown exception");
  }
}

}  // namespace audrel::macos
