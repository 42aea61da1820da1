#pragma once

#include <sys/types.h>

#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace audrel::support {

/// A program of its own, talked to in lines through its standard input and output. It ends with
/// this object, and with the test however that ends. Made on the main thread: the kernel ends it
/// with the thread that started it.
class ChildProcess {
 public:
  struct Program {
    std::vector<std::string> arguments;              ///< the program's name or path first
    std::map<std::string, std::string> environment;  ///< beside this process's own
    bool showsErrors = true;                         ///< whether its standard error is this one's
  };

  /// Null when the program could not be started.
  static std::unique_ptr<ChildProcess> start(const Program& program);

  /// Kills it if it still runs.
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  pid_t pid() const { return pid_; }
  bool isRunning();

  void writeLine(const std::string& line) const;

  /// Nothing when the program closed its output, or wrote no line in time.
  std::optional<std::string> readLine(std::chrono::milliseconds timeout);

  /// Sends the signal and waits until the program has ended.
  void end(int signal);

  /// Waits until the program has ended by itself: what it ended with, or -1 for a signal. Once.
  int waitForEnd();

 private:
  ChildProcess(pid_t pid, int input, int output) : pid_(pid), input_(input), output_(output) {}

  pid_t pid_;
  int input_;   ///< written to here
  int output_;  ///< read from here
  bool hasEnded_ = false;
  std::string unread_;
};

}  // namespace audrel::support
