#pragma once

#include <memory>
#include <optional>

#include "engine/RecordingEngine.h"

namespace audrel {

/// Shows what the engine's private fields keep and give up.
struct RecordingEngineInspector {
  static CA::AudioObjectID tapID(const RecordingEngine& engine) { return engine.tapID_; }
  static CA::AudioObjectID aggregateDeviceID(const RecordingEngine& engine) {
    return engine.aggregateDeviceID_;
  }
  static bool hasIOProc(const RecordingEngine& engine) { return engine.ioProcID_ != nullptr; }
  static bool hasAudioFile(const RecordingEngine& engine) { return engine.audioFile_ != nullptr; }
  static const AV::AudioFormat* writerFormat(const RecordingEngine& engine) {
    return engine.writerFormat_.get();
  }
  static std::optional<CA::AudioStreamBasicDescription> tapStreamDescription(
      const RecordingEngine& engine) {
    return engine.tapStreamDescription_;
  }

  /// As `stop` does on the writer queue.
  static void clearAudioFile(RecordingEngine& engine) { engine.audioFile_ = nullptr; }
};

}  // namespace audrel
