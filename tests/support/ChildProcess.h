#pragma once

#include <sys/types.h>

#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace audrel::support {

/// A program of its own, talked to in lines through its standard input and output. It treats
/// signals as usual, whatever this one ignores. It ends with this object, and with the test however
/// that ends. Made on the main thread: the kernel ends it with the thread that started it.
class ChildProcess {
 public:
  struct Program {
    std::vector<std::string> arguments;              ///< the program's name or path first
    std::map<std::string, std::string> environment;  ///< beside this process's own
    bool showsErrors = true;                         ///< whether its standard error is this one's
    bool keepsErrors = false;                        ///< for `errorOutput`; then they do not show
    std::vector<int> closed = {};                    ///< standard descriptors that it has not
    /// A terminal for input and all output, which becomes the program's own; -1: none.
    int terminal = -1;
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

  /// What it wrote and nobody has read, without waiting for more.
  std::string output();

  /// All that it wrote to standard error, when that is kept.
  std::string errorOutput() const;

  void signal(int number) const;

  /// Sends the signal and waits until the program has ended.
  void end(int signal);

  /// Waits until the program has ended by itself: what it ended with, or -1 for a signal. Once.
  int waitForEnd();

 private:
  ChildProcess(pid_t pid, int input, int output, int errors)
      : pid_(pid), input_(input), output_(output), errors_(errors) {}

  bool readBlock(std::chrono::milliseconds timeout);

  pid_t pid_;
  int input_;   ///< written to here
  int output_;  ///< read from here
  int errors_;  ///< a file; -1: they are not kept
  bool hasEnded_ = false;
  std::string unread_;
};

/// What became of a program.
struct Outcome {
  int status = 0;
  std::string output;
  std::string errors;

  bool operator==(const Outcome&) const = default;
};

/// Runs a program to its end, which must come by itself. It writes no more than a pipe holds.
Outcome outcomeOf(ChildProcess::Program program);

}  // namespace audrel::support
