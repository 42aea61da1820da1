#include "platform/linux/session/UserDefaults.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>
#include <system_error>

#include "tests/fakes/ScopedVariable.h"
#include "tests/support/KeptLog.h"
#include "tests/support/TemporaryFolder.h"

namespace audrel::linuxos {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace fs = std::filesystem;

/// No file of this process can grow: what a full disk does, to root as well.
class FullDisk {
 public:
  FullDisk() {
    std::signal(SIGXFSZ, SIG_IGN);
    getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit none{.rlim_cur = 0, .rlim_max = before_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &none);
  }
  ~FullDisk() { setrlimit(RLIMIT_FSIZE, &before_); }
  FullDisk(const FullDisk&) = delete;
  FullDisk& operator=(const FullDisk&) = delete;

 private:
  rlimit before_{};
};

class LinuxUserDefaults : public testing::Test {
 protected:
  std::string content() const {
    std::ifstream stream(file);
    return {std::istreambuf_iterator<char>(stream), {}};
  }

  void write(const std::string& text) const {
    fs::create_directories(file.parent_path());
    std::ofstream(file) << text;
  }

  std::set<std::string> filesBesideIt() const {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(file.parent_path())) {
      names.insert(entry.path().filename());
    }
    return names;
  }

  static int modeOf(const fs::path& path) {
    struct stat status{};
    EXPECT_EQ(stat(path.c_str(), &status), 0);
    return static_cast<int>(status.st_mode & 07777U);
  }

  support::TemporaryFolder folder;
  const fs::path file = folder.path() / "config" / "audrel" / "defaults.ini";
  std::shared_ptr<support::KeptLogger> log = std::make_shared<support::KeptLogger>();
  UserDefaults defaults{file, log};
  UserDefaults ofAnotherProcess{file, log};
};

TEST_F(LinuxUserDefaults, haveNothingBeforeTheFirstWriteAndMakeNoFileForIt) {
  EXPECT_EQ(defaults.stringForKey("format"), std::nullopt);
  EXPECT_FALSE(fs::exists(folder.path() / "config"));
  EXPECT_THAT(log->lines(), IsEmpty());
}

TEST_F(LinuxUserDefaults, areAFileThatPeopleCanRead) {
  defaults.setString("wav", "format");
  defaults.setString("Rhythmbox — Größe", "sourceName");
  EXPECT_EQ(content(), "[Defaults]\nformat=\"wav\"\nsourceName=\"Rhythmbox — Größe\"\n");
}

TEST_F(LinuxUserDefaults, areUtf8WhateverBytesATextHas) {
  defaults.setString("/music/caf\xE9\n.wav", "lastRecordingPath");
  EXPECT_EQ(content(), "[Defaults]\nlastRecordingPath=\"/music/caf\\351\\n.wav\"\n");
}

TEST_F(LinuxUserDefaults, areReadByAnotherProcessAsTheyWereWhateverTheText) {
  for (const char* text :
       {"", " ", " a b ", "\"", "\"quoted\"", "back\\slash\\", "two\nlines\r\n", "[Group]", "#",
        "a=b;c", "\t", "\x7F\x01", "日本語", "/music/caf\xE9.wav", "\xFF\xFE mixed é"}) {
    defaults.setString(text, "key");
    defaults.setString("after", "next");
    EXPECT_EQ(ofAnotherProcess.stringForKey("key"), text);
    EXPECT_EQ(ofAnotherProcess.stringForKey("next"), "after");
  }
}

TEST_F(LinuxUserDefaults, areReadFreshEachTime) {
  defaults.setString("wav", "format");
  ofAnotherProcess.setString("m4a", "format");
  EXPECT_EQ(defaults.stringForKey("format"), "m4a");
  write("[Defaults]\nformat=by hand\n");
  EXPECT_EQ(defaults.stringForKey("format"), "by hand");
  fs::remove(file);
  EXPECT_EQ(defaults.stringForKey("format"), std::nullopt);
}

TEST_F(LinuxUserDefaults, keepWhatElseIsInTheFile) {
  write("# mine\n\n[Other]\nkey=1\n\n[Defaults]\nformat=m4a\nlater=kept\n");
  defaults.setString("wav", "format");
  EXPECT_EQ(content(), "# mine\n\n[Other]\nkey=1\n\n[Defaults]\nformat=\"wav\"\nlater=kept\n");
}

TEST_F(LinuxUserDefaults, areForTheirUserAlone) {
  defaults.setString("wav", "format");
  EXPECT_EQ(modeOf(file), 0600);
  EXPECT_EQ(modeOf(file.parent_path()), 0700);
}

TEST_F(LinuxUserDefaults, keepThePermissionsThatTheUserGave) {
  write("");
  fs::permissions(file, fs::perms(0640));
  defaults.setString("wav", "format");
  EXPECT_EQ(modeOf(file), 0640);
}

TEST_F(LinuxUserDefaults, stayBehindALink) {
  const fs::path target = folder.path() / "dotfiles.ini";
  std::ofstream(target) << "[Defaults]\n";
  fs::create_directories(file.parent_path());
  fs::create_symlink(target, file);
  defaults.setString("wav", "format");
  EXPECT_TRUE(fs::is_symlink(file));
  EXPECT_EQ(ofAnotherProcess.stringForKey("format"), "wav");
}

