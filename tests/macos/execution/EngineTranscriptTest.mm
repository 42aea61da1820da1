// The counterpart on macOS of each story docs/transcripts/engine-*.txt: the same is asked of the
// engine, which stands on the executed adapters here, and the journal is the frameworks' own.

#include <chrono>
#include <filesystem>
#include <functional>
#include <optional>
#include <ostream>
#include <set>

#include "engine/RecordingEngine.h"
#include "model/RecorderError.h"
#include "tests/fakes/Transcript.h"
#include "tests/macos/execution/MacTest.h"
#include "tests/macos/execution/SteppedPlatform.h"

namespace audrel::macos {
namespace {

using Arrangement = std::function<void(fakemac::Mac&)>;

constexpr CA::OSStatus badProperty = 560947818;        // '!obj'
constexpr CA::OSStatus illegalOperation = 1852797029;  // 'nope'

std::string called(const RecordingSource& source) {
  const auto* process = source.asProcess();
  return process == nullptr ? "all system audio"
                            : "process " + std::to_string(process->id) + " " + process->name;
}

std::string listed(const std::vector<std::uint32_t>& objects) {
  std::string all;
  for (const std::uint32_t object : objects) {
    all += " " + std::to_string(object);
  }
  return all.empty() ? " none" : all;
}

/// An engine on the platform of macOS, and the story of what it is told to do.
class ToldEngine {
 public:
  ToldEngine() { note("making the engine"); }

  void startEverything(RecordingFormat format = RecordingFormat::wav) {
    start(RecordingSource::allSystemAudio(), format);
  }

  void startRadio(RecordingFormat format = RecordingFormat::wav) {
    start(RecordingSource::process(70, "Web Radio", "org.example.radio"), format);
  }

  void stop() {
    const std::optional<std::filesystem::path> url = engine_->stop();
    note("stop()");
    story_ += "  => " + (url ? url->string() : "nothing") + "\n";
  }

  void deliver(std::uint32_t frames) {
    constexpr std::size_t bytesPerFrame = 8;
    fakemac::deliver({std::vector<std::byte>(frames * bytesPerFrame)});
    note("the device delivers " + std::to_string(frames) + " frames");
  }

  void runQueue() {
    fakemac::runQueues();
    note("the writer queue runs");
  }

  void letPass(std::chrono::milliseconds time) { clock_.date += time; }

  void showWhatThereIs(const std::string& when) {
    const auto& files = fakemac::mac().files;
    const auto open =
        std::count_if(files.begin(), files.end(), [](const auto& file) { return file.isOpen; });
    story_ += "\n" + when + "\n    recording: " + (engine_->isRecording() ? "yes" : "no") +
              "\n    source: " + called(engine_->source()) +
              "\n    underruns: " + std::to_string(engine_->underrunCount()) +
              "\n    taps in the system:" + listed(fakemac::taps()) +
              "\n    aggregate devices in the system:" + listed(fakemac::aggregateDevices()) +
              "\n    IO procedures in the system: " + std::to_string(fakemac::installedIOProcs()) +
              "\n    open files: " + std::to_string(open) + "\n";
  }

  const std::string& story() const { return story_; }

 private:
  void start(const RecordingSource& source, RecordingFormat format) {
    const std::string url = "/recordings/new." + std::string(format.rawValue());
    std::optional<std::string> thrown;
    try {
      engine_->start(source, format, url);
    } catch (const RecorderError& error) {
      thrown = error.errorDescription();
    }
    note("start(" + called(source) + ", " + std::string(format.rawValue()) + ", " + url + ")");
    story_ += thrown ? "  => threw: " + *thrown + "\n" : "  => started\n";
  }

  /// What was done, and below it what the frameworks were asked since.
  void note(const std::string& what) {
    story_ += "\n" + what + "\n";
    for (const std::string& line : fakemac::mac().takeJournal()) {
      story_ += "    " + line + "\n";
    }
  }

