#include "platform/linux/files/RawFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "tests/platform/linux/files/Recordings.h"
#include "tests/platform/linux/files/Tools.h"
#include "tests/support/TemporaryFolder.h"

namespace audrel::linuxos::test {
namespace {

int creationCode(const std::filesystem::path& path) {
  int code = 0;
  return createExclusively(path, &code) ? 0 : code;
}

TEST(CreateExclusively, makesAnEmptyFileForItsUserAlone) {
  const support::TemporaryFolder folder;
  const mode_t previous = umask(0);
  EXPECT_EQ(creationCode(folder / "a.wav"), 0);
  umask(previous);
  struct stat status{};
  ASSERT_EQ(stat((folder / "a.wav").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0600U);
  EXPECT_EQ(status.st_size, 0);
}

TEST(CreateExclusively, leavesWhatExistsAlone) {
  const support::TemporaryFolder folder;
  std::ofstream(folder / "a.wav") << "precious";
  EXPECT_EQ(creationCode(folder / "a.wav"), EEXIST);
  std::string contents;
  std::ifstream(folder / "a.wav") >> contents;
  EXPECT_EQ(contents, "precious");
  EXPECT_EQ(creationCode(folder.path()), EEXIST);
}

TEST(CreateExclusively, followsNoLinkNotEvenOneThatLeadsNowhere) {
  const support::TemporaryFolder folder;
  ASSERT_EQ(symlink((folder / "target.wav").c_str(), (folder / "a.wav").c_str()), 0);
  EXPECT_EQ(creationCode(folder / "a.wav"), EEXIST);
  EXPECT_NE(access((folder / "target.wav").c_str(), F_OK), 0) << "the target was created";
}

TEST(CreateExclusively, tellsWhyThereIsNoFile) {
  const support::TemporaryFolder folder;
  std::ofstream(folder / "file") << "x";
  EXPECT_EQ(creationCode(folder / "missing/a.wav"), ENOENT);
  EXPECT_EQ(creationCode(folder / "file/a.wav"), ENOTDIR);
  EXPECT_EQ(creationCode(folder / std::string(300, 'a')), ENAMETOOLONG);
}

TEST(CreateExclusively, theFileIsNotPassedOnToOtherPrograms) {
  const support::TemporaryFolder folder;
  int code = 0;
  const auto file = createExclusively(folder / "a.wav", &code);
  ASSERT_TRUE(file);
  const std::string text = runTool({"ls", "-l", "/proc/self/fd"}).output;
  ASSERT_NE(text.find("/dev/null"), std::string::npos) << text;
  EXPECT_EQ(text.find("a.wav"), std::string::npos) << text;
}

TEST(RawFile, writesWhereItIsToldAndCutsOff) {
  const support::TemporaryFolder folder;
  int code = 0;
  const auto file = createExclusively(folder / "a.wav", &code);
  ASSERT_TRUE(file);
  const auto text = std::as_bytes(std::span("abcdef", 6));
  EXPECT_EQ(file->pwrite(text.data(), 6, 2), 6);
  EXPECT_EQ(file->ftruncate(5), 0);
  EXPECT_EQ(file->close(), 0);
  std::string contents(std::filesystem::file_size(folder / "a.wav"), '\0');
  std::ifstream(folder / "a.wav", std::ios::binary)
      .read(contents.data(), static_cast<std::streamsize>(contents.size()));
  EXPECT_EQ(contents, std::string("\0\0abc", 5));
}

struct RemovedFile : testing::Test {
  support::TemporaryFolder folder;
  const std::filesystem::path here = folder / "here";
  std::unique_ptr<RawFile> file;

  void SetUp() override {
    std::filesystem::create_directory(here);
    int code = 0;
    file = createExclusively(here / "talk.wav", &code);
    ASSERT_TRUE(file);
  }
};

TEST_F(RemovedFile, isGone) {
  file->remove();
  EXPECT_TRUE(std::filesystem::is_empty(here));
}

TEST_F(RemovedFile, isTheOneThatWasCreatedAlsoWhenItsFolderWasExchanged) {
  std::filesystem::rename(here, folder / "elsewhere");
  std::filesystem::create_directory(here);
  std::ofstream(here / "talk.wav") << "somebody's";
  file->remove();
  EXPECT_TRUE(std::filesystem::exists(here / "talk.wav"));
  EXPECT_TRUE(std::filesystem::is_empty(folder / "elsewhere"));
}

TEST_F(RemovedFile, isNoOtherThatHasItsNameByNow) {
  std::filesystem::rename(here / "talk.wav", here / "mine.wav");
  std::ofstream(here / "talk.wav") << "somebody's";
  file->remove();
  EXPECT_TRUE(std::filesystem::exists(here / "talk.wav"));
}

}  // namespace
}  // namespace audrel::linuxos::test
