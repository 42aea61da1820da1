#include "platform/linux/session/Alert.h"

#include <gmock/gmock.h>

#include <csignal>
#include <fstream>
#include <optional>
#include <system_error>

#include "platform/linux/loop/LoopSource.h"
#include "platform/linux/session/AlertHelper.h"
#include "platform/linux/session/SoftwareUpdates.h"
#include "tests/platform/linux/session/harness/Applications.h"
#include "tests/platform/linux/session/harness/SessionTest.h"
#include "tests/platform/linux/session/harness/XServer.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"

namespace audrel::linuxos {
namespace {

using namespace std::chrono_literals;
using sessiontest::KeyPresses;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr NS::ModalResponse first = NS::alertFirstButtonReturn;
constexpr NS::ModalResponse second = NS::alertSecondButtonReturn;

struct Diagnosis final : capture::Diagnostics {
  std::optional<std::string> diagnosis() override { return "PipeWire is not running."; }
  std::uint64_t lostFrames() override { return 0; }
};

/// A running application, in whose main loop alerts are shown.
class AlertTest : public sessiontest::SessionTest {
 protected:
  std::unique_ptr<NS::Alert> makeAlert() {
    return std::make_unique<Alert>(AlertParts{.application = application,
                                              .diagnostics = diagnosis,
                                              .notifier = notifier,
                                              .helper = helper,
                                              .logger = log});
  }

  std::unique_ptr<NS::Alert> permissionAlert() {
    auto alert = makeAlert();
    alert->setMessageText("Permission needed");
    alert->setInformativeText("Allow it.");
    alert->setAlertStyle(NS::AlertStyle::warning);
    alert->addButton("Open System Settings");
    alert->addButton("Cancel");
    return alert;
  }

  std::unique_ptr<NS::Alert> failureAlert() {
    auto alert = makeAlert();
    alert->setMessageText("Recording failed");
    alert->setInformativeText("No tap.");
    alert->setAlertStyle(NS::AlertStyle::critical);
    alert->addButton("OK");
    return alert;
  }

  /// Its last button leads somewhere.
  std::unique_ptr<NS::Alert> aboutAlert() {
    auto alert = makeAlert();
    alert->setMessageText("Audrel 1.0.0");
    alert->setAlertStyle(NS::AlertStyle::informational);
    alert->addButton("OK");
    alert->addButton("Open Privacy Settings");
    return alert;
  }

  /// The answer, as a menu command gets it. An alert that nobody answers ends with the
  /// application, long after.
  NS::ModalResponse run(NS::Alert& alert) {
    NS::ModalResponse answer = 0;
    LoopSource tooLate([this] { application.terminate(); });
    LoopSource command([&] {
      answer = alert.runModal();
      tooLate.cancel();
    });
    command.callSoon();
    tooLate.callAfter(20s);
    sessiontest::runLoopUntil([&] { return answer != 0; }, 25s);
    return answer;
  }

  /// A helper that notes the texts of its input, a line each, and exits with the status. One that
  /// gets arguments, which every user of the machine can read, fails.
  void useScript(const std::string& end) {
    helper = folder.path() / "helper";
    std::ofstream(helper) << "#!/bin/sh\n[ $# = 0 ] || exit 1\nread -r size\n"
                             "head -c \"$size\" | tr '\\0' '\\n' >'"
                          << (folder.path() / "texts").string() << "'\n"
                          << end << "\n";
    std::filesystem::permissions(helper, std::filesystem::perms::owner_all);
  }

  std::vector<std::string> texts() const {
    std::ifstream stream(folder.path() / "texts");
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) {
      lines.push_back(line);
    }
    return lines;
  }

  support::TemporaryFolder folder;
  Application application;
  Diagnosis diagnosis;
  std::filesystem::path helper = alertHelperProgram();
};

/// The real helper on a display.
class ShownAlert : public AlertTest {
 protected:
  void SetUp() override {
    AlertTest::SetUp();
    ASSERT_TRUE(xServer.isRunning());
    ASSERT_FALSE(helper.empty());
  }

  void TearDown() override { EXPECT_FALSE(application.isTerminating()) << "nobody answered"; }