  SteppedClock clock_;
  SteppedPlatform platform_{clock_};
  const std::shared_ptr<RecordingEngine> engine_ = RecordingEngine::make(platform_.interfaces());
  std::string story_;
};

struct Story {
  std::string name;
  std::string title;
  std::function<void(ToldEngine&, fakemac::Mac&)> happens;
};

void PrintTo(const Story& story, std::ostream* stream) {
  *stream << story.name;
}

void deliverAndStop(ToldEngine& engine) {
  engine.deliver(512);
  engine.runQueue();
  engine.deliver(512);
  engine.deliver(256);
  engine.letPass(std::chrono::milliseconds(1250));
  engine.stop();
}

void repair(fakemac::Mac& mac) {
  mac.failing.clear();
  mac.failingProperties.clear();
  mac.withoutResult.clear();
  mac.openFails.reset();
  mac.defaultOutput = 51;
  mac.tapFormatID = 'lpcm';
}

Story failingStart(const std::string& name, const std::string& title, const Arrangement& breakIt) {
  return {"engine-start-fails-" + name, title, [=](ToldEngine& engine, fakemac::Mac& mac) {
            breakIt(mac);
            engine.startRadio();
            engine.stop();
            engine.showWhatThereIs("left behind");
            repair(mac);
            engine.startEverything();
            engine.stop();
          }};
}

Arrangement callFails(const std::string& call, CA::OSStatus status) {
  return [=](fakemac::Mac& mac) { mac.failing[call] = status; };
}

Arrangement callGivesNothing(const std::string& call) {
  return [=](fakemac::Mac& mac) { mac.withoutResult.insert(call); };
}

Arrangement propertyFails(std::uint32_t selector) {
  return [=](fakemac::Mac& mac) { mac.failingProperties[selector] = badProperty; };
}

std::vector<Story> recordings() {
  return {
      {"engine-records-everything-as-m4a", "All system audio is recorded as M4A.",
       [](ToldEngine& engine, fakemac::Mac&) {
         engine.startEverything(RecordingFormat::m4a);
         deliverAndStop(engine);
       }},
      {"engine-records-everything-as-wav", "All system audio is recorded as WAV.",
       [](ToldEngine& engine, fakemac::Mac&) {
         engine.startEverything();
         deliverAndStop(engine);
       }},
      {"engine-records-a-process-as-m4a", "One process is recorded as M4A.",
       [](ToldEngine& engine, fakemac::Mac&) {
         engine.startRadio(RecordingFormat::m4a);
         deliverAndStop(engine);
       }},
      {"engine-records-a-process-as-wav", "One process is recorded as WAV.",
       [](ToldEngine& engine, fakemac::Mac&) {
         engine.startRadio();
         deliverAndStop(engine);
       }},
      {"engine-writes-fail", "A full disk: the recording goes on, and a later write succeeds.",
       [](ToldEngine& engine, fakemac::Mac& mac) {
         engine.startEverything();
         mac.writeFails = {"NSPOSIXErrorDomain", 28, "The disk is full."};
         engine.deliver(512);
         engine.deliver(512);
         engine.runQueue();
         mac.writeFails.reset();
         engine.deliver(512);
         engine.stop();
       }},
      {"engine-underruns", "No memory for two cycles: they are dropped and counted.",
       [](ToldEngine& engine, fakemac::Mac& mac) {
         engine.startEverything();
         mac.hasMemoryForBuffers = false;
         engine.deliver(512);
         engine.deliver(512);
         mac.hasMemoryForBuffers = true;
         engine.deliver(512);
         engine.stop();
       }},
      {"engine-stop-when-idle", "A stop when nothing is recorded.",
       [](ToldEngine& engine, fakemac::Mac&) { engine.stop(); }},
      {"engine-start-refused-already-recording", "A second start while recording.",
       [](ToldEngine& engine, fakemac::Mac&) {
         engine.startRadio();
         engine.startEverything(RecordingFormat::m4a);
         engine.deliver(512);
         engine.stop();
       }},
      {"engine-start-refused-no-permission", "The system does not allow to capture.",
       [](ToldEngine& engine, fakemac::Mac& mac) {
         mac.mayCapture = false;
         engine.startRadio();
       }},
  };
}

std::vector<Story> failingStarts() {
  return {
      failingStart("tap-status", "The tap cannot be created.",
                   callFails("AudioHardwareCreateProcessTap", -50)),
      failingStart("tap-id-0", "Creating the tap succeeds, but yields none.",
                   callGivesNothing("AudioHardwareCreateProcessTap")),
      failingStart("tap-uid", "The tap's UID cannot be read.", propertyFails('tuid')),
      failingStart("tap-format", "The tap's format cannot be read.", propertyFails('tfmt')),
      failingStart("no-format", "The tap's format is none that the audio framework knows.",
                   [](fakemac::Mac& mac) { mac.tapFormatID = 0; }),
      failingStart("output-device-status", "The default output device cannot be read.",
                   propertyFails('dOut')),
      failingStart("no-output-device", "There is no default output device.",
                   [](fakemac::Mac& mac) { mac.defaultOutput = 0; }),
      failingStart("output-device-uid", "The default output device's UID cannot be read.",
                   propertyFails('uid ')),
      failingStart("aggregate-device-status", "The aggregate device cannot be created.",
                   callFails("AudioHardwareCreateAggregateDevice", illegalOperation)),
      failingStart("aggregate-device-id-0",
                   "Creating the aggregate device succeeds, but yields none.",
                   callGivesNothing("AudioHardwareCreateAggregateDevice")),
      failingStart("file", "The output file cannot be created.",
                   [](fakemac::Mac& mac) {
                     mac.openFails = {"NSPOSIXErrorDomain", 2,
                                      "The folder \"recordings\" doesn't exist."};
                   }),
      failingStart("io-procedure-status", "The IO procedure cannot be installed.",
                   callFails("AudioDeviceCreateIOProcID", illegalOperation)),
      failingStart("no-io-procedure", "Installing the IO procedure succeeds, but yields none.",
                   callGivesNothing("AudioDeviceCreateIOProcID")),
      failingStart("device-start", "The device does not start.",
                   callFails("AudioDeviceStart", illegalOperation)),
  };
}

std::vector<Story> stories() {
  std::vector<Story> all = recordings();
  for (Story& story : failingStarts()) {
    all.push_back(std::move(story));
  }
  return all;
}

class EngineTranscriptTest : public MacTest, public testing::WithParamInterface<Story> {
 protected:
  EngineTranscriptTest() { mac().holdsQueues = true; }
};

TEST_P(EngineTranscriptTest, isTheOneInTheTree) {
  ToldEngine engine;
  GetParam().happens(engine, mac());
  engine.showWhatThereIs("at the end");
  const auto difference = fakes::differenceFromTranscript("macos-" + GetParam().name,
                                                          GetParam().title + "\n" + engine.story());
  EXPECT_EQ(difference, std::nullopt) << difference.value_or("");
}

INSTANTIATE_TEST_SUITE_P(Mac, EngineTranscriptTest, testing::ValuesIn(stories()),
                         [](const auto& test) {
                           std::string name = test.param.name;
                           std::replace(name.begin(), name.end(), '-', '_');
                           return name;
                         });

/// The stories in the tree whose file begins so, by what follows.
std::set<std::string> storiesInTheTree(const std::string& beginning) {
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(
           std::filesystem::path(AUDREL_SOURCE_DIR) / "docs" / "transcripts")) {
    const std::string name = entry.path().stem().string();
    if (name.starts_with(beginning + "engine-")) {
      names.insert(name.substr(beginning.size()));
    }
  }
  return names;
}

TEST(EngineTranscriptsOfMacOS, areTheCounterpartsOfTheEnginesAndNoOthers) {
  std::set<std::string> told;
  for (const Story& story : stories()) {
    told.insert(story.name);
  }
  EXPECT_EQ(told, storiesInTheTree(""));
  EXPECT_EQ(told, storiesInTheTree("macos-"));
}

}  // namespace
}  // namespace audrel::macos
