#include "engine/RecordingEngine.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstring>
#include <span>
#include <utility>

#include "engine/AggregateDescription.h"
#include "engine/LogText.h"
#include "engine/TapDescription.h"
#include "engine/WriterSettings.h"
#include "model/RecorderError.h"
#include "platform/AudioObjectProperties.h"
#include "platform/CoreGraphics.h"
#include "platform/Identity.h"

namespace audrel {
namespace {

/// The status of a format that the hardware layer described and the audio framework cannot make.
constexpr CA::OSStatus noFormatForDescription = -1;

std::string tapFormatLine(const AV::AudioFormat& format) {
  return "Tap format — sampleRate=" + fixedNotation(format.sampleRate(), 6) +
         ", channels=" + std::to_string(format.channelCount()) +
         ", interleaved=" + (format.isInterleaved() ? "true" : "false") +
         ", common=" + std::to_string(static_cast<std::uint64_t>(format.commonFormat()));
}

std::string startedLine(const RecordingSource& source, RecordingFormat format,
                        const std::filesystem::path& outputURL, const AV::Settings& settings) {
  const RecordingSource::Process* process = source.asProcess();
  return "Recording started — source=" + (process ? process->name : "All System Audio") +
         " format=" + std::string(format.rawValue()) + " url=" + outputURL.filename().string() +
         " fileSettings=" + describe(settings);
}

std::string stoppedLine(double elapsed, std::int64_t underruns) {
  return "Recording stopped — elapsed=" + fixedNotation(elapsed, 1) +
         "s underruns=" + std::to_string(underruns);
}

/// Copies buffer by buffer, as far as both lists go. A source buffer that is larger than the first
/// one, by which the destination was sized, is cut to its destination.
void copyBuffers(std::span<const CA::AudioBuffer> sources,
                 std::span<const CA::AudioBuffer> destinations) noexcept {
  const std::size_t count = std::min(sources.size(), destinations.size());
  for (std::size_t i = 0; i < count; ++i) {
    const CA::AudioBuffer& source = sources[i];
    const CA::AudioBuffer& destination = destinations[i];
    if (source.mData != nullptr && destination.mData != nullptr) {
      std::memcpy(destination.mData, source.mData,
                  std::min(source.mDataByteSize, destination.mDataByteSize));
    }
  }
}

}  // namespace

std::shared_ptr<RecordingEngine> RecordingEngine::make(const Platform& platform) {
  auto engine = std::make_shared<RecordingEngine>(OnlyMake{}, platform);
  engine->self_ = engine;
  return engine;
}

RecordingEngine::RecordingEngine(OnlyMake, const Platform& platform)
    : hardware_(platform.audioHardware),
      audio_(platform.audioFramework),
      captureAccess_(platform.captureAccess),
      clock_(platform.clock),
      uuids_(platform.uuids),
      log_(platform.log.makeLogger(identity::bundleIdentifier, "engine")),
      writerQueue_(platform.dispatch.makeQueue(std::string(identity::bundleIdentifier) + ".writer",
                                               dispatch::QualityOfService::userInitiated)) {}

void RecordingEngine::start(const RecordingSource& source, RecordingFormat format,
                            const std::filesystem::path& outputURL) {
  if (isRecording_) {
    throw RecorderError::alreadyRecording();
  }
  if (!captureAccess_.preflightScreenCaptureAccess()) {
    throw RecorderError::permissionDenied();
  }
  source_ = source;

  CA::AudioObjectID newTap = CA::kAudioObjectUnknown;
  const CA::OSStatus tapStatus =
      hardware_.AudioHardwareCreateProcessTap(tapDescription(source), &newTap);
  if (tapStatus != CA::kAudioHardwareNoError || newTap == CA::kAudioObjectUnknown) {
    logFailure("AudioHardwareCreateProcessTap", tapStatus);
    throw RecorderError::tapCreationFailed(tapStatus);
  }
  tapID_ = newTap;

  const std::string tapUID = readTapUID(tapID_);
  const CA::AudioStreamBasicDescription streamDescription = readTapFormat(tapID_);
  tapStreamDescription_ = streamDescription;
  const auto tapFormat = audio_.makeFormat(streamDescription);
  if (!tapFormat) {
    throw RecorderError::streamFormatUnavailable(noFormatForDescription);
  }
  log_->info(tapFormatLine(*tapFormat));

  aggregateDeviceID_ = createAggregateDevice(tapUID);

  // Only from here on is a failure rolled back: the file it may have made must be closed.
  const AV::Settings settings = writerSettings(format, *tapFormat);
  NS::Error openError;
  auto file = audio_.openForWriting(outputURL, settings, tapFormat->commonFormat(),
                                    tapFormat->isInterleaved(), &openError);
  if (!file) {
    log_->error("AVAudioFile open failed: " + openError.localizedDescription);
    tearDownCore();
    throw RecorderError::fileOpenFailed(std::move(openError));
  }
  audioFile_ = std::move(file);
  writerFormat_ = tapFormat;

  CA::AudioDeviceIOProcID newIOProc = nullptr;
  const CA::OSStatus installStatus =
      hardware_.AudioDeviceCreateIOProcID(aggregateDeviceID_, ioProcCallback, this, &newIOProc);
  if (installStatus != CA::kAudioHardwareNoError || newIOProc == nullptr) {
    logFailure("AudioDeviceCreateIOProcID", installStatus);
    tearDownCore();
    throw RecorderError::ioProcInstallFailed(installStatus);
  }
  ioProcID_ = newIOProc;

  const CA::OSStatus startStatus = hardware_.AudioDeviceStart(aggregateDeviceID_, ioProcID_);
  if (startStatus != CA::kAudioHardwareNoError) {
    logFailure("AudioDeviceStart", startStatus);
    tearDownCore();
    throw RecorderError::ioProcInstallFailed(startStatus);
  }

  isRecording_ = true;
  startDate_ = clock_.now();
  underrunCount_.reset();
  log_->info(startedLine(source, format, outputURL, settings));
}

std::string RecordingEngine::readTapUID(CA::AudioObjectID tapID) {
  std::string uid;
  const CA::OSStatus status = CA::readProperty(hardware_, tapID, CA::kAudioTapPropertyUID, &uid);
  if (status != CA::kAudioHardwareNoError) {
    logFailure("Reading tap UID", status);
    throw RecorderError::tapCreationFailed(status);
  }
  return uid;
}

CA::AudioStreamBasicDescription RecordingEngine::readTapFormat(CA::AudioObjectID tapID) {
  CA::AudioStreamBasicDescription description;
  const CA::OSStatus status =
      CA::readProperty(hardware_, tapID, CA::kAudioTapPropertyFormat, &description);
  if (status != CA::kAudioHardwareNoError) {
    logFailure("Reading tap format", status);
    throw RecorderError::streamFormatUnavailable(status);
  }
  return description;
}

std::string RecordingEngine::readDefaultOutputDeviceUID() {
  CA::AudioObjectID device = CA::kAudioObjectUnknown;
  const CA::OSStatus deviceStatus =
      CA::readProperty(hardware_, CA::kAudioObjectSystemObject,
                       CA::kAudioHardwarePropertyDefaultOutputDevice, &device);
  if (deviceStatus != CA::kAudioHardwareNoError || device == CA::kAudioObjectUnknown) {
    throw RecorderError::aggregateDeviceFailed(deviceStatus);
  }
  std::string uid;
  const CA::OSStatus uidStatus =
      CA::readProperty(hardware_, device, CA::kAudioDevicePropertyDeviceUID, &uid);
  if (uidStatus != CA::kAudioHardwareNoError) {
    throw RecorderError::aggregateDeviceFailed(uidStatus);
  }
  return uid;
}

CA::AudioObjectID RecordingEngine::createAggregateDevice(const std::string& tapUID) {
  const std::string uid = uuids_.uuidString();
  const std::string outputDeviceUID = readDefaultOutputDeviceUID();

  CA::AudioObjectID device = CA::kAudioObjectUnknown;
  const CA::OSStatus status = hardware_.AudioHardwareCreateAggregateDevice(
      aggregateDescription(uid, outputDeviceUID, tapUID), &device);
  if (status != CA::kAudioHardwareNoError || device == CA::kAudioObjectUnknown) {
    logFailure("AudioHardwareCreateAggregateDevice", status);
    throw RecorderError::aggregateDeviceFailed(status);
  }
  return device;
}

void RecordingEngine::tearDownCore() {
  removeIOProc();
  destroyCaptureObjects();
  audioFile_ = nullptr;
  writerFormat_ = nullptr;
  tapStreamDescription_.reset();
}

std::optional<std::filesystem::path> RecordingEngine::stop() {
  if (!isRecording_) {
    return std::nullopt;
  }
  removeIOProc();
  // Behind every write that the IO procedure has queued, and no more can come.
  writerQueue_->sync([this] { audioFile_ = nullptr; });
  destroyCaptureObjects();

  const std::chrono::duration<double> elapsed =
      startDate_ ? clock_.now() - *startDate_ : std::chrono::duration<double>::zero();
  log_->info(stoppedLine(elapsed.count(), underrunCount_.value()));
  isRecording_ = false;
  startDate_.reset();
  return std::nullopt;
}

void RecordingEngine::removeIOProc() {
  if (ioProcID_ == nullptr) {
    return;
  }
  hardware_.AudioDeviceStop(aggregateDeviceID_, ioProcID_);
  hardware_.AudioDeviceDestroyIOProcID(aggregateDeviceID_, ioProcID_);
  ioProcID_ = nullptr;
}

void RecordingEngine::destroyCaptureObjects() {
  if (aggregateDeviceID_ != CA::kAudioObjectUnknown) {
    hardware_.AudioHardwareDestroyAggregateDevice(aggregateDeviceID_);
    aggregateDeviceID_ = CA::kAudioObjectUnknown;
  }
  if (tapID_ != CA::kAudioObjectUnknown) {
    hardware_.AudioHardwareDestroyProcessTap(tapID_);
    tapID_ = CA::kAudioObjectUnknown;
  }
}

void RecordingEngine::logFailure(std::string_view what, CA::OSStatus status) {
  log_->error(std::string(what) + " failed: " + std::to_string(status));
}

// The way of the audio, on the IO thread and the writer queue

CA::OSStatus ioProcCallback(CA::AudioObjectID /*device*/, const CA::AudioTimeStamp* /*now*/,
                            const CA::AudioBufferList* inputData,
                            const CA::AudioTimeStamp* /*inputTime*/,
                            CA::AudioBufferList* /*outputData*/,
                            const CA::AudioTimeStamp* /*outputTime*/, void* clientData) {
  if (clientData == nullptr) {
    return CA::kAudioHardwareNoError;
  }
  if (const auto engine = static_cast<RecordingEngine*>(clientData)->self_.lock()) {
    engine->handleIOProc(inputData);
  }
  return CA::kAudioHardwareNoError;
}

void RecordingEngine::handleIOProc(const CA::AudioBufferList* inputData) noexcept {
  if (!writerFormat_) {
    return;
  }
  const std::span input(inputData->mBuffers, inputData->mNumberBuffers);
  if (input.empty()) {
    return;
  }
  const std::uint32_t byteSize = input.front().mDataByteSize;
  const std::uint32_t frameSize = writerFormat_->streamDescription().mBytesPerFrame;
  if (frameSize == 0 || frameSize > byteSize) {
    return;
  }
  const std::uint32_t frameCount = byteSize / frameSize;

  auto buffer = audio_.makePCMBuffer(writerFormat_, frameCount);
  if (!buffer) {
    underrunCount_.increment();
    return;
  }
  buffer->setFrameLength(frameCount);
  const CA::AudioBufferList& output = *buffer->mutableAudioBufferList();
  copyBuffers(input, std::span(output.mBuffers, output.mNumberBuffers));

  // The file as it is now, so that a write that is already queued survives `stop`; the engine only
  // weakly, so that a queue that lags behind keeps no engine alive.
  dispatch::WorkItem& item = buffer->workItem;
  item.assign([weakEngine = self_, file = audioFile_, buffer = std::move(buffer)] {
    const auto engine = weakEngine.lock();
    if (!engine || !file) {
      return;
    }
    if (const auto error = file->write(*buffer)) {
      engine->log_->error("AVAudioFile.write failed: " + error->localizedDescription);
    }
  });
  writerQueue_->async(item);
}

}  // namespace audrel
