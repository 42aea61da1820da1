#pragma once

#include <sys/types.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/CoreAudio.h"
#include "platform/linux/pipewire/CaptureHardware.h"
#include "platform/linux/pipewire/CaptureTime.h"
#include "platform/linux/pipewire/Connection.h"
#include "platform/linux/pipewire/MonotonicTime.h"
#include "platform/linux/system/UUIDFactory.h"
#include "tests/platform/linux/pipewire/harness/SampleStore.h"
#include "tests/platform/linux/pipewire/harness/TestServer.h"
#include "tests/support/KeptLog.h"

namespace audrel::pwtest {

/// Captures into memory, by the calls that a recording makes of the hardware layer.
class Recorder {
 public:
  /// On the server at that socket.
  explicit Recorder(const std::string& socketPath, std::shared_ptr<linuxos::CaptureTime> time =
                                                       std::make_shared<linuxos::MonotonicTime>());

  /// On one that is stepped.
  explicit Recorder(const TestServer& server) : Recorder(server.socketPath(), server.time()) {}

  /// By the other's hardware layer, with a device of its own.
  explicit Recorder(const Recorder* beside) : layer_(beside->layer_) {}

  ~Recorder();
  Recorder(const Recorder&) = delete;
  Recorder& operator=(const Recorder&) = delete;

  CA::AudioHardware& hardware() { return layer_->hardware; }
  linuxos::CaptureHardware& captureHardware() { return layer_->hardware; }
  const support::KeptLog& log() const { return layer_->log; }

  std::vector<CA::AudioObjectID> processes();
  pid_t pidOf(CA::AudioObjectID process);
  std::string bundleIdOf(CA::AudioObjectID process);

  /// The object of the process with that pid, waited for; 0 when it does not come.
  CA::AudioObjectID waitForProcess(pid_t pid);

  /// Taps one process, or everything, and starts. The first failing call's status, else 0.
  CA::OSStatus startProcess(CA::AudioObjectID process);
  CA::OSStatus startEverything();

  /// Stops and gives back everything that was made.
  CA::OSStatus stop();

  /// The same without stopping first.
  CA::OSStatus destroyDevice();
  CA::OSStatus destroyProcedure();

  /// What was captured. Anything that is not interleaved stereo makes it fail.
  const SampleStore& samples() const { return samples_; }
  bool waitForMore(std::size_t frames) const { return samples_.waitForMore(frames); }

  /// Holds up the next cycle until it is let go.
  void hold() { isToHold_ = true; }
  bool isHeldUp() const { return isHeldUp_; }
  void letGo() { isToHold_ = false; }

  double rate() const { return format_.mSampleRate; }
  std::uint64_t lostFrames() { return layer_->hardware.lostFrames(); }

 private:
  CA::OSStatus start(const CA::TapDescription& description);
  CA::OSStatus makeDevice(const std::string& tapUID);
  void take(const CA::AudioBufferList& input) noexcept;

  struct Layer {
    explicit Layer(std::shared_ptr<linuxos::CaptureTime> time_) : time(std::move(time_)) {}

    std::shared_ptr<linuxos::CaptureTime> time;
    support::KeptLog log;
    linuxos::UUIDFactory uuids;
    linuxos::Connection connection;
    linuxos::CaptureHardware hardware{connection, *time, log, uuids};
  };

  std::shared_ptr<Layer> layer_;
  CA::AudioStreamBasicDescription format_;
  CA::AudioObjectID tap_ = 0;
  CA::AudioObjectID device_ = 0;
  CA::AudioDeviceIOProcID procedure_ = nullptr;
  SampleStore samples_;
  std::atomic<bool> isToHold_ = false;
  std::atomic<bool> isHeldUp_ = false;
};

}  // namespace audrel::pwtest
