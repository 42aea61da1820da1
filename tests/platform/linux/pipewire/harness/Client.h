#pragma once

#include <map>
#include <string>

#include "tests/platform/linux/pipewire/harness/PipeWireHandles.h"

namespace audrel::pwtest {

/// A connection to a server with a thread of its own, which runs until this goes.
class Client {
 public:
  /// `socketPath` empty: the server that the environment names. `properties` are what the client
  /// says of itself.
  explicit Client(const std::string& socketPath,
                  const std::map<std::string, std::string>& properties = {});
  ~Client();
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;

  bool isConnected() const { return core_ != nullptr; }
  const OwnedThreadLoop& loop() const { return loop_; }
  pw_core* core() const { return core_.get(); }

  /// Waits until the server has answered all that was asked, by when what it told is handled here.
  /// Not under the lock.
  void roundTrip();

  /// No event is handled after this. What was made on the connection goes next, then the client.
  void stop();

 private:
  OwnedThreadLoop loop_;
  OwnedContext context_;
  OwnedCore core_;
  spa_hook hook_{};
  int answered_ = -1;  ///< the last round trip
};

}  // namespace audrel::pwtest
