#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>
#include <utility>
#include <vector>

namespace audrel::cli {

/// How a program is run.
struct ChildEnvironment {
  std::vector<std::pair<std::string, std::string>> set;
  std::vector<int> closed;  ///< standard descriptors that are closed
  /// A terminal for input and all output, which becomes the program's own; -1: none.
  int terminal = -1;
};

/// A program that a test runs, its output in files until the test reads it.
class ChildProcess {
 public:
  /// Starts `arguments`, the program's path first, with every signal treated as usual. Throws
  /// `std::runtime_error` when it cannot.
  explicit ChildProcess(const std::vector<std::string>& arguments,
                        const ChildEnvironment& environment = {});
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  /// Kills what still runs.
  ~ChildProcess();

  pid_t pid() const { return pid_; }
  void signal(int number) const;

  /// Waits until standard error holds `text`; false when it did not come in time.
  bool waitForErrorOutput(const std::string& text, std::chrono::seconds timeout) const;

  /// Waits for the end: the exit status, or the negative number of the signal that ended it.
  int wait();

  std::string output() const { return contents(output_); }
  std::string errorOutput() const { return contents(errorOutput_); }

 private:
  static std::string contents(int file);

  pid_t pid_ = -1;
  bool ended_ = false;
  int output_ = -1;
  int errorOutput_ = -1;
};

}  // namespace audrel::cli