  sessiontest::XServer xServer;
};

TEST_F(ShownAlert, isAnsweredByTheKeyboard) {
  const struct {
    const char* keys;
    NS::ModalResponse answer;
  } cases[] = {{"Return", first}, {"Tab Return", second}, {"Tab space", second}};
  for (const auto& [keys, answer] : cases) {
    const KeyPresses user(keys);
    EXPECT_EQ(run(*permissionAlert()), answer) << keys;
  }
  EXPECT_THAT(log->lines, IsEmpty());
}

TEST_F(ShownAlert, isAnsweredWithTheButtonThatChangesNothingByEscape) {
  {
    const KeyPresses user("Escape");
    EXPECT_EQ(run(*permissionAlert()), second);
  }
  {
    const KeyPresses user("Escape");
    EXPECT_EQ(run(*aboutAlert()), first);
  }
  const KeyPresses user("Escape");
  EXPECT_EQ(run(*failureAlert()), first);
  EXPECT_THAT(log->lines, IsEmpty()) << "it was seen: no notification";
}

TEST_F(ShownAlert, letsTheApplicationsEventsGoOn) {
  int ticks = 0;
  std::optional<KeyPresses> user;
  LoopSource timer([&] {
    if (++ticks == 5) {
      EXPECT_TRUE(application.isModal());
      user.emplace("Return");
    } else {
      timer.callAfter(20ms);
    }
  });
  timer.callSoon();
  EXPECT_EQ(run(*permissionAlert()), first);
  EXPECT_GE(ticks, 5);
  EXPECT_FALSE(application.isModal());
}

TEST_F(ShownAlert, whoseDisplayDiesBecomesANotification) {
  auto service = notifications();
  ASSERT_TRUE(service.isRunning());
  const auto user = support::ChildProcess::start(
      {.arguments = {"xdotool", "search", "--sync", "--onlyvisible", "--name", "^Audrel$"},
       .environment = {}});
  LoopSource poll([&] {
    if (user->readLine(5ms)) {
      xServer.crash();
    } else {
      poll.callAfter(20ms);
    }
  });
  poll.callSoon();
  EXPECT_EQ(run(*permissionAlert()), second);
  EXPECT_THAT(nextNotification(service), HasSubstr("'Permission needed', 'Allow it.'"));
}

TEST_F(ShownAlert, goesWithTheProgramThatAskedHoweverThatEnds) {
  // What holds the other end of its input ends as soon as the window is there.
  const auto shell = support::ChildProcess::start(
      {.arguments = {"sh", "-c",
                     "{ printf '24\\nwarning\\0Message\\0Text\\0OK\\0'; xdotool search --sync "
                     "--onlyvisible --name '^Audrel$' >/dev/null; :; } | '" +
                         helper.string() + "'; echo $?"},
       .environment = {}});
  ASSERT_NE(shell, nullptr);
  EXPECT_EQ(shell->readLine(20s), "100");
}

TEST_F(AlertTest, givesTheHelperItsTextsInTheDesktopsWords) {
  useScript("exit 10");
  EXPECT_EQ(run(*permissionAlert()), first);
  EXPECT_THAT(texts(),
              ElementsAre("warning", "Permission needed", "Allow it.", "Open Settings", "Cancel"));
}

TEST_F(AlertTest, addsTheDiagnosisToAFailureAlone) {
  useScript("exit 10");
  EXPECT_EQ(run(*failureAlert()), first);
  EXPECT_THAT(texts(), ElementsAre("critical", "Recording failed", "No tap.", "",
                                   "PipeWire is not running.", "OK"));
  auto about = makeAlert();
  about->setAlertStyle(NS::AlertStyle::informational);
  about->setMessageText("--help; $(reboot) `reboot` %s \"'");
  EXPECT_EQ(run(*about), first);
  EXPECT_THAT(texts(), ElementsAre("informational", "--help; $(reboot) `reboot` %s \"'", "", "OK"));
}

TEST_F(AlertTest, answersWithTheButtonThatTheHelperTells) {
  useScript("exit 11");
  EXPECT_EQ(run(*permissionAlert()), second);
}

TEST_F(AlertTest, takesNoFailureOfTheHelperForAnAnswer) {
  for (const char* end : {"exit 0", "exit 1", "exit 12", "exit 9", "exit 102", "kill -SEGV $$"}) {
    auto service = notifications();
    ASSERT_TRUE(service.isRunning());
    useScript(end);
    EXPECT_EQ(run(*permissionAlert()), second) << end;
    EXPECT_THAT(nextNotification(service), HasSubstr("'Permission needed', 'Allow it.'")) << end;
  }
}

TEST_F(AlertTest, becomesANotificationWithoutADisplay) {
  const fakes::ScopedVariable noX("DISPLAY", "");
  const fakes::ScopedVariable noWayland("WAYLAND_DISPLAY", "");
  const fakes::ScopedVariable noRuntimeFolder("XDG_RUNTIME_DIR", folder.path().c_str());
  ASSERT_FALSE(helper.empty());
  auto service = notifications();
  ASSERT_TRUE(service.isRunning());
  EXPECT_EQ(run(*failureAlert()), first);
  EXPECT_THAT(nextNotification(service),
              AllOf(HasSubstr("'Recording failed', 'No tap.\\n\\nPipeWire is not running.'"),
                    HasSubstr("'urgency': <byte 0x02>")));
}

TEST_F(AlertTest, becomesANotificationWithoutItsHelper) {
  for (const std::filesystem::path missing : {"", "/nonexistent/audrel-alert"}) {
    auto service = notifications();
    ASSERT_TRUE(service.isRunning());
    helper = missing;
    EXPECT_EQ(run(*permissionAlert()), second);
    EXPECT_THAT(nextNotification(service), AllOf(HasSubstr("'Permission needed', 'Allow it.'"),
                                                 HasSubstr("'urgency': <byte 0x01>")));
    EXPECT_EQ(run(*aboutAlert()), first);
    EXPECT_THAT(nextNotification(service), HasSubstr("'Audrel 1.0.0'"));
  }
}

TEST_F(AlertTest, isLoggedWhereNothingCanBeShown) {
  helper = "/nonexistent/audrel-alert";
  EXPECT_EQ(run(*failureAlert()), first);
  ASSERT_TRUE(sessiontest::runLoopUntil([this] { return !notifier.isBusy(); }));
  EXPECT_THAT(
      log->lines,
      ElementsAre(HasSubstr("An alert becomes a notification: "),
                  HasSubstr("error: Recording failed: No tap.\n\nPipeWire is not running.")));
}

TEST_F(AlertTest, saysWhereUpdatesComeFromWithoutASoftwareCenter) {
  // No application is installed on this desktop.
  static const sessiontest::Applications none({});
  useScript("exit 10");
  SoftwareUpdates updates([this] { return makeAlert(); });
  const auto controller = updates.makeStandardUpdaterController(true);
  LoopSource command([&] { controller->checkForUpdates(); });
  command.callSoon();
  ASSERT_TRUE(sessiontest::runLoopUntil([this] { return !texts().empty(); }));
  EXPECT_THAT(texts(), ElementsAre("informational", "Updates come with your system",
                                   HasSubstr("package manager"), "OK"));
  ASSERT_TRUE(sessiontest::runLoopUntil([this] { return !application.isModal(); }));
}

TEST_F(AlertTest, goesWithTheApplicationAndAnswersWithTheButtonThatChangesNothing) {
  const auto pidFile = folder.path() / "pid";
  useScript("echo $$ >'" + pidFile.string() + ".new'; mv '" + pidFile.string() + ".new' '" +
            pidFile.string() + "'; exec sleep 60");
  std::error_code error;
  LoopSource quit([&] {
    if (std::filesystem::exists(pidFile, error)) {
      application.terminate();
    } else {
      quit.callAfter(10ms);
    }
  });
  quit.callSoon();
  EXPECT_EQ(run(*permissionAlert()), second);
  EXPECT_THAT(log->lines, IsEmpty());
  pid_t pid = 0;
  std::ifstream(pidFile) >> pid;
  ASSERT_GT(pid, 0);
  EXPECT_TRUE(sessiontest::runLoopUntil([pid] { return kill(pid, 0) != 0; }));
}

TEST_F(AlertTest, isNotShownByAnApplicationThatEnds) {
  useScript("exit 10");
  application.terminate();
  EXPECT_EQ(permissionAlert()->runModal(), second);
  EXPECT_THAT(texts(), IsEmpty());
}

}  // namespace
}  // namespace audrel::linuxos
