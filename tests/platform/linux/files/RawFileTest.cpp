#include "platform/linux/files/RawFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <span>
#include <string>

#include "tests/platform/linux/files/Tools.h"
#include "tests/support/TemporaryFolder.h"

namespace audrel::linuxos::test {
namespace {

namespace fs = std::filesystem;

class RawFiles : public testing::Test {
 protected:
  void SetUp() override {
    fs::create_directory(here_);
    const mode_t previous = umask(0);
    int code = 0;
    file_ = createExclusively(path_, &code);
    umask(previous);
    ASSERT_TRUE(file_);
  }

  support::TemporaryFolder folder_;
  const fs::path here_ = folder_ / "here";
  const fs::path path_ = here_ / "talk.wav";
  std::unique_ptr<RawFile> file_;
};

TEST_F(RawFiles, areEmptyAndForTheirUserAlone) {
  struct stat status{};
  ASSERT_EQ(stat(path_.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0600U);
  EXPECT_EQ(status.st_size, 0);
}

TEST_F(RawFiles, areNotPassedOnToOtherPrograms) {
  const std::string text = runTool({"ls", "-l", "/proc/self/fd"}).output;
  ASSERT_NE(text.find("/dev/null"), std::string::npos) << text;
  EXPECT_EQ(text.find("talk.wav"), std::string::npos) << text;
}

TEST_F(RawFiles, writeWhereTheyAreToldAndCutOff) {
  const auto text = std::as_bytes(std::span("abcdef", 6));
  EXPECT_EQ(file_->pwrite(text.data(), 6, 2), 6);
  EXPECT_EQ(file_->ftruncate(5), 0);
  EXPECT_EQ(file_->close(), 0);
  std::ifstream stream(path_, std::ios::binary);
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(stream), {}), std::string("\0\0abc", 5));
}

TEST_F(RawFiles, areGoneOnceTheyAreRemoved) {
  file_->remove();
  EXPECT_TRUE(fs::is_empty(here_));
}

TEST_F(RawFiles, areRemovedAlsoWhereTheirFolderWasExchanged) {
  fs::rename(here_, folder_ / "elsewhere");
  fs::create_directory(here_);
  std::ofstream(path_) << "somebody's";
  file_->remove();
  EXPECT_TRUE(fs::exists(path_));
  EXPECT_TRUE(fs::is_empty(folder_ / "elsewhere"));
}

TEST_F(RawFiles, removeNoOtherThatHasTheirNameByNow) {
  fs::rename(path_, here_ / "mine.wav");
  std::ofstream(path_) << "somebody's";
  file_->remove();
  EXPECT_TRUE(fs::exists(path_));
}

}  // namespace
}  // namespace audrel::linuxos::test
