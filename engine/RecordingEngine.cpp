#include "engine/RecordingEngine.h"

#include <chrono>
#include <utility>

#include "engine/LogText.h"
#include "engine/TapDescription.h"
#include "engine/WriterSettings.h"
#include "model/RecorderError.h"
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

}  // namespace audrel
