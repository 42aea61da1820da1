#include "platform/linux/files/Healing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include "tests/support/KeptLog.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Waiting.h"

namespace audrel::linuxos {
namespace {

using namespace std::chrono_literals;
using testing::SizeIs;

class HealingTest : public testing::Test {
 protected:
  void SetUp() override {
    const auto file = home / "talk.wav";
    std::ofstream(file) << "audio";
    std::string problem;
    ASSERT_TRUE(entries.add(file, statusOf(file)->identity, &problem)) << problem;
  }

  /// Reads until a read fails, as a repair of a file without end would.
  Repair readUntilFailure(OpenFile& file) {
    ++repairs;
    std::byte byte{};
    while (goesOn && file.pread(&byte, 1, 0) >= 0) {
    }
    thread = std::this_thread::get_id();
    return {.outcome = Repair::Outcome::unreadable};
  }

  support::TemporaryFolder home;
  EntryFolder entries{home / "state", [] { return Machine{std::string(32, '0'), "boot"}; }};
  support::KeptLog log;
  std::atomic<int> repairs = 0;
  std::atomic<bool> goesOn = true;
  std::thread::id thread;
  Healing healing{Healer(entries, log.makeLogger("", ""),
                         {.now = [] { return std::chrono::system_clock::now() + 1h; },
                          .repair = [this](OpenFile& file) { return readUntilFailure(file); }}),
                  log.makeLogger("", "")};
};

TEST_F(HealingTest, keepsNobodyWaitingAndEndsAtTheNextCall) {
  healing.begin();
  ASSERT_TRUE(support::waitFor([this] { return repairs == 1; }));
  healing.end();
  EXPECT_NE(thread, std::this_thread::get_id());
  EXPECT_THAT(entries.entries(), SizeIs(1));
  EXPECT_THAT(log.lines(), testing::IsEmpty());
}

TEST_F(HealingTest, isOneAtATimeAndThenAnother) {
  healing.begin();
  ASSERT_TRUE(support::waitFor([this] { return repairs == 1; }));
  healing.begin();
  goesOn = false;
  ASSERT_TRUE(support::waitFor([this] {
    healing.begin();
    return repairs > 1;
  }));
  healing.end();
}

/// The file was written a moment ago when it is looked at first, and long ago from then on.
class Restless : public HealingTest {
 protected:
  Healer healer() {
    return {entries,
            log.makeLogger("", ""),
            {.now = [this] { return std::chrono::system_clock::now() + (looks > 1 ? 1h : 0h); },
             .status =
                 [this](const std::filesystem::path& path) {
                   ++looks;
                   return statusOf(path);
                 },
             .repair = [this](OpenFile& file) { return readUntilFailure(file); }}};
  }

  std::atomic<int> looks = 0;
};

TEST_F(Restless, aFileIsLookedAtOnceMoreAfterItsRest) {
  goesOn = false;
  Healing patient(healer(), log.makeLogger("", ""), 1ms);
  patient.begin();
  EXPECT_TRUE(support::waitFor([this] { return repairs == 1; }));
  patient.end();
  EXPECT_EQ(repairs, 1);
}

TEST_F(Restless, aFileKeepsNobodyWaitingForItsRest) {
  Healing patient(healer(), log.makeLogger("", ""), 1h);
  patient.begin();
  ASSERT_TRUE(support::waitFor([this] { return looks == 1; }));
  patient.end();
  EXPECT_EQ(repairs, 0);
}

TEST_F(HealingTest, isOverForGoodOnceItWasEnded) {
  healing.end();
  healing.begin();
  healing.end();
  EXPECT_EQ(repairs, 0);
}

}  // namespace
}  // namespace audrel::linuxos
