// M4A files that were cut off, at any moment of their making, and what a repair makes of them.

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/files/M4aWriter.h"
#include "platform/linux/files/Mp4Boxes.h"
#include "platform/linux/files/Repair.h"
#include "tests/platform/linux/files/FakeDisk.h"
#include "tests/platform/linux/files/MemoryFile.h"
#include "tests/platform/linux/files/Recordings.h"
#include "tests/platform/linux/files/Tools.h"

namespace audrel::linuxos::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Outcome = Repair::Outcome;

constexpr std::size_t packetsPerFragment = 23;

class M4aRepairs : public FileTest {
 protected:
  M4aRepairs() {
    AudioFramework framework(log_, disk_->creator());
    const auto file = openFile(framework, "/music/recording", m4aSettings(audio_));
    EXPECT_TRUE(deliver(framework, *file, audio_).empty());
  }

  /// The recording as the first `calls` calls of its making leave it, and `part` bytes of the next.
  Contents cutOff(std::size_t calls, std::size_t part = 0) const {
    disk_->replay(calls, part, check_);
    return contentsOf(check_);
  }

  /// Its writes: beginning, fragments, index, commit.
  std::size_t writes() const { return disk_->journal.size(); }
  std::size_t fragments() const { return writes() - 3; }

  /// What whole packets of so many fragments decode to, without the padding.
  std::uint64_t framesOf(std::size_t fragments) const {
    const std::size_t all = (audio_.frames() + 1023) / 1024 + 1;
    const std::size_t packets = std::min(fragments * packetsPerFragment, all);
    return packets == 0 ? 0 : (packets - 1) * 1024;
  }

