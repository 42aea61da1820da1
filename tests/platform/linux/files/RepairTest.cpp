// Which files a repair takes, by their paths, and which it leaves alone.

#include "platform/linux/files/Repair.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cmath>
#include <csignal>
#include <fstream>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "tests/platform/linux/files/FakeDisk.h"
#include "tests/platform/linux/files/MemoryFile.h"
#include "tests/platform/linux/files/Recordings.h"
#include "tests/platform/linux/files/Tools.h"

namespace audrel::linuxos::test {
namespace {

using testing::HasSubstr;
using Outcome = Repair::Outcome;

class Repairs : public FileTest {
 protected:
  /// A recording that was cut off after two blocks.
  std::filesystem::path cutOff(const std::string& name) {
    const auto disk = std::make_shared<FakeDisk>();
    AudioFramework framework(log_, disk->creator());
    const Audio audio = noise(60'000);
    const bool isWav = name.ends_with(".wav");
    const auto file = openFile(framework, name, isWav ? wavSettings(audio) : m4aSettings(audio));
    EXPECT_TRUE(deliver(framework, *file, audio).empty());
    disk->replay(isWav ? 4 : 3, 0, folder_ / name);
    return folder_ / name;
  }

  /// That is what `repair` says of it, and it stays as it is.
  void expectUntouched(const std::filesystem::path& path, Outcome outcome) const {
    SCOPED_TRACE(path);
    const auto before = contentsOf(path);
    const auto written = std::filesystem::last_write_time(path);
    EXPECT_EQ(repair(path, LockRule::needed).outcome, outcome);
    EXPECT_TRUE(contentsOf(path) == before);
    EXPECT_EQ(std::filesystem::last_write_time(path), written);
  }

  std::string problemOf(const std::filesystem::path& path) const {
    const auto [outcome, seconds, problem] = repair(path, LockRule::ifOffered);
    EXPECT_EQ(outcome, Outcome::unreadable);
    return problem;
  }
};

TEST_F(Repairs, areDoneOnceAndThenTheFileIsWhole) {
  for (const auto* name : {"song.m4a", "song.wav"}) {
    const auto path = cutOff(name);
    const auto repaired = repair(path, LockRule::needed);
    EXPECT_EQ(repaired.outcome, Outcome::repaired);
    EXPECT_EQ(probe(path).duration, std::lround(repaired.seconds * 48000));
    expectUntouched(path, Outcome::whole);
  }
}

/// Records one file after the other, until it is killed.
[[noreturn]] void recordForEver(const std::filesystem::path& folder, const Audio& audio) {
  support::KeptLog log;
  AudioFramework framework(log);
  for (int i = 0;; ++i) {
    const bool isWav = i % 2 == 1;
    const auto name = std::to_string(i) + (isWav ? ".wav" : ".m4a");
    const auto settings = isWav ? wavSettings(audio) : m4aSettings(audio);
    const auto file = openFile(framework, folder / name, settings);
    deliver(framework, *file, audio);
  }
}

TEST_F(Repairs, makeWholeWhateverAKillLeaves) {
  const Audio audio = noise(100'000);
  std::minstd_rand random(std::random_device{}());
  std::size_t repaired = 0;
  for (int kills = 0; kills < 12; ++kills) {
    const support::TemporaryFolder folder;
    const pid_t child = fork();
    if (child == 0) {
      recordForEver(folder.path(), audio);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(30 + random() % 300));
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
      SCOPED_TRACE(entry.path());
      const auto outcome = repair(entry.path(), LockRule::needed);
      if (entry.file_size() == 0) {
        EXPECT_EQ(outcome.outcome, Outcome::notOurs) << "killed before its first write";
        continue;
      }
      repaired += outcome.outcome == Outcome::repaired ? 1 : 0;
      EXPECT_EQ(repair(entry.path(), LockRule::needed), (Repair{Outcome::whole, outcome.seconds}));
      if (outcome.seconds == 0 && entry.path().extension() == ".wav") {
        EXPECT_TRUE(readWav(entry.path()).samples.empty());  // FFmpeg complains of such
        continue;
      }
      EXPECT_EQ(probe(entry.path()).duration, std::lround(outcome.seconds * 48000));
      EXPECT_LT(errorRatio(audio, decode(entry.path())), 0.1);
    }
  }
  EXPECT_GT(repaired, 0U);
}

TEST_F(Repairs, leaveWhatAStoppedRecordingMadeAlone) {
  const Audio audio = noise(60'000);
  expectUntouched(record("song.m4a", audio, m4aSettings(audio)), Outcome::whole);
  expectUntouched(record("song.wav", audio, wavSettings(audio)), Outcome::whole);
}

TEST_F(Repairs, leaveWhatOtherProgramsMadeAlone) {
  const auto make = [&](const std::string& name, const std::vector<std::string>& options = {}) {
    std::vector<std::string> command = {"ffmpeg", "-v", "error",          "-f",
                                        "lavfi",  "-i", "sine=duration=2"};
    command.insert(command.end(), options.begin(), options.end());
    command.push_back(folder_ / name);
    ASSERT_EQ(runTool(command).exitCode, 0);
  };
  make("plain.m4a");
  make("fragmented.m4a", {"-movflags", "frag_keyframe+empty_moov"});
  make("a.wav");
  make("b.wav", {"-rf64", "always"});
  ASSERT_EQ(runTool({"sox", "-n", folder_ / "c.wav", "synth", "1", "sine"}).exitCode, 0);
  std::ofstream(folder_ / "empty.m4a").flush();
  std::ofstream(folder_ / "text") << "ftypM4A RIFF";
  for (const auto* name :
       {"plain.m4a", "fragmented.m4a", "a.wav", "b.wav", "c.wav", "empty.m4a", "text"}) {
    expectUntouched(folder_ / name, Outcome::notOurs);
  }
}

TEST_F(Repairs, leaveAFileAloneThatIsBeingRecorded) {
  const Audio audio = noise(60'000);
  const auto path = folder_ / "song.m4a";
  auto file = openFile(framework_, path, m4aSettings(audio));
  EXPECT_TRUE(deliver(framework_, *file, audio).empty());
  expectUntouched(path, Outcome::inUse);
  EXPECT_EQ(repair(path, LockRule::ifOffered).outcome, Outcome::inUse) << "force or not";
  file.reset();
  expectUntouched(path, Outcome::whole);
}

TEST_F(Repairs, passTheFileOnToNoOtherProgram) {
  int code = 0;
  const auto file = openExisting(cutOff("song.wav"), &code);
  ASSERT_TRUE(file);
  const std::string open = runTool({"ls", "-l", "/proc/self/fd"}).output;
  ASSERT_NE(open.find("/dev/null"), std::string::npos) << open;
  EXPECT_EQ(open.find("song.wav"), std::string::npos) << open;
}

TEST_F(Repairs, keepOthersOffTheFileWhileTheyLast) {
  const auto path = cutOff("song.wav");
  int code = 0;
  const auto file = openExisting(path, &code);
  ASSERT_EQ(file->lock(), 0);
  expectUntouched(path, Outcome::inUse);
}

TEST_F(Repairs, areMadeWithoutALockOnlyOnRequestWhereThereIsNone) {
  const auto start = contentsOf(cutOff("song.m4a"));
  for (const int code : {ENOLCK, EOPNOTSUPP, ENOSYS}) {
    MemoryFile file(start);
    file.lockCode = code;
    EXPECT_EQ(repair(file, LockRule::needed),
              (Repair{Outcome::inUse, 0,
                      "The disk that holds \"recording\" offers no locks, so nobody can tell "
                      "whether a program records to it."}));
    EXPECT_TRUE(file.story().empty());
    EXPECT_EQ(repair(file, LockRule::ifOffered).outcome, Outcome::repaired);
  }
  MemoryFile locked(start);
  locked.lockCode = EWOULDBLOCK;
  EXPECT_EQ(repair(locked, LockRule::ifOffered), (Repair{Outcome::inUse}));
  EXPECT_TRUE(locked.story().empty());
}

TEST_F(Repairs, areMadeOfRegularFilesAlone) {
  MemoryFile file(contentsOf(cutOff("song.m4a")));
  file.mode = S_IFCHR;
  EXPECT_EQ(repair(file, LockRule::needed).outcome, Outcome::unreadable);
  EXPECT_TRUE(file.story().empty());
}

TEST_F(Repairs, tellWhatCannotBeOpenedAndWhatToDo) {
  const auto path = cutOff("song.wav");
  std::filesystem::create_symlink(path, folder_ / "link.wav");
  EXPECT_EQ(problemOf(folder_ / "link.wav"),
            "\"link.wav\" is a link. Give the name of the file that it leads to.");
  EXPECT_THAT(problemOf(folder_ / "none.wav"), HasSubstr("There is no file \"none.wav\" in \""));
  EXPECT_THAT(problemOf(path / "none.wav"), HasSubstr("There is no file"));
  EXPECT_THAT(problemOf(folder_.path()),
              HasSubstr(" is not a file. Give the names of recordings."));
  EXPECT_THAT(problemOf("/dev/null"), HasSubstr("\"null\" is not a file."));
  ASSERT_EQ(mkfifo((folder_ / "pipe").c_str(), 0600), 0);
  EXPECT_EQ(problemOf(folder_ / "pipe"), "\"pipe\" is not a file. Give the names of recordings.");
  if (geteuid() != 0) {
    std::filesystem::permissions(path, std::filesystem::perms::owner_read);
    EXPECT_THAT(problemOf(path), HasSubstr("You have no permission to change \"song.wav\" in "));
  }
}

}  // namespace
}  // namespace audrel::linuxos::test
