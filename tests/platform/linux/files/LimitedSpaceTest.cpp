// Real limits: of a file's size, and of a disk. The recordings run in children, which such limits
// are for alone.

#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <exception>
#include <fstream>
#include <functional>
#include <iostream>
#include <string>
#include <system_error>

#include "platform/linux/aac/AacModule.h"
#include "tests/platform/linux/files/Recordings.h"
#include "tests/platform/linux/files/Tools.h"

namespace audrel::linuxos::test {
namespace {

namespace fs = std::filesystem;

struct Obstacle {
  std::function<bool()> begin;
  std::function<void()> end;  ///< in the middle of a recording; none for one that stays
  int code = 0;
  const char* word = "";  ///< of the errors meanwhile
};

bool limitFileSize(rlim_t bytes) {
  const rlimit limit = {bytes, RLIM_INFINITY};
  return signal(SIGXFSZ, SIG_IGN) != SIG_ERR && setrlimit(RLIMIT_FSIZE, &limit) == 0;
}

Obstacle fileSizeLimit() {
  return {[] { return limitFileSize(300'000); }, nullptr, EFBIG, "ulimit"};
}

void writeText(const fs::path& file, const std::string& text) {
  std::ofstream(file) << text;
}

/// Gives this process mounts of its own; whoever is not root needs users of its own for that.
bool leaveMounts() {
  const auto user = std::to_string(geteuid());
  const auto group = std::to_string(getegid());
  if (geteuid() == 0) {
    return unshare(CLONE_NEWNS) == 0;
  }
  if (unshare(CLONE_NEWNS | CLONE_NEWUSER) != 0) {
    return false;
  }
  writeText("/proc/self/setgroups", "deny");
  writeText("/proc/self/uid_map", user + " " + user + " 1");
  writeText("/proc/self/gid_map", group + " " + group + " 1");
  return true;
}

/// A disk of a megabyte for this process at `folder`, most of which something else takes.
bool mountSmallDisk(const fs::path& folder) {
  if (!leaveMounts()) {
    return false;
  }
  // Others would see it too. In a changed root there may be no mount to say that of.
  mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr);
  const bool isMounted = mount("none", folder.c_str(), "tmpfs", 0, "size=1048576") == 0;
  writeText(folder / "ballast", std::string(3 << 18, 'x'));
  return isMounted;
}

class LimitedSpace : public FileTest {
 protected:
  LimitedSpace() {
    fs::create_directory(disk_);
    // From among mounts of its own in a changed root a child does not find this program's folder.
    std::string problem;
    EXPECT_NE(aacFunctions(&problem), nullptr) << problem;
  }

  /// Whether errors came exactly while the obstacle was in the way. The recording is at
  /// `folder_ / name` then.
  bool recordsWith(const Obstacle& obstacle, const std::string& name, const Audio& audio,
                   const AV::Settings& settings) {
    const pid_t child = fork();
    if (child == 0) {
      try {
        _exit(obstacle.begin() && tells(obstacle, name, audio, settings) ? 0 : 1);
      } catch (const std::exception& problem) {
        std::cerr << problem.what() << '\n';
        _exit(1);
      }
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
  }

  const fs::path disk_ = folder_ / "disk";

 private:
  bool tells(const Obstacle& obstacle, const std::string& name, const Audio& audio,
             const AV::Settings& settings) {
    auto file = openFile(framework_, disk_ / name, settings);
    const auto errors = deliver(framework_, *file, audio, [&](std::size_t frames) {
      if (obstacle.end && frames > audio.frames() / 2) {
        obstacle.end();
      }
    });
    file.reset();
    std::error_code error;
    return !errors.empty() &&
           std::ranges::all_of(errors,
                               [&](const NS::Error& each) {
                                 return each.code == obstacle.code &&
                                        each.localizedDescription.find(obstacle.word) !=
                                            std::string::npos;
                               }) &&
           log_.lines().size() == (obstacle.end ? 0U : 1U) &&
           fs::copy_file(disk_ / name, folder_ / name, error);
  }
};

TEST_F(LimitedSpace, ofAFileIsAnErrorAndWhatFitsIsRight) {
  const Audio audio = noise(800'000);
  ASSERT_TRUE(recordsWith(fileSizeLimit(), "a.wav", audio, wavSettings(audio)));
  auto expected = asSixteenBit(audio.samples);
  expected.resize(3UL * 24'000 * 2);  // whole blocks
  EXPECT_EQ(readWav(folder_ / "a.wav").samples, expected);

  ASSERT_TRUE(recordsWith(fileSizeLimit(), "a.m4a", audio, m4aSettings(audio)));
  const auto decoded = decode(folder_ / "a.m4a");
  EXPECT_GT(decoded.size() / 2, 7UL * 48'000);
  EXPECT_LT(errorRatio(audio, decoded), 0.1);
}

TEST_F(LimitedSpace, thatIsThereAgainBeforeTheEndCostsNothing) {
  Obstacle sizeLimit = fileSizeLimit();
  sizeLimit.end = [] { limitFileSize(RLIM_INFINITY); };
  const Obstacle fullDisk = {[this] { return mountSmallDisk(disk_); },
                             [this] {
                               std::error_code error;
                               fs::remove(disk_ / "ballast", error);
                             },
                             ENOSPC, "space"};
  const auto check = [this](const Obstacle& obstacle, std::size_t wavFrames,
                            std::size_t m4aFrames) {
    const Audio shorter = noise(wavFrames);
    const std::string name = obstacle.word;
    ASSERT_TRUE(recordsWith(obstacle, name + ".wav", shorter, wavSettings(shorter)));
    EXPECT_EQ(readWav(folder_ / (name + ".wav")).samples, asSixteenBit(shorter.samples));

    const Audio longer = noise(m4aFrames);
    ASSERT_TRUE(recordsWith(obstacle, name + ".m4a", longer, m4aSettings(longer)));
    EXPECT_EQ(probe(folder_ / (name + ".m4a")).duration, m4aFrames);
    EXPECT_LT(errorRatio(longer, decode(folder_ / (name + ".m4a"))), 0.1);
  };
  check(sizeLimit, 800'000, 1'200'000);
  check(fullDisk, 200'000, 1'000'000);
}

}  // namespace
}  // namespace audrel::linuxos::test
