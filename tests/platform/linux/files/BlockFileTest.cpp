#include "platform/linux/files/BlockFile.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <cstddef>
#include <memory>
#include <mutex>
#include <semaphore>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "tests/platform/linux/files/FakeDisk.h"
#include "tests/support/Waiting.h"

namespace audrel::linuxos::test {
namespace {

using Failure = BlockFile::Failure;

std::span<const std::byte> bytesOf(std::string_view text) {
  return std::as_bytes(std::span(text));
}

class BlockFiles : public testing::Test {
 protected:
  std::optional<Failure> append(std::string_view text) { return file_.append(bytesOf(text)); }

  std::string contents() const { return textOf(disk_->contents); }
  std::string safe() const { return textOf(disk_->safe); }

  static std::string textOf(const std::vector<std::byte>& bytes) {
    std::string text;
    for (const std::byte byte : bytes) {
      text += byte == std::byte{0} ? '0' : static_cast<char>(byte);
    }
    return text;
  }

  /// The calls so far: "w5+3" writes three bytes at 5, "t5" cuts off there, "s" flushes, "f" the
  /// folder, "s!" without success.
  std::string calls() const {
    std::string text;
    for (const FakeDisk::Call& call : disk_->allCalls) {
      using Kind = FakeDisk::Call::Kind;
      text += text.empty() ? "" : " ";
      switch (call.kind) {
        case Kind::write:
          text += "w" + std::to_string(call.offset) + "+" + std::to_string(call.bytes.size());
          break;
        case Kind::truncate:
          text += "t" + std::to_string(call.offset);
          break;
        case Kind::sync:
          text += "s";
          break;
        case Kind::syncFolder:
          text += "f";
          break;
        case Kind::close:
          text += "c";
          break;
      }
      text += call.code == 0 ? "" : "!";
    }
    return text;
  }