  /// Other programs read it, to its last frame.
  void expectPlain(const Contents& contents, std::uint64_t frames) const {
    save(contents, check_);
    const Probe probed = probe(check_);
    EXPECT_EQ(probed.codec, "aac");
    EXPECT_EQ(probed.duration, frames);
    const ToolResult boxes = runTool({"ffprobe", "-v", "trace", check_});
    EXPECT_EQ(boxes.errors.find("type:'moof'"), std::string::npos);
    const auto decoded = decode(check_);
    EXPECT_GE(decoded.size() / 2, frames);
    EXPECT_LT(decoded.size() / 2, frames + 1024);
    EXPECT_LT(errorRatio(audio_, decoded), 0.1);
    if (frames > 7000) {
      EXPECT_EQ(lag(audio_, decoded), 0);
      const DemuxedSegment segment = demuxWithGStreamer(check_);
      EXPECT_EQ(segment.stopNanoseconds - segment.startNanoseconds, frames * 1'000'000'000 / 48000);
    }
  }

  /// What is to be repaired may not play in FFmpeg: torn in a fragment's head, or without an index.
  enum class Start { plays, doesNotPlay };

  /// Whatever a repair of `start` is killed at, the file plays `frames` frames and can be repaired.
  void expectRepairsThatAreKilled(const Contents& start, std::uint64_t frames,
                                  Start kind = Start::plays) const {
    MemoryFile undisturbed(start);
    ASSERT_EQ(repair(undisturbed).outcome, Outcome::repaired);
    const auto& journal = undisturbed.journal();
    for (std::size_t calls = 0; calls < journal.size(); ++calls) {
      const auto& next = journal[calls];
      if (next.kind == MemoryFile::Call::Kind::sync) {
        continue;
      }
      const bool isInOnePage = next.offset == mp4::commitOffset;
      const std::size_t half = isInOnePage ? 0 : next.bytes.size() / 2;
      for (const std::size_t part : {std::size_t{0}, half}) {
        SCOPED_TRACE(testing::Message() << "after " << calls << " calls and " << part << " bytes");
        MemoryFile killed(replayed(start, journal, calls, part));
        if (calls > 0 || kind == Start::plays) {
          save(killed.contents(), check_);
          std::vector<float> decoded;
          ASSERT_NO_THROW(decoded = decodeTorn(check_));
          EXPECT_GE(decoded.size() / 2, frames);
          EXPECT_LT(errorRatio(audio_, decoded), 0.1);
        }
        EXPECT_EQ(repair(killed).outcome, Outcome::repaired);
        if (killed.contents() != undisturbed.contents()) {
          save(killed.contents(), check_);
          EXPECT_EQ(probe(check_).duration, frames);
          EXPECT_LT(errorRatio(audio_, decode(check_)), 0.1);
        }
        EXPECT_EQ(repair(killed).outcome, Outcome::whole);
      }
    }
    expectPlain(undisturbed.contents(), frames);
  }

  const std::shared_ptr<FakeDisk> disk_ = std::make_shared<FakeDisk>();
  const Audio audio_ = noise(120'000);
  const std::filesystem::path check_ = folder_ / "check.m4a";
};

TEST_F(M4aRepairs, makeAPlainFileOfWhatAKillLeaves) {
  for (std::size_t whole = 0; whole <= fragments(); ++whole) {
    SCOPED_TRACE(whole);
    MemoryFile file(cutOff(1 + whole));
    const auto repaired = repair(file);
    EXPECT_EQ(repaired.outcome, Outcome::repaired);
    EXPECT_EQ(repaired.problem, "");
    EXPECT_EQ(repaired.seconds, static_cast<double>(framesOf(whole)) / 48000);
    expectPlain(file.contents(), framesOf(whole));
  }
}

TEST_F(M4aRepairs, makeTheFileThatStoppingAfterTheSamePacketMakes) {
  const mp4::Track track = {48000, 2, 256'000, 1024, 1024, Contents(5, std::byte{0x11})};
  const auto written = [&](bool isFinished) {
    const auto disk = std::make_shared<FakeDisk>();
    M4aWriter writer(BlockFile(disk->open()), track, {});
    EXPECT_EQ(writer.start(), 0);
    for (std::size_t i = 1; i <= 3 * packetsPerFragment; ++i) {
      EXPECT_EQ(writer.add(Contents(100 + i, static_cast<std::byte>(i))), std::nullopt);
    }
    return isFinished ? (writer.finish(framesOf(3)), disk->contents) : disk->contents;
  };
  MemoryFile file(written(false));
  EXPECT_EQ(repair(file).outcome, Outcome::repaired);
  EXPECT_TRUE(file.contents() == written(true));
}

TEST_F(M4aRepairs, leaveWhatIsTornAsUnusedBytes) {
  constexpr std::size_t whole = 3;
  const auto& torn = disk_->journal[1 + whole];
  for (const std::size_t part : {std::size_t{1}, std::size_t{7}, std::size_t{8}, std::size_t{20},
                                 std::size_t{100}, torn.bytes.size() / 2, torn.bytes.size() - 1}) {
    SCOPED_TRACE(part);
    MemoryFile file(cutOff(1 + whole, part));
    EXPECT_EQ(repair(file).outcome, Outcome::repaired);
    expectPlain(file.contents(), framesOf(whole));
    for (std::size_t i = 8; i < part; ++i) {
      ASSERT_EQ(file.contents()[torn.offset + i], torn.bytes[i]);
    }
  }
}

TEST_F(M4aRepairs, takeTheIndexThatAKilledStopHadWritten) {
  MemoryFile file(cutOff(writes() - 1));
  EXPECT_EQ(repair(file), (Repair{Outcome::repaired, 2.5}));
  EXPECT_TRUE(file.contents() == disk_->contents) << "to the frame as it was recorded";
  EXPECT_THAT(file.story(), ElementsAre("sync", "write 8 at 32", "sync"));
}

TEST_F(M4aRepairs, replaceATornIndex) {
  const std::size_t size = disk_->journal[writes() - 2].bytes.size();
  for (const std::size_t part : {std::size_t{3}, std::size_t{12}, size / 2, size - 1}) {
    SCOPED_TRACE(part);
    MemoryFile file(cutOff(writes() - 2, part));
    EXPECT_EQ(repair(file).outcome, Outcome::repaired);
    expectPlain(file.contents(), framesOf(fragments()));
  }
}

TEST_F(M4aRepairs, areInAnOrderThatSurvivesAPowerFailure) {
  const std::size_t whole = disk_->journal[3].offset;
  MemoryFile file(cutOff(3, 1000));
  EXPECT_EQ(repair(file).outcome, Outcome::repaired);
  const std::size_t index = file.contents().size() - whole - 1000;
  EXPECT_THAT(file.story(),
              ElementsAre("write 8 at " + std::to_string(whole), "sync",
                          "write " + std::to_string(index) + " at " + std::to_string(whole + 1000),
                          "sync", "write 8 at 32", "sync"));
}

TEST_F(M4aRepairs, killedAtAnyWriteLeaveAFileThatPlaysAndCanBeRepaired) {
  Contents withZeros = cutOff(4);
  withZeros.resize(withZeros.size() + 5000);
  Contents withoutIndex = disk_->contents;
  withoutIndex.resize(withoutIndex.size() - 300);
  Contents withOldIndex = cutOff(3, 9000);
  MemoryFile killedBefore(withOldIndex);
  repair(killedBefore);
  withOldIndex = replayed(withOldIndex, killedBefore.journal(), 2, 300);
  expectRepairsThatAreKilled(cutOff(3), framesOf(2));
  expectRepairsThatAreKilled(cutOff(3, 3), framesOf(2));
  expectRepairsThatAreKilled(cutOff(3, 40), framesOf(2), Start::doesNotPlay);
  expectRepairsThatAreKilled(cutOff(3, 9000), framesOf(2));
  expectRepairsThatAreKilled(withZeros, framesOf(3));
  expectRepairsThatAreKilled(cutOff(writes() - 2, 200), framesOf(fragments()));
  expectRepairsThatAreKilled(cutOff(writes() - 1), audio_.frames());
  expectRepairsThatAreKilled(withOldIndex, framesOf(2));
  expectRepairsThatAreKilled(withoutIndex, framesOf(fragments()), Start::doesNotPlay);
}

TEST_F(M4aRepairs, killedAgainAndAgainEndInAPlainFile) {
  Contents contents = cutOff(3, 9000);
  for (std::size_t kill = 1; kill <= 5; ++kill) {
    MemoryFile file(contents);
    ASSERT_EQ(repair(file).outcome, Outcome::repaired);
    contents = replayed(contents, file.journal(), file.journal().size() - 4, 100 * kill);
  }
  MemoryFile file(contents);
  EXPECT_EQ(repair(file).outcome, Outcome::repaired);
  expectPlain(file.contents(), framesOf(2));
}

TEST_F(M4aRepairs, doNotTouchWhatIsWhole) {
  MemoryFile stopped(disk_->contents);
  EXPECT_EQ(repair(stopped), (Repair{Outcome::whole, 2.5}));
  EXPECT_THAT(stopped.story(), IsEmpty());

  MemoryFile file(cutOff(3, 77));
  const auto first = repair(file);
  MemoryFile repaired(file.contents());
  EXPECT_EQ(repair(repaired), (Repair{Outcome::whole, first.seconds}));
  EXPECT_THAT(repaired.story(), IsEmpty());
}

TEST_F(M4aRepairs, doNotTouchAWholeFileThatGotATagLater) {
  Contents contents = disk_->contents;
  const std::size_t index = disk_->journal[writes() - 2].offset + 8;
  ByteWriter tag;
  {
    const mp4::Box box(tag, "udta");
    tag.zeros(100);
  }
  contents.insert(contents.end(), tag.bytes().begin(), tag.bytes().end());
  ByteWriter size;
  size.big(static_cast<std::uint32_t>(contents.size() - index));
  std::ranges::copy(size.bytes(), contents.begin() + static_cast<std::ptrdiff_t>(index));
  MemoryFile file(contents);
  EXPECT_EQ(repair(file), (Repair{Outcome::whole, 2.5}));
  EXPECT_THAT(file.story(), IsEmpty());
}

TEST_F(M4aRepairs, leaveOutFragmentsAtTheEndWhoseBytesAreMissing) {
  const auto zeroed = [&](std::size_t fragment, std::size_t from, std::size_t count) {
    Contents contents = cutOff(1 + 4);
    const auto begin =
        contents.begin() + static_cast<std::ptrdiff_t>(disk_->journal[1 + fragment].offset + from);
    std::fill_n(begin, count, std::byte{0});
    MemoryFile file(contents);
    EXPECT_EQ(repair(file).outcome, Outcome::repaired);
    save(file.contents(), check_);
    return probe(check_).duration;
  };
  const std::size_t size = disk_->journal[4].bytes.size();
  EXPECT_EQ(zeroed(3, 2000, 4096), framesOf(3)) << "in the middle of the last";
  EXPECT_EQ(zeroed(3, size - 100, 100), framesOf(3)) << "at its end";
  EXPECT_EQ(zeroed(3, 0, size), framesOf(3)) << "all of it";
  EXPECT_EQ(zeroed(2, 2000, size), framesOf(2)) << "the last two";
  EXPECT_EQ(zeroed(1, 2000, 4096), framesOf(4)) << "before others that are whole";
}

TEST_F(M4aRepairs, findNoHolesInWhatTheEncoderMakes) {
  for (const bool isSilent : {false, true}) {
    Audio audio = isSilent ? Audio{48000, 2, std::vector<float>(240'000)} : audio_;
    const auto disk = std::make_shared<FakeDisk>();
    AudioFramework framework(log_, disk->creator());
    const auto recording = openFile(framework, "/music/recording", m4aSettings(audio, 64'000));
    EXPECT_TRUE(deliver(framework, *recording, audio).empty());
    ASSERT_EQ(disk->journal.size(), 1 + 5U);
    for (std::size_t calls = 2; calls <= disk->journal.size(); ++calls) {
      disk->replay(calls, 0, check_);
      MemoryFile file(contentsOf(check_));
      EXPECT_EQ(repair(file).seconds * 48000, framesOf(calls - 1));
    }
  }
}

TEST_F(M4aRepairs, recoverFromEightBytesThatCameBeforeTheirIndex) {
  const std::size_t index = disk_->journal[writes() - 2].offset + 8;
  const auto damaged = [&](std::size_t size, std::size_t zerosFrom) {
    Contents contents = disk_->contents;
    contents.resize(size);
    std::fill(contents.begin() + static_cast<std::ptrdiff_t>(std::min(zerosFrom, size)),
              contents.end(), std::byte{0});
    return contents;
  };
  const std::size_t all = disk_->contents.size();
  const std::size_t third = disk_->journal[3].offset;
  const std::vector<std::pair<Contents, std::size_t>> files = {
      {damaged(all, index), fragments()}, {damaged(all - 1, all), fragments()},
      {damaged(index, all), fragments()}, {damaged(index + 3, all), fragments()},
      {damaged(third + 500, all), 2},     {damaged(all, third + 500), 2},
  };
  for (const auto& [contents, whole] : files) {
    MemoryFile file(contents);
    EXPECT_EQ(repair(file).outcome, Outcome::repaired);
    expectPlain(file.contents(), framesOf(whole));
  }
}

TEST_F(M4aRepairs, thatFailAtAnyStepLeaveAFileThatPlaysAndCanBeRepaired) {
  const Contents start = cutOff(3, 1000);
  for (std::size_t number = 1; number <= 6; ++number) {
    for (const int code : {ENOSPC, EIO}) {
      SCOPED_TRACE(testing::Message() << "call " << number << ", " << code);
      MemoryFile file(start);
      file.fails = [&](std::size_t n) { return n >= number ? code : 0; };
      const auto failed = repair(file);
      EXPECT_EQ(failed.outcome, Outcome::unreadable);
      EXPECT_THAT(failed.problem,
                  testing::HasSubstr(code == EIO ? "reports a fault" : "no space left"));
      save(file.contents(), check_);
      EXPECT_GE(decodeTorn(check_).size() / 2, framesOf(2));
      MemoryFile again(file.contents());
      EXPECT_EQ(repair(again).outcome, number == 6 ? Outcome::whole : Outcome::repaired);
      expectPlain(again.contents(), framesOf(2));
    }
  }
}

TEST_F(M4aRepairs, thatCannotLengthenTheFileLeaveNothingBehind) {
  const Contents start = cutOff(3);
  MemoryFile file(start);
  file.longestCall = 100;
  file.fails = [](std::size_t number) { return number > 2 ? ENOSPC : 0; };
  EXPECT_EQ(repair(file).outcome, Outcome::unreadable);
  EXPECT_TRUE(file.contents() == start);
}

TEST_F(M4aRepairs, writeAgainWhatOneFailedFlushHasDropped) {
  const Contents start = cutOff(3, 1000);
  MemoryFile undisturbed(start);
  repair(undisturbed);
  for (const std::size_t flush : {2U, 4U, 6U}) {
    MemoryFile file(start);
    file.fails = [&](std::size_t n) { return n == flush ? EIO : 0; };
    EXPECT_EQ(repair(file).outcome, Outcome::repaired);
    EXPECT_TRUE(file.contents() == undisturbed.contents());
    EXPECT_EQ(file.journal().size(), undisturbed.journal().size() + 1);
    EXPECT_EQ(file.journal()[flush - 2], file.journal()[flush - 1]) << "the same write twice";
  }
}

TEST_F(M4aRepairs, needNoFileSystemThatCanFlush) {
  for (const int code : {EINVAL, ENOSYS, EOPNOTSUPP}) {
    MemoryFile file(cutOff(3));
    file.fails = [code](std::size_t n) { return n % 2 == 0 ? code : 0; };
    EXPECT_EQ(repair(file).outcome, Outcome::repaired);
  }
}

TEST_F(M4aRepairs, areTheSameThroughInterruptedAndShortCalls) {
  MemoryFile undisturbed(cutOff(3, 1000));
  const auto wanted = repair(undisturbed);
  MemoryFile disturbed(cutOff(3, 1000));
  disturbed.longestCall = 37;
  disturbed.isInterrupted = true;
  EXPECT_EQ(repair(disturbed), wanted);
  EXPECT_TRUE(disturbed.contents() == undisturbed.contents());
}

TEST_F(M4aRepairs, tellThatAFileCannotBeRead) {
  MemoryFile file(cutOff(3));
  file.readCode = EIO;
  EXPECT_EQ(repair(file),
            (Repair{Outcome::unreadable, 0,
                    "The disk that holds \"/music\" reports a fault. Check that it is connected "
                    "and healthy."}));
}

TEST_F(M4aRepairs, leaveWhatDiffersInTheBeginningAlone) {
  const Contents start = cutOff(3);
  const std::size_t beginning = disk_->journal[0].bytes.size();
  std::size_t taken = 0;
  for (std::size_t i = 0; i < beginning; ++i) {
    MemoryFile file([&] {
      Contents changed = start;
      changed[i] ^= std::byte{0x55};
      return changed;
    }());
    const auto outcome = repair(file).outcome;
    taken += outcome == Outcome::repaired ? 1 : 0;
    EXPECT_TRUE(outcome == Outcome::repaired || file.story().empty());
  }
  EXPECT_EQ(taken, 2 + 4 + 5U) << "channels, frames of a packet, configuration: told once each";
}

TEST_F(M4aRepairs, leaveFragmentsAloneThatWereChangedWhereOthersFollow) {
  const auto changed = [&](Contents contents, std::size_t fragment, std::size_t byte) {
    contents[disk_->journal[1 + fragment].offset + byte] ^= std::byte{0x55};
    return contents;
  };
  const Contents start = cutOff(1 + 4);
  std::size_t taken = 0;
  for (std::size_t i = 0; i < mp4::fragmentHeadSize(packetsPerFragment); ++i) {
    MemoryFile file(changed(start, 1, i));
    const auto outcome = repair(file).outcome;
    taken += outcome == Outcome::repaired ? 1 : 0;
    EXPECT_TRUE(outcome == Outcome::repaired || file.story().empty()) << i;
  }
  EXPECT_EQ(taken, 4 + 4U) << "the sizes of its two boxes: without them no reader finds the others";

  MemoryFile last(changed(start, 3, 20));
  EXPECT_EQ(repair(last).seconds * 48000, framesOf(3));

  Contents withoutIndex = changed(disk_->contents, 1, 20);
  withoutIndex.resize(withoutIndex.size() - 300);
  MemoryFile both(withoutIndex);
  EXPECT_EQ(repair(both).outcome, Outcome::notOurs);
  EXPECT_THAT(both.story(), IsEmpty());
}

TEST_F(M4aRepairs, takeNoNumberOnTrust) {
  std::vector<Contents> files;
  for (std::size_t calls = 1; calls <= writes(); ++calls) {
    files.push_back(cutOff(calls));
  }
  std::minstd_rand random(7);
  const auto below = [&](std::size_t count) { return random() % count; };
  for (int i = 0; i < 3000; ++i) {
    Contents contents = files[below(files.size())];
    for (std::size_t changes = 1 + below(3); changes > 0; --changes) {
      constexpr std::array values = {0, 1, 7, 8, 0x7F, 0x80, 0xFF};
      const std::size_t near =
          std::min<std::size_t>(contents.size(), below(2) == 0 ? 900 : contents.size());
      std::fill_n(contents.begin() + static_cast<std::ptrdiff_t>(below(near - 8)), 1 + below(8),
                  static_cast<std::byte>(values[below(values.size())]));
    }
    if (below(4) == 0) {
      contents.resize(below(contents.size()));
    }
    MemoryFile file(contents);
    const auto outcome = repair(file).outcome;
    if (outcome == Outcome::repaired) {
      MemoryFile again(file.contents());
      ASSERT_EQ(repair(again).outcome, Outcome::whole) << i;
    } else {
      ASSERT_THAT(file.story(), IsEmpty()) << i;
    }
  }
}

}  // namespace
}  // namespace audrel::linuxos::test
