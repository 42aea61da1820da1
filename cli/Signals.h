#pragma once

#include <array>
#include <chrono>
#include <csignal>
#include <optional>
#include <vector>

namespace audrel::cli {

/// What the main thread waits for while it records: signals, and word from other threads.
///
/// SIGINT, SIGTERM and SIGHUP ask to stop and nothing else, however often they come, so that a
/// second Ctrl-C loses no file; each stays ignored where the caller of the program ignored it
/// (`nohup`, background jobs of scripts). SIGWINCH tells a new window size; so does SIGCONT,
/// after which the window may be another. SIGPIPE and SIGXFSZ are
/// ignored: a closed pipe and a file-size limit show in the results of writes.
///
/// One object at a time, on the main thread, which must outlive every thread that calls `wake`.
class Signals {
 public:
  enum class Event { stop, woken, resized, timeout };

  Signals();
  Signals(const Signals&) = delete;
  Signals& operator=(const Signals&) = delete;

  /// Puts back how signals were treated before.
  ~Signals();

  /// Waits, without a timeout for good. Of several events the first of `Event`'s order; each is
  /// told once, except `stop`, which stays.
  Event wait(std::optional<std::chrono::milliseconds> timeout);

  /// Whether the program was stopped, and told to go on.
  bool wasStopped() const;

  /// Ends a wait as `woken`. Any thread.
  void wake() noexcept;

 private:
  struct Previous {
    int signal;
    struct sigaction action;
  };

  void handle(int signal, void (*handler)(int));

  std::vector<Previous> previous_;
  std::array<int, 2> bell_{-1, -1};
};

}  // namespace audrel::cli
