#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <thread>
#include <vector>

#include "platform/AVFAudio.h"
#include "platform/CoreAudio.h"
#include "platform/Log.h"

/// A system with a real IO thread, which synchronises with the main thread by nothing more than
/// what the hardware layer promises. No lock, no journal: those would hide an engine's race from
/// the thread sanitizer.
namespace audrel::threaded {

/// One device with one IO procedure at a time, whose IO thread lives as long as the hardware and
/// calls the procedure as fast as it can while the device runs. Every cycle is a list of one
/// buffer of `framesInCycle` frames of 8 bytes, all of which hold the number of the cycle.
class Hardware final : public CA::AudioHardware {
 public:
  static constexpr std::uint32_t framesInCycle = 16;

  Hardware();
  ~Hardware() override;

  /// Whether the next start of the device fails.
  bool refusesToStart = false;

  /// How many cycles were delivered since the hardware was made. Any thread.
  std::uint64_t cycles() const { return cycles_.load(std::memory_order_relaxed); }

  CA::OSStatus AudioHardwareCreateProcessTap(const CA::TapDescription& description,
                                             CA::AudioObjectID* outTapID) override;
  CA::OSStatus AudioHardwareDestroyProcessTap(CA::AudioObjectID tapID) override;
  CA::OSStatus AudioHardwareCreateAggregateDevice(const CA::Description& description,
                                                  CA::AudioObjectID* outDeviceID) override;
  CA::OSStatus AudioHardwareDestroyAggregateDevice(CA::AudioObjectID deviceID) override;
  CA::OSStatus AudioDeviceCreateIOProcID(CA::AudioObjectID device, CA::AudioDeviceIOProc procedure,
                                         void* clientData,
                                         CA::AudioDeviceIOProcID* outIOProcID) override;
  CA::OSStatus AudioDeviceDestroyIOProcID(CA::AudioObjectID device,
                                          CA::AudioDeviceIOProcID ioProcID) override;
  CA::OSStatus AudioDeviceStart(CA::AudioObjectID device,
                                CA::AudioDeviceIOProcID ioProcID) override;
  CA::OSStatus AudioDeviceStop(CA::AudioObjectID device, CA::AudioDeviceIOProcID ioProcID) override;
  CA::OSStatus AudioObjectGetPropertyDataSize(CA::AudioObjectID object,
                                              const CA::AudioObjectPropertyAddress& address,
                                              std::uint32_t qualifierDataSize,
                                              const void* qualifierData,
                                              std::uint32_t* outDataSize) override;
  CA::OSStatus AudioObjectGetPropertyData(CA::AudioObjectID object,
                                          const CA::AudioObjectPropertyAddress& address,
                                          std::uint32_t qualifierDataSize,
                                          const void* qualifierData, std::uint32_t* ioDataSize,
                                          void* outData) override;
  CA::OSStatus AudioObjectGetPropertyData(CA::AudioObjectID object,
                                          const CA::AudioObjectPropertyAddress& address,
                                          std::uint32_t qualifierDataSize,
                                          const void* qualifierData, std::uint32_t* ioDataSize,
                                          std::string* outText) override;

 private:
  /// What main asks of the IO thread, and what that has come to.
  enum class Phase { stopped, running, stopping, ended };

  void deliverUntilEnded();
  void deliverCycle();

  CA::AudioDeviceIOProc procedure_ = nullptr;
  void* clientData_ = nullptr;
  std::atomic<Phase> phase_ = Phase::stopped;
  std::atomic<std::uint64_t> cycles_ = 0;
  std::thread ioThread_;
};

/// What one file was given: the cycle numbers of its frames, in order. Plain data, which the writer
/// queue writes and main reads when `stop` has returned.
struct Written {
  std::vector<std::uint64_t> cycles;
  bool isWhole = true;  ///< every frame of every buffer held the same number
  bool isOpen = true;
};

class Audio final : public AV::AudioFramework {
 public:
  /// Every so many buffers one cannot be made, and every so many writes one fails. 0: never.
  std::uint64_t buffersUntilFailure = 0;
  std::uint64_t writesUntilFailure = 0;

  std::vector<std::shared_ptr<Written>> files;

  std::shared_ptr<const AV::AudioFormat> makeFormat(
      const CA::AudioStreamBasicDescription& description) override;
  std::unique_ptr<AV::PCMBuffer> makePCMBuffer(const std::shared_ptr<const AV::AudioFormat>& format,
                                               std::uint32_t frameCapacity) noexcept override;
  std::shared_ptr<AV::AudioFile> openForWriting(const std::filesystem::path& url,
                                                const AV::Settings& settings,
                                                AV::AudioCommonFormat commonFormat,
                                                bool interleaved, NS::Error* error) override;

 private:
  class Buffer;
  class File;

  std::uint64_t buffersMade_ = 0;
};

/// Counts error lines and drops every line.
class Log final : public os::Log {
 public:
  int errors() const { return errors_->load(std::memory_order_relaxed); }

  std::shared_ptr<os::Logger> makeLogger(const std::string& subsystem,
                                         const std::string& category) override;

 private:
  std::shared_ptr<std::atomic<int>> errors_ = std::make_shared<std::atomic<int>>(0);
};

}  // namespace audrel::threaded
