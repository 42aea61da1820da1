#include "platform/linux/files/EntryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "platform/linux/system/StateFolder.h"
#include "tests/fakes/ScopedVariable.h"
#include "tests/support/TemporaryFolder.h"

namespace {

/// What `fsync` below does; it stands in the place of the system's in this program.
std::function<int(const std::string& path)> flushes;

}  // namespace

extern "C" int fsync(int descriptor) {
  const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
  const int code = flushes ? flushes(std::filesystem::read_symlink(link)) : 0;
  errno = code;
  return code == 0 ? 0 : -1;
}

namespace audrel::linuxos {
namespace {

namespace fs = std::filesystem;
using State = EntryFolder::Found::State;
using testing::ElementsAre;
using testing::IsEmpty;

const Machine here = {.id = "0123456789abcdef0123456789abcdef",
                      .boot = "61aa16bc-bcf6-47ff-9b53-cf53709a78fe"};

mode_t modeOf(const fs::path& path) {
  constexpr mode_t permissions = 07777;
  struct stat status{};
  return stat(path.c_str(), &status) == 0 ? status.st_mode & permissions : 0;
}

class EntryFolderTest : public testing::Test {
 protected:
  void SetUp() override {
    std::ofstream(file) << "audio";
    identity = statusOf(file)->identity;
  }
  void TearDown() override { flushes = nullptr; }

  std::optional<std::string> add() { return entries.add(file, identity, &problem); }

  void put(const std::string& name, const std::string& text) const {
    fs::create_directories(folder);
    std::ofstream(folder / name) << text;
  }

  /// The states of what is there.
  std::vector<State> states() const {
    std::vector<State> all;
    for (const auto& found : entries.entries()) {
      all.push_back(found.state);
    }
    return all;
  }

  support::TemporaryFolder home;
  const fs::path folder = home / "state/audrel";
  const fs::path file = home / "talk.m4a";
  FileIdentity identity;
  EntryFolder entries{folder, [] { return here; }};
  std::string problem;
};

TEST_F(EntryFolderTest, holdsAnEntryUntilItIsRemoved) {
  EXPECT_THAT(entries.entries(), IsEmpty());
  const auto name = add();
  ASSERT_TRUE(name) << problem;
  const auto found = entries.entries();
  ASSERT_EQ(found.size(), 1U);
  EXPECT_EQ(found[0].name, *name);
  EXPECT_EQ(found[0].state, State::entry);
  EXPECT_EQ(found[0].entry, (RecordingEntry{file, identity, here}));
  entries.remove(*name);
  EXPECT_THAT(entries.entries(), IsEmpty());
  entries.remove(*name);  // which another process may do at the same time
}

TEST_F(EntryFolderTest, isForItsUserAlone) {
  const mode_t before = umask(0);
  const auto name = add();
  umask(before);
  ASSERT_TRUE(name) << problem;
  EXPECT_EQ(modeOf(folder / *name), 0600U);
  EXPECT_EQ(modeOf(folder), 0700U);
  EXPECT_EQ(modeOf(folder.parent_path()), 0700U);
}

TEST_F(EntryFolderTest, hasEachEntryOnTheDiskBeforeItAnswers) {
  std::vector<std::string> flushed;
  flushes = [&](const std::string& path) {
    const auto name = fs::path(path).filename().string();
    const bool isEntry = name.starts_with(".recording-");
    flushed.push_back(
        isEntry ? "whole: " + std::to_string(entryIn([&] {
                                               std::ifstream stream(path);
                                               return std::string(
                                                   std::istreambuf_iterator<char>(stream), {});
                                             }())
                                                 .has_value())
                : path + ": " + std::to_string(std::distance(fs::directory_iterator(path), {})));
    return 0;
  };
  ASSERT_TRUE(add()) << problem;
  const std::string base = home.path();
  EXPECT_THAT(flushed,
              ElementsAre(base + ": 2", base + "/state: 1", "whole: 1", folder.string() + ": 1"));
  EXPECT_EQ(states(), std::vector{State::entry});
  flushed.clear();
  ASSERT_TRUE(add()) << problem;
  EXPECT_THAT(flushed, ElementsAre("whole: 1", folder.string() + ": 2"));
}

TEST_F(EntryFolderTest, leavesNothingBehindWhenItCannotFlush) {
  ASSERT_TRUE(add()) << problem;
  for (const std::string& failing : {std::string(".recording-"), folder.filename().string()}) {
    flushes = [&](const std::string& path) {
      return fs::path(path).filename().string().starts_with(failing) ? EIO : 0;
    };
    EXPECT_EQ(add(), std::nullopt);
    EXPECT_EQ(problem, "Input/output error");
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), {}), 1);
  }
}

