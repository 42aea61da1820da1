#include "platform/linux/pipewire/ProcFiles.h"

#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace audrel::linuxos {
namespace {

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
