#include "tests/platform/linux/session/harness/XServer.h"

#include <csignal>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>

namespace audrel::sessiontest {

using namespace std::chrono_literals;

XServer::XServer()
    : server_(
          support::ChildProcess::start({.arguments = {"Xvfb", "-displayfd", "1", "-screen", "0",
                                                      "800x600x24", "-nolisten", "tcp", "-noreset"},
                                        .environment = {},
                                        .showsErrors = false})) {
  const auto number = server_ == nullptr ? std::nullopt : server_->readLine(20s);
  if (!number) {
    throw std::runtime_error("There is no Xvfb, or it does not start");
  }
  number_ = *number;
  display_.emplace("DISPLAY", (":" + number_).c_str());
}

void XServer::crash() {
  server_->end(SIGKILL);
}

std::size_t XServer::connections() const {
  // Of the sockets that the kernel tells of, with state and path among the words of a line, those
  // of the server's side of a connection have the path that it listens at.
  constexpr int connectedState = 3;
  const std::string path = "/tmp/.X11-unix/X" + number_;
  std::ifstream sockets("/proc/net/unix");
  std::size_t count = 0;
  for (std::string line; std::getline(sockets, line);) {
    std::istringstream words(line);
    std::string skipped;
    std::string name;
    int state = 0;
    words >> skipped >> skipped >> skipped >> skipped >> skipped >> state >> skipped >> name;
    if (state == connectedState && (name == path || name == "@" + path)) {
      ++count;
    }
  }
  return count;
}

KeyPresses::KeyPresses(const std::string& keys) {
  // There is no window manager that would give the window the keyboard. The keys are those of the
  // display, not sent to the window: it may be gone before a key is up again.
  const std::string command =
      "xdotool search --sync --onlyvisible --name '^Audrel$' windowfocus --sync && "
      "xdotool key --delay 50 " +
      keys + "; echo done";
  user_ = support::ChildProcess::start({.arguments = {"sh", "-c", command}, .environment = {}});
}

KeyPresses::~KeyPresses() {
  if (user_ != nullptr) {
    // A key that was left pressed would be pressed in the next window too.
    user_->readLine(5s);
  }
}

}  // namespace audrel::sessiontest
