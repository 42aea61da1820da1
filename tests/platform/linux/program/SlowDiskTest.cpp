// A disk that takes its time when a recording is to be saved.

#include <gmock/gmock.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <system_error>

#include "tests/platform/linux/pipewire/harness/RecordedFile.h"
#include "tests/platform/linux/program/harness/WavRecording.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Waiting.h"

namespace audrel::programtest {
namespace {

using pwtest::onTheWay;
using testing::HasSubstr;
using testing::MatchesRegex;

const std::string warning =
    "The disk is slow: the recording is not yet safe on it. Do not switch the computer off.";

class SlowDisk : public WavRecording {
 protected:
  void SetUp() override {
    environment["LD_PRELOAD"] = AUDREL_SLOW_DISK_MODULE;
    environment["AUDREL_SLOW_DISK"] = marker;
    WavRecording::SetUp();
  }

  void makeSlow() const { std::ofstream stream(marker); }

  void expectThatEachFlushEnded() const {
    std::ostringstream flushes;
    flushes << std::ifstream(marker).rdbuf();
    EXPECT_THAT(flushes.str(), MatchesRegex("bebe(be)*")) << "the samples, then the header";
  }

  const std::filesystem::path marker = home.path() / "slow";
};

TEST_F(SlowDisk, isWaitedForAndTold) {
  auto desktop = notifications();
  const std::uint64_t frame = played();
  makeSlow();
  choose("Stop Recording");
  EXPECT_THAT(nextCall(desktop, "Notify"),
              HasSubstr("'Saving the recording', '" + warning + "', [], {}, 0)"));
  EXPECT_THAT(nextCall(desktop, "CloseNotification"), MatchesRegex("\\(.+,\\)"));
  EXPECT_THAT(nextCall(desktop, "Notify"), HasSubstr("'Recording saved', "));
  expectThatEachFlushEnded();
  expectRecordedUntil(frame - onTheWay);
}

TEST_F(SlowDisk, isWaitedForWhateverSignalsCome) {
  auto desktop = notifications();
  const std::uint64_t frame = played();
  makeSlow();
  kill(program->pid(), SIGTERM);
  EXPECT_THAT(nextCall(desktop, "Notify"), HasSubstr("'Saving the recording', "));
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
    kill(program->pid(), signal);
  }
  EXPECT_EQ(waitForEnd(), 0);
  expectThatEachFlushEnded();
  expectRecordedUntil(frame - onTheWay);
}

/// So that a kill costs no more than on another disk.
TEST_F(SlowDisk, holdsUpNoWritingWhileItRecords) {
  played();
  makeSlow();
  const auto flushes = [this] {
    std::ostringstream text;
    text << std::ifstream(marker).rdbuf();
    return text.str();
  };
  const auto growsDuringAFlush = [&] {
    std::error_code error;
    const auto size = std::filesystem::file_size(recording(), error);
    const std::string before = flushes();
    support::waitFor([&] {
      return std::filesystem::file_size(recording(), error) > size || flushes() != before;
    });
    const bool hasGrown = std::filesystem::file_size(recording(), error) > size;
    return hasGrown && before.ends_with('b') && flushes() == before;
  };
  EXPECT_TRUE(support::waitFor(growsDuringAFlush));
  std::error_code error;
  std::filesystem::remove(marker, error);
  stopRecording();
}

TEST_F(SlowDisk, isWaitedForInATerminalToo) {
  const auto file = home.path() / "take.wav";
  const auto command =
      support::ChildProcess::start({.arguments = {AUDREL_COMMAND, "--output", file, "--quiet"},
                                    .environment = environment,
                                    .keepsErrors = true});
  ASSERT_NE(command, nullptr);
  ASSERT_TRUE(support::waitFor([&] {
    std::error_code error;
    const auto size = std::filesystem::file_size(file, error);
    return !error && size > 200'000;
  }));
  makeSlow();
  command->signal(SIGINT);
  const std::string line = "audrel-record: " + warning + "\n";
  EXPECT_TRUE(support::waitFor([&] { return command->errorOutput() == line; }))
      << command->errorOutput();
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGINT}) {
    command->signal(signal);
  }
  EXPECT_EQ(command->waitForEnd(), 0);
  EXPECT_EQ(command->errorOutput(), line);
  std::error_code error;
  EXPECT_GT(std::filesystem::file_size(file, error), 200'000U);
  std::filesystem::remove(marker, error);
  stopRecording();
}

}  // namespace
}  // namespace audrel::programtest
