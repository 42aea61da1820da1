// WAV files that were cut off, and what a repair makes of them.

#include <gmock/gmock.h>

#include <algorithm>
#include <cerrno>
#include <random>
#include <string>
#include <vector>

#include "platform/linux/files/Repair.h"
#include "platform/linux/files/WavHeader.h"
#include "tests/platform/linux/files/FakeDisk.h"
#include "tests/platform/linux/files/MemoryFile.h"
#include "tests/platform/linux/files/Recordings.h"
#include "tests/platform/linux/files/Tools.h"

namespace audrel::linuxos::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Outcome = Repair::Outcome;

constexpr std::size_t headerSize = 80;

class WavRepairs : public FileTest {
 protected:
  WavRepairs() {
    AudioFramework framework(log_, disk_->creator());
    const auto file = openFile(framework, "/music/recording", wavSettings(audio_));
    EXPECT_TRUE(deliver(framework, *file, audio_).empty());
  }

  Contents cutOff(std::size_t calls, std::size_t part = 0) const {
    disk_->replay(calls, part, check_);
    return contentsOf(check_);
  }

  /// Other programs read its first `frames` frames, and no more.
  void expectWhole(const Contents& contents, std::size_t frames) const {
    save(contents, check_);
    auto expected = asSixteenBit(audio_.samples);
    expected.resize(2 * frames);
    EXPECT_TRUE(readWav(check_).samples == expected);
    if (frames > 0) {
      EXPECT_EQ(probe(check_).duration, frames);
      EXPECT_TRUE(asSixteenBit(decode(check_)) == expected);
      const ToolResult sox = runTool({"soxi", "-s", check_});
      EXPECT_EQ(sox.output, std::to_string(frames) + "\n") << sox.errors;
      EXPECT_EQ(sox.errors, "");
    }
  }

  const std::shared_ptr<FakeDisk> disk_ = std::make_shared<FakeDisk>();
  const Audio audio_ = noise(120'000);
  const std::filesystem::path check_ = folder_ / "check.wav";
};

TEST_F(WavRepairs, countWhatIsThereWhereverItWasCutOff) {
  const std::size_t calls = disk_->journal.size();
  for (std::size_t whole = 1; whole <= calls; ++whole) {
    for (const std::size_t part : {0U, 4711U}) {
      const bool isCutInOnePage = whole < calls && disk_->journal[whole].offset == 0;
      if (part > 0 && (whole == calls || isCutInOnePage)) {
        continue;
      }
      SCOPED_TRACE(testing::Message() << whole << " calls and " << part << " bytes");
      const Contents start = cutOff(whole, part);
      const std::size_t frames = (start.size() - headerSize) / 4;
      MemoryFile file(start);
      const auto repaired = repair(file);
      EXPECT_EQ(repaired.seconds, static_cast<double>(frames) / 48000);
      EXPECT_EQ(repaired.outcome == Outcome::whole, file.story().empty());
      expectWhole(file.contents(), frames);
      EXPECT_EQ(file.contents().size(), start.size()) << "half a frame stays";
      MemoryFile again(file.contents());
      EXPECT_EQ(repair(again), (Repair{Outcome::whole, repaired.seconds}));
      EXPECT_THAT(again.story(), IsEmpty());
    }
  }
}

TEST_F(WavRepairs, countNoMoreThanIsThere) {
  Contents start = disk_->contents;
  start.resize(headerSize + 4 * 50'000 + 3);
  MemoryFile file(start);
  EXPECT_EQ(repair(file).outcome, Outcome::repaired);
  expectWhole(file.contents(), 50'000);
}

TEST_F(WavRepairs, makeTheSamplesDurableBeforeTheHeaderCountsThem) {
  MemoryFile file(cutOff(2));
  EXPECT_EQ(repair(file), (Repair{Outcome::repaired, 0.5}));
  EXPECT_THAT(file.story(), ElementsAre("sync", "write 80 at 0", "sync"));
  EXPECT_TRUE(file.contents() == cutOff(3)) << "the header that recording would have written";
}

TEST_F(WavRepairs, thatFailLeaveTheFileAsItWas) {
  const Contents start = cutOff(3, 333);
  for (const std::size_t number : {1U, 2U, 3U}) {
    MemoryFile file(start);
    file.fails = [&](std::size_t n) { return n == number || n == number + 2 ? EIO : 0; };
    EXPECT_EQ(repair(file).outcome, Outcome::unreadable);
    EXPECT_TRUE(file.contents() == start) << number;
  }
}

TEST_F(WavRepairs, leaveAHeaderAloneThatDiffersInOneByte) {
  const Contents start = cutOff(4);
  std::size_t taken = 0;
  for (std::size_t i = 0; i < headerSize; ++i) {
    Contents changed = start;
    changed[i] ^= std::byte{0x55};
    MemoryFile file(changed);
    const auto outcome = repair(file).outcome;
    taken += outcome == Outcome::repaired ? 1 : 0;
    EXPECT_TRUE(outcome == Outcome::repaired || file.story().empty()) << i;
  }
  EXPECT_EQ(taken, 0U);
}

TEST_F(WavRepairs, takeNoNumberOnTrust) {
  std::minstd_rand random(7);
  const auto below = [&](std::size_t count) { return random() % count; };
  const Contents start = cutOff(4);
  for (int i = 0; i < 20'000; ++i) {
    Contents contents(start.begin(), start.begin() + headerSize + 400);
    if (below(2) == 0) {
      const WavFormat format = {static_cast<std::uint32_t>(below(3) * 48000),
                                static_cast<std::uint16_t>(1 + below(5) * 16'383)};
      ByteWriter header;
      writeWavHeader(header, format, std::uint64_t{below(1000)} << below(60));
      std::ranges::copy(header.bytes(), contents.begin());
    }
    std::fill_n(contents.begin() + static_cast<std::ptrdiff_t>(below(headerSize)), below(3),
                static_cast<std::byte>(below(256)));
    contents.resize(below(4) == 0 ? below(contents.size()) : contents.size());
    MemoryFile file(contents);
    if (repair(file).outcome == Outcome::repaired) {
      MemoryFile again(file.contents());
      ASSERT_EQ(repair(again).outcome, Outcome::whole) << i;
      ASSERT_EQ(file.contents().size(), contents.size()) << i;
    } else {
      ASSERT_THAT(file.story(), IsEmpty()) << i;
    }
  }
}

TEST_F(WavRepairs, knowEveryNumberOfChannels) {
  for (const std::size_t channels : {1U, 2U, 3U, 6U, 8U, 32U}) {
    const WavFormat format = {44100, static_cast<std::uint16_t>(channels)};
    ByteWriter out;
    writeWavHeader(out, format, 0);
    out.zeros(format.bytesPerFrame() * 441);
    MemoryFile file({out.bytes().begin(), out.bytes().end()});
    EXPECT_EQ(repair(file), (Repair{Outcome::repaired, 0.01}));
    save(file.contents(), check_);
    EXPECT_EQ(readWav(check_).samples.size(), channels * 441);
  }
}

}  // namespace
}  // namespace audrel::linuxos::test
