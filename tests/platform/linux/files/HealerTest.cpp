// Which files are finished, and which entries stay. The files are real; most tests stand in for the
// repair itself, to see whether it was asked for.

#include "platform/linux/files/Healer.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/linux/files/Descriptor.h"
#include "tests/platform/linux/files/FakeDisk.h"
#include "tests/platform/linux/files/Recordings.h"
#include "tests/platform/linux/files/Tools.h"
#include "tests/support/KeptLog.h"
#include "tests/support/TemporaryFolder.h"

namespace audrel::linuxos::test {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Outcome = Repair::Outcome;
using Time = std::chrono::system_clock::time_point;

const Machine here = {.id = "0123456789abcdef0123456789abcdef",
                      .boot = "61aa16bc-bcf6-47ff-9b53-cf53709a78fe"};
const std::string anotherBoot = "00000000-bcf6-47ff-9b53-cf53709a78fe";

/// Of a file system without locks.
class Lockless final : public OpenFile {
 public:
  explicit Lockless(std::unique_ptr<OpenFile> file)
      : OpenFile(file->path()), file_(std::move(file)) {}

  ssize_t pread(std::byte* data, std::size_t size, off_t offset) noexcept override {
    return file_->pread(data, size, offset);
  }
  ssize_t pwrite(const std::byte* data, std::size_t size, off_t offset) noexcept override {
    return file_->pwrite(data, size, offset);
  }
  int ftruncate(off_t size) noexcept override { return file_->ftruncate(size); }
  int sync() noexcept override { return file_->sync(); }
  int stat(struct stat* status) noexcept override { return file_->stat(status); }
  int lock() noexcept override {
    errno = ENOLCK;
    return -1;
  }

 private:
  std::unique_ptr<OpenFile> file_;
};

class HealerTest : public testing::Test {
 protected:
  void SetUp() override {
    std::ofstream(file) << "audio";
    now = Time::clock::now() + 11s;
  }

  /// Adds the file's entry, changed.
  void note(const std::function<void(RecordingEntry&)>& change = [](RecordingEntry&) {}) {
    std::string problem;
    ASSERT_TRUE(entries.add(file, statusOf(file)->identity, &problem)) << problem;
    const auto found = entries.entries();
    ASSERT_EQ(found.size(), 1U);
    RecordingEntry entry = *found[0].entry;
    change(entry);
    std::ofstream(entries.path() / found[0].name) << textOf(entry);
  }

  void heal() { healer.heal(isToEnd); }

  /// While opening does something else.
  void healOpening(decltype(HealerTools::open) open) { makeHealer(std::move(open)).heal(isToEnd); }

  void expectLeftAloneForAMonth() {
    heal();
    expectUntouched();
    EXPECT_THAT(entries.entries(), SizeIs(1));
    const Time today = now;
    now = today + std::chrono::days(30) - 1min;
    heal();
    EXPECT_THAT(entries.entries(), SizeIs(1));
    now = today + std::chrono::days(30) + 1min;
    repair.outcome = Outcome::unreadable;
    heal();
    EXPECT_THAT(entries.entries(), IsEmpty());
    EXPECT_THAT(notices, IsEmpty());
  }

  void expectUntouched() {
    EXPECT_EQ(repairs, 0);
    EXPECT_THAT(notices, IsEmpty());
  }

  void expectForgotten() {
    heal();
    expectUntouched();
    EXPECT_THAT(entries.entries(), IsEmpty());
  }

  support::TemporaryFolder home;
  const fs::path file = fs::canonical(home.path()) / "talk.m4a";
  std::optional<Machine> machine = here;
  EntryFolder entries{home / "state", [this] { return machine; }};
  support::KeptLog log;
  Time now;
  Repair repair = {.outcome = Outcome::repaired, .seconds = 307.9};
  int repairs = 0;
  int opened = 0;
  int openCode = 0;
  bool hasLocks = true;
  std::vector<Notice> notices;
  std::atomic<bool> isToEnd = false;
  Healer healer = makeHealer([this](const fs::path& path, int* code) {
    ++opened;
    if (openCode != 0) {
      *code = openCode;
      return std::unique_ptr<OpenFile>();
    }
    auto existing = openExisting(path, code);
    return hasLocks || !existing ? std::move(existing)
                                 : std::make_unique<Lockless>(std::move(existing));
  });

