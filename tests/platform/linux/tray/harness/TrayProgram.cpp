#include "tests/platform/linux/tray/harness/TrayProgram.h"

#include <chrono>
#include <utility>

namespace audrel::traytest {

namespace {

using namespace std::chrono_literals;

}  // namespace

TrayProgram::TrayProgram(const std::string& busAddress, const std::filesystem::path& icons)
    : process_(support::ChildProcess::start(
          {.arguments = {AUDREL_TEST_TRAY, icons.string()},
           .environment = {{"DBUS_SESSION_BUS_ADDRESS", busAddress},
                           {"XDG_RUNTIME_DIR", "/nonexistent"},
                           // Its memory is counted, to the block: no store of free ones.
                           {"G_SLICE", "always-malloc"},
                           {"GLIBC_TUNABLES", "glibc.malloc.tcache_count=0"}}})) {}

bool TrayProgram::command(const std::string& line) {
  process_->writeLine(line);
  const bool isDone = waitFor("done " + line);
  if (isDone) {
    journal_.pop_back();
  }
  return isDone;
}

bool TrayProgram::waitFor(const std::string& line) {
  const auto deadline = std::chrono::steady_clock::now() + 10s;
  for (;;) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
        deadline - std::chrono::steady_clock::now());
    const auto read = process_->readLine(left);
    if (!read) {
      return false;
    }
    journal_.push_back(*read);
    if (*read == line) {
      return true;
    }
  }
}

std::vector<std::string> TrayProgram::takeJournal() {
  return std::exchange(journal_, {});
}

}  // namespace audrel::traytest
