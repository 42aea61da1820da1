#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/ChildProcess.h"

namespace audrel::sessiontest {

/// A program on a bus that tells how it is called, in a process of its own.
class TestService {
 public:
  struct Answer {
    std::string member;

    /// A tuple in GVariant's text form, "!" and an error's name, "-" for none at all, or "fd".
    std::string value;
  };

  /// Waits until it owns `name` on the bus.
  TestService(const std::string& busAddress, const std::string& name, const std::string& path,
              const std::vector<Answer>& answers);

  /// The first thing that a test asserts.
  bool isRunning() const { return isReady_; }

  /// The next call, as "Member (arguments)", or "released"; nothing when none comes. The main
  /// loop of this thread runs meanwhile.
  std::optional<std::string> nextCall(std::chrono::milliseconds timeout = std::chrono::seconds(10));

  /// What it was called with and has not been asked for yet, within a moment.
  std::vector<std::string> furtherCalls();

 private:
  std::unique_ptr<support::ChildProcess> program_;
  bool isReady_ = false;
};

/// Runs this thread's main loop until `condition` holds; whether it does, in time.
bool runLoopUntil(const std::function<bool()>& condition,
                  std::chrono::milliseconds timeout = std::chrono::seconds(10));

}  // namespace audrel::sessiontest
