#include "platform/linux/files/BlockFile.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <string_view>

#include "tests/platform/linux/files/FakeDisk.h"

namespace audrel::linuxos::test {
namespace {

using Failure = BlockFile::Failure;

std::span<const std::byte> bytesOf(std::string_view text) {
  return std::as_bytes(std::span(text));
}

class BlockFiles : public testing::Test {
 protected:
  std::optional<Failure> append(std::string_view text) { return file_.append(bytesOf(text)); }

  std::string contents() const {
    std::string text;
    for (const std::byte byte : disk_->contents) {
      text += byte == std::byte{0} ? '0' : static_cast<char>(byte);
    }
    return text;
  }

  std::shared_ptr<FakeDisk> disk_ = std::make_shared<FakeDisk>();
  BlockFile file_ = BlockFile(disk_->open(), 10);
};

TEST_F(BlockFiles, countsWhatWasSkippedOnceItIsInTheFile) {
  append("one");
  file_.skip(4);
  EXPECT_EQ(file_.skippedBytes(), 0U);
  append("two");
  EXPECT_EQ(file_.skippedBytes(), 4U);
  EXPECT_EQ(contents(), "one0000two");
  file_.skip(4);
  EXPECT_EQ(file_.flush(), 0);
  EXPECT_EQ(file_.skippedBytes(), 4U);
}

TEST_F(BlockFiles, blocksFollowOneAnother) {
  EXPECT_EQ(append("one"), std::nullopt);
  EXPECT_EQ(append("three"), std::nullopt);
  EXPECT_EQ(contents(), "onethree");
  EXPECT_EQ(file_.end(), 8U);
  EXPECT_EQ(file_.writtenEnd(), 8U);
}

TEST_F(BlockFiles, interruptedAndShortWritesAreContinued) {
  disk_->plan = plans::interruptedAndShort(2);
  EXPECT_EQ(append("a longer text"), std::nullopt);
  EXPECT_EQ(contents(), "a longer text");
}

TEST_F(BlockFiles, aWriteThatMakesNoProgressIsAnErrorAndNoEndlessLoop) {
  disk_->plan = [](std::size_t, std::size_t) { return FakeDisk::Outcome{0, 0}; };
  EXPECT_EQ(append("one"), (Failure{EIO, false}));
}

TEST_F(BlockFiles, whatFailedWaitsAndGoesInBeforeTheNext) {
  append("1");
  disk_->plan = plans::failOnce(2, ENOSPC);
  EXPECT_EQ(append("22"), (Failure{ENOSPC, false}));
  EXPECT_EQ(contents(), "1");
  EXPECT_EQ(file_.end(), 3U);
  EXPECT_EQ(file_.writtenEnd(), 1U);
  EXPECT_EQ(append("333"), std::nullopt);
  EXPECT_EQ(contents(), "122333");
  EXPECT_EQ(file_.writtenEnd(), 6U);
}

TEST_F(BlockFiles, aTornBlockIsCutOff) {
  append("1");
  disk_->plan = plans::failPartWay(2, ENOSPC);
  EXPECT_EQ(append("2222"), (Failure{ENOSPC, false}));
  EXPECT_EQ(contents(), "1");
  EXPECT_EQ(append("3"), std::nullopt);
  EXPECT_EQ(contents(), "122223");
}

TEST_F(BlockFiles, aTornBlockThatCannotBeCutOffIsOverwritten) {
  disk_->truncateCode = EIO;
  disk_->plan = plans::failPartWay(1, ENOSPC);
  EXPECT_EQ(append("2222"), (Failure{ENOSPC, false}));
  EXPECT_EQ(contents(), "2");
  EXPECT_EQ(append("3"), std::nullopt);
  EXPECT_EQ(contents(), "22223");
}

TEST_F(BlockFiles, whatMemoryCannotKeepIsDroppedAndTakesNoPlace) {
  disk_->plan = plans::failFrom(1, EFBIG);
  EXPECT_EQ(append("55555"), (Failure{EFBIG, false}));
  EXPECT_EQ(append("55555"), (Failure{EFBIG, false}));
  EXPECT_EQ(append("x"), (Failure{EFBIG, true}));
  EXPECT_EQ(file_.end(), 10U);
  disk_->plan = {};
  EXPECT_EQ(append("y"), std::nullopt);
  EXPECT_EQ(contents(), "5555555555y");
}

TEST_F(BlockFiles, memoryIsFreeAgainOnceItsBlocksAreInTheFile) {
  for (int round = 0; round < 5; ++round) {
    disk_->plan = plans::failFrom(1, ENOSPC);
    EXPECT_EQ(append("0123456789"), (Failure{ENOSPC, false}));
    disk_->plan = {};
    EXPECT_EQ(file_.flush(), 0);
  }
  EXPECT_EQ(file_.writtenEnd(), 50U);
}

TEST_F(BlockFiles, blocksThatWaitGoInOneByOneAsFarAsItGoes) {
  disk_->plan = plans::failFrom(1, ENOSPC);
  append("1");
  append("2");
  append("3");
  disk_->plan = plans::failOnce(disk_->writes + 3, ENOSPC);
  EXPECT_EQ(append("4"), (Failure{ENOSPC, false}));
  EXPECT_EQ(contents(), "12");
  EXPECT_EQ(file_.flush(), 0);
  EXPECT_EQ(contents(), "1234");
}

TEST_F(BlockFiles, skippedBytesAreZerosOnceSomethingFollows) {
  append("1");
  file_.skip(3);
  EXPECT_EQ(file_.writtenEnd(), 1U);
  append("2");
  EXPECT_EQ(contents(), "10002");
  EXPECT_EQ(file_.writtenEnd(), 5U);
}

TEST_F(BlockFiles, overwritingChangesNothingElse) {
  append("12345");
  EXPECT_EQ(file_.overwrite(1, bytesOf("ab")), 0);
  EXPECT_EQ(contents(), "1ab45");
  EXPECT_EQ(file_.writtenEnd(), 5U);
  disk_->plan = plans::failFrom(1, EIO);
  EXPECT_EQ(file_.overwrite(0, bytesOf("x")), EIO);
}

TEST_F(BlockFiles, appendOrRemoveKeepsNothingOfWhatFailed) {
  append("1");
  disk_->plan = plans::failPartWay(2, ENOSPC);
  EXPECT_EQ(file_.appendOrRemove(bytesOf("2222")), ENOSPC);
  EXPECT_EQ(contents(), "1");
  EXPECT_EQ(file_.end(), 1U);
  EXPECT_EQ(file_.flush(), 0);
  EXPECT_EQ(contents(), "1");
}

TEST_F(BlockFiles, whatWaitsCanBeGivenUp) {
  append("1");
  disk_->plan = plans::failFrom(2, ENOSPC);
  append("2");
  file_.forgetWaiting();
  EXPECT_EQ(file_.end(), 1U);
  disk_->plan = {};
  EXPECT_EQ(file_.flush(), 0);
  EXPECT_EQ(contents(), "1");
}

TEST_F(BlockFiles, closingTellsItsError) {
  disk_->closeCode = EIO;
  EXPECT_EQ(file_.close(), EIO);
}

TEST(BlockFile, closesItsFileWhenItGoes) {
  const auto disk = std::make_shared<FakeDisk>();
  {
    const BlockFile file(disk->open());
  }
  EXPECT_EQ(disk->closes, 1);
}

}  // namespace
}  // namespace audrel::linuxos::test
