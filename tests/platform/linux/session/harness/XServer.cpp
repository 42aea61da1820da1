#include "tests/platform/linux/session/harness/XServer.h"

#include <csignal>

namespace audrel::sessiontest {

using namespace std::chrono_literals;

XServer::XServer()
    : server_(
          pwtest::ChildProcess::start({.arguments = {"Xvfb", "-displayfd", "1", "-screen", "0",
                                                     "800x600x24", "-nolisten", "tcp", "-noreset"},
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

KeyPresses::KeyPresses(const std::string& keys) {
  // There is no window manager that would give the window the keyboard. The keys are those of the
  // display, not sent to the window: it may be gone before a key is up again.
  const std::string command =
      "xdotool search --sync --onlyvisible --name '^Audrel$' windowfocus --sync && "
      "xdotool key --delay 50 " +
      keys + "; echo done";
  user_ = pwtest::ChildProcess::start({.arguments = {"sh", "-c", command}, .environment = {}});
}

KeyPresses::~KeyPresses() {
  if (user_ != nullptr) {
    // A key that was left pressed would be pressed in the next window too.
    user_->readLine(5s);
  }
}

}  // namespace audrel::sessiontest
