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
            R"("underruns": 2, "lostFrames": 1024, "peakDBFS": -6.02})");
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
  report.audio.firstFailure = "No space left\x07.";
  EXPECT_THAT(
      warningsOf(report),
      ElementsAre("3 writes failed, so audio may be missing; the rest of the file is kept. The "
                  "first failure: No space left\\x07.",
                  "4800 frames were not delivered in time (0.100 s); silence stands in their "
                  "place. Is the computer busy?",
                  "1 cycle of audio was dropped for lack of memory."));
}

TEST(Report, countsOneAndMany) {
  auto report = tenSeconds();
  report.lostFrames = 1;
  report.underruns = 2;
  report.audio.failedWrites = 1;
  EXPECT_THAT(
      warningsOf(report),
      ElementsAre(HasSubstr("1 write failed"), HasSubstr("1 frame was not delivered in time"),
                  "2 cycles of audio were dropped for lack of memory."));
}

}  // namespace
}  // namespace audrel::cli