TEST_F(LinuxUserDefaults, readBackWhatTheFullDiskDidNotTake) {
  defaults.setString("m4a", "format");
  defaults.setString("Example", "sourceName");
  {
    const FullDisk full;
    defaults.setString("wav", "format");
    defaults.removeObjectForKey("sourceName");
    defaults.setString("/a.wav", "lastRecordingPath");
    EXPECT_EQ(defaults.stringForKey("format"), "wav");
    EXPECT_EQ(defaults.stringForKey("sourceName"), std::nullopt);
    EXPECT_EQ(defaults.stringForKey("lastRecordingPath"), "/a.wav");
  }
  EXPECT_EQ(content(), "[Defaults]\nformat=\"m4a\"\nsourceName=\"Example\"\n");
  EXPECT_THAT(filesBesideIt(), ElementsAre("defaults.ini"));
  EXPECT_THAT(log->lines(),
              ElementsAre(StartsWith("error: Settings cannot be saved, and last until "
                                     "the program ends: ")));
}

TEST_F(LinuxUserDefaults, writeWhatTheFullDiskDidNotTakeWithTheNextChange) {
  defaults.setString("Example", "sourceName");
  {
    const FullDisk full;
    defaults.setString("wav", "format");
    defaults.removeObjectForKey("sourceName");
  }
  defaults.setString("/a.wav", "lastRecordingPath");
  EXPECT_EQ(content(), "[Defaults]\nformat=\"wav\"\nlastRecordingPath=\"/a.wav\"\n");
  ofAnotherProcess.setString("m4a", "format");
  EXPECT_EQ(defaults.stringForKey("format"), "m4a") << "what was saved hides nothing any more";
}

TEST_F(LinuxUserDefaults, readBackWhatAFolderThatCannotBeMadeDidNotTake) {
  std::ofstream(folder.path() / "config") << "in the way";
  defaults.setString("wav", "format");
  EXPECT_EQ(defaults.stringForKey("format"), "wav");
  EXPECT_EQ(defaults.stringForKey("sourceName"), std::nullopt);
  fs::remove(folder.path() / "config");
  defaults.setString("Example", "sourceName");
  EXPECT_EQ(ofAnotherProcess.stringForKey("format"), "wav");
}

TEST_F(LinuxUserDefaults, keepABrokenFileAsideWhenRead) {
  write("no group\n");
  EXPECT_EQ(defaults.stringForKey("format"), std::nullopt);
  EXPECT_THAT(filesBesideIt(), ElementsAre("defaults.ini.broken"));
  EXPECT_THAT(log->lines(),
              ElementsAre(AllOf(StartsWith("error: Settings were broken ("),
                                HasSubstr("begun again from nothing, the old file is kept as " +
                                          file.string() + ".broken"))));
}

TEST_F(LinuxUserDefaults, keepEveryBrokenFile) {
  write("first\n");
  defaults.setString("wav", "format");
  write("second\n");
  defaults.setString("m4a", "format");
  EXPECT_THAT(filesBesideIt(),
              ElementsAre("defaults.ini", "defaults.ini.broken", "defaults.ini.broken-2"));
  EXPECT_EQ(ofAnotherProcess.stringForKey("format"), "m4a");
}

TEST_F(LinuxUserDefaults, lastUntilTheEndWhereAPipeStandsInThePlaceOfTheirFile) {
  fs::create_directories(file.parent_path());
  ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
  EXPECT_EQ(defaults.stringForKey("format"), std::nullopt);
  defaults.setString("wav", "format");
  EXPECT_EQ(defaults.stringForKey("format"), "wav");
  EXPECT_TRUE(fs::is_fifo(file));
  EXPECT_THAT(log->lines(), ElementsAre("error: Settings cannot be read from " + file.string() +
                                        ": it is no regular file"));
}

TEST_F(LinuxUserDefaults, areNotReadFromAFileOfMoreThanAMegabyte) {
  write("[Defaults]\nformat=wav\n#" + std::string(2'000'000, '#'));
  EXPECT_EQ(defaults.stringForKey("format"), std::nullopt);
  EXPECT_THAT(log->lines(), ElementsAre("error: Settings cannot be read from " + file.string() +
                                        ": it is larger than 1048576 bytes"));
}

TEST(UserDefaultsFile, isInTheUsersConfigurationFolder) {
  {
    const fakes::ScopedVariable variable("XDG_CONFIG_HOME", "/etc/mine");
    EXPECT_EQ(userDefaultsFile("/home/ann"), "/etc/mine/audrel/defaults.ini");
  }
  for (const char* unusable : {"", "relative"}) {
    const fakes::ScopedVariable variable("XDG_CONFIG_HOME", unusable);
    EXPECT_EQ(userDefaultsFile("/home/ann"), "/home/ann/.config/audrel/defaults.ini");
  }
}

}  // namespace
}  // namespace audrel::linuxos
