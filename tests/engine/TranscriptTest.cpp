// Writes the story of each start and stop, and compares it with docs/transcripts.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <functional>
#include <ostream>
#include <set>
#include <string>
#include <vector>

#include "engine/RecordingEngine.h"
#include "model/RecorderError.h"
#include "tests/engine/RecordingEngineInspector.h"
#include "tests/fakes/InputCycle.h"
#include "tests/fakes/ScopedVariable.h"
#include "tests/fakes/Transcript.h"
#include "tests/fakes/World.h"

namespace audrel {
namespace {

using Call = fakes::FakeHardware::Call;
using Inspector = RecordingEngineInspector;
using testing::HasSubstr;
using testing::Optional;

const auto everything = RecordingSource::allSystemAudio();
const auto radio = RecordingSource::process(70, "Web Radio", "org.example.radio");

/// Tells what is done to an engine, and what that leads to, as it happens.
class Story {
 public:
  Story() { tell("making the engine"); }

  fakes::World& world() { return world_; }

  void start(const RecordingSource& source = everything,
             RecordingFormat format = RecordingFormat::wav) {
    const std::string url = "/recordings/new." + std::string(format.rawValue());
    std::string result = "started";
    try {
      engine_->start(source, format, url);
    } catch (const RecorderError& error) {
      result = "threw: " + *error.errorDescription();
    }
    tell("start(" + name(source) + ", " + std::string(format.rawValue()) + ", " + url + ")");
    text_ += "  => " + result + "\n";
  }

  void cycle(std::uint32_t frames) {
    world_.hardware.cycle(fakes::InputCycle({frames * 8}).list());
    tell("the device delivers " + std::to_string(frames) + " frames");
  }

  void runQueue() {
    world_.dispatch.queue().runAll();
    tell("the writer queue runs");
  }

  void stop() {
    const auto url = engine_->stop();
    tell("stop()");
    text_ += std::string("  => ") + (url ? url->string() : "nothing") + "\n";
  }

  void wait(std::chrono::milliseconds time) { world_.clock.advance(time); }

  void showState(const std::string& when) { text_ += "\n" + when + "\n" + state(); }

  const std::string& text() const { return text_; }

 private:
  /// Says `what` happened, then all that it led to.
  void tell(const std::string& what) {
    text_ += "\n" + what + "\n";
    for (const std::string& line : world_.journal.lines()) {
      text_ += "    " + line + "\n";
    }
    world_.journal.clear();
  }

  static std::string name(const RecordingSource& source) {
    const auto* process = source.asProcess();
    return process == nullptr ? "all system audio"
                              : "process " + std::to_string(process->id) + " " + process->name;
  }

  static std::string list(const std::vector<CA::AudioObjectID>& objects) {
    std::string text;
    for (const CA::AudioObjectID object : objects) {
      text += " " + std::to_string(object);
    }
    return text.empty() ? " none" : text;
  }

  std::string state() const {
    const auto open = std::count_if(world_.audio.files.begin(), world_.audio.files.end(),
                                    [](const auto& file) { return file->isOpen; });
    const auto yes = [](bool value) { return value ? "yes" : "no"; };
    return std::string("    recording: ") + yes(engine_->isRecording()) +
           "\n    source: " + name(engine_->source()) +
           "\n    underruns: " + std::to_string(engine_->underrunCount()) +
           "\n    the engine's tap: " + std::to_string(Inspector::tapID(*engine_)) +
           "\n    the engine's aggregate device: " +
           std::to_string(Inspector::aggregateDeviceID(*engine_)) +
           "\n    the engine keeps a writer format: " +
           yes(Inspector::writerFormat(*engine_) != nullptr) +
           "\n    the engine keeps a stream description: " +
           yes(Inspector::tapStreamDescription(*engine_).has_value()) +
           "\n    taps in the system:" + list(world_.hardware.taps()) +
           "\n    aggregate devices in the system:" + list(world_.hardware.aggregateDevices()) +
           "\n    IO procedures in the system: " +
           std::to_string(world_.hardware.installedIOProcs()) +
           "\n    open files: " + std::to_string(open) + "\n";
  }

