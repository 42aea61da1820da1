#include "tests/platform/linux/program/harness/WavRecording.h"

#include <string>

#include "tests/platform/linux/pipewire/harness/RecordedFile.h"
#include "tests/platform/linux/pipewire/harness/Segments.h"
#include "tests/platform/linux/pipewire/harness/Track.h"

namespace audrel::programtest {

void WavRecording::SetUp() {
  Session::SetUp();
  startRecorded();
}

void WavRecording::startRecorded() {
  startProgram();
  openMenu();
  chooseWavOfWebRadio();
  startRecording();
  ASSERT_TRUE(player.waitForMore("music", 3 * second));
}

void WavRecording::expectRecordedUntil(std::uint64_t frame) const {
  pwtest::Audio audio = pwtest::readWav(recording());
  pwtest::removeHalfLinkedStarts(audio);
  std::string problem;
  const auto track = pwtest::onlyTrack(audio, &problem);
  ASSERT_TRUE(track) << problem;
  EXPECT_LE(track->begin, pwtest::longestLead);
  EXPECT_EQ(track->silent, 0U) << problem;
  EXPECT_EQ(track->end, pwtest::framesOf(audio)) << problem;
  EXPECT_GE(track->first.position + (track->end - track->begin), frame) << problem;
}

void WavRecording::expectStopsWhole() {
  ASSERT_TRUE(hearASecond());
  const std::uint64_t frame = played();
  stopRecording();
  expectRecordedUntil(frame - pwtest::onTheWay);
}

}  // namespace audrel::programtest
