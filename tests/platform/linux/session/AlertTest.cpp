#include "platform/linux/session/Alert.h"

#include <gmock/gmock.h>

#include <csignal>
#include <fstream>
#include <optional>
#include <system_error>

#include "platform/linux/loop/LoopSource.h"
#include "platform/linux/session/AlertHelper.h"
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
  std::unique_ptr<NS::Alert> makeAlert(NS::AlertStyle style, const std::string& message,
                                       const std::string& informative,
                                       const std::vector<std::string>& buttons) {
    auto alert = std::make_unique<Alert>(AlertParts{.application = application,
                                                    .diagnostics = diagnosis,
                                                    .whyNoServer = [] { return ""; },
                                                    .notifier = notifier,
                                                    .helper = helper,
                                                    .logger = log});
    alert->setAlertStyle(style);
    alert->setMessageText(message);
    alert->setInformativeText(informative);
    for (const std::string& button : buttons) {
      alert->addButton(button);
    }
    return alert;
  }

  std::unique_ptr<NS::Alert> permissionAlert() {
    return makeAlert(NS::AlertStyle::warning, "Permission needed", "Allow it.",
                     {"Open System Settings", "Cancel"});
  }

  std::unique_ptr<NS::Alert> failureAlert() {
    return makeAlert(NS::AlertStyle::critical, "Recording failed", "No tap.", {"OK"});
  }

  /// Its last button leads somewhere.
  std::unique_ptr<NS::Alert> aboutAlert() {
    return makeAlert(NS::AlertStyle::informational, "Audrel 1.0.0", "",
                     {"OK", "Open Privacy Settings"});
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
    support::runLoopUntil([&] { return answer != 0; }, 25s);
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
  void SetUp() override { ASSERT_FALSE(helper.empty()); }

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
  EXPECT_THAT(log->lines(), IsEmpty());
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
  EXPECT_THAT(log->lines(), IsEmpty()) << "it was seen: no notification";
}

TEST_F(ShownAlert, whoseDisplayDiesBecomesANotification) {
  auto service = notifications();
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

/// A user one of whose windows covers the alert, which the file "covered" tells. When the alert is
/// in front of it, the key Return is pressed.
std::unique_ptr<support::ChildProcess> coverer(const std::filesystem::path& folder,
                                               const std::filesystem::path& helper) {
  const std::string script = R"sh(
    cd "$1" && mkfifo input
    alert=$(xdotool search --sync --onlyvisible --name '^Audrel$')
    "$2" <input &
    exec 3>input
    printf '24\nwarning\0Message\0Text\0OK\0' >&3
    # The windows are found in the order in which they lie on each other.
    top() { xdotool search --onlyvisible --name '^Audrel$' | tail -n 1; }
    until [ "$(top)" != "$alert" ]; do sleep 0.01; done
    touch covered
    until [ "$(top)" = "$alert" ]; do sleep 0.01; done
    exec 3>&-
    wait
    xdotool windowfocus --sync "$alert" key Return)sh";
  return support::ChildProcess::start(
      {.arguments = {"bash", "-c", script, "bash", folder, helper}, .environment = {}});
}

TEST_F(ShownAlert, comesToTheFront) {
  const auto user = coverer(folder.path(), helper);
  LoopSource front([&] {
    std::error_code error;
    if (std::filesystem::exists(folder.path() / "covered", error)) {
      application.presentAlert();
    } else {
      front.callAfter(10ms);
    }
  });
  front.callSoon();
  EXPECT_EQ(run(*permissionAlert()), first);
}

TEST_F(AlertTest, tellsTheHelperToComeToTheFront) {
  useScript("head -c 1 | grep -q ^ && exit 10");
  LoopSource front([&] {
    if (texts().size() == 5) {
      application.presentAlert();
    } else {
      front.callAfter(5ms);
    }
  });
  front.callSoon();
  EXPECT_EQ(run(*permissionAlert()), first);
}

TEST_F(AlertTest, thatIsToComeToTheFrontBeforeItShowsStillHasItsTexts) {
  useScript("exit 10");
  LoopSource front([&] { application.presentAlert(); });
  front.callSoon();
  EXPECT_EQ(run(*permissionAlert()), first);
  EXPECT_EQ(texts().size(), 5U);
}

TEST_F(AlertTest, givesTheHelperItsTextsInTheDesktopsWords) {
  useScript("exit 10");
  EXPECT_EQ(run(*permissionAlert()), first);
  EXPECT_THAT(texts(),
              ElementsAre("warning", "Permission needed", "Allow it.", "Open Settings", "Cancel"));
}

TEST_F(AlertTest, putsTheDiagnosisBeforeAFailureAlone) {
  useScript("exit 10");
  EXPECT_EQ(run(*failureAlert()), first);
  EXPECT_THAT(texts(), ElementsAre("critical", "Recording failed", "PipeWire is not running.", "",
                                   "No tap.", "OK"));
  EXPECT_EQ(
      run(*makeAlert(NS::AlertStyle::informational, "--help; $(reboot) `reboot` %s \"'", "", {})),
      first);
  EXPECT_THAT(texts(), ElementsAre("informational", "--help; $(reboot) `reboot` %s \"'", "", "OK"));
}

TEST_F(AlertTest, takesNoFailureOfTheHelperForAnAnswer) {
  for (const char* end : {"exit 0", "exit 1", "exit 12", "exit 9", "exit 102", "kill -SEGV $$"}) {
    auto service = notifications();
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
  EXPECT_EQ(run(*failureAlert()), first);
  EXPECT_THAT(nextNotification(service),
              AllOf(HasSubstr("'Recording failed', 'PipeWire is not running.\\n\\nNo tap.'"),
                    HasSubstr("'urgency': <byte 0x02>")));
}

TEST_F(AlertTest, becomesANotificationWithoutItsHelper) {
  for (const std::filesystem::path missing : {"", "/nonexistent/audrel-alert"}) {
    auto service = notifications();
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
  ASSERT_TRUE(support::runLoopUntil([this] { return !notifier.isBusy(); }));
  EXPECT_THAT(
      log->lines(),
      ElementsAre(HasSubstr("An alert becomes a notification: "),
                  HasSubstr("error: Recording failed: PipeWire is not running.\n\nNo tap.")));
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
  EXPECT_THAT(log->lines(), IsEmpty());
  pid_t pid = 0;
  std::ifstream(pidFile) >> pid;
  ASSERT_GT(pid, 0);
  EXPECT_TRUE(support::runLoopUntil([pid] { return kill(pid, 0) != 0; }));
}

TEST_F(AlertTest, isNotShownByAnApplicationThatEnds) {
  useScript("exit 10");
  application.terminate();
  EXPECT_EQ(permissionAlert()->runModal(), second);
  EXPECT_THAT(texts(), IsEmpty());
}

}  // namespace
}  // namespace audrel::linuxos
