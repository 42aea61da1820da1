#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <string>

#include "tests/engine/EngineTest.h"
#include "tests/engine/ExpectedJournal.h"

namespace audrel {
namespace {

using expected::Lines;
using expected::operator+;
using expected::Step;
using testing::ElementsAre;
using testing::IsEmpty;

using Call = fakes::FakeHardware::Call;

const NS::Error noSuchFolder{NS::POSIXErrorDomain, 2, "The folder doesn't exist."};

/// What stays of the tap after a failed start.
enum class Tap { none, left };

const Lines tornDownObjects = {"AudioHardwareDestroyAggregateDevice(201) -> status 0",
                               "AudioHardwareDestroyProcessTap(101) -> status 0"};
const Lines closed = {"file closed: new.wav"};

struct Failure {
  const char* name;
  std::function<void(fakes::World&)> cause;
  RecorderError error;
  Lines journal;
  Tap tap;
  bool descriptionKept;
};

void PrintTo(const Failure& failure, std::ostream* stream) {
  *stream << failure.name;
}

std::function<void(fakes::World&)> failing(Call call, CA::OSStatus status) {
  return [=](fakes::World& world) { world.hardware.fail(call, status); };
}

std::function<void(fakes::World&)> yieldingNothing(Call call) {
  return [=](fakes::World& world) { world.hardware.yieldNothing(call); };
}

const Failure failures[] = {
    {"tapStatus", failing(Call::createProcessTap, -50), RecorderError::tapCreationFailed(-50),
     expected::startFailing(Step::createTap, "status -50",
                            {expected::error("AudioHardwareCreateProcessTap failed: -50")}),
     Tap::none, false},
    {"tapIdIs0", yieldingNothing(Call::createProcessTap), RecorderError::tapCreationFailed(0),
     expected::startFailing(Step::createTap, "status 0, no tap",
                            {expected::error("AudioHardwareCreateProcessTap failed: 0")}),
     Tap::none, false},
    {"tapUID", failing(Call::tapUID, 560947818), RecorderError::tapCreationFailed(560947818),
     expected::startFailing(Step::tapUID, "status 560947818",
                            {expected::error("Reading tap UID failed: 560947818")}),
     Tap::left, false},
    {"tapFormat", failing(Call::tapFormat, -2147483647),
     RecorderError::streamFormatUnavailable(-2147483647),
     expected::startFailing(Step::tapFormat, "status -2147483647",
                            {expected::error("Reading tap format failed: -2147483647")}),
     Tap::left, false},
    {"noFormatOfTheDescription", [](fakes::World& world) { world.audio.makesNoFormat = true; },
     RecorderError::streamFormatUnavailable(-1),
     expected::startFailing(Step::makeFormat, "nothing"), Tap::left, true},
    {"defaultOutputDeviceStatus", failing(Call::defaultOutputDevice, 7),
     RecorderError::aggregateDeviceFailed(7),
     expected::startFailing(Step::defaultOutputDevice, "status 7"), Tap::left, true},
    {"noDefaultOutputDevice", yieldingNothing(Call::defaultOutputDevice),
     RecorderError::aggregateDeviceFailed(0),
     expected::startFailing(Step::defaultOutputDevice, "status 0, device 0"), Tap::left, true},
    {"deviceUID", failing(Call::deviceUID, 8), RecorderError::aggregateDeviceFailed(8),
     expected::startFailing(Step::deviceUID, "status 8"), Tap::left, true},
    {"aggregateDeviceStatus", failing(Call::createAggregateDevice, 9),
     RecorderError::aggregateDeviceFailed(9),
     expected::startFailing(Step::createAggregateDevice, "status 9",
                            {expected::error("AudioHardwareCreateAggregateDevice failed: 9")}),
     Tap::left, true},
    {"aggregateDeviceIdIs0", yieldingNothing(Call::createAggregateDevice),
     RecorderError::aggregateDeviceFailed(0),
     expected::startFailing(Step::createAggregateDevice, "status 0, no device",
                            {expected::error("AudioHardwareCreateAggregateDevice failed: 0")}),
     Tap::left, true},
    {"file", [](fakes::World& world) { world.audio.openError = noSuchFolder; },
     RecorderError::fileOpenFailed(noSuchFolder),
     expected::startFailing(
         Step::openFile, "error \"The folder doesn't exist.\"",
         Lines{expected::error("AVAudioFile open failed: The folder doesn't exist.")} +
             tornDownObjects),
     Tap::none, false},
    {"ioProcStatus", failing(Call::createIOProcID, 10), RecorderError::ioProcInstallFailed(10),
     expected::startFailing(
         Step::createIOProc, "status 10",
         Lines{expected::error("AudioDeviceCreateIOProcID failed: 10")} + tornDownObjects + closed),
     Tap::none, false},
    {"noIOProcId", yieldingNothing(Call::createIOProcID), RecorderError::ioProcInstallFailed(0),
     expected::startFailing(
         Step::createIOProc, "status 0, no ioProc",
         Lines{expected::error("AudioDeviceCreateIOProcID failed: 0")} + tornDownObjects + closed),
     Tap::none, false},
    {"deviceStart", failing(Call::deviceStart, -11), RecorderError::ioProcInstallFailed(-11),
     expected::startFailing(Step::deviceStart, "status -11",
                            Lines{expected::error("AudioDeviceStart failed: -11"),
                                  "AudioDeviceStop(201, ioProc 1) -> status 0",
                                  "AudioDeviceDestroyIOProcID(201, ioProc 1) -> status 0"} +
                                tornDownObjects + closed),
     Tap::none, false},
};

class StartFailure : public EngineTest, public testing::WithParamInterface<Failure> {};

TEST_P(StartFailure, callsLogsAndThrowsExactlyThis) {
  GetParam().cause(world);
  EXPECT_EQ(start(), GetParam().error);
  EXPECT_EQ(world.journal.lines(), GetParam().journal);
}

TEST_P(StartFailure, leavesBehindExactlyThis) {
  GetParam().cause(world);
  ASSERT_NE(start(), std::nullopt);

  const bool tapLeft = GetParam().tap == Tap::left;
  EXPECT_EQ(world.hardware.taps().size(), tapLeft ? 1U : 0U);
  EXPECT_EQ(Inspector::tapID(*engine), tapLeft ? 101U : 0U);
  EXPECT_EQ(Inspector::tapStreamDescription(*engine).has_value(), GetParam().descriptionKept);
  EXPECT_THAT(world.hardware.aggregateDevices(), IsEmpty());
  EXPECT_EQ(Inspector::aggregateDeviceID(*engine), 0U);
  EXPECT_EQ(world.hardware.installedIOProcs(), 0U);
  EXPECT_FALSE(Inspector::hasIOProc(*engine));
  EXPECT_FALSE(Inspector::hasAudioFile(*engine));
  EXPECT_EQ(Inspector::writerFormat(*engine), nullptr);
  for (const auto& file : world.audio.files) {
    EXPECT_FALSE(file->isOpen);
  }
}

TEST_P(StartFailure, leavesTheEngineIdleWithTheSourceItWasGiven) {
  const auto radio = RecordingSource::process(70, "Radio", std::nullopt);
  GetParam().cause(world);
  ASSERT_NE(start(radio), std::nullopt);
  EXPECT_FALSE(engine->isRecording());
  EXPECT_EQ(engine->startDate(), std::nullopt);
  EXPECT_EQ(engine->source(), radio);
  EXPECT_EQ(engine->underrunCount(), 0);
}

TEST_P(StartFailure, leavesAStopNothingToDo) {
  GetParam().cause(world);
  ASSERT_NE(start(), std::nullopt);
  world.journal.clear();
  EXPECT_EQ(engine->stop(), std::nullopt);
  EXPECT_THAT(world.journal.lines(), IsEmpty());
}

TEST_P(StartFailure, isFollowedByAStartThatSucceedsAndCleansUpItsOwnOnly) {
  GetParam().cause(world);
  ASSERT_NE(start(), std::nullopt);
  const auto left = world.hardware.taps();
  for (const Call call :
       {Call::createProcessTap, Call::tapUID, Call::tapFormat, Call::defaultOutputDevice,
        Call::deviceUID, Call::createAggregateDevice, Call::createIOProcID, Call::deviceStart}) {
    world.hardware.restore(call);
  }
  world.audio.makesNoFormat = false;
  world.audio.openError = std::nullopt;

  EXPECT_EQ(start(), std::nullopt);
  EXPECT_TRUE(engine->isRecording());
  engine->stop();
  EXPECT_EQ(world.hardware.taps(), left);
  EXPECT_THAT(world.hardware.aggregateDevices(), IsEmpty());
  EXPECT_EQ(world.hardware.installedIOProcs(), 0U);
}

INSTANTIATE_TEST_SUITE_P(Engine, StartFailure, testing::ValuesIn(failures),
                         [](const auto& test) { return test.param.name; });

using Engine = EngineTest;

TEST_F(Engine, withoutPermissionThrowsLogsNothingAndChangesNothing) {
  world.captureAccess.isGranted = false;
  EXPECT_EQ(start(RecordingSource::process(70, "Radio", std::nullopt)),
            RecorderError::permissionDenied());
  EXPECT_THAT(world.journal.lines(), ElementsAre("CGPreflightScreenCaptureAccess() -> false"));
  EXPECT_EQ(engine->source(), RecordingSource::allSystemAudio());
  EXPECT_FALSE(engine->isRecording());
}

TEST_F(Engine, neverAsksForThePermissionItself) {
  world.captureAccess.isGranted = false;
  world.captureAccess.requestGrants = true;
  EXPECT_EQ(start(), RecorderError::permissionDenied());
}

TEST_F(Engine, keepsTheStatusOfAFailureWhenTearingDownFailsToo) {
  world.hardware.fail(Call::deviceStart, -11);
  world.hardware.fail(Call::deviceStop, 1);
  world.hardware.fail(Call::destroyIOProcID, 2);
  world.hardware.fail(Call::destroyAggregateDevice, 3);
  world.hardware.fail(Call::destroyProcessTap, 4);
  EXPECT_EQ(start(), RecorderError::ioProcInstallFailed(-11));
  EXPECT_FALSE(Inspector::hasIOProc(*engine));
  EXPECT_EQ(Inspector::aggregateDeviceID(*engine), 0U);
  EXPECT_EQ(Inspector::tapID(*engine), 0U);
}

}  // namespace
}  // namespace audrel