TEST_F(EntryFolderTest, isContentWithADiskThatOffersNoFlush) {
  for (const int code : {EINVAL, ENOSYS, EOPNOTSUPP}) {
    flushes = [&](const std::string&) { return code; };
    EXPECT_TRUE(add()) << problem;
  }
}

TEST_F(EntryFolderTest, saysWhyThereIsNoEntry) {
  std::ofstream(folder.parent_path()) << "a file in the way";
  EXPECT_EQ(add(), std::nullopt);
  EXPECT_EQ(problem, "Not a directory");
  EXPECT_EQ(entries.add(home / "two\nlines.wav", identity, &problem), std::nullopt);
  EXPECT_EQ(problem, "its path has control characters");
  EXPECT_EQ(entries.add(home / "absent/talk.wav", identity, &problem), std::nullopt);
  EXPECT_EQ(problem, "No such file or directory");
  const EntryFolder nowhere(folder, [] { return std::nullopt; });
  EXPECT_EQ(nowhere.add(file, identity, &problem), std::nullopt);
  EXPECT_EQ(problem, "this computer has no id in /etc/machine-id");
}

TEST_F(EntryFolderTest, namesAFileWithoutTheLinksThatLeadToItsFolder) {
  fs::create_directories(home / "disk");
  fs::create_directory_symlink("disk", home / "link");
  ASSERT_TRUE(entries.add(home / "link/../link/talk.wav", identity, &problem)) << problem;
  EXPECT_EQ(entries.entries()[0].entry->file, home / "disk/talk.wav");
}

TEST_F(EntryFolderTest, tellsWhatIsNoEntry) {
  put("recording-empty", "");
  put("recording-long", std::string(longestEntry + 1, 'x'));
  fs::create_symlink(file, folder / "recording-link");
  fs::create_directory(folder / "recording-folder");
  ASSERT_EQ(mkfifo((folder / "recording-pipe").c_str(), 0600), 0);
  EXPECT_EQ(states(), std::vector(5, State::broken));
}

TEST_F(EntryFolderTest, leavesOtherFilesOut) {
  put("defaults.ini", "x");
  put("records", "x");
  EXPECT_THAT(entries.entries(), IsEmpty());
}

TEST_F(EntryFolderTest, tellsWhatWasNotWrittenToItsEnd) {
  put(".recording-x", "file=/home");
  EXPECT_EQ(states(), std::vector{State::unfinished});
}

TEST_F(EntryFolderTest, tellsWhatAnotherUserLeft) {
  if (geteuid() != 0) {
    GTEST_SKIP() << "needs root, to give a file away";
  }
  const auto name = add();
  ASSERT_TRUE(name) << problem;
  ASSERT_EQ(chown((folder / *name).c_str(), 1, 1), 0);
  EXPECT_EQ(states(), std::vector{State::foreign});
}

TEST_F(EntryFolderTest, readsAThousandEntriesAndNoMore) {
  for (int i = 0; i < 1100; ++i) {
    put("recording-" + std::to_string(i), "");
  }
  EXPECT_EQ(entries.entries().size(), 1000U);
}

TEST(StateFolder, isOfTheEnvironmentWhenThatIsAbsolute) {
  {
    const fakes::ScopedVariable variable("XDG_STATE_HOME", "/srv/state");
    EXPECT_EQ(stateFolder("/home/me"), "/srv/state/audrel");
  }
  for (const char* unusable : {"", "state", "./state"}) {
    const fakes::ScopedVariable variable("XDG_STATE_HOME", unusable);
    EXPECT_EQ(stateFolder("/home/me"), "/home/me/.local/state/audrel");
  }
}

TEST(ThisMachine, hasAnIdAndABoot) {
  support::TemporaryFolder folder;
  std::ofstream(folder / "id") << here.id << '\n';
  const auto machine = thisMachine(folder / "id");
  ASSERT_TRUE(machine);
  EXPECT_EQ(machine->id, here.id);
  EXPECT_EQ(machine->boot.size(), here.boot.size());
  EXPECT_EQ(thisMachine(folder / "id"), machine);
}

TEST(ThisMachine, isUnknownWithoutARightId) {
  support::TemporaryFolder folder;
  EXPECT_EQ(thisMachine(folder / "absent"), std::nullopt);
  for (const char* id :
       {"", "uninitialized\n", "0123456789abcdef0123456789abcde\n",
        "0123456789abcdef0123456789abcdef0\n", "0123456789ABCDEF0123456789abcdeg"}) {
    std::ofstream(folder / "id") << id;
    EXPECT_EQ(thisMachine(folder / "id"), std::nullopt) << id;
  }
}

}  // namespace
}  // namespace audrel::linuxos
