#pragma once

#include <sys/types.h>

#include <filesystem>
#include <memory>
#include <string>

namespace audrel::linuxos {

/// A PipeWire server for this program alone: one sink that is heard nowhere, no session manager,
/// no D-Bus, no root. It ends with the program, however that ends.
class PrivateServer {
 public:
  /// Starts the server and waits until it answers. Null when `failure` was set to one sentence
  /// with the remedy. On the main thread: the server ends with the thread that starts it.
  static std::unique_ptr<PrivateServer> start(std::string* failure);
  ~PrivateServer();
  PrivateServer(const PrivateServer&) = delete;
  PrivateServer& operator=(const PrivateServer&) = delete;

  std::string socketPath() const;

  /// Whoever is connected stays so, and nobody else can connect: nothing is left on the disk even
  /// when this program is killed.
  void removeFolder();

  pid_t pid() const { return pid_; }

  /// The name of its sink.
  static constexpr const char* sinkName = "audrel-demo-sink";

 private:
  explicit PrivateServer(std::filesystem::path folder);
  bool launch(std::string* failure);
  bool waitUntilItAnswers(std::string* failure) const;

  std::filesystem::path folder_;  ///< 0700, removed with the server, if not before
  pid_t pid_ = -1;
};

}  // namespace audrel::linuxos
