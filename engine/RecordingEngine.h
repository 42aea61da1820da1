#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "engine/UnderrunCounter.h"
#include "model/RecordingFormat.h"
#include "model/RecordingSource.h"
#include "platform/AVFAudio.h"
#include "platform/CoreAudio.h"
#include "platform/Dispatch.h"
#include "platform/Foundation.h"
#include "platform/Log.h"
#include "platform/Platform.h"

namespace audrel {

/// Turns a source, a format and a file URL into a running capture and a growing file, and back
/// into a closed file.
///
/// Threads. `start`, `stop` and the getters belong to the main thread. In between, the hardware
/// layer's IO thread calls `handleIOProc`, and the writer queue writes and closes the file. No lock
/// guards the fields that they share; the order of `start` and `stop` does: what the IO thread
/// reads is assigned before the device starts, and the IO procedure is gone before the file is
/// dropped. The underrun count alone is atomic.
///
/// Lifetime. Destruction releases the fields and no more: a running device, the IO procedure, the
/// aggregate device and the tap stay. So `stop` comes before the last reference goes.
class RecordingEngine {
  struct OnlyMake {
    explicit OnlyMake() = default;
  };

 public:
  /// An idle engine. It refers to its part of `platform` for life.
  static std::shared_ptr<RecordingEngine> make(const Platform& platform);

  RecordingEngine(OnlyMake, const Platform& platform);
  RecordingEngine(const RecordingEngine&) = delete;
  RecordingEngine& operator=(const RecordingEngine&) = delete;

  /// Captures `source` into a new file at `outputURL` until `stop`. Throws `RecorderError` values
  /// and nothing else, after which the engine is idle (or still recording, if it was) and can be
  /// started again.
  ///
  /// A failure after the tap was made and before the file is opened leaves the tap in place; the
  /// next successful start forgets it, and it lives until the process ends.
  void start(const RecordingSource& source, RecordingFormat format,
             const std::filesystem::path& outputURL);

  /// Ends the capture; on return every delivered cycle is written and the file is closed. Does
  /// nothing when idle. Always answers nothing: whoever called `start` knows the URL.
  std::optional<std::filesystem::path> stop();

  /// Copies one cycle's input into a buffer of its own and hands that to the writer queue. Called
  /// on the IO thread: takes no lock, never waits, logs or fails.
  void handleIOProc(const CA::AudioBufferList* inputData) noexcept;

  bool isRecording() const { return isRecording_; }

  /// Of the current or last capture, or of a start that failed after it was allowed to capture;
  /// all system audio at first.
  const RecordingSource& source() const { return source_; }

  /// When the current capture started; nothing when idle.
  std::optional<NS::Date> startDate() const { return startDate_; }

  /// IO cycles that were dropped for lack of memory, in the current or last capture. Any thread.
  std::int64_t underrunCount() const { return underrunCount_.value(); }

 private:
  /// Defined by tests only, which hold what the private fields keep and what they give up.
  friend struct RecordingEngineInspector;
  friend CA::OSStatus ioProcCallback(CA::AudioObjectID, const CA::AudioTimeStamp*,
                                     const CA::AudioBufferList*, const CA::AudioTimeStamp*,
                                     CA::AudioBufferList*, const CA::AudioTimeStamp*, void*);

  /// Releases what `start` created, for its failures from the file on. The device has not run by
  /// then, so no write can be pending and the file is closed without the queue.
  void tearDownCore();

  void removeIOProc();
  void destroyCaptureObjects();

  std::string readTapUID(CA::AudioObjectID tapID);
  CA::AudioStreamBasicDescription readTapFormat(CA::AudioObjectID tapID);
  std::string readDefaultOutputDeviceUID();
  CA::AudioObjectID createAggregateDevice(const std::string& tapUID);

  void logFailure(std::string_view what, CA::OSStatus status);

  CA::AudioHardware& hardware_;
  AV::AudioFramework& audio_;
  CG::CaptureAccess& captureAccess_;
  NS::Clock& clock_;
  NS::UUIDFactory& uuids_;

  /// Locked once a call by the IO procedure, which is handed the engine's bare address.
  std::weak_ptr<RecordingEngine> self_;

  std::shared_ptr<os::Logger> log_;
  bool isRecording_ = false;
  RecordingSource source_ = RecordingSource::allSystemAudio();
  std::optional<NS::Date> startDate_;
  CA::AudioObjectID tapID_ = CA::kAudioObjectUnknown;
  CA::AudioObjectID aggregateDeviceID_ = CA::kAudioObjectUnknown;
  CA::AudioDeviceIOProcID ioProcID_ = nullptr;
  std::shared_ptr<AV::AudioFile> audioFile_;
  std::shared_ptr<const AV::AudioFormat> writerFormat_;
  std::optional<CA::AudioStreamBasicDescription> tapStreamDescription_;
  std::shared_ptr<dispatch::Queue> writerQueue_;
  UnderrunCounter underrunCount_;
};

/// The IO procedure that the engine installs; `clientData` is the engine, not retained. Calls
/// `handleIOProc` with the input and always answers 0. Writes nothing to the output.
CA::OSStatus ioProcCallback(CA::AudioObjectID device, const CA::AudioTimeStamp* now,
                            const CA::AudioBufferList* inputData,
                            const CA::AudioTimeStamp* inputTime, CA::AudioBufferList* outputData,
                            const CA::AudioTimeStamp* outputTime, void* clientData);

}  // namespace audrel
