#include "model/OutputURL.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "tests/fakes/FakeSystem.h"
#include "tests/fakes/ScopedCommaLocale.h"
#include "tests/fakes/ScopedVariable.h"

namespace audrel {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

class MakeOutputURL : public testing::Test {
 protected:
  std::string url(const RecordingSource& source, RecordingFormat format) {
    return makeOutputURL(fileManager, source, format, fakes::FakeClock::epoch()).string();
  }
  std::string systemMix() { return url(RecordingSource::allSystemAudio(), RecordingFormat::m4a); }
  std::string ofProcess(const std::string& name) {
    return url(RecordingSource::process(7, name, "org.example"), RecordingFormat::wav);
  }
  void exists(const std::string& name) { fileManager.existing.insert("/downloads/" + name); }

  fakes::ScopedVariable zone{"TZ", "UTC"};
  fakes::Journal journal;
  fakes::FakeFileManager fileManager{journal};

  void SetUp() override { fileManager.downloads = "/downloads"; }
};

TEST_F(MakeOutputURL, allSystemAudioIsNamedSystemMix) {
  EXPECT_EQ(systemMix(), "/downloads/audio-SystemMix-2026-11-16-070900.m4a");
}

TEST_F(MakeOutputURL, aProcessIsNamedByItsSanitisedName) {
  EXPECT_EQ(ofProcess("Web Radio Player"),
            "/downloads/audio-Web-Radio-Player-2026-11-16-070900.wav");
  EXPECT_EQ(ofProcess("My App (Beta) 2.0"),
            "/downloads/audio-My-App-Beta-20-2026-11-16-070900.wav");
}

TEST_F(MakeOutputURL, aNameOfWhichNothingIsLeftIsUnknown) {
  EXPECT_EQ(ofProcess("Музыка"), "/downloads/audio-Unknown-2026-11-16-070900.wav");
  EXPECT_EQ(ofProcess("🎧🎵"), "/downloads/audio-Unknown-2026-11-16-070900.wav");
  EXPECT_EQ(ofProcess(""), "/downloads/audio-Unknown-2026-11-16-070900.wav");
}

TEST_F(MakeOutputURL, aNameOfOneSpaceIsAHyphenAndNotUnknown) {
  EXPECT_EQ(ofProcess(" "), "/downloads/audio---2026-11-16-070900.wav");
}

TEST_F(MakeOutputURL, theTimestampIsOfTheGivenDate) {
  EXPECT_EQ(makeOutputURL(fileManager, RecordingSource::allSystemAudio(), RecordingFormat::m4a,
                          fakes::FakeClock::epoch() + 25h),
            "/downloads/audio-SystemMix-2026-11-17-080900.m4a");
}

TEST_F(MakeOutputURL, anotherFolderMayBeGiven) {
  fileManager.existing.insert("/music/audio-SystemMix-2026-11-16-070900.m4a");
  EXPECT_EQ(makeOutputURL(fileManager, RecordingSource::allSystemAudio(), RecordingFormat::m4a,
                          fakes::FakeClock::epoch(), "/music"),
            "/music/audio-SystemMix-2026-11-16-070900-2.m4a");
}

TEST_F(MakeOutputURL, theFirstNameThatIsFreeIsTakenAndNothingElseIsAsked) {
  systemMix();
  EXPECT_THAT(journal.lines(),
              ElementsAre("downloadsDirectory() -> \"/downloads\"",
                          "nameIsTaken(\"/downloads/audio-SystemMix-2026-11-16-070900.m4a\") "
                          "-> false"));
}

TEST_F(MakeOutputURL, whenTheBaseNameAndMinus2ExistMinus3IsTaken) {
  exists("audio-SystemMix-2026-11-16-070900.m4a");
  EXPECT_EQ(systemMix(), "/downloads/audio-SystemMix-2026-11-16-070900-2.m4a");
  exists("audio-SystemMix-2026-11-16-070900-2.m4a");
  EXPECT_EQ(systemMix(), "/downloads/audio-SystemMix-2026-11-16-070900-3.m4a");
}

TEST_F(MakeOutputURL, aNameThatIsTakenByWhatDoesNotExistIsLeftOut) {
  fileManager.danglingLinks = {"/downloads/audio-SystemMix-2026-11-16-070900.m4a"};
  EXPECT_EQ(systemMix(), "/downloads/audio-SystemMix-2026-11-16-070900-2.m4a");
}

TEST_F(MakeOutputURL, aGapIsFilled) {
  exists("audio-SystemMix-2026-11-16-070900.m4a");
  exists("audio-SystemMix-2026-11-16-070900-3.m4a");
  EXPECT_EQ(systemMix(), "/downloads/audio-SystemMix-2026-11-16-070900-2.m4a");
}

TEST_F(MakeOutputURL, theCounterIsPlainDecimalWhateverTheLocale) {
  const fakes::ScopedCommaLocale locale;
  exists("audio-SystemMix-2026-11-16-070900.m4a");
  for (int counter = 2; counter < 1234; ++counter) {
    exists("audio-SystemMix-2026-11-16-070900-" + std::to_string(counter) + ".m4a");
  }
  EXPECT_EQ(systemMix(), "/downloads/audio-SystemMix-2026-11-16-070900-1234.m4a");
}

TEST_F(MakeOutputURL, wavAndM4aOfOneSecondDoNotCollide) {
  exists("audio-SystemMix-2026-11-16-070900.m4a");
  EXPECT_EQ(url(RecordingSource::allSystemAudio(), RecordingFormat::wav),
            "/downloads/audio-SystemMix-2026-11-16-070900.wav");
}

TEST_F(MakeOutputURL, withoutADownloadsFolderItIsDownloadsInTheHomeFolder) {
  fileManager.downloads = std::nullopt;
  fileManager.home = "/home/someone";
  EXPECT_EQ(systemMix(), "/home/someone/Downloads/audio-SystemMix-2026-11-16-070900.m4a");
}

TEST_F(MakeOutputURL, theFolderItselfIsNeverLookedAt) {
  fileManager.downloads = "/missing";
  EXPECT_EQ(systemMix(), "/missing/audio-SystemMix-2026-11-16-070900.m4a");
  EXPECT_THAT(journal.lines("nameIsTaken(\"/missing\")"), ElementsAre());
  EXPECT_EQ(journal.lines("nameIsTaken").size(), 1U);
}

}  // namespace
}  // namespace audrel
