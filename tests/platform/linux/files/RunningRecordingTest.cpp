#include "platform/linux/files/RunningRecording.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tests/platform/linux/files/FakeDisk.h"
#include "tests/platform/linux/files/Recordings.h"
#include "tests/support/KeptLog.h"
#include "tests/support/TemporaryFolder.h"

namespace audrel::linuxos {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

const Machine here = {.id = "0123456789abcdef0123456789abcdef",
                      .boot = "61aa16bc-bcf6-47ff-9b53-cf53709a78fe"};

class RunningRecordingTest : public testing::Test {
 protected:
  /// Keeps what was done, and how many entries there were then.
  class WatchedFile final : public RawFile {
   public:
    explicit WatchedFile(RunningRecordingTest& test) : test_(test) {}

    ssize_t pwrite(const std::byte* /*data*/, std::size_t size,
                   off_t /*offset*/) noexcept override {
      test_.keep("write");
      return static_cast<ssize_t>(size);
    }
    int ftruncate(off_t /*size*/) noexcept override { return test_.keep("truncate"); }
    int sync() noexcept override { return test_.keep("sync"); }
    int syncFolder() noexcept override { return test_.keep("sync folder"); }
    bool isLocked() const noexcept override { return test_.isLocked; }
    std::optional<FileIdentity> identity() const noexcept override {
      return FileIdentity{.device = 1, .inode = 2, .born = 3};
    }
    void remove() noexcept override { test_.keep("remove"); }
    int close() noexcept override { return test_.keep("close"); }

   private:
    RunningRecordingTest& test_;
  };

  int keep(const std::string& what) {
    calls.push_back(what + ", " + std::to_string(entries.entries().size()));
    return result;
  }

  support::TemporaryFolder home;
  const fs::path path = fs::canonical(home.path()) / "talk.m4a";
  EntryFolder entries{home / "state", [] { return here; }};
  support::KeptLog log;
  bool isLocked = true;
  int result = 0;
  std::vector<std::string> calls;
  RunningRecording recording{entries, path, log.makeLogger("", "")};
  std::unique_ptr<RawFile> file = recording.noted(std::make_unique<WatchedFile>(*this));
};

TEST_F(RunningRecordingTest, isNotedBeforeTheFirstFlushUntilItHasEnded) {
  const std::byte byte{};
  file->pwrite(&byte, 1, 0);
  file->ftruncate(0);
  EXPECT_FALSE(fs::exists(entries.path())) << "nothing that takes time happens while it starts";
  file->sync();
  file->syncFolder();
  EXPECT_EQ(entries.entries()[0].entry, (RecordingEntry{path, {1, 2, 3}, here}));
  file->close();
  recording.ended();
  EXPECT_THAT(entries.entries(), IsEmpty());
  recording.ended();
  EXPECT_THAT(calls,
              ElementsAre("write, 0", "truncate, 0", "sync, 1", "sync folder, 1", "close, 1"));
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(RunningRecordingTest, isNotedBeforeTheFoldersFlushWhenThatIsTheFirst) {
  file->syncFolder();
  EXPECT_THAT(calls, ElementsAre("sync folder, 1"));
}

TEST_F(RunningRecordingTest, staysNotedWhenItHasNotEndedWell) {
  file->sync();
  file->close();
  file.reset();
  EXPECT_EQ(entries.entries().size(), 1U);
}

TEST_F(RunningRecordingTest, hasNoEntryWhenItsFileIsRemovedBeforeAnyFlush) {
  file->remove();
  file->close();
  EXPECT_FALSE(fs::exists(entries.path()));
  EXPECT_THAT(calls, ElementsAre("remove, 0", "close, 0"));
}

TEST_F(RunningRecordingTest, passesOnWhatTheSystemAnswers) {
  result = -1;
  EXPECT_EQ(file->ftruncate(0), -1);
  EXPECT_EQ(file->sync(), -1);
  EXPECT_EQ(file->syncFolder(), -1);
  EXPECT_EQ(file->close(), -1);
  EXPECT_TRUE(file->isLocked());
  EXPECT_EQ(file->identity(), (FileIdentity{1, 2, 3}));
}

TEST_F(RunningRecordingTest, goesOnWithoutAnEntryWhereNoneCanBeWritten) {
  std::ofstream(entries.path()) << "a file in the way";
  EXPECT_EQ(file->sync(), 0);
  EXPECT_EQ(file->sync(), 0);
  EXPECT_THAT(log.lines(),
              ElementsAre("error: \"talk.m4a\" is not noted in \"" + entries.path().string() +
                          "\": Not a directory. Should it be cut off, it is not "
                          "finished by itself."));
  recording.ended();
}

TEST_F(RunningRecordingTest, goesOnWithoutAnEntryWhereItsDiskHasNoLocks) {
  isLocked = false;
  EXPECT_EQ(file->sync(), 0);
  EXPECT_EQ(file->sync(), 0);
  EXPECT_FALSE(fs::exists(entries.path()));
  EXPECT_THAT(log.lines(),
              ElementsAre("error: \"talk.m4a\" is not noted in \"" + entries.path().string() +
                          "\": its disk offers no locks. Should it be cut off, it is "
                          "not finished by itself."));
}

/// The files that the framework makes.
class NotedFiles : public test::FileTest {
 protected:
  NotedFiles() {
    disk->identity = FileIdentity{.device = 1, .inode = 2, .born = 3};
    framework.setEntryFolder(&entries);
  }

  /// One with ten seconds in it.
  std::shared_ptr<AV::AudioFile> recorded(const std::string& name, const AV::Settings& settings) {
    auto file = test::openFile(framework, folder_ / name, settings);
    EXPECT_THAT(entries.entries(), IsEmpty()) << "a start waits for nothing";
    EXPECT_THAT(test::deliver(framework, *file, audio), IsEmpty());
    return file;
  }

  const test::Audio audio = test::noise(480'000);
  std::shared_ptr<test::FakeDisk> disk = std::make_shared<test::FakeDisk>();
  EntryFolder entries{folder_ / "state", [] { return here; }};
  AudioFramework framework{log_, disk->creator()};
};

TEST_F(NotedFiles, haveAnEntryUntilTheyAreFinished) {
  for (const auto& [name, settings] :
       {std::pair("talk.m4a", test::m4aSettings(audio)), {"talk.wav", test::wavSettings(audio)}}) {
    auto file = recorded(name, settings);
    EXPECT_EQ(entries.entries().size(), 1U) << name;
    file.reset();
    EXPECT_THAT(entries.entries(), IsEmpty()) << name;
  }
}

TEST_F(NotedFiles, keepTheirEntryWhenTheyCannotBeFinished) {
  auto file = recorded("talk.m4a", test::m4aSettings(audio));
  disk->plan = test::plans::failFrom(disk->writes + 2, ENOSPC);  // the index has no room
  file.reset();
  EXPECT_EQ(entries.entries().size(), 1U);
}

}  // namespace
}  // namespace audrel::linuxos
