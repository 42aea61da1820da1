#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include "platform/Log.h"
#include "platform/linux/files/EntryFolder.h"
#include "platform/linux/files/FileIdentity.h"
#include "platform/linux/files/OpenFile.h"
#include "platform/linux/files/Repair.h"
#include "platform/linux/system/Notice.h"

namespace audrel::linuxos {

/// What a healer asks of the system, so that tests can answer.
struct HealerTools {
  std::function<std::chrono::system_clock::time_point()> now = std::chrono::system_clock::now;
  std::function<std::optional<FileStatus>(const std::filesystem::path& path)> status =
      [](const std::filesystem::path& path) { return statusOf(path); };
  std::function<std::unique_ptr<OpenFile>(const std::filesystem::path& path, int* code)> open =
      openExisting;
  std::function<Repair(OpenFile& file)> repair = [](OpenFile& file) {
    return linuxos::repair(file);
  };
};

/// Finishes the recordings that were cut off, by the entries that their processes left behind.
///
/// It touches a file only when that is, by number and birth, the one that was recorded, on this
/// machine, a regular file of this user, reached by no link; when nobody has its lock, which a
/// recorder holds from creation to close; and when it was not written for ten seconds. Whatever
/// may be possible later (the disk is absent, or full) is tried again for thirty days.
class Healer {
 public:
  /// `entries` must outlive it.
  Healer(const EntryFolder& entries, std::shared_ptr<os::Logger> logger, HealerTools tools = {});

  /// Is told of what was finished.
  void setNoticeTaker(NoticeTaker taker) { tell_ = std::move(taker); }

  /// How long a file must have been left alone.
  static constexpr std::chrono::seconds rest{10};

  /// Goes through all entries once. Once `isToEnd` it comes back after the next system call, which
  /// leaves a file that it is about to finish as playable as before. Whether one was written too
  /// short a while ago: then it is worth coming back after that time.
  bool heal(const std::atomic<bool>& isToEnd);

 private:
  /// What is to become of an entry.
  enum class Fate : std::uint8_t {
    done,      ///< it goes
    tryLater,  ///< it goes when it is old
    stays,     ///< however old it is
  };

  void dealWith(const EntryFolder::Found& found, const std::atomic<bool>& isToEnd);
  Fate fateOf(const EntryFolder::Found& found, const std::atomic<bool>& isToEnd);
  Fate finish(const RecordingEntry& entry, const std::atomic<bool>& isToEnd);
  Fate finish(OpenFile& file, const std::atomic<bool>& isToEnd);
  std::optional<Fate> whyNotYet(const RecordingEntry& entry);
  Fate absent(const RecordingEntry& entry, int code);
  void tell(const std::filesystem::path& file, double seconds);
  void logOnce(os::LogLevel level, const std::string& line);

  const EntryFolder& entries_;
  std::shared_ptr<os::Logger> logger_;
  HealerTools tools_;
  NoticeTaker tell_;
  Machine machine_;
  std::set<std::string> logged_;
  bool sawRestless_ = false;
};

}  // namespace audrel::linuxos
