#include "platform/linux/system/FileManager.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <system_error>

#include "platform/linux/system/UserDirectories.h"
#include "tests/support/TemporaryFolder.h"

namespace audrel::linuxos {
namespace {

using std::filesystem::path;

std::optional<path> downloadsOf(const std::string& text) {
  std::istringstream file(text);
  return userDirectory(file, "XDG_DOWNLOAD_DIR", "/home/me");
}

TEST(UserDirectory, isBelowHomeOrAbsolute) {
  EXPECT_EQ(downloadsOf("XDG_DOWNLOAD_DIR=\"$HOME/Téléchargements\"\n"),
            path("/home/me/Téléchargements"));
  EXPECT_EQ(downloadsOf("XDG_DOWNLOAD_DIR=\"/srv/in box\"\n"), path("/srv/in box"));
  EXPECT_EQ(downloadsOf("  XDG_DOWNLOAD_DIR = \"$HOME\" \n"), path("/home/me"));
}

TEST(UserDirectory, skipsCommentsAndOtherFolders) {
  EXPECT_EQ(downloadsOf("# XDG_DOWNLOAD_DIR=\"/no\"\nXDG_MUSIC_DIR=\"/music\"\n"), std::nullopt);
  EXPECT_EQ(downloadsOf("XDG_DOWNLOAD_DIRECTORY=\"/no\"\n"), std::nullopt);
  EXPECT_EQ(downloadsOf(""), std::nullopt);
}

TEST(UserDirectory, isTheLastThatTheFileNames) {
  EXPECT_EQ(downloadsOf("XDG_DOWNLOAD_DIR=\"/a\"\nXDG_DOWNLOAD_DIR=\"/b\"\n"), path("/b"));
}

TEST(UserDirectory, takesEscapedCharactersAsTheyAre) {
  EXPECT_EQ(downloadsOf(R"(XDG_DOWNLOAD_DIR="/a\"b\\c\$d")"), path("/a\"b\\c$d"));
}

TEST(UserDirectory, ignoresWhatIsNoPath) {
  EXPECT_EQ(downloadsOf("XDG_DOWNLOAD_DIR=\"Downloads\"\n"), std::nullopt);
  EXPECT_EQ(downloadsOf("XDG_DOWNLOAD_DIR=\"$HOMELESS/x\"\n"), std::nullopt);
  EXPECT_EQ(downloadsOf("XDG_DOWNLOAD_DIR=/unquoted\n"), std::nullopt);
  EXPECT_EQ(downloadsOf("XDG_DOWNLOAD_DIR=\"/unclosed\n"), std::nullopt);
}

/// A home folder of its own in the environment, for each test.
class LinuxFileManager : public testing::Test {
 protected:
  void SetUp() override {
    setenv("HOME", home_.path().c_str(), 1);
    unsetenv("XDG_CONFIG_HOME");
    unsetenv("XDG_DOWNLOAD_DIR");
  }

  void configure(const path& folder, const std::string& text) const {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    std::ofstream(folder / "user-dirs.dirs") << text;
  }

  support::TemporaryFolder home_;
  FileManager fileManager_;
};

TEST_F(LinuxFileManager, hasDownloadsInTheHomeFolderWhenNothingNamesAnother) {
  EXPECT_EQ(fileManager_.downloadsDirectory(), home_ / "Downloads");
}

TEST_F(LinuxFileManager, makesTheDownloadsFolderButNotWhatItIsIn) {
  configure(home_ / ".config", "XDG_DOWNLOAD_DIR=\"$HOME/In\"\n");
  fileManager_.downloadsDirectory();
  EXPECT_TRUE(std::filesystem::is_directory(home_ / "In"));
  std::ofstream(home_ / "In/kept") << "x";
  configure(home_ / ".config", "XDG_DOWNLOAD_DIR=\"$HOME/absent disk/In\"\n");
  EXPECT_EQ(fileManager_.downloadsDirectory(), home_ / "absent disk/In");
  EXPECT_FALSE(std::filesystem::exists(home_ / "absent disk"));
  EXPECT_TRUE(std::filesystem::exists(home_ / "In/kept"));
}

TEST_F(LinuxFileManager, readsTheDownloadsFolderFromTheUsersConfiguration) {
  configure(home_ / ".config", "XDG_DOWNLOAD_DIR=\"$HOME/In/\"\n");
  EXPECT_EQ(fileManager_.downloadsDirectory(), home_ / "In");
}

TEST_F(LinuxFileManager, looksWhereTheEnvironmentPutsTheConfiguration) {
  configure(home_ / "elsewhere", "XDG_DOWNLOAD_DIR=\"/from/elsewhere\"\n");
  setenv("XDG_CONFIG_HOME", (home_ / "elsewhere").c_str(), 1);
  EXPECT_EQ(fileManager_.downloadsDirectory(), path("/from/elsewhere"));
}

TEST_F(LinuxFileManager, takesTheEnvironmentsFolderWhenTheConfigurationHasNone) {
  setenv("XDG_DOWNLOAD_DIR", "/from/environment", 1);
  EXPECT_EQ(fileManager_.downloadsDirectory(), path("/from/environment"));
  configure(home_ / ".config", "XDG_DOWNLOAD_DIR=\"/from/file\"\n");
  EXPECT_EQ(fileManager_.downloadsDirectory(), path("/from/file"));
}

TEST_F(LinuxFileManager, doesNotWaitForAPipeInThePlaceOfTheConfiguration) {
  std::filesystem::create_directory(home_ / ".config");
  ASSERT_EQ(mkfifo((home_ / ".config/user-dirs.dirs").c_str(), 0600), 0);
  EXPECT_EQ(fileManager_.downloadsDirectory(), home_ / "Downloads");
}

TEST_F(LinuxFileManager, doesNotReadAConfigurationOfMoreThanAMegabyte) {
  configure(home_ / ".config", std::string(2'000'000, '#') + "\nXDG_DOWNLOAD_DIR=\"/srv\"\n");
  EXPECT_EQ(fileManager_.downloadsDirectory(), home_ / "Downloads");
}

TEST_F(LinuxFileManager, takesTheHomeFolderForNoDownloadsFolder) {
  configure(home_ / ".config", "XDG_DOWNLOAD_DIR=\"$HOME/\"\n");
  EXPECT_EQ(fileManager_.downloadsDirectory(), home_ / "Downloads");
}

TEST_F(LinuxFileManager, hasTheHomeFolderOfTheEnvironmentElseOfTheUserDatabase) {
  EXPECT_EQ(fileManager_.homeDirectoryForCurrentUser(), home_.path());
  setenv("HOME", "not/absolute", 1);
  EXPECT_TRUE(fileManager_.homeDirectoryForCurrentUser().is_absolute());
  unsetenv("HOME");
  EXPECT_TRUE(fileManager_.homeDirectoryForCurrentUser().is_absolute());
}

TEST_F(LinuxFileManager, aLinkThatLeadsNowhereIsNoFileAndTakesItsName) {
  for (const char* target : {"/nowhere/at/all", "itself"}) {
    const path link = home_ / path(target).filename();
    ASSERT_EQ(symlink(target, link.c_str()), 0);
    EXPECT_FALSE(fileManager_.fileExists(link));
    EXPECT_TRUE(fileManager_.nameIsTaken(link));
  }
}

}  // namespace
}  // namespace audrel::linuxos
