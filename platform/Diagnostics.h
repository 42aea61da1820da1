#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "platform/CoreAudio.h"

/// What a platform can tell about capturing beyond the frameworks' status results.
namespace capture {

/// What a file that was closed does not have of the audio that was handed to it.
struct FileLoss {
  std::uint64_t missing = 0;   ///< frames by which the file is too short
  std::uint64_t silenced = 0;  ///< frames for which silence stands in the file
  std::string why;             ///< a sentence with the remedy; may be empty when nothing is lost

  bool isNothing() const { return missing == 0 && silenced == 0; }
};

/// What a process plays.
struct Playback {
  bool isRunning = false;  ///< one of its streams runs
  std::string title;       ///< what it calls that; may be empty

  bool operator==(const Playback&) const = default;
};

class Diagnostics {
 public:
  virtual ~Diagnostics() = default;

  /// One sentence on why the last failed call of the hardware layer failed ("PipeWire is not
  /// running: ..."), with what to do about it; nothing when there is no more to say.
  virtual std::optional<std::string> diagnosis() = 0;

  /// Frames that the system did not deliver in time during the current or last run of a device
  /// and that stand as silence in the recording; while the output changes it may be fewer, or no
  /// silence. Any thread.
  virtual std::uint64_t lostFrames() = 0;

  /// Of a process object, when the processes were listed last; nothing where the system does not
  /// tell.
  virtual std::optional<Playback> playback(CA::AudioObjectID /*process*/) { return std::nullopt; }

  /// Whether the process of a process object has ended for good, as far as the system tells.
  virtual bool hasQuit(CA::AudioObjectID /*process*/) { return false; }

  /// A sentence on what has become of the running recording's audio, for a user who did not ask;
  /// each once, in their order. Nothing when there is none. Any thread.
  virtual std::optional<std::string> nextNotice() { return std::nullopt; }

  /// `tell` is called with a sentence while saving a recording takes long, from another thread than
  /// the one that waits for it; never after that has returned. Set from the thread that waits.
  virtual void setSlowSavingObserver(const std::function<void(const std::string&)>& /*tell*/) {}

  /// Of the file that was opened last, once it is closed; nothing where the system does not tell.
  virtual std::optional<FileLoss> fileLoss() { return std::nullopt; }
};

}  // namespace capture
