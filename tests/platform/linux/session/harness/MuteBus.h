#pragma once

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <stdexcept>
#include <string>

#include "tests/support/TemporaryFolder.h"

namespace audrel::sessiontest {

/// A bus to connect to that never says a word. Throws `std::runtime_error` when there can be none.
class MuteBus {
 public:
  MuteBus() : socket_(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_un name{};
    name.sun_family = AF_UNIX;
    (folder_ / "bus").string().copy(name.sun_path, sizeof name.sun_path - 1);
    if (bind(socket_, reinterpret_cast<const sockaddr*>(&name), sizeof name) != 0 ||
        listen(socket_, SOMAXCONN) != 0) {
      throw std::runtime_error("There can be no socket");
    }
  }
  ~MuteBus() { close(socket_); }
  MuteBus(const MuteBus&) = delete;
  MuteBus& operator=(const MuteBus&) = delete;

  std::string address() const { return "unix:path=" + (folder_ / "bus").string(); }

 private:
  support::TemporaryFolder folder_;
  int socket_;
};

}  // namespace audrel::sessiontest
