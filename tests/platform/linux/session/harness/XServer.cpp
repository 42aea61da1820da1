#include "tests/platform/linux/session/harness/XServer.h"

#include <csignal>

namespace audrel::sessiontest {

using namespace std::chrono_literals;

XServer::XServer()
    : server_(pwtest::ChildProcess::start({.arguments = {"Xvfb", "-displayfd", "1", "-screen", "0",
                                                         "800x600x24", "-nolisten", "tcp"},
                                           .environment = {},
                                           .showsErrors = false})) {
  const auto number = server_ == nullptr ? std::nullopt : server_->readLine(20s);
  if (number) {
    display_.emplace("DISPLAY", (":" + *number).c_str());
  }
}

void XServer::crash() {
  server_->end(SIGKILL);
}

std::unique_ptr<pwtest::ChildProcess> pressKeysInAlert(const std::string& keys) {
  // There is no window manager that would give the window the keyboard.
  const std::string command =
      "exec xdotool search --sync --onlyvisible --name '^Audrel$' windowfocus --sync key --delay "
      "50 " +
      keys;
  return pwtest::ChildProcess::start({.arguments = {"sh", "-c", command}, .environment = {}});
}

}  // namespace audrel::sessiontest
