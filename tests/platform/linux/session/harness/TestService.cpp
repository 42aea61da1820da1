#include "tests/platform/linux/session/harness/TestService.h"

#include <glib.h>

#include <thread>

namespace audrel::sessiontest {

using namespace std::chrono_literals;

bool runLoopUntil(const std::function<bool()>& condition, std::chrono::milliseconds timeout) {
  const auto deadline = std::chrono::steady_clock::now() + timeout;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) {
      return false;
    }
    if (g_main_context_iteration(nullptr, FALSE) == FALSE) {
      std::this_thread::sleep_for(1ms);
    }
  }
  return true;
}

TestService::TestService(const std::string& busAddress, const std::string& name,
                         const std::string& path, const std::vector<Answer>& answers) {
  std::vector<std::string> arguments = {AUDREL_TEST_SERVICE, name, path};
  for (const Answer& answer : answers) {
    arguments.push_back(answer.member + "=" + answer.value);
  }
  program_ =
      support::ChildProcess::start({.arguments = std::move(arguments),
                                    .environment = {{"DBUS_SESSION_BUS_ADDRESS", busAddress}}});
  isReady_ = program_ != nullptr && program_->readLine(10s) == "ready";
}

std::optional<std::string> TestService::nextCall(std::chrono::milliseconds timeout) {
  std::optional<std::string> call;
  runLoopUntil(
      [&] {
        call = program_->readLine(2ms);
        return call.has_value();
      },
      timeout);
  return call;
}

std::vector<std::string> TestService::furtherCalls() {
  std::vector<std::string> calls;
  while (auto call = nextCall(100ms)) {
    calls.push_back(std::move(*call));
  }
  return calls;
}

}  // namespace audrel::sessiontest