  fakes::World world_;
  std::shared_ptr<RecordingEngine> engine_ = RecordingEngine::make(world_.platform());
  std::string text_;
};

struct Scenario {
  std::string name;
  std::string title;
  std::function<void(Story&)> happens;
};

void PrintTo(const Scenario& scenario, std::ostream* stream) {
  *stream << scenario.name;
}

Scenario recording(const std::string& name, const std::string& title, const RecordingSource& source,
                   RecordingFormat format) {
  return {"engine-records-" + name, title, [source, format](Story& story) {
            story.start(source, format);
            story.cycle(512);
            story.runQueue();
            story.cycle(512);
            story.cycle(256);
            story.wait(std::chrono::milliseconds(1250));
            story.stop();
          }};
}

/// A start that fails, a stop, and a recording after the cause is gone.
Scenario failing(const std::string& name, const std::string& title,
                 const std::function<void(fakes::World&)>& breakIt,
                 const std::function<void(fakes::World&)>& repairIt) {
  return {"engine-start-fails-" + name, title, [breakIt, repairIt](Story& story) {
            breakIt(story.world());
            story.start(radio);
            story.stop();
            story.showState("left behind");
            repairIt(story.world());
            story.start();
            story.stop();
          }};
}

Scenario failing(const std::string& name, const std::string& title, Call call,
                 CA::OSStatus status) {
  return failing(
      name, title, [=](fakes::World& world) { world.hardware.fail(call, status); },
      [=](fakes::World& world) { world.hardware.restore(call); });
}

Scenario yieldingNothing(const std::string& name, const std::string& title, Call call) {
  return failing(
      name, title, [=](fakes::World& world) { world.hardware.yieldNothing(call); },
      [=](fakes::World& world) { world.hardware.restore(call); });
}

std::vector<Scenario> successes() {
  return {
      recording("everything-as-m4a", "All system audio is recorded as M4A.", everything,
                RecordingFormat::m4a),
      recording("everything-as-wav", "All system audio is recorded as WAV.", everything,
                RecordingFormat::wav),
      recording("a-process-as-m4a", "One process is recorded as M4A.", radio, RecordingFormat::m4a),
      recording("a-process-as-wav", "One process is recorded as WAV.", radio, RecordingFormat::wav),
      {"engine-writes-fail", "A full disk: the recording goes on, and a later write succeeds.",
       [](Story& story) {
         story.start();
         story.world().audio.writeError = NS::Error{NS::POSIXErrorDomain, 28, "The disk is full."};
         story.cycle(512);
         story.cycle(512);
         story.runQueue();
         story.world().audio.writeError = std::nullopt;
         story.cycle(512);
         story.stop();
       }},
      {"engine-underruns", "No memory for two cycles: they are dropped and counted.",
       [](Story& story) {
         story.start();
         story.world().audio.hasNoMemory = true;
         story.cycle(512);
         story.cycle(512);
         story.world().audio.hasNoMemory = false;
         story.cycle(512);
         story.stop();
       }},
      {"engine-stop-when-idle", "A stop when nothing is recorded.",
       [](Story& story) { story.stop(); }},
      {"engine-start-refused-already-recording", "A second start while recording.",
       [](Story& story) {
         story.start(radio);
         story.start(everything, RecordingFormat::m4a);
         story.cycle(512);
         story.stop();
       }},
      {"engine-start-refused-no-permission", "The system does not allow to capture.",
       [](Story& story) {
         story.world().captureAccess.isGranted = false;
         story.start(radio);
       }},
  };
}

std::vector<Scenario> failures() {
  return {
      failing("tap-status", "The tap cannot be created.", Call::createProcessTap, -50),
      yieldingNothing("tap-id-0", "Creating the tap succeeds, but yields none.",
                      Call::createProcessTap),
      failing("tap-uid", "The tap's UID cannot be read.", Call::tapUID, 560947818),
      failing("tap-format", "The tap's format cannot be read.", Call::tapFormat, 560947818),
      failing(
          "no-format", "The tap's format is none that the audio framework knows.",
          [](fakes::World& world) { world.audio.makesNoFormat = true; },
          [](fakes::World& world) { world.audio.makesNoFormat = false; }),
      failing("output-device-status", "The default output device cannot be read.",
              Call::defaultOutputDevice, 560947818),
      yieldingNothing("no-output-device", "There is no default output device.",
                      Call::defaultOutputDevice),
      failing("output-device-uid", "The default output device's UID cannot be read.",
              Call::deviceUID, 560947818),
      failing("aggregate-device-status", "The aggregate device cannot be created.",
              Call::createAggregateDevice, 1852797029),
      yieldingNothing("aggregate-device-id-0",
                      "Creating the aggregate device succeeds, but yields none.",
                      Call::createAggregateDevice),
      failing(
          "file", "The output file cannot be created.",
          [](fakes::World& world) {
            world.audio.openError =
                NS::Error{NS::POSIXErrorDomain, 2, "The folder \"recordings\" doesn't exist."};
          },
          [](fakes::World& world) { world.audio.openError = std::nullopt; }),
      failing("io-procedure-status", "The IO procedure cannot be installed.", Call::createIOProcID,
              1852797029),
      yieldingNothing("no-io-procedure", "Installing the IO procedure succeeds, but yields none.",
                      Call::createIOProcID),
      failing("device-start", "The device does not start.", Call::deviceStart, 1852797029),
  };
}

std::vector<Scenario> scenarios() {
  std::vector<Scenario> all = successes();
  for (Scenario& failure : failures()) {
    all.push_back(std::move(failure));
  }
  return all;
}

class EngineTranscript : public testing::TestWithParam<Scenario> {};

TEST_P(EngineTranscript, isTheOneInTheTree) {
  Story story;
  GetParam().happens(story);
  story.showState("at the end");
  const auto difference =
      fakes::differenceFromTranscript(GetParam().name, GetParam().title + "\n" + story.text());
  EXPECT_EQ(difference, std::nullopt) << difference.value_or("");
}

INSTANTIATE_TEST_SUITE_P(Engine, EngineTranscript, testing::ValuesIn(scenarios()),
                         [](const auto& test) {
                           std::string name = test.param.name;
                           std::replace(name.begin(), name.end(), '-', '_');
                           return name;
                         });

TEST(EngineTranscripts, inTheTreeAreThoseOfTheScenariosAndNoOthers) {
  std::set<std::string> expected;
  for (const Scenario& scenario : scenarios()) {
    expected.insert(scenario.name + ".txt");
  }
  std::set<std::string> kept;
  for (const auto& entry : std::filesystem::directory_iterator(
           std::filesystem::path(AUDREL_SOURCE_DIR) / "docs" / "transcripts")) {
    const std::string name = entry.path().filename().string();
    if (name.starts_with("engine-")) {
      kept.insert(name);
    }
  }
  EXPECT_EQ(kept, expected);
}

TEST(Transcripts, thatAreMissingOrDifferAreReported) {
  const fakes::ScopedVariable compare("AUDREL_UPDATE_TRANSCRIPTS", "0");
  const std::string title = "A stop when nothing is recorded.\n";
  EXPECT_THAT(fakes::differenceFromTranscript("no-such-transcript", title),
              Optional(HasSubstr("there is no docs/transcripts/no-such-transcript.txt")));
  EXPECT_THAT(fakes::differenceFromTranscript("engine-stop-when-idle", title),
              Optional(HasSubstr("line 2")));
  EXPECT_THAT(fakes::differenceFromTranscript("engine-stop-when-idle", "A start.\n"),
              Optional(HasSubstr("line 1")));
}

}  // namespace
}  // namespace audrel
