#include "platform/linux/pipewire/DeviceTable.h"

#include <algorithm>
#include <utility>

namespace audrel::linuxos {

bool DeviceTable::add(CA::AudioObjectID device, const std::string& uid, CA::AudioObjectID tap) {
  if (std::ranges::any_of(devices_, [&](const auto& other) { return other.second.uid == uid; })) {
    return false;
  }
  devices_[device] = {.uid = uid, .tap = tap, .procedures = {}};
  return true;
}

bool DeviceTable::remove(CA::AudioObjectID device) {
  const auto found = devices_.find(device);
  if (found == devices_.end()) {
    return false;
  }
  for (const auto& installed : found->second.procedures) {
    stop(*installed);
  }
  devices_.erase(found);
  return true;
}

void DeviceTable::clear() {
  while (!devices_.empty()) {
    remove(devices_.begin()->first);
  }
}

std::optional<CA::AudioObjectID> DeviceTable::tapOf(CA::AudioObjectID device) const {
  const auto found = devices_.find(device);
  return found == devices_.end() ? std::nullopt : std::optional(found->second.tap);
}

CA::AudioDeviceIOProcID DeviceTable::install(CA::AudioObjectID device,
                                             CA::AudioDeviceIOProc procedure, void* clientData) {
  const auto found = devices_.find(device);
  if (found == devices_.end()) {
    return nullptr;
  }
  found->second.procedures.push_back(std::make_unique<CA::InstalledIOProc>(
      CA::InstalledIOProc{.procedure = procedure, .clientData = clientData, .running = nullptr}));
  return found->second.procedures.back().get();
}

bool DeviceTable::uninstall(CA::AudioObjectID device, CA::AudioDeviceIOProcID ioProcID) {
  CA::InstalledIOProc* installed = find(device, ioProcID);
  if (installed == nullptr) {
    return false;
  }
  stop(*installed);
  std::erase_if(devices_[device].procedures,
                [&](const auto& candidate) { return candidate.get() == installed; });
  return true;
}

CA::InstalledIOProc* DeviceTable::find(CA::AudioObjectID device,
                                       CA::AudioDeviceIOProcID ioProcID) const {
  const auto found = devices_.find(device);
  if (found == devices_.end()) {
    return nullptr;
  }
  const auto& procedures = found->second.procedures;
  const auto isThere = std::ranges::any_of(
      procedures, [&](const auto& candidate) { return candidate.get() == ioProcID; });
  return isThere ? ioProcID : nullptr;
}

std::optional<std::string> DeviceTable::start(CA::InstalledIOProc& installed,
                                              std::unique_ptr<TapDevice> device) {
  const bool isAlone = running().empty();
  installed.running = std::move(device);
  auto failure = installed.running->start();
  if (failure) {
    installed.running.reset();
  } else if (isAlone) {
    lostFramesOfStopped_ = 0;
  }
  return failure;
}

void DeviceTable::stop(CA::InstalledIOProc& installed) {
  if (!installed.running) {
    return;
  }
  installed.running->stop();
  const std::uint64_t lostFrames = installed.running->lostFrames();
  const double lostSeconds = installed.running->lostSeconds();
  installed.running.reset();
  lostFramesOfStopped_ += lostFrames;
  if (lostFrames > 0) {
    log_.error("Frames lost by the audio server — " + std::to_string(lostFrames) +
               "; silence of the same length stands in the recording");
    tell({.matter = "audio server",
          .summary = "Recording with gaps",
          .body = "Up to " + lengthText(lostSeconds) +
                  " of it are silent: the audio server did not deliver them in time.",
          .isLoss = true});
  }
}

void DeviceTable::tell(const Notice& notice) const {
  if (tell_) {
    tell_(notice);
  }
}

std::vector<TapDevice*> DeviceTable::running() const {
  std::vector<TapDevice*> running;
  for (const auto& [id, device] : devices_) {
    for (const auto& installed : device.procedures) {
      if (installed->running) {
        running.push_back(installed->running.get());
      }
    }
  }
  return running;
}

std::uint64_t DeviceTable::lostFrames() const {
  std::uint64_t frames = lostFramesOfStopped_;
  for (const TapDevice* device : running()) {
    frames += device->lostFrames();
  }
  return frames;
}

}  // namespace audrel::linuxos
