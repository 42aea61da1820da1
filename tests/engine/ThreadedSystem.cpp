#include "tests/engine/ThreadedSystem.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string>
#include <utility>

#include "tests/fakes/FakeAudio.h"
#include "tests/fakes/FakeHardware.h"

namespace audrel::threaded {
namespace {

constexpr CA::AudioObjectID tap = 1001;
constexpr CA::AudioObjectID device = 1002;

using Frames = std::array<std::uint64_t, Hardware::framesInCycle>;

}  // namespace

Hardware::Hardware() : ioThread_([this] { deliverUntilEnded(); }) {}

Hardware::~Hardware() {
  phase_.store(Phase::ended, std::memory_order_release);
  ioThread_.join();
}

void Hardware::deliverUntilEnded() {
  while (true) {
    switch (phase_.load(std::memory_order_acquire)) {
      case Phase::running:
        deliverCycle();
        break;
      case Phase::stopping:
        phase_.store(Phase::stopped, std::memory_order_release);
        break;
      case Phase::stopped:
        std::this_thread::yield();
        break;
      case Phase::ended:
        return;
    }
  }
}

void Hardware::deliverCycle() {
  const std::uint64_t number = cycles_.load(std::memory_order_relaxed);
  Frames frames;
  frames.fill(number);
  const CA::AudioBufferList input{1, {{2, sizeof frames, frames.data()}}};
  procedure_(device, nullptr, &input, nullptr, nullptr, nullptr, clientData_);
  frames.fill(0);
  cycles_.store(number + 1, std::memory_order_relaxed);
  // The queue's memory must not grow without bound on a busy machine.
  std::this_thread::yield();
}

CA::OSStatus Hardware::AudioHardwareCreateProcessTap(const CA::TapDescription& /*description*/,
                                                     CA::AudioObjectID* outTapID) {
  *outTapID = tap;
  return 0;
}

CA::OSStatus Hardware::AudioHardwareDestroyProcessTap(CA::AudioObjectID /*tapID*/) {
  return 0;
}

CA::OSStatus Hardware::AudioHardwareCreateAggregateDevice(const CA::Description& /*description*/,
                                                          CA::AudioObjectID* outDeviceID) {
  *outDeviceID = device;
  return 0;
}

CA::OSStatus Hardware::AudioHardwareDestroyAggregateDevice(CA::AudioObjectID /*deviceID*/) {
  return 0;
}

CA::OSStatus Hardware::AudioDeviceCreateIOProcID(CA::AudioObjectID /*device*/,
                                                 CA::AudioDeviceIOProc procedure, void* clientData,
                                                 CA::AudioDeviceIOProcID* outIOProcID) {
  procedure_ = procedure;
  clientData_ = clientData;
  *outIOProcID = reinterpret_cast<CA::AudioDeviceIOProcID>(this);
  return 0;
}

CA::OSStatus Hardware::AudioDeviceDestroyIOProcID(CA::AudioObjectID /*device*/,
                                                  CA::AudioDeviceIOProcID /*ioProcID*/) {
  procedure_ = nullptr;
  clientData_ = nullptr;
  return 0;
}

CA::OSStatus Hardware::AudioDeviceStart(CA::AudioObjectID /*device*/,
                                        CA::AudioDeviceIOProcID /*ioProcID*/) {
  if (refusesToStart) {
    return CA::kAudioHardwareIllegalOperationError;
  }
  phase_.store(Phase::running, std::memory_order_release);
  return 0;
}

CA::OSStatus Hardware::AudioDeviceStop(CA::AudioObjectID /*device*/,
                                       CA::AudioDeviceIOProcID /*ioProcID*/) {
  Phase running = Phase::running;
  if (phase_.compare_exchange_strong(running, Phase::stopping, std::memory_order_release,
                                     std::memory_order_relaxed)) {
    while (phase_.load(std::memory_order_acquire) != Phase::stopped) {
      std::this_thread::yield();
    }
  }
  return 0;
}

CA::OSStatus Hardware::AudioObjectGetPropertyDataSize(
    CA::AudioObjectID /*object*/, const CA::AudioObjectPropertyAddress& /*address*/,
    std::uint32_t /*qualifierDataSize*/, const void* /*qualifierData*/,
    std::uint32_t* /*outDataSize*/) {
  return CA::kAudioHardwareUnknownPropertyError;
}

CA::OSStatus Hardware::AudioObjectGetPropertyData(CA::AudioObjectID object,
                                                  const CA::AudioObjectPropertyAddress& /*address*/,
                                                  std::uint32_t /*qualifierDataSize*/,
                                                  const void* /*qualifierData*/,
                                                  std::uint32_t* /*ioDataSize*/, void* outData) {
  if (object == tap) {
    const auto format = fakes::FakeHardware::floatStereo();
    std::memcpy(outData, &format, sizeof format);
  } else {
    std::memcpy(outData, &device, sizeof device);
  }
  return 0;
}

CA::OSStatus Hardware::AudioObjectGetPropertyData(CA::AudioObjectID /*object*/,
                                                  const CA::AudioObjectPropertyAddress& /*address*/,
                                                  std::uint32_t /*qualifierDataSize*/,
                                                  const void* /*qualifierData*/,
                                                  std::uint32_t* /*ioDataSize*/,
                                                  std::string* outText) {
  *outText = "uid";
  return 0;
}

class Audio::Buffer final : public AV::PCMBuffer {
 public:
  explicit Buffer(std::shared_ptr<const AV::AudioFormat> format) : format_(std::move(format)) {}

