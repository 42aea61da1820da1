// M4A files that were cut off, at any moment of their making, and what a repair makes of them.

#include <gmock/gmock.h>

#include <algorithm>
#include <cerrno>
#include <random>
#include <string>
#include <vector>

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

}  // namespace
}  // namespace audrel::linuxos::test
