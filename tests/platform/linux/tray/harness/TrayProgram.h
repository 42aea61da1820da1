#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/ChildProcess.h"

namespace audrel::traytest {

/// The small program of these tests (TrayProgramMain.cpp) with a status item, in a process of its
/// own. Every line that it writes goes into a journal.
class TrayProgram {
 public:
  /// `icons` is the folder of its icon theme, maybe empty.
  explicit TrayProgram(const std::string& busAddress, const std::filesystem::path& icons = {});

  /// Whether it runs; the first thing that a test asserts.
  bool isRunning() { return process_ != nullptr && process_->isRunning(); }

  /// Has it do something, and waits until it has, and until everything is done that was asked of
  /// it before.
  bool command(const std::string& line);

  /// Waits until everything is done that was asked of it before.
  bool settle() { return command("nothing"); }

  /// Waits for a line. False after ten seconds.
  bool waitFor(const std::string& line);

  /// The lines since the last call.
  std::vector<std::string> takeJournal();

  support::ChildProcess& process() { return *process_; }

 private:
  std::unique_ptr<support::ChildProcess> process_;
  std::vector<std::string> journal_;
};

}  // namespace audrel::traytest