  /// Flushes with these numbers fail.
  void failFlushes(std::set<std::size_t> numbers, int code = EIO) {
    disk_->flushPlan = [=](std::size_t n) { return numbers.contains(n) ? code : 0; };
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
  EXPECT_EQ(file_.settle(), std::nullopt);
  EXPECT_EQ(file_.skippedBytes(), 4U);
}

TEST_F(BlockFiles, blocksFollowOneAnother) {
  EXPECT_EQ(append("one"), std::nullopt);
  EXPECT_EQ(append("three"), std::nullopt);
  EXPECT_EQ(contents(), "onethree");
  EXPECT_EQ(file_.end(), 8U);
  EXPECT_EQ(file_.safeEnd(), 8U);
  EXPECT_EQ(calls(), "w0+3 s f w3+5 s");
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
  EXPECT_EQ(file_.safeEnd(), 1U);
  EXPECT_EQ(append("333"), std::nullopt);
  EXPECT_EQ(contents(), "122333");
  EXPECT_EQ(file_.safeEnd(), 6U);
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
    EXPECT_EQ(file_.settle(), std::nullopt);
  }
  EXPECT_EQ(file_.safeEnd(), 50U);
}

TEST_F(BlockFiles, blocksThatWaitGoInOneByOneAsFarAsItGoes) {
  disk_->plan = plans::failFrom(1, ENOSPC);
  append("1");
  append("2");
  append("3");
  disk_->plan = plans::failOnce(disk_->writes + 3, ENOSPC);
  EXPECT_EQ(append("4"), (Failure{ENOSPC, false}));
  EXPECT_EQ(contents(), "12");
  EXPECT_EQ(file_.settle(), std::nullopt);
  EXPECT_EQ(contents(), "1234");
}

TEST_F(BlockFiles, skippedBytesAreZerosOnceSomethingFollows) {
  append("1");
  file_.skip(3);
  EXPECT_EQ(file_.safeEnd(), 1U);
  append("2");
  EXPECT_EQ(contents(), "10002");
  EXPECT_EQ(file_.safeEnd(), 5U);
}

TEST_F(BlockFiles, aFailedWriteBehindSkippedBytesLeavesTheFileAsItWas) {
  append("1");
  file_.skip(3);
  disk_->plan = plans::failOnce(2, ENOSPC);
  append("2");
  EXPECT_EQ(contents(), "1");
}

TEST_F(BlockFiles, overwritingChangesNothingElse) {
  append("12345");
  EXPECT_EQ(file_.overwrite(1, bytesOf("ab")), 0);
  EXPECT_EQ(contents(), "1ab45");
  EXPECT_EQ(file_.end(), 5U);
  disk_->plan = plans::failFrom(1, EIO);
  EXPECT_EQ(file_.overwrite(0, bytesOf("x")), EIO);
}

TEST_F(BlockFiles, beginWithoutAFlush) {
  EXPECT_EQ(file_.begin(bytesOf("12")), 0);
  EXPECT_EQ(calls(), "w0+2");
  disk_->plan = plans::failFrom(1, ENOSPC);
  BlockFile other(disk_->open());
  EXPECT_EQ(other.begin(bytesOf("12")), ENOSPC);
}

TEST_F(BlockFiles, areFlushedEverySoManyBlocks) {
  file_.flushEvery(3);
  for (int i = 0; i < 7; ++i) {
    append("1");
  }
  EXPECT_EQ(calls(), "w0+1 w1+1 w2+1 s f w3+1 w4+1 w5+1 s w6+1");
  EXPECT_EQ(file_.safeEnd(), 6U);
}

TEST_F(BlockFiles, areFlushedAtTheirBeginningToo) {
  file_.flushEvery(2);
  file_.begin(bytesOf("12"));
  append("3");
  EXPECT_EQ(calls(), "w0+2 w2+1 s f");
}

TEST_F(BlockFiles, whatAFailedFlushDroppedIsWrittenAgainWithTheNextBlock) {
  append("1");
  failFlushes({3});
  EXPECT_EQ(append("22"), (Failure{EIO, false}));
  EXPECT_EQ(contents(), "100");
  EXPECT_EQ(append("333"), std::nullopt);
  EXPECT_EQ(calls(), "w0+1 s f w1+2 s! w1+2 w3+3 s");
  EXPECT_EQ(safe(), "122333");
}

TEST_F(BlockFiles, whatAFailedFlushDroppedComesBeforeWhatWaits) {
  file_.flushEvery(2);
  append("1");
  failFlushes({1});
  append("2");
  disk_->plan = plans::failFrom(1, ENOSPC);
  append("3");
  disk_->plan = {};
  append("4");
  EXPECT_EQ(safe(), "1234");
}

TEST_F(BlockFiles, skippedBytesAreCountedOnceAlthoughTheirBlockIsWrittenAgain) {
  append("1");
  file_.skip(3);
  failFlushes({3, 4});
  append("2");
  EXPECT_EQ(file_.skippedBytes(), 0U);
  append("3");
  append("4");
  EXPECT_EQ(file_.skippedBytes(), 3U);
  EXPECT_EQ(safe(), "1000234");
}

TEST_F(BlockFiles, blocksThatNoFlushTookCountAsFullMemory) {
  disk_->flushPlan = [](std::size_t) { return EIO; };
  EXPECT_EQ(append("55555"), (Failure{EIO, false}));
  EXPECT_EQ(append("55555"), (Failure{EIO, false}));
  EXPECT_EQ(append("x"), (Failure{EIO, true}));
  EXPECT_EQ(contents(), "0000000000") << "no traces of it";
  disk_->flushPlan = {};
  EXPECT_EQ(append("y"), std::nullopt);
  EXPECT_EQ(safe(), "5555555555y");
}

TEST_F(BlockFiles, aBlockThatMemoryHasNoRoomForIsFlushedAtOnce) {
  file_.flushEvery(3);
  EXPECT_EQ(append("a longer text"), std::nullopt);
  EXPECT_EQ(calls(), "w0+13 s f");
}

TEST_F(BlockFiles, anInterruptedFlushIsRepeated) {
  failFlushes({1, 3}, EINTR);
  EXPECT_EQ(append("1"), std::nullopt);
  EXPECT_EQ(calls(), "w0+1 s! s f! f");
}

TEST_F(BlockFiles, aFolderThatCannotBeFlushedIsTriedAgain) {
  failFlushes({2});
  EXPECT_EQ(append("1"), (Failure{EIO, false}));
  EXPECT_EQ(file_.safeEnd(), 1U);
  EXPECT_EQ(append("2"), std::nullopt);
  EXPECT_EQ(append("3"), std::nullopt);
  EXPECT_EQ(calls(), "w0+1 s f! w1+1 s f w2+1 s");
}

TEST(BlockFile, isContentWithoutFlushesWhereTheFileSystemHasNoneAndTellsThatOnce) {
  for (const int code : {EINVAL, ENOSYS, EOPNOTSUPP}) {
    const auto disk = std::make_shared<FakeDisk>();
    disk->flushPlan = [=](std::size_t) { return code; };
    std::vector<int> told;
    BlockFile file(disk->open(), 10,
                   {.blockEnded = {}, .cannotFlush = [&](int why) { told.push_back(why); }});
    for (int i = 0; i < 20; ++i) {
      EXPECT_EQ(file.append(bytesOf("12")), std::nullopt);
    }
    EXPECT_EQ(file.appendSafely(bytesOf("end")), 0);
    EXPECT_EQ(file.close(), 0);
    EXPECT_EQ(told, std::vector{code});
  }
}

TEST_F(BlockFiles, settlingWritesAndFlushesAll) {
  file_.flushEvery(5);
  append("1");
  append("2");
  EXPECT_EQ(file_.settle(), std::nullopt);
  EXPECT_EQ(file_.settle(), std::nullopt);
  EXPECT_EQ(calls(), "w0+1 w1+1 s");
}

TEST_F(BlockFiles, settlingGivesUpWhatCannotBeWritten) {
  append("1");
  disk_->plan = plans::failFrom(2, ENOSPC);
  append("2");
  EXPECT_EQ(file_.settle(), (Failure{ENOSPC, true}));
  EXPECT_EQ(file_.end(), 1U);
  disk_->plan = {};
  EXPECT_EQ(file_.settle(), std::nullopt);
  EXPECT_EQ(contents(), "1");
}

TEST_F(BlockFiles, settlingTriesAFailedFlushOnceMore) {
  file_.flushEvery(5);
  append("1");
  append("2");
  failFlushes({1});
  EXPECT_EQ(file_.settle(), std::nullopt);
  EXPECT_EQ(calls(), "w0+1 w1+1 s! w0+1 w1+1 s");
}

TEST_F(BlockFiles, settlingLeavesInTheFileWhatCannotBeFlushed) {
  append("1");
  file_.flushEvery(5);
  append("2");
  failFlushes({3, 4});
  EXPECT_EQ(file_.settle(), (Failure{EIO, false}));
  EXPECT_EQ(file_.end(), 1U);
  EXPECT_EQ(calls(), "w0+1 s f w1+1 s! w1+1 s!");
}

TEST_F(BlockFiles, settlingLeavesInTheFileWhatCannotBeWrittenAgainAfterAFailedFlush) {
  for (const auto& plan : {plans::failFrom(1, ENOSPC), plans::failPartWay(1, ENOSPC)}) {
    const auto disk = std::make_shared<FakeDisk>();
    BlockFile file(disk->open());
    file.append(bytesOf("1"));
    file.flushEvery(5);
    file.append(bytesOf("2222"));
    file.append(bytesOf("3333"));
    disk->flushPlan = [&](std::size_t) {
      disk->plan = [&, first = disk->writes](std::size_t n, std::size_t size) {
        return n - first > 2 ? FakeDisk::Outcome{0, ENOSPC} : plan(n - first, size);
      };
      return EDQUOT;
    };
    const auto failure = file.settle();
    ASSERT_TRUE(failure);
    EXPECT_FALSE(failure->dropped);
    EXPECT_EQ(file.end(), 1U);
    EXPECT_EQ(textOf(disk->contents), "122223333");
  }
}

TEST_F(BlockFiles, appendingSafelyTriesOnceMoreAndKeepsNothingOfWhatFailed) {
  append("1");
  disk_->plan = plans::failPartWay(2, ENOSPC);
  EXPECT_EQ(file_.appendSafely(bytesOf("2222")), 0);
  EXPECT_EQ(safe(), "12222");
  failFlushes({4});
  EXPECT_EQ(file_.appendSafely(bytesOf("3")), 0);
  EXPECT_EQ(safe(), "122223");
  failFlushes({6, 7});
  EXPECT_EQ(file_.appendSafely(bytesOf("4")), EIO);
  EXPECT_EQ(contents(), "122223");
  disk_->plan = plans::failFrom(1, ENOSPC);
  EXPECT_EQ(file_.appendSafely(bytesOf("4")), ENOSPC);
  EXPECT_EQ(contents(), "122223");
  EXPECT_EQ(file_.end(), 6U);
}

TEST_F(BlockFiles, overwritingSafelyWritesAgainWhatAFailedFlushDropped) {
  append("123");
  failFlushes({3});
  EXPECT_EQ(file_.overwriteSafely(1, bytesOf("x")), 0);
  EXPECT_EQ(safe(), "1x3");
  failFlushes({5, 6});
  EXPECT_EQ(file_.overwriteSafely(1, bytesOf("y")), EIO);
}

TEST_F(BlockFiles, closingMakesTheirNameSafe) {
  append("1");
  EXPECT_EQ(file_.close(), 0);
  EXPECT_EQ(calls(), "w0+1 s f c");
}

TEST_F(BlockFiles, closingTriesTheirFolderOnceMore) {
  failFlushes({2, 3});
  append("1");
  EXPECT_EQ(file_.close(), 0);
  EXPECT_EQ(calls(), "w0+1 s f! f! f c");
}

TEST_F(BlockFiles, closingTellsThatTheirNameIsNotSafe) {
  failFlushes({2, 3, 4});
  append("1");
  EXPECT_EQ(file_.close(), EIO);
  EXPECT_EQ(disk_->closes, 1);
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

/// A disk whose flushes take until the test lets them end, and for which nobody waits.
class SlowFlushes : public BlockFiles {
 protected:
  class File final : public RawFile {
   public:
    File(std::unique_ptr<RawFile> file, std::counting_semaphore<>& mayFlush)
        : file_(std::move(file)), mayFlush_(mayFlush) {}

    ssize_t pwrite(const std::byte* data, std::size_t size, off_t offset) noexcept override {
      const std::scoped_lock lock(mutex_);
      return file_->pwrite(data, size, offset);
    }
    int ftruncate(off_t size) noexcept override { return file_->ftruncate(size); }
    int sync() noexcept override {
      mayFlush_.acquire();
      const std::scoped_lock lock(mutex_);
      return file_->sync();
    }
    int syncFolder() noexcept override {
      const std::scoped_lock lock(mutex_);
      return file_->syncFolder();
    }
    bool isLocked() const noexcept override { return true; }
    std::chrono::milliseconds patience() const noexcept override { return {}; }
    void remove() noexcept override {}
    int close() noexcept override { return file_->close(); }

   private:
    std::unique_ptr<RawFile> file_;
    std::counting_semaphore<>& mayFlush_;
    std::mutex mutex_;
  };

  BlockFile open(std::size_t memoryLimit) {
    return BlockFile(std::make_unique<File>(disk_->open(), mayFlush), memoryLimit);
  }

  std::counting_semaphore<> mayFlush{0};
};

TEST_F(SlowFlushes, holdUpNoWriting) {
  BlockFile file = open(100);
  file.append(bytesOf("one"));
  file.append(bytesOf("two"));
  file.append(bytesOf("three"));
  EXPECT_EQ(contents(), "onetwothree");
  EXPECT_EQ(calls(), "w0+3 w3+3 w6+5");
  EXPECT_EQ(file.safeEnd(), 0U);
  mayFlush.release(2);
  EXPECT_EQ(file.settle(), std::nullopt);
  EXPECT_EQ(safe(), "onetwothree");
  EXPECT_EQ(calls(), "w0+3 w3+3 w6+5 s f s");
}

TEST_F(SlowFlushes, coverWhatWasWrittenBeforeThemAlone) {
  BlockFile file = open(1'000'000);
  file.append(bytesOf("one"));
  file.append(bytesOf("two"));
  mayFlush.release();
  ASSERT_TRUE(support::waitFor([&] {
    file.append(bytesOf("+"));
    return file.safeEnd() > 0;
  }));
  EXPECT_EQ(file.safeEnd(), 3U);
}

TEST_F(SlowFlushes, thatFailHaveAllWrittenAgainThatIsNotSafe) {
  failFlushes({1});
  BlockFile file = open(100);
  file.append(bytesOf("one"));
  file.append(bytesOf("two"));
  mayFlush.release(2);
  EXPECT_EQ(file.settle(), std::nullopt);
  EXPECT_EQ(safe(), "onetwo");
  EXPECT_EQ(calls(), "w0+3 w3+3 s! w0+3 w3+3 s");
}

TEST_F(SlowFlushes, areWaitedForWhereMemoryIsFull) {
  BlockFile file = open(5);
  file.append(bytesOf("one"));
  mayFlush.release(2);
  EXPECT_EQ(file.append(bytesOf("three")), std::nullopt);
  EXPECT_EQ(safe(), "onethree");
}

TEST_F(SlowFlushes, endBeforeTheirFileIsClosed) {
  {
    BlockFile file = open(100);
    file.append(bytesOf("one"));
    mayFlush.release();
  }
  EXPECT_EQ(calls(), "w0+3 s f c");
}

}  // namespace
}  // namespace audrel::linuxos::test
