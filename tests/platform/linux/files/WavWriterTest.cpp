#include "platform/linux/files/WavWriter.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <vector>

#include "tests/platform/linux/files/FakeDisk.h"

namespace audrel::linuxos::test {
namespace {

class WavWriters : public testing::Test {
 protected:
  WavWriters() { EXPECT_EQ(writer_.start(), 0); }

  const std::vector<std::byte> block_ = std::vector<std::byte>(200);  // a hundred frames
  const std::shared_ptr<FakeDisk> disk_ = std::make_shared<FakeDisk>();
  WavWriter writer_ = WavWriter(BlockFile(disk_->open()), {.sampleRate = 8000, .channels = 1});
};

TEST_F(WavWriters, countWhatTheEndMadeSafeAlthoughTheRestCouldNotBeWrittenAgain) {
  EXPECT_EQ(writer_.append(block_), std::nullopt);
  disk_->flushPlan = [](std::size_t) { return EIO; };
  EXPECT_TRUE(writer_.append(block_));
  EXPECT_TRUE(writer_.append(block_));
  disk_->flushPlan = {};
  disk_->plan = [passing = disk_->writes + 1](std::size_t number, std::size_t size) {
    const bool fails = number > passing && size == 200;
    return fails ? std::optional(FakeDisk::Outcome{0, ENOSPC}) : std::nullopt;
  };
  EXPECT_EQ(writer_.finish({}), ENOSPC);
  EXPECT_EQ(writer_.countedFrames(), 200U);
  EXPECT_EQ(disk_->allCalls.at(disk_->allCalls.size() - 3).offset, 0U);
  EXPECT_EQ(disk_->safe, disk_->contents) << "the header too";
}

}  // namespace
}  // namespace audrel::linuxos::test
