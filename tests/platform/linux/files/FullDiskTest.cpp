// A real disk without space. It is mounted for a child alone, which nobody else sees.

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <functional>
#include <string>
#include <system_error>
#include <utility>

#include "tests/platform/linux/files/Recordings.h"
#include "tests/platform/linux/files/Tools.h"
#include "tests/support/TemporaryFolder.h"

namespace audrel::linuxos::test {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t diskSize = 1 << 20;

void writeText(const char* file, const std::string& text) {
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

/// A disk at `folder` for as long as this object and the process live.
class Disk {
 public:
  explicit Disk(fs::path folder) : folder_(std::move(folder)) {
    const std::string options = "size=" + std::to_string(diskSize);
    if (!leaveMounts()) {
      return;
    }
    // Others would see it too. In a changed root there may be no mount to say that of.
    mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr);
    isMounted_ = mount("none", folder_.c_str(), "tmpfs", 0, options.c_str()) == 0;
  }
  Disk(const Disk&) = delete;
  Disk& operator=(const Disk&) = delete;
  ~Disk() {
    if (isMounted_) {
      umount2(folder_.c_str(), MNT_DETACH);
    }
  }

  bool isMounted() const { return isMounted_; }

 private:
  fs::path folder_;
  bool isMounted_ = false;
};

/// Takes most of the disk.
void writeBallast(const fs::path& file) {
  std::ofstream(file) << std::string(diskSize * 3 / 4, 'x');
}

enum Outcome { good, noDisk, wrongErrors, wrongLog, notCopied };

/// Records `audio` on a disk that is full after a quarter of a megabyte until the middle of the
/// recording, and copies the file to `copy`.
Outcome recordOnFullDisk(const fs::path& folder, const std::string& name,
                         const AV::Settings& settings, const Audio& audio, const fs::path& copy) {
  const Disk disk(folder);
  if (!disk.isMounted()) {
    return noDisk;
  }
  const fs::path ballast = folder / "ballast";
  writeBallast(ballast);
  LogBook log;
  AudioFramework framework(log);
  auto file = openFile(framework, folder / name, settings);
  std::error_code error;
  const auto errors = deliver(framework, *file, audio, [&](std::size_t frames) {
    if (frames > audio.frames() / 2) {
      fs::remove(ballast, error);
    }
  });
  file.reset();
  const bool told = !errors.empty() && std::ranges::all_of(errors, [](const NS::Error& each) {
    return each.code == ENOSPC && each.localizedDescription.find("space") != std::string::npos;
  });
  if (!told) {
    return wrongErrors;
  }
  if (!log.errors.empty()) {
    return wrongLog;
  }
  return fs::copy_file(folder / name, copy, error) ? good : notCopied;
}

Outcome inChild(const std::function<Outcome()>& work) {
  const pid_t child = fork();
  if (child == 0) {
    _exit(work());
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? static_cast<Outcome>(WEXITSTATUS(status)) : wrongErrors;
}

TEST(FullDisk, thatHasRoomAgainBeforeTheEndCostsAWavNothing) {
  const support::TemporaryFolder disk;
  const support::TemporaryFolder folder;
  const Audio audio = noise(200'000);
  ASSERT_EQ(inChild([&] {
              return recordOnFullDisk(disk.path(), "a.wav", wavSettings(audio), audio,
                                      folder / "a.wav");
            }),
            good);
  EXPECT_EQ(readWav(folder / "a.wav").samples, asSixteenBit(audio.samples));
}

TEST(FullDisk, thatHasRoomAgainBeforeTheEndCostsAnM4aNothing) {
  const support::TemporaryFolder disk;
  const support::TemporaryFolder folder;
  const Audio audio = noise(1'000'000);
  ASSERT_EQ(inChild([&] {
              return recordOnFullDisk(disk.path(), "a.m4a", m4aSettings(audio), audio,
                                      folder / "a.m4a");
            }),
            good);
  EXPECT_EQ(probe(folder / "a.m4a").duration, 1'000'000);
  EXPECT_LT(errorRatio(audio, decode(folder / "a.m4a")), 0.1);
}

}  // namespace
}  // namespace audrel::linuxos::test
