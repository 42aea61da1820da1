#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <vector>

#include "tests/engine/EngineTest.h"

namespace audrel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Engine = EngineTest;

static_assert(!std::is_polymorphic_v<RecordingEngine>, "no virtual operations");
static_assert(!std::is_copy_constructible_v<RecordingEngine>);

TEST_F(Engine, isIdleWhenItIsNew) {
  EXPECT_FALSE(engine->isRecording());
  EXPECT_EQ(engine->source(), RecordingSource::allSystemAudio());
  EXPECT_EQ(engine->startDate(), std::nullopt);
  EXPECT_EQ(engine->underrunCount(), 0);
  EXPECT_EQ(Inspector::tapID(*engine), 0U);
  EXPECT_EQ(Inspector::aggregateDeviceID(*engine), 0U);
  EXPECT_FALSE(Inspector::hasIOProc(*engine));
  EXPECT_FALSE(Inspector::hasAudioFile(*engine));
  EXPECT_EQ(Inspector::writerFormat(*engine), nullptr);
  EXPECT_EQ(Inspector::tapStreamDescription(*engine), std::nullopt);
}

TEST_F(Engine, isRecordingAfterASuccessfulStart) {
  world.clock.advance(std::chrono::minutes(1));
  ASSERT_EQ(start(radio()), std::nullopt);
  EXPECT_TRUE(engine->isRecording());
  EXPECT_EQ(engine->source(), radio());
  EXPECT_EQ(engine->startDate(), fakes::FakeClock::epoch() + std::chrono::minutes(1));
  EXPECT_EQ(engine->underrunCount(), 0);
  EXPECT_EQ(Inspector::tapID(*engine), 101U);
  EXPECT_EQ(Inspector::aggregateDeviceID(*engine), 201U);
  EXPECT_TRUE(Inspector::hasIOProc(*engine));
  EXPECT_TRUE(Inspector::hasAudioFile(*engine));
}

TEST_F(Engine, isRecordingOnceTheDeviceRunsThenTakesItsDateThenForgetsOldUnderruns) {
  ASSERT_EQ(start(), std::nullopt);
  world.audio.hasNoMemory = true;
  cycle();
  engine->stop();

  std::vector<std::string> seen;
  world.journal.whenAdded = [&](const std::string& line) {
    if (line.starts_with("AudioDeviceStart") || line.starts_with("now()")) {
      seen.push_back(std::string(engine->isRecording() ? "recording" : "idle") +
                     (engine->startDate() ? ", a date, " : ", no date, ") +
                     std::to_string(engine->underrunCount()) + " underruns");
    }
  };
  ASSERT_EQ(start(), std::nullopt);
  EXPECT_THAT(seen, ElementsAre("idle, no date, 1 underruns", "recording, no date, 1 underruns"));
  EXPECT_EQ(engine->underrunCount(), 0);
}

TEST_F(Engine, recordsEachTapInItsOwnFormat) {
  ASSERT_EQ(start(), std::nullopt);
  engine->stop();
  auto& format = world.hardware.tapFormat;
  format.mSampleRate = 44100;
  format.mChannelsPerFrame = 1;
  format.mBytesPerFrame = 4;
  ASSERT_EQ(start(), std::nullopt);
  EXPECT_EQ(Inspector::writerFormat(*engine)->streamDescription(), format);
  EXPECT_EQ(Inspector::tapStreamDescription(*engine), format);
}

TEST_F(Engine, installsItsCallbackWithItselfAsClientDataAndNoReferenceToItself) {
  ASSERT_EQ(start(), std::nullopt);
  EXPECT_EQ(world.hardware.lastIOProc, ioProcCallback);
  EXPECT_EQ(world.hardware.lastClientData, engine.get());
  EXPECT_EQ(engine.use_count(), 1);
}

TEST_F(Engine, secondStartWhileRecordingIsRefusedAndLeavesTheCaptureAlone) {
  ASSERT_EQ(start(radio()), std::nullopt);
  world.audio.hasNoMemory = true;
  cycle();
  world.audio.hasNoMemory = false;
  const auto startDate = engine->startDate();
  world.clock.advance(std::chrono::seconds(1));
  world.journal.clear();

  world.captureAccess.isGranted = false;
  EXPECT_EQ(start(RecordingSource::allSystemAudio(), RecordingFormat::m4a),
            RecorderError::alreadyRecording());

  EXPECT_THAT(world.journal.lines(), IsEmpty());
  EXPECT_TRUE(engine->isRecording());
  EXPECT_EQ(engine->source(), radio());
  EXPECT_EQ(engine->startDate(), startDate);
  EXPECT_EQ(engine->underrunCount(), 1);
  cycle();
  engine->stop();
  EXPECT_EQ(world.audio.files.front()->writes.size(), 1U);
}

TEST_F(Engine, underrunCountSurvivesAStartThatFails) {
  ASSERT_EQ(start(), std::nullopt);
  world.audio.hasNoMemory = true;
  cycle();
  engine->stop();
  world.hardware.fail(Call::deviceStart, -1);
  ASSERT_NE(start(), std::nullopt);
  EXPECT_EQ(engine->underrunCount(), 1);
}

TEST_F(Engine, keepsTheStatusOfAFailureWhenTearingDownFailsToo) {
  world.hardware.fail(Call::deviceStart, -11);
  world.hardware.fail(Call::deviceStop, 1);
  world.hardware.fail(Call::destroyIOProcID, 2);
  world.hardware.fail(Call::destroyAggregateDevice, 3);
  world.hardware.fail(Call::destroyProcessTap, 4);
  EXPECT_EQ(start(), RecorderError::ioProcInstallFailed(-11));
  EXPECT_FALSE(engine->isRecording());
  EXPECT_EQ(engine->startDate(), std::nullopt);
  EXPECT_FALSE(Inspector::hasIOProc(*engine));
  EXPECT_FALSE(Inspector::hasAudioFile(*engine));
  EXPECT_EQ(Inspector::aggregateDeviceID(*engine), 0U);
  EXPECT_EQ(Inspector::tapID(*engine), 0U);
}

TEST_F(Engine, theLineOfTheStartNamesTheFileOnlyAndTheProcessAsItIsCalled) {
  engine->start(RecordingSource::process(7, "Rädio\n%s", std::nullopt), RecordingFormat::wav,
                "/a/b c/d %d ü.wav");
  EXPECT_THAT(world.journal.lines().back(),
              testing::StartsWith(info("Recording started — source=Rädio\n%s format=wav "
                                       "url=d %d ü.wav fileSettings=[")));
}

TEST_F(Engine, neverAsksForThePermissionItself) {
  world.captureAccess.isGranted = false;
  world.captureAccess.requestGrants = true;
  EXPECT_EQ(start(radio()), RecorderError::permissionDenied());
  EXPECT_EQ(engine->source(), RecordingSource::allSystemAudio());
}

}  // namespace
}  // namespace audrel
