#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "engine/RecordingEngine.h"
#include "model/RecorderError.h"
#include "tests/engine/RecordingEngineInspector.h"
#include "tests/fakes/InputCycle.h"
#include "tests/fakes/World.h"

namespace audrel {

/// An engine on a scripted system, whose journal begins when the engine is made. What stands in
/// docs/transcripts, call by call and line by line, is asserted by no other test again.
class EngineTest : public testing::Test {
 protected:
  using Call = fakes::FakeHardware::Call;
  using Inspector = RecordingEngineInspector;

  EngineTest() { world.journal.clear(); }

  static RecordingSource radio() { return RecordingSource::process(70, "Radio", std::nullopt); }

  static std::filesystem::path outputURL(RecordingFormat format) {
    return "/recordings/new." + std::string(format.rawValue());
  }

  /// What `start` threw, if it did.
  std::optional<RecorderError> start(
      const RecordingSource& source = RecordingSource::allSystemAudio(),
      RecordingFormat format = RecordingFormat::wav) {
    try {
      engine->start(source, format, outputURL(format));
    } catch (const RecorderError& error) {
      return error;
    }
    return std::nullopt;
  }

  /// One cycle of `frames` frames of interleaved stereo floats.
  void cycle(std::uint32_t frames = 512) {
    world.hardware.cycle(fakes::InputCycle({frames * 8}).list());
  }

  /// A log line of the engine.
  static std::string info(const std::string& line) {
    return "log io.github.audrel.Audrel [engine] info: " + line;
  }
  static std::string error(const std::string& line) {
    return "log io.github.audrel.Audrel [engine] error: " + line;
  }

  fakes::World world;
  std::shared_ptr<RecordingEngine> engine = RecordingEngine::make(world.platform());
};

}  // namespace audrel
