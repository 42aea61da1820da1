// Tells the stories of the engine on the scripted system, and compares them with docs/transcripts.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <map>
#include <set>
#include <string>

#include "tests/engine/EngineStories.h"
#include "tests/fakes/InputCycle.h"
#include "tests/fakes/ScopedVariable.h"
#include "tests/fakes/Transcript.h"
#include "tests/fakes/World.h"

namespace audrel {
namespace {

using story::Fault;
using testing::HasSubstr;
using testing::Optional;

using Call = fakes::FakeHardware::Call;
using Cause = std::function<void(fakes::World&)>;

Cause failing(Call call, CA::OSStatus status) {
  return [=](fakes::World& world) { world.hardware.fail(call, status); };
}

Cause yieldingNothing(Call call) {
  return [=](fakes::World& world) { world.hardware.yieldNothing(call); };
}

const std::map<Fault, Cause>& causes() {
  static const std::map<Fault, Cause> all = {
      {Fault::noPermission, [](auto& world) { world.captureAccess.isGranted = false; }},
      {Fault::tapFails, failing(Call::createProcessTap, story::parameterError)},
      {Fault::tapYieldsNothing, yieldingNothing(Call::createProcessTap)},
      {Fault::tapUIDFails, failing(Call::tapUID, story::badObject)},
      {Fault::tapFormatFails, failing(Call::tapFormat, story::badObject)},
      {Fault::tapFormatIsNone, [](auto& world) { world.audio.makesNoFormat = true; }},
      {Fault::outputDeviceFails, failing(Call::defaultOutputDevice, story::badObject)},
      {Fault::outputDeviceYieldsNothing, yieldingNothing(Call::defaultOutputDevice)},
      {Fault::outputDeviceUIDFails, failing(Call::deviceUID, story::badObject)},
      {Fault::aggregateDeviceFails, failing(Call::createAggregateDevice, story::illegalOperation)},
      {Fault::aggregateDeviceYieldsNothing, yieldingNothing(Call::createAggregateDevice)},
      {Fault::fileFails,
       [](auto& world) {
         world.audio.openError = NS::Error{NS::POSIXErrorDomain, 2, story::folderIsMissing};
       }},
      {Fault::ioProcFails, failing(Call::createIOProcID, story::illegalOperation)},
      {Fault::ioProcYieldsNothing, yieldingNothing(Call::createIOProcID)},
      {Fault::deviceStartFails, failing(Call::deviceStart, story::illegalOperation)},
      {Fault::writesFail,
       [](auto& world) {
         world.audio.writeError = NS::Error{NS::POSIXErrorDomain, 28, story::diskIsFull};
       }},
      {Fault::noMemory, [](auto& world) { world.audio.hasNoMemory = true; }},
  };
  return all;
}

class ScriptedStage final : public story::Stage {
 public:
  Platform platform() override { return world_.platform(); }

  void set(std::optional<Fault> fault) override {
    world_.hardware.restore();
    world_.audio.makesNoFormat = false;
    world_.audio.hasNoMemory = false;
    world_.audio.openError.reset();
    world_.audio.writeError.reset();
    world_.captureAccess.isGranted = true;
    if (fault) {
      causes().at (*fault)(world_);
    }
  }

  void deliver(std::uint32_t frames) override {
    world_.hardware.cycle(fakes::InputCycle({frames * 8}).list());
  }
  void runQueue() override { world_.dispatch.queue().runAll(); }
  void letPass(std::chrono::milliseconds time) override { world_.clock.advance(time); }

  std::vector<std::string> takeJournal() override {
    auto lines = world_.journal.lines();
    world_.journal.clear();
    return lines;
  }

  story::Inventory inventory() const override {
    const auto& files = world_.audio.files;
    const auto open =
        std::count_if(files.begin(), files.end(), [](const auto& file) { return file->isOpen; });
    return {world_.hardware.taps(), world_.hardware.aggregateDevices(),
            world_.hardware.installedIOProcs(), static_cast<std::size_t>(open)};
  }

 private:
  fakes::World world_;
};

class EngineTranscript : public testing::TestWithParam<story::Story> {};

TEST_P(EngineTranscript, isTheOneInTheTree) {
  ScriptedStage stage;
  const auto difference = story::differenceFromTranscript(GetParam(), stage);
  EXPECT_EQ(difference, std::nullopt) << difference.value_or("");
}

INSTANTIATE_TEST_SUITE_P(Engine, EngineTranscript, testing::ValuesIn(story::all()),
                         [](const auto& test) {
                           std::string name = test.param.name;
                           std::replace(name.begin(), name.end(), '-', '_');
                           return name;
                         });

TEST(EngineTranscripts, inTheTreeAreThoseOfTheStoriesAndTheirCounterpartsAndNoOthers) {
  std::set<std::string> expected;
  for (const story::Story& story : story::all()) {
    expected.insert({story.name + ".txt", "macos-" + story.name + ".txt"});
  }
  std::set<std::string> kept;
  for (const auto& entry : std::filesystem::directory_iterator(
           std::filesystem::path(AUDREL_SOURCE_DIR) / "docs" / "transcripts")) {
    const std::string name = entry.path().filename().string();
    if (name.starts_with("engine-") || name.starts_with("macos-engine-")) {
      kept.insert(name);
    }
  }
  EXPECT_EQ(kept, expected);
}

TEST(Transcripts, thatAreMissingOrDifferAreReported) {
  const fakes::ScopedVariable compare("AUDREL_UPDATE_TRANSCRIPTS", "0");
  const std::string title = "One process is recorded as WAV.\n";
  EXPECT_THAT(fakes::differenceFromTranscript("no-such-transcript", title),
              Optional(HasSubstr("there is no docs/transcripts/no-such-transcript.txt")));
  EXPECT_THAT(fakes::differenceFromTranscript("engine-records-a-process-as-wav", title),
              Optional(HasSubstr("line 2")));
  EXPECT_THAT(fakes::differenceFromTranscript("engine-records-a-process-as-wav", "A start.\n"),
              Optional(HasSubstr("line 1")));
}

}  // namespace
}  // namespace audrel