 private:
  Healer makeHealer(decltype(HealerTools::open) open) {
    Healer made(entries, log.makeLogger("", ""),
                {.now = [this] { return now; },
                 .open = std::move(open),
                 .repair =
                     [this](OpenFile& /*file*/) {
                       ++repairs;
                       return repair;
                     }});
    made.setNoticeTaker([this](const Notice& notice) { notices.push_back(notice); });
    return made;
  }
};

TEST_F(HealerTest, doesNothingWhereNothingWasCutOff) {
  heal();
  EXPECT_FALSE(fs::exists(entries.path()));
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(HealerTest, finishesARecordingAndTellsIt) {
  note();
  heal();
  EXPECT_EQ(repairs, 1);
  EXPECT_THAT(entries.entries(), IsEmpty());
  const std::string folder = file.parent_path();
  EXPECT_THAT(notices, ElementsAre(Notice{.matter = "recovered " + file.string(),
                                          .summary = "Recording recovered",
                                          .body = "\"talk.m4a\" in \"" + folder +
                                                  "\" was cut off, and is finished now: 05:07.",
                                          .isLoss = true,
                                          .file = file}));
  EXPECT_THAT(log.lines(),
              ElementsAre("\"" + file.string() + "\" was cut off, and is finished now: 05:07."));
}

TEST_F(HealerTest, saysNothingOfAFileThatIsWhole) {
  repair.outcome = Outcome::whole;
  note();
  heal();
  EXPECT_THAT(entries.entries(), IsEmpty());
  EXPECT_THAT(notices, IsEmpty());
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(HealerTest, forgetsAFileThatHoldsNothingToFinish) {
  repair.outcome = Outcome::notOurs;
  note();
  heal();
  EXPECT_THAT(entries.entries(), IsEmpty());
  EXPECT_THAT(notices, IsEmpty());
  EXPECT_THAT(log.lines(), ElementsAre("\"" + file.string() +
                                       "\" was cut off, and left as it is: there is nothing in it "
                                       "that could be finished."));
}

TEST_F(HealerTest, triesAgainWhatFailedAndLogsItOnce) {
  repair = {.outcome = Outcome::unreadable, .seconds = 0, .problem = "There is no space left."};
  note();
  heal();
  heal();
  EXPECT_EQ(repairs, 2);
  EXPECT_THAT(notices, IsEmpty());
  EXPECT_THAT(log.lines(),
              ElementsAre("error: \"" + file.string() +
                          "\" was cut off, and could not be finished. There is no space left."));
  repair.outcome = Outcome::repaired;
  heal();
  EXPECT_THAT(notices, SizeIs(1));
  EXPECT_THAT(entries.entries(), IsEmpty());
}

TEST_F(HealerTest, givesUpWhatFailsForAMonth) {
  repair.outcome = Outcome::unreadable;
  note();
  now += std::chrono::days(31);
  heal();
  EXPECT_EQ(repairs, 1);
  EXPECT_THAT(entries.entries(), IsEmpty());
}

TEST_F(HealerTest, leavesWhatAnotherMachineRecords) {
  note([](RecordingEntry& entry) { entry.machine.id[0] = 'f'; });
  expectLeftAloneForAMonth();
}

TEST_F(HealerTest, touchesNothingWhereTheMachineHasNoId) {
  note();
  machine.reset();
  heal();
  expectUntouched();
  EXPECT_THAT(entries.entries(), SizeIs(1));
}

// The same file

TEST_F(HealerTest, leavesAnotherFileOfThatName) {
  note();
  fs::rename(file, home / "moved.m4a");
  std::ofstream(file) << "another";
  expectForgotten();
}

TEST_F(HealerTest, leavesAnotherFileThatGotTheSameNumber) {
  note([](RecordingEntry& entry) { --entry.identity.born; });
  expectForgotten();
}

TEST_F(HealerTest, knowsTheFileWhenItsDiskHasAnotherNumberAfterAnotherBoot) {
  note([](RecordingEntry& entry) {
    ++entry.identity.device;
    entry.machine.boot = anotherBoot;
  });
  heal();
  EXPECT_EQ(repairs, 1);
  EXPECT_THAT(entries.entries(), IsEmpty());
}

TEST_F(HealerTest, finishesAfterAnotherBootWhereNothingElseHasChanged) {
  note([](RecordingEntry& entry) { entry.machine.boot = anotherBoot; });
  heal();
  EXPECT_EQ(repairs, 1);
}

TEST_F(HealerTest, leavesAFileOnAnotherDiskInTheSameBoot) {
  note([](RecordingEntry& entry) { ++entry.identity.device; });
  expectUntouched();
  heal();
  expectUntouched();
  EXPECT_THAT(entries.entries(), SizeIs(1));
}

TEST_F(HealerTest, leavesAFileOnAnotherDiskThatIsAnotherFile) {
  for (const auto& change : std::vector<std::function<void(FileIdentity&)>>{
           [](FileIdentity& identity) { ++identity.inode; },
           [](FileIdentity& identity) { --identity.born; },
           [](FileIdentity& identity) { identity.born = 0; }}) {
    note([&](RecordingEntry& entry) {
      ++entry.identity.device;
      change(entry.identity);
      entry.machine.boot = anotherBoot;
    });
    heal();
    expectUntouched();
    ASSERT_THAT(entries.entries(), SizeIs(1));
    entries.remove(entries.entries()[0].name);
  }
}

TEST_F(HealerTest, leavesAFileWithoutABirthOnceItsDiskHasAnotherNumber) {
  for (const unsigned change : {1U, 0U}) {
    note([&](RecordingEntry& entry) {
      entry.identity.device += change;
      entry.identity.born = 0;
      entry.machine.boot = anotherBoot;
    });
    Healer birthless(entries, log.makeLogger("", ""),
                     {.now = [this] { return now; },
                      .status =
                          [](const fs::path& path) {
                            auto status = statusOf(path);
                            if (status) {
                              status->identity.born = 0;
                            }
                            return status;
                          },
                      .repair =
                          [this](OpenFile&) {
                            ++repairs;
                            return repair;
                          }});
    birthless.heal(isToEnd);
    EXPECT_EQ(repairs, change == 0 ? 1 : 0);
    ASSERT_THAT(entries.entries(), SizeIs(change));
    if (change != 0) {
      entries.remove(entries.entries()[0].name);
    }
  }
}

TEST_F(HealerTest, followsNoLinkInTheFilesPlace) {
  note();
  fs::rename(file, home / "moved.m4a");
  fs::create_symlink(home / "moved.m4a", file);
  expectForgotten();
  EXPECT_EQ(opened, 0);
}

TEST_F(HealerTest, opensNothingButARegularFile) {
  fs::remove(file);
  ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
  note();
  expectForgotten();
  EXPECT_EQ(opened, 0);
}

TEST_F(HealerTest, leavesTheFileOfAnotherUser) {
  if (geteuid() != 0) {
    GTEST_SKIP() << "needs root, to give a file away";
  }
  ASSERT_EQ(chown(file.c_str(), 1, 1), 0);
  note();
  expectForgotten();
  EXPECT_EQ(opened, 0);
}

// Nobody writes to it

TEST_F(HealerTest, leavesAFileThatARecorderHasLockedHoweverOldItsEntryIs) {
  note();
  const Descriptor recorder(open(file.c_str(), O_RDWR | O_CLOEXEC));
  ASSERT_EQ(flock(recorder.get(), LOCK_EX), 0);
  now += std::chrono::days(31);
  heal();
  expectUntouched();
  EXPECT_THAT(entries.entries(), SizeIs(1));
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(HealerTest, holdsTheLockWhileItRepairs) {
  note();
  bool isLocked = false;
  Healer holding(entries, log.makeLogger("", ""),
                 {.now = [this] { return now; },
                  .open = openExisting,
                  .repair =
                      [&](OpenFile&) {
                        const Descriptor other(open(file.c_str(), O_RDWR | O_CLOEXEC));
                        isLocked =
                            flock(other.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
                        return repair;
                      }});
  holding.heal(isToEnd);
  EXPECT_TRUE(isLocked);
}

TEST_F(HealerTest, leavesAFileWhereTheDiskOffersNoLocks) {
  hasLocks = false;
  note();
  expectLeftAloneForAMonth();
  EXPECT_THAT(log.lines(),
              ElementsAre("error: \"" + file.string() +
                          "\" may have been cut off, but its disk offers no locks, so nobody can "
                          "tell whether somebody records to it. When nobody does, \"audrel-record "
                          "--repair --force\" finishes it."));
}

TEST_F(HealerTest, leavesAFileThatWasWrittenInTheLastTenSecondsOrLaterThanNow) {
  note();
  const Time written = statusOf(file)->written;
  for (const auto age : {9999ms, 0ms, -1ms, -86'400'000ms}) {
    now = written + age;
    heal();
    expectUntouched();
    EXPECT_THAT(entries.entries(), SizeIs(1));
  }
  now = written + 10s;
  heal();
  EXPECT_EQ(repairs, 1);
}

TEST_F(HealerTest, keepsTheEntryOfARecordingThatTookAMonthAndEndedJustNow) {
  note();
  fs::last_write_time(entries.path() / entries.entries()[0].name,
                      fs::file_time_type::clock::now() - std::chrono::days(31));
  now = statusOf(file)->written + 1s;
  heal();
  expectUntouched();
  ASSERT_THAT(entries.entries(), SizeIs(1));
  now += 10s;
  heal();
  EXPECT_EQ(repairs, 1);
}

TEST_F(HealerTest, leavesAFileThatGrowsBetweenOpeningAndLocking) {
  note();
  healOpening([this](const fs::path& path, int* code) {
    std::ofstream(file, std::ios::app) << "more";
    now = statusOf(file)->written + 1s;
    return openExisting(path, code);
  });
  expectUntouched();
  EXPECT_THAT(entries.entries(), SizeIs(1));
}

TEST_F(HealerTest, leavesAFileThatIsReplacedWhileItIsOpened) {
  note();
  healOpening([this](const fs::path& path, int* code) {
    auto existing = openExisting(path, code);
    fs::rename(file, home / "moved.m4a");
    std::ofstream(file) << "another";
    return existing;
  });
  expectUntouched();
}

TEST_F(HealerTest, leavesAFileThatHadTheNameOnlyWhileItWasOpened) {
  note();
  std::ofstream(home / "another.m4a") << "another";
  healOpening([this](const fs::path& /*path*/, int* code) {
    return openExisting(home / "another.m4a", code);
  });
  expectUntouched();
  EXPECT_THAT(entries.entries(), SizeIs(1));
}

// What is absent

TEST_F(HealerTest, forgetsAFileThatIsGone) {
  note();
  fs::remove(file);
  expectForgotten();
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(HealerTest, waitsAMonthForADiskThatIsAbsent) {
  note([this](RecordingEntry& entry) { entry.file = home / "media/disk/talk.m4a"; });
  expectLeftAloneForAMonth();
}

TEST_F(HealerTest, waitsAMonthForADiskWhoseEmptyFolderIsThere) {
  note([](RecordingEntry& entry) { ++entry.identity.device; });
  fs::remove(file);
  expectLeftAloneForAMonth();
}

TEST_F(HealerTest, waitsAMonthForWhatItMayNotOpen) {
  note();
  openCode = EACCES;
  expectLeftAloneForAMonth();
  EXPECT_THAT(log.lines(), ElementsAre("error: \"" + file.string() +
                                       "\" may have been cut off, but cannot be opened (Permission "
                                       "denied)."));
}

// What is no entry

TEST_F(HealerTest, removesWhatSaysNothingOfARecording) {
  fs::create_directories(entries.path());
  std::ofstream(entries.path() / "recording-x") << "file=talk.m4a\n";
  fs::create_symlink(file, entries.path() / "recording-y");
  heal();
  EXPECT_THAT(entries.entries(), IsEmpty());
  EXPECT_TRUE(fs::exists(file));
  EXPECT_THAT(log.lines(), testing::UnorderedElementsAre(
                               "error: \"" + (entries.path() / "recording-x").string() +
                                   "\" says nothing of a recording, and is removed.",
                               "error: \"" + (entries.path() / "recording-y").string() +
                                   "\" says nothing of a recording, and is removed."));
}

TEST_F(HealerTest, logsOnceWhatItCannotRemove) {
  fs::create_directories(entries.path() / "recording-x");
  heal();
  heal();
  EXPECT_THAT(log.lines(), SizeIs(1));
}

TEST_F(HealerTest, leavesAnEntryThatIsBeingWrittenForAMonth) {
  fs::create_directories(entries.path());
  std::ofstream(entries.path() / ".recording-x") << "file=";
  expectLeftAloneForAMonth();
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(HealerTest, leavesTheEntryOfAnotherUser) {
  if (geteuid() != 0) {
    GTEST_SKIP() << "needs root, to give a file away";
  }
  note();
  const fs::path entry = entries.path() / entries.entries()[0].name;
  ASSERT_EQ(chown(entry.c_str(), 1, 1), 0);
  now += std::chrono::days(31);
  heal();
  expectUntouched();
  EXPECT_TRUE(fs::exists(entry));
  EXPECT_THAT(log.lines(),
              ElementsAre("\"" + entry.string() + "\" is another user's, and left alone."));
}

// Ending

TEST_F(HealerTest, looksAtNothingOnceItIsToEnd) {
  note();
  isToEnd = true;
  heal();
  expectUntouched();
  EXPECT_THAT(entries.entries(), SizeIs(1));
}

TEST_F(HealerTest, keepsTheEntryOfARepairThatWasToEndHoweverOldItIs) {
  note();
  now += std::chrono::days(31);
  Healer ending(entries, log.makeLogger("", ""),
                {.now = [this] { return now; },
                 .open = openExisting,
                 .repair =
                     [&](OpenFile&) {
                       isToEnd = true;
                       return Repair{.outcome = Outcome::unreadable};
                     }});
  ending.heal(isToEnd);
  EXPECT_THAT(entries.entries(), SizeIs(1));
}

TEST_F(HealerTest, letsNoCallOfARepairPassOnceItIsToEnd) {
  note();
  int passed = 0;
  Healer ending(entries, log.makeLogger("", ""),
                {.now = [this] { return now; },
                 .open = openExisting,
                 .repair =
                     [&](OpenFile& open) {
                       std::byte byte{};
                       passed += open.pread(&byte, 1, 0) == 1 ? 1 : 0;
                       isToEnd = true;
                       const std::vector<ssize_t> results = {open.pread(&byte, 1, 0),
                                                             open.pwrite(&byte, 1, 0),
                                                             open.ftruncate(0), open.sync()};
                       EXPECT_THAT(results, testing::Each(-1));
                       EXPECT_EQ(errno, ECANCELED);
                       return Repair{.outcome = Outcome::unreadable};
                     }});
  ending.heal(isToEnd);
  EXPECT_EQ(passed, 1);
  EXPECT_EQ(fs::file_size(file), 5U);
  EXPECT_THAT(entries.entries(), SizeIs(1));
  EXPECT_THAT(log.lines(), IsEmpty());
}

/// With the repair itself, on what a killed program leaves.
class CutOffFiles : public FileTest {
 protected:
  /// A recording that was cut off after `calls` calls.
  void cutOff(const std::string& name, const AV::Settings& settings, std::size_t calls) {
    const auto disk = std::make_shared<FakeDisk>();
    AudioFramework framework(log_, disk->creator());
    auto file = openFile(framework, folder_ / name, settings);
    deliver(framework, *file, audio);
    file.reset();
    ASSERT_LT(calls, disk->journal.size());
    disk->replay(calls, 0, folder_ / name);
    std::string problem;
    ASSERT_TRUE(entries.add(folder_ / name, statusOf(folder_ / name)->identity, &problem))
        << problem;
  }

  Healer healer() {
    Healer made(entries, log_.makeLogger("", ""), {.now = [] { return Time::clock::now() + 1h; }});
    made.setNoticeTaker([this](const Notice& notice) {
      const std::lock_guard lock(mutex);
      notices.push_back(notice);
    });
    return made;
  }

  const Audio audio = noise(240'000);
  EntryFolder entries{folder_ / "state", [] { return here; }};
  std::atomic<bool> isToEnd = false;
  std::mutex mutex;
  std::vector<Notice> notices;
};

TEST_F(CutOffFiles, areWholeAfterwards) {
  cutOff("talk.m4a", m4aSettings(audio), 6);
  cutOff("talk.wav", wavSettings(audio), 6);
  healer().heal(isToEnd);
  EXPECT_THAT(notices, SizeIs(2));
  EXPECT_THAT(entries.entries(), IsEmpty());
  for (const char* name : {"talk.m4a", "talk.wav"}) {
    EXPECT_EQ(linuxos::repair(folder_ / name, LockRule::needed).outcome, Outcome::whole) << name;
    EXPECT_FALSE(decode(folder_ / name).empty());
  }
}

TEST_F(CutOffFiles, areFinishedOnceByTwoProgramsThatStartTogether) {
  constexpr int files = 12;
  for (int i = 0; i < files; ++i) {
    cutOff(std::to_string(i) + ".wav", wavSettings(audio), 6);
  }
  Healer first = healer();
  Healer second = healer();
  std::thread beside([&] { first.heal(isToEnd); });
  second.heal(isToEnd);
  beside.join();
  EXPECT_THAT(notices, SizeIs(files));
  // Where one had the lock, the other has left the entry to it.
  EXPECT_THAT(entries.entries(), IsEmpty());
  EXPECT_THAT(log_.lines(), SizeIs(files));
}

}  // namespace
}  // namespace audrel::linuxos::test
