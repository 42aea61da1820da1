#include "tests/fakes/FakeSystem.h"

#include <algorithm>
#include <utility>

namespace audrel::fakes {
namespace {

const char* text(bool value) {
  return value ? "true" : "false";
}

class FakeLogger final : public os::Logger {
 public:
  FakeLogger(Journal& journal, std::string prefix)
      : journal_(journal), prefix_(std::move(prefix)) {}

  void log(os::LogLevel level, std::string_view line) noexcept override {
    journal_.add(prefix_ + (level == os::LogLevel::info ? "info: " : "error: ") +
                 std::string(line));
  }

 private:
  Journal& journal_;
  std::string prefix_;
};

char lowered(char letter) {
  return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

bool lettersAscend(std::string_view left, std::string_view right) {
  return std::lexicographical_compare(left.begin(), left.end(), right.begin(), right.end(),
                                      [](char a, char b) { return lowered(a) < lowered(b); });
}

}  // namespace

bool FakeCaptureAccess::preflightScreenCaptureAccess() {
  journal_.add(std::string("CGPreflightScreenCaptureAccess() -> ") + text(isGranted));
  return isGranted;
}

bool FakeCaptureAccess::requestScreenCaptureAccess() {
  isGranted = isGranted || requestGrants;
  journal_.add(std::string("CGRequestScreenCaptureAccess() -> ") + text(isGranted));
  return isGranted;
}

NS::Date FakeClock::epoch() {
  using namespace std::chrono_literals;
  return std::chrono::sys_days(std::chrono::year(2026) / 11 / 16) + 7h + 9min;
}

NS::Date FakeClock::now() {
  const std::chrono::duration<double> sinceEpoch = date - epoch();
  journal_.add("now() -> " + shortNumber(sinceEpoch.count()) + " s");
  return date;
}

NS::ComparisonResult FakeCollation::localizedCaseInsensitiveCompare(std::string_view left,
                                                                    std::string_view right) {
  if (compare) {
    return compare(left, right);
  }
  if (lettersAscend(left, right)) {
    return NS::ComparisonResult::orderedAscending;
  }
  return lettersAscend(right, left) ? NS::ComparisonResult::orderedDescending
                                    : NS::ComparisonResult::orderedSame;
}

std::optional<std::filesystem::path> FakeFileManager::downloadsDirectory() {
  journal_.add("downloadsDirectory() -> " +
               (downloads ? inQuotes(downloads->string()) : "nothing"));
  return downloads;
}

std::filesystem::path FakeFileManager::homeDirectoryForCurrentUser() {
  journal_.add("homeDirectoryForCurrentUser() -> " + inQuotes(home.string()));
  return home;
}

bool FakeFileManager::fileExists(const std::filesystem::path& path) {
  const bool exists = existing.contains(path);
  journal_.add("fileExists(" + inQuotes(path.string()) + ") -> " + text(exists));
  return exists;
}

bool FakeFileManager::nameIsTaken(const std::filesystem::path& path) {
  const bool taken = existing.contains(path) || danglingLinks.contains(path);
  journal_.add("nameIsTaken(" + inQuotes(path.string()) + ") -> " + text(taken));
  return taken;
}

std::optional<NS::RunningApplication> FakeRunningApplications::runningApplication(
    pid_t processIdentifier) {
  journal_.add("runningApplication(" + std::to_string(processIdentifier) + ")");
  const auto found = applications.find(processIdentifier);
  return found == applications.end() ? std::nullopt : std::optional(found->second);
}

std::string FakeUUIDs::uuidString() {
  const std::string count = std::to_string(++made_);
  std::string uuid = "00000000-0000-4000-8000-000000000000";
  uuid.replace(uuid.size() - count.size(), count.size(), count);
  journal_.add("uuidString() -> " + inQuotes(uuid));
  return uuid;
}

std::shared_ptr<os::Logger> FakeLog::makeLogger(const std::string& subsystem,
                                                const std::string& category) {
  return loggers_.loggerFor(subsystem, category, [&] {
    journal_.add("makeLogger(" + inQuotes(subsystem) + ", " + inQuotes(category) + ")");
    return std::make_shared<FakeLogger>(journal_, "log " + subsystem + " [" + category + "] ");
  });
}

}  // namespace audrel::fakes
