#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/files/FileIdentity.h"
#include "platform/linux/files/RecordingEntry.h"
#include "platform/linux/system/Machine.h"

namespace audrel::linuxos {

/// The entries of the recordings that are being made, a small file each in the user's state folder:
/// so that a later process finds those that were cut off. Any thread.
class EntryFolder {
 public:
  using MachineReader = std::function<std::optional<Machine>()>;

  /// What is there under an entry's name.
  struct Found {
    enum class State : std::uint8_t {
      entry,
      unfinished,  ///< it is being written, or was when its process ended
      unreadable,  ///< for now
      broken,      ///< no entry, and it never becomes one
      foreign,     ///< another user's
    };

    std::string name;
    State state = State::entry;
    std::chrono::system_clock::time_point since;
    std::optional<RecordingEntry> entry;  ///< with that state alone
  };

  /// `folder` is made when the first entry is.
  explicit EntryFolder(
      std::filesystem::path folder, MachineReader machine = [] { return thisMachine(); });

  /// Adds an entry of that file. When this returns its name, the entry survives a power failure;
  /// else `problem` says why there is none.
  std::optional<std::string> add(const std::filesystem::path& file, const FileIdentity& identity,
                                 std::string* problem) const;

  /// One that is gone already is no failure.
  void remove(const std::string& name) const noexcept;

  /// By name; a thousand at most.
  std::vector<Found> entries() const;

  /// Where this runs, if the system tells.
  std::optional<Machine> machine() const { return machine_(); }

  const std::filesystem::path& path() const { return folder_; }

 private:
  std::optional<Found> read(const std::string& name) const;

  std::filesystem::path folder_;
  MachineReader machine_;
};

}  // namespace audrel::linuxos