  const AV::AudioFormat& format() const override { return *format_; }
  std::uint32_t frameCapacity() const override { return Hardware::framesInCycle; }
  std::uint32_t frameLength() const override { return Hardware::framesInCycle; }
  void setFrameLength(std::uint32_t /*frames*/) override {}
  CA::AudioBufferList* mutableAudioBufferList() override { return &list_; }

  const Frames& frames() const { return frames_; }

 private:
  std::shared_ptr<const AV::AudioFormat> format_;
  Frames frames_{};
  CA::AudioBufferList list_{1, {{2, sizeof(Frames), frames_.data()}}};
};

class Audio::File final : public AV::AudioFile {
 public:
  File(std::shared_ptr<Written> written, std::uint64_t writesUntilFailure)
      : written_(std::move(written)), writesUntilFailure_(writesUntilFailure) {}
  File(const File&) = delete;
  File& operator=(const File&) = delete;
  ~File() override { written_->isOpen = false; }

  std::optional<NS::Error> write(AV::PCMBuffer& buffer) override {
    const Frames& frames = dynamic_cast<Buffer&>(buffer).frames();
    const auto isFirst = [&frames](std::uint64_t frame) { return frame == frames.front(); };
    written_->isWhole = written_->isWhole && std::all_of(frames.begin(), frames.end(), isFirst);
    written_->cycles.push_back(frames.front());
    const bool fails =
        writesUntilFailure_ != 0 && written_->cycles.size() % writesUntilFailure_ == 0;
    return fails ? std::optional(NS::Error{NS::POSIXErrorDomain, 28, "The disk is full."})
                 : std::nullopt;
  }

 private:
  std::shared_ptr<Written> written_;
  std::uint64_t writesUntilFailure_;
};

std::shared_ptr<const AV::AudioFormat> Audio::makeFormat(
    const CA::AudioStreamBasicDescription& description) {
  return std::make_shared<fakes::FakeFormat>(description);
}

std::unique_ptr<AV::PCMBuffer> Audio::makePCMBuffer(
    const std::shared_ptr<const AV::AudioFormat>& format,
    std::uint32_t /*frameCapacity*/) noexcept {
  ++buffersMade_;
  const bool fails = buffersUntilFailure != 0 && buffersMade_ % buffersUntilFailure == 0;
  return fails ? nullptr : std::make_unique<Buffer>(format);
}

std::shared_ptr<AV::AudioFile> Audio::openForWriting(const std::filesystem::path& /*url*/,
                                                     const AV::Settings& /*settings*/,
                                                     AV::AudioCommonFormat /*commonFormat*/,
                                                     bool /*interleaved*/, NS::Error* /*error*/) {
  files.push_back(std::make_shared<Written>());
  return std::make_shared<File>(files.back(), writesUntilFailure);
}

namespace {

class Logger final : public os::Logger {
 public:
  explicit Logger(std::shared_ptr<std::atomic<int>> errors) : errors_(std::move(errors)) {}

  void log(os::LogLevel level, std::string_view /*line*/) noexcept override {
    if (level == os::LogLevel::error) {
      errors_->fetch_add(1, std::memory_order_relaxed);
    }
  }

 private:
  std::shared_ptr<std::atomic<int>> errors_;
};

}  // namespace

std::shared_ptr<os::Logger> Log::makeLogger(const std::string& /*subsystem*/,
                                            const std::string& /*category*/) {
  return std::make_shared<Logger>(errors_);
}

}  // namespace audrel::threaded
