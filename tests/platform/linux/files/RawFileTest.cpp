#include "platform/linux/files/RawFile.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

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

TEST_F(RawFiles, areFlushedAndTheirFolderToo) {
  EXPECT_EQ(file_->sync(), 0);
  EXPECT_EQ(file_->syncFolder(), 0);
}

/// Root may read everything: for its length the process is somebody else's.
class OrdinaryUser {
 public:
  OrdinaryUser() { EXPECT_TRUE(geteuid() != 0 || seteuid(nobody) == 0); }
  OrdinaryUser(const OrdinaryUser&) = delete;
  OrdinaryUser& operator=(const OrdinaryUser&) = delete;
  ~OrdinaryUser() { EXPECT_EQ(seteuid(getuid()), 0); }

 private:
  static constexpr uid_t nobody = 65534;
};

TEST_F(RawFiles, areMadeAndFlushedWhereTheirFolderCanOnlyBeWritten) {
  const auto closed = folder_ / "closed";
  fs::create_directory(closed);
  fs::permissions(closed, fs::perms(0333));
  fs::permissions(closed.parent_path(), fs::perms(0711));
  {
    const OrdinaryUser user;
    ASSERT_LT(open(closed.c_str(), O_RDONLY | O_CLOEXEC), 0);
    int code = 0;
    const auto file = createExclusively(closed / "talk.wav", &code);
    ASSERT_TRUE(file) << code;
    EXPECT_EQ(file->syncFolder(), 0);
  }
  fs::permissions(closed, fs::perms::owner_all);
}

/// Whether another program would get the lock.
bool isFree(const fs::path& path) {
  const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  const bool isFree = flock(descriptor, LOCK_EX | LOCK_NB) == 0;
  close(descriptor);
  return isFree;
}

TEST_F(RawFiles, areLockedUntilTheyAreClosed) {
  EXPECT_TRUE(file_->isLocked());
  EXPECT_FALSE(isFree(path_));
  file_->close();
  EXPECT_TRUE(isFree(path_));
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
