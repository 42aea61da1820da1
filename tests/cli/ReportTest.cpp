#include "cli/Report.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace audrel::cli {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

Report tenSeconds() {
  Report report;
  report.file = "/home/me/Downloads/take.wav";
  report.audio.frames = 480'000;
  report.audio.sampleRate = 48'000;
  report.audio.peak = 0.5F;
  report.fileSize = 1'920'044;
  return report;
}

TEST(Report, textHasFileLengthSizeAndPeak) {
  EXPECT_EQ(textOf(tenSeconds()),
            "Saved /home/me/Downloads/take.wav: 10.0 s, 1.9 MB, peak -6.0 dBFS");
  auto report = tenSeconds();
  report.audio.frames = 48'000 * 3723;
  EXPECT_THAT(textOf(report), HasSubstr("take.wav: 1:02:03, "));
}

TEST(Report, textMakesTheFilesNameSafe) {
  auto report = tenSeconds();
  report.file = "a\x1b[2J.wav";
  EXPECT_THAT(textOf(report), HasSubstr("Saved a\\x1b[2J.wav:"));
}

TEST(Report, jsonIsOneObject) {
  auto report = tenSeconds();
  report.underruns = 2;
  report.lostFrames = 1024;
  EXPECT_EQ(jsonOf(report),
            R"({"file": "/home/me/Downloads/take.wav", "seconds": 10, "frames": 480000, )"
            R"("complete": false, "missingFrames": 0, "failedWrites": 0, )"
            R"("underruns": 2, "lostFrames": 1024, "peakDBFS": -6.02})");
}

TEST(Report, tellsTheLengthOfTheFileAndNotOfWhatCouldNotBeWritten) {
  auto report = tenSeconds();
  report.audio.failedWrites = 9;
  report.loss = {.missing = 96'000, .silenced = 48'000, .why = "The disk is full."};
  EXPECT_EQ(textOf(report), "Saved /home/me/Downloads/take.wav: 8.0 s, 1.9 MB, peak -6.0 dBFS");
  EXPECT_EQ(jsonOf(report),
            R"({"file": "/home/me/Downloads/take.wav", "seconds": 8, "frames": 384000, )"
            R"("complete": false, "missingFrames": 144000, "failedWrites": 9, )"
            R"("underruns": 0, "lostFrames": 0, "peakDBFS": -6.02})");
}

TEST(Report, isCompleteWhenAllThatPlayedIsInTheFile) {
  auto report = tenSeconds();
  report.audio.failedWrites = 9;
  EXPECT_TRUE(report.isComplete());
  auto lacking = report;
  lacking.lostFrames = 1;
  EXPECT_FALSE(lacking.isComplete());
  lacking = report;
  lacking.underruns = 1;
  EXPECT_FALSE(lacking.isComplete());
}

TEST(Report, jsonHasNoPeakForSilence) {
  auto report = tenSeconds();
  report.audio.peak = 0.0F;
  EXPECT_THAT(jsonOf(report), HasSubstr("\"peakDBFS\": null"));
  report.audio.peak.reset();
  EXPECT_THAT(jsonOf(report), HasSubstr("\"peakDBFS\": null"));
}

TEST(Report, warnsOfNothingWhenAllIsWell) {
  EXPECT_THAT(warningsOf(tenSeconds()), IsEmpty());
}

TEST(Report, warnsOfSilence) {
  auto report = tenSeconds();
  report.audio.peak = 0.0F;
  EXPECT_THAT(warningsOf(report), ElementsAre(HasSubstr("digital silence")));
}

TEST(Report, warnsOfAnEmptyRecording) {
  Report report;
  EXPECT_THAT(warningsOf(report), ElementsAre(HasSubstr("is empty")));
}

TEST(Report, warnsOfWhatIsMissing) {
  auto report = tenSeconds();
  report.lostFrames = 4800;
  report.underruns = 1;
  report.audio.failedWrites = 3;
  report.loss = {.missing = 144'000, .silenced = 1, .why = "No space left\x07."};
  EXPECT_THAT(
      warningsOf(report),
      ElementsAre(
          "Missing in the file: 3.0 s of audio (144000 frames), which could not be written. "
          "No space left\\x07.",
          "Silence in the file in place of 0.0 s of audio (1 frame), which could not be "
          "written. No space left\\x07.",
          "4800 frames were not delivered in time (0.100 s); silence stands in their "
          "place. The computer was busy, or the audio server away.",
          "1 cycle of audio was dropped for lack of memory."));
}

TEST(Report, saysThatTheProgramWasStoppedWhereFramesWereLostMeanwhile) {
  auto report = tenSeconds();
  report.wasStopped = true;
  EXPECT_THAT(warningsOf(report), IsEmpty());
  report.lostFrames = 4800;
  EXPECT_THAT(
      warningsOf(report),
      ElementsAre("4800 frames were not delivered in time (0.100 s); silence stands in their "
                  "place. The program was stopped for a while, by Ctrl-Z for instance."));
}

TEST(Report, tellsTheFirstFailureWhereTheFilesEndingSaysNothing) {
  auto report = tenSeconds();
  report.audio.firstFailure = "The audio could not be encoded.";
  report.loss.missing = 4800;
  EXPECT_THAT(warningsOf(report),
              ElementsAre("Missing in the file: 0.1 s of audio (4800 frames), which could not be "
                          "written. The audio could not be encoded."));
}

TEST(Report, tellsOfAFileThatCouldNotBeFinished) {
  auto report = tenSeconds();
  report.loss.why = "The disk is full.";
  EXPECT_THAT(warningsOf(report), ElementsAre("The file holds all of the audio, but could not be "
                                              "finished. The disk is full."));
}

TEST(Report, countsOneAndMany) {
  auto report = tenSeconds();
  report.lostFrames = 1;
  report.underruns = 2;
  report.audio.failedWrites = 1;
  EXPECT_THAT(warningsOf(report),
              ElementsAre("1 write failed, but nothing is missing: it was all written later.",
                          HasSubstr("1 frame was not delivered in time"),
                          "2 cycles of audio were dropped for lack of memory."));
}

}  // namespace
}  // namespace audrel::cli
