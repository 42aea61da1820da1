#include "tests/support/Waiting.h"

#include <chrono>
#include <thread>

namespace audrel::support {

bool waitFor(const std::function<bool()>& condition) {
  using namespace std::chrono_literals;
  const auto deadline = std::chrono::steady_clock::now() + 20s;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) {
      return false;
    }
    std::this_thread::sleep_for(2ms);
  }
  return true;
}

}  // namespace audrel::support
