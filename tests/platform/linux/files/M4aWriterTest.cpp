#include "platform/linux/files/M4aWriter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <string_view>

#include "platform/linux/aac/AacEncoder.h"
#include "platform/linux/files/M4aFrameWriter.h"
#include "tests/platform/linux/files/FakeDisk.h"
#include "tests/platform/linux/files/Recordings.h"
#include "tests/platform/linux/files/Tools.h"
#include "tests/support/TemporaryFolder.h"

namespace audrel::linuxos::test {
namespace {

constexpr AacEncoder::Settings settings = {48000, 2, 256'000};

class M4aWriters : public testing::Test {
 protected:
  M4aWriters() {
    std::string problem;
    const auto encoder = AacEncoder::open(settings, &problem);
    writer_.emplace(BlockFile(disk_->open()), trackOf(*encoder, settings),
                    [] { return AacEncoder::silentPacket(settings); });
    EXPECT_EQ(writer_->start(), 0);
  }

  void add(int packets) {
    for (int i = 0; i < packets; ++i) {
      EXPECT_EQ(writer_->add(silence_), std::nullopt);
    }
  }

  Probe finished() {
    disk_->save(folder_ / "a.m4a");
    return probe(folder_ / "a.m4a");
  }

  /// The 32-bit numbers of the last box of a type: behind its version, to its end.
  std::vector<std::uint32_t> lastBox(std::string_view type) const {
    const auto& contents = disk_->contents;
    const auto name = std::as_bytes(std::span(type));
    const auto found = std::find_end(contents.begin(), contents.end(), name.begin(), name.end());
    const auto number = [](auto at) {
      std::uint32_t value = 0;
      for (int i = 0; i < 4; ++i) {
        value = value << 8U | std::to_integer<std::uint32_t>(*at++);
      }
      return value;
    };
    std::vector<std::uint32_t> numbers;
    const auto begin = found - 4;
    for (auto at = begin + 12; at < begin + number(begin); at += 4) {
      numbers.push_back(number(at));
    }
    return numbers;
  }

  support::TemporaryFolder folder_;
  std::shared_ptr<FakeDisk> disk_ = std::make_shared<FakeDisk>();
  const std::vector<std::byte> silence_ = AacEncoder::silentPacket(settings);
  std::optional<M4aWriter> writer_;
};

TEST_F(M4aWriters, packetsLastAsLongAsTheMediaTogether) {
  add(48);
  EXPECT_EQ(writer_->finish(48'000).frames, 48'000U);
  EXPECT_EQ(lastBox("stts"), (std::vector<std::uint32_t>{2, 47, 1024, 1, 896}));
  EXPECT_EQ(lastBox("stsc"), (std::vector<std::uint32_t>{2, 1, 23, 1, 3, 2, 1}));
}

TEST_F(M4aWriters, packetsThatNoFrameNeedsAreLeftOut) {
  add(60);
  EXPECT_EQ(writer_->finish(1000).frames, 1000U);
  EXPECT_EQ(finished().duration, 1000);
  EXPECT_EQ(lastBox("stts"), (std::vector<std::uint32_t>{2, 1, 1024, 1, 1000}));
  EXPECT_EQ(lastBox("stsc"), (std::vector<std::uint32_t>{1, 1, 2, 1}));
  EXPECT_EQ(lastBox("stco").size(), 2U);
}

TEST_F(M4aWriters, framesThatNoPacketHoldsAreNotPromised) {
  add(10);
  const auto ending = writer_->finish(100'000);
  EXPECT_EQ(ending.frames, 9U * 1024);
  EXPECT_EQ(finished().duration, 9 * 1024);
}

TEST_F(M4aWriters, paddingAloneIsNoFrame) {
  add(1);
  const auto ending = writer_->finish(500);
  EXPECT_EQ(ending.frames, 0U);
  EXPECT_TRUE(ending.indexed);
  EXPECT_EQ(finished().duration, 0);
}

TEST_F(M4aWriters, noIndexGoesOverFragmentsThatNoFlushCoveredAndThatCannotBeWrittenAgain) {
  add(23 * 4);
  const auto contents = disk_->contents;
  disk_->flushPlan = [this, first = disk_->flushes + 1](std::size_t flush) {
    if (flush == first) {
      disk_->plan = plans::failOnce(disk_->writes + 1, EDQUOT);
    }
    return flush == first ? EDQUOT : 0;
  };
  const auto ending = writer_->finish(90'000);
  EXPECT_EQ(ending.code, EDQUOT);
  EXPECT_FALSE(ending.indexed);
  EXPECT_TRUE(disk_->contents == contents);
}

TEST_F(M4aWriters, packetsWhoseSizeTheIndexCannotHoldAreRefused) {
  add(1);
  EXPECT_EQ(writer_->add(std::vector<std::byte>(0x10000)), (BlockFile::Failure{EMSGSIZE, true}));
  add(1);
  EXPECT_EQ(writer_->finish(1024).frames, 1024U);
  EXPECT_EQ(finished().duration, 1024);
}

TEST_F(M4aWriters, withoutASilentPacketTheLossIsToldAgainAndAgain) {
  std::string problem;
  const auto encoder = AacEncoder::open(settings, &problem);
  M4aWriter writer(BlockFile(disk_->open(), 0), trackOf(*encoder, settings),
                   [] { return std::vector<std::byte>(); });
  ASSERT_EQ(writer.start(), 0);
  const auto addFragment = [&] {
    std::optional<BlockFile::Failure> failure;
    for (int i = 0; i < 23; ++i) {
      failure = writer.add(silence_);
    }
    return failure;
  };
  disk_->plan = plans::failFrom(1, ENOSPC);
  EXPECT_EQ(addFragment(), (BlockFile::Failure{ENOSPC, true}));
  disk_->plan = {};
  EXPECT_EQ(addFragment(), (BlockFile::Failure{ENOMEM, true}));
}

}  // namespace
}  // namespace audrel::linuxos::test
