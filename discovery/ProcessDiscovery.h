#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

#include "model/RecordingSource.h"
#include "platform/CoreAudio.h"
#include "platform/Foundation.h"
#include "platform/Platform.h"

namespace audrel {

/// The processes whose audio can be recorded. A namespace: it has no instances, and keeps nothing
/// between calls, so what it needs of the system comes as first parameter. Main thread only.
struct ProcessDiscovery {
  ProcessDiscovery() = delete;

  /// A process object of the hardware layer.
  struct RawProcessInfo {
    CA::AudioObjectID audioObjectID = CA::kAudioObjectUnknown;
    pid_t pid = 0;                        ///< 1 or more
    std::optional<std::string> bundleID;  ///< absent when unreadable or empty
    std::string localizedName;            ///< what the user is shown; may be empty

    bool operator==(const RawProcessInfo&) const = default;
  };

  /// The sources that can be chosen, by name: every process that the hardware layer knows and that
  /// has a name, whether it plays right now or not; of several with one bundle identifier the
  /// first. Never fails: an empty list stands for none and for every failure.
  static std::vector<RecordingSource> audibleProcesses(const Platform& platform);

 private:
  /// Defined by tests only.
  friend struct ProcessDiscoveryInspector;

  /// Every process object with a valid pid, in the hardware layer's order. A failure to list them
  /// (an empty list counts as one, with status 0) is logged under category "discovery", whose
  /// logger the system makes for the first of them.
  static std::vector<RawProcessInfo> rawProcesses(const Platform& platform);

  /// Drops records without a name and repeated bundle identifiers, and sorts the rest by name as
  /// the user's language has it, whatever the case; equal names keep their order.
  static std::vector<RawProcessInfo> filter(NS::Collation& collation,
                                            std::vector<RawProcessInfo> processes);
};

}  // namespace audrel
