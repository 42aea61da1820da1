#pragma once

#include <optional>
#include <string>
#include <variant>

#include "platform/CoreAudio.h"

namespace audrel {

/// Whose audio is recorded: one process's, or everything that the system plays. A plain value that
/// owns nothing of the system; equality is all it has.
class RecordingSource {
 public:
  struct Process {
    CA::AudioObjectID id = CA::kAudioObjectUnknown;  ///< the process object's id, not the pid
    std::string name;                                ///< display name, UTF-8; may be empty
    std::optional<std::string> bundleID;             ///< absent when the process has none

    bool operator==(const Process&) const = default;
  };

  static RecordingSource process(CA::AudioObjectID id, std::string name,
                                 std::optional<std::string> bundleID);
  static RecordingSource allSystemAudio();

  /// Null for all system audio; valid as long as this value is neither assigned to nor destroyed.
  const Process* asProcess() const { return std::get_if<Process>(&value_); }

  bool operator==(const RecordingSource&) const = default;

 private:
  struct AllSystemAudio {
    bool operator==(const AllSystemAudio&) const = default;
  };
  using Value = std::variant<Process, AllSystemAudio>;

  explicit RecordingSource(Value value);

  Value value_;
};

}  // namespace audrel
