#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/CoreAudio.h"
#include "platform/Log.h"
#include "platform/linux/pipewire/TapDevice.h"
#include "platform/linux/system/Notice.h"

namespace CA {

/// One procedure on one device, and what calls it from start to stop.
struct InstalledIOProc {
  AudioDeviceIOProc procedure;
  void* clientData;
  std::unique_ptr<audrel::linuxos::TapDevice> running;
};

}  // namespace CA

namespace audrel::linuxos {

/// Aggregate devices of one tap each, with the IO procedures that are installed on them. Any number
/// runs at once, each started and stopped on its own. Under the connection's lock.
class DeviceTable {
 public:
  /// What a procedure missed is logged, and told, when it stops.
  explicit DeviceTable(os::Logger& log) : log_(log) {}

  void setNoticeTaker(NoticeTaker taker) { tell_ = std::move(taker); }

  /// Tells the one that there is then, if any.
  void tell(const Notice& notice) const;

  /// False when there is a device of that uid.
  bool add(CA::AudioObjectID device, const std::string& uid, CA::AudioObjectID tap);

  /// Stops what runs on it. Whether there was such a device.
  bool remove(CA::AudioObjectID device);

  /// Removes all.
  void clear();

  /// Nothing when there is no such device.
  std::optional<CA::AudioObjectID> tapOf(CA::AudioObjectID device) const;

  /// Null when there is no such device.
  CA::AudioDeviceIOProcID install(CA::AudioObjectID device, CA::AudioDeviceIOProc procedure,
                                  void* clientData);

  /// Stops it if it runs. Whether it was installed.
  bool uninstall(CA::AudioObjectID device, CA::AudioDeviceIOProcID ioProcID);

  /// Null when it is not installed there.
  CA::InstalledIOProc* find(CA::AudioObjectID device, CA::AudioDeviceIOProcID ioProcID) const;

  /// Starts what calls a procedure that does not run. Nothing on success, else why not.
  std::optional<std::string> start(CA::InstalledIOProc& installed,
                                   std::unique_ptr<TapDevice> device);

  /// On return the procedure is not running and will not run again.
  void stop(CA::InstalledIOProc& installed);

  /// From the beginning of their start to their stop.
  std::vector<TapDevice*> running() const;

  /// The frames that all missed since one was started while no other ran.
  std::uint64_t lostFrames() const;

 private:
  struct Device {
    std::string uid;
    CA::AudioObjectID tap = 0;
    std::vector<std::unique_ptr<CA::InstalledIOProc>> procedures;
  };

  os::Logger& log_;
  NoticeTaker tell_;
  std::map<CA::AudioObjectID, Device> devices_;
  std::uint64_t lostFramesOfStopped_ = 0;
};

}  // namespace audrel::linuxos
