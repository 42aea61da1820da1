#include "platform/linux/pipewire/ProcFiles.h"

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <optional>

#include "tests/support/TemporaryFolder.h"

namespace audrel::linuxos {
namespace {

/// A process that sees a folder of its own choice as the root.
class Sandboxed {
 public:
  explicit Sandboxed(const std::filesystem::path& root) {
    std::array<int, 2> ends{};
    pipe(ends.data());
    pid_ = fork();
    if (pid_ == 0) {
      // Nobody but root may change the root folder outside a user namespace of its own.
      const bool mayChange = geteuid() == 0 || unshare(CLONE_NEWUSER) == 0;
      const char isIn = mayChange && chroot(root.c_str()) == 0 ? 1 : 0;
      [[maybe_unused]] const ssize_t told = write(ends[1], &isIn, 1);
      pause();
      _exit(0);
    }
    char isIn = 0;
    isReady_ = read(ends[0], &isIn, 1) == 1 && isIn == 1;
    close(ends[0]);
    close(ends[1]);
  }
  ~Sandboxed() {
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
  }
  Sandboxed(const Sandboxed&) = delete;
  Sandboxed& operator=(const Sandboxed&) = delete;

  bool isReady() const { return isReady_; }
  pid_t pid() const { return pid_; }

 private:
  pid_t pid_ = -1;
  bool isReady_ = false;
};

TEST(StartTime, isNoneOfAProcessThatHasEndedUnnoticed) {
  const pid_t child = fork();
  if (child == 0) {
    pause();
    _exit(0);
  }
  EXPECT_TRUE(proc::startTime(child).has_value());
  kill(child, SIGKILL);
  siginfo_t ended{};
  waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOWAIT);
  EXPECT_EQ(proc::startTime(child), std::nullopt);
  waitpid(child, nullptr, 0);
}

struct FlatpakApplication : testing::Test {
  support::TemporaryFolder root;
  const Sandboxed process{root.path()};
  const std::filesystem::path info = root / ".flatpak-info";

  void SetUp() override { ASSERT_TRUE(process.isReady()); }
};

TEST_F(FlatpakApplication, isTheNameInTheApplicationsGroup) {
  EXPECT_EQ(proc::flatpakApplication(process.pid()), "");
  std::ofstream(info) << "[Runtime]\nname=org.example.Platform\n\n[Application]\n"
                         "name=org.example.Player\nruntime=runtime/org.example.Platform\n";
  EXPECT_EQ(proc::flatpakApplication(process.pid()), "org.example.Player");
}

TEST_F(FlatpakApplication, isNothingInAPipeThatNobodyWritesTo) {
  ASSERT_EQ(mkfifo(info.c_str(), 0600), 0);
  EXPECT_EQ(proc::flatpakApplication(process.pid()), "");
}

TEST_F(FlatpakApplication, isNothingBehindALink) {
  std::ofstream(root / "elsewhere") << "[Application]\nname=org.example.Player\n";
  std::filesystem::create_symlink("elsewhere", info);
  EXPECT_EQ(proc::flatpakApplication(process.pid()), "");
}

TEST_F(FlatpakApplication, isNothingInAFileThatIsTooLarge) {
  std::ofstream(info) << "[Application]\nname=org.example.Player\n" << std::string(70'000, '#');
  EXPECT_EQ(proc::flatpakApplication(process.pid()), "");
  std::ofstream(info) << "[Application]\nname=org.example.Player\n" << std::string(60'000, '#');
  EXPECT_EQ(proc::flatpakApplication(process.pid()), "org.example.Player");
}

TEST(ProcFiles, startTimeIsTheSameEachTimeAndUnknownForNoProcess) {
  EXPECT_TRUE(proc::startTime(getpid()));
  EXPECT_EQ(proc::startTime(getpid()), proc::startTime(getpid()));
  EXPECT_FALSE(proc::startTime(0));
  EXPECT_FALSE(proc::startTime(1 << 30));
}

TEST(ProcFiles, startTimeIsFoundBehindANameWithParenthesesAndBlanks) {
  const auto before = proc::startTime(getpid());
  char name[16] = {};
  prctl(PR_GET_NAME, name);
  prctl(PR_SET_NAME, "a) 1 2 (b) 3");
  EXPECT_EQ(proc::startTime(getpid()), before);
  EXPECT_EQ(proc::commandName(getpid()), "a) 1 2 (b) 3");
  prctl(PR_SET_NAME, name);
}

TEST(ProcFiles, theApplicationIsReadFromTheScopeOrServiceOfTheDesktop) {
  using proc::applicationOfCgroup;
  const std::string slice = "0::/user.slice/user-1000.slice/user@1000.service/app.slice/";
  EXPECT_EQ(applicationOfCgroup(slice + "app-gnome-org.example.Player-4711.scope\n"),
            "org.example.Player");
  EXPECT_EQ(applicationOfCgroup(slice + "app-org.example.Player-4711.scope\n"),
            "org.example.Player");
  EXPECT_EQ(applicationOfCgroup(slice + "app-org.example.Player@0123abcd.service\n"),
            "org.example.Player");
  EXPECT_EQ(applicationOfCgroup(slice + "app-flatpak-org.example.Web\\x2dRadio-99.scope\n"),
            "org.example.Web-Radio");
  EXPECT_EQ(applicationOfCgroup(slice + "vte-spawn-0123.scope\n"), "");
  EXPECT_EQ(applicationOfCgroup("0::/init.scope\n"), "");
}

}  // namespace
}  // namespace audrel::linuxos
