#include <gmock/gmock.h>

#include <fstream>
#include <optional>

#include "platform/Identity.h"
#include "platform/linux/session/ApplicationService.h"
#include "tests/packaging/InstalledTree.h"
#include "tests/packaging/KeyFile.h"
#include "tests/platform/linux/session/harness/SessionTest.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"

namespace audrel::packaging {
namespace {

using namespace std::chrono_literals;
using linuxos::ApplicationService;
using support::runLoopUntil;
using testing::ElementsAre;
using testing::ElementsAreArray;

constexpr const char* entryGroup = "Desktop Entry";

KeyFile installedEntry() {
  return KeyFile(InstalledTree::shared().prefix() /
                 "share/applications/io.github.audrel.Audrel.desktop");
}

KeyFile installedService() {
  return KeyFile(InstalledTree::shared().prefix() /
                 "share/dbus-1/services/io.github.audrel.Audrel.service");
}

std::string groupOf(const std::string& action) {
  return "Desktop Action " + action;
}

TEST(LauncherEntry, hasTheActionsThatTheProgramKnows) {
  const KeyFile entry = installedEntry();
  EXPECT_THAT(entry.list(entryGroup, "Actions"),
              ElementsAreArray(ApplicationService::actionNames()));
  EXPECT_EQ(entry.text(entryGroup, "DBusActivatable"), "true");
}

TEST(LauncherEntry, startsTheInstalledProgram) {
  EXPECT_EQ(installedEntry().text(entryGroup, "Exec"), "audrel");
  const std::string started = installedService().text("D-BUS Service", "Exec");
  EXPECT_EQ(started, "\"" AUDREL_INSTALL_PREFIX "/bin/audrel\"");
  EXPECT_EQ(installedService().text("D-BUS Service", "Name"), identity::bundleIdentifier);
}

TEST(LauncherEntry, hasTheApplicationIcon) {
  EXPECT_EQ(installedEntry().text(entryGroup, "Icon"), identity::bundleIdentifier);
}

class Program final : public linuxos::ApplicationCommands {
 public:
  std::vector<std::string> calls;

  void startRecording() override { calls.emplace_back("start-recording"); }
  void stopRecording() override { calls.emplace_back("stop-recording"); }
  void toggleRecording() override { calls.emplace_back("toggle-recording"); }
  void quit() override { calls.emplace_back("quit"); }
  void activate() override { calls.emplace_back("activate"); }
};

/// Runs a command line of a desktop entry, while this thread's main loop goes on: what the command
/// ended with.
std::optional<std::string> run(const std::string& commandLine) {
  const auto child = support::ChildProcess::start(
      {.arguments = {"sh", "-c", commandLine + "; echo $?"}, .environment = {}});
  std::optional<std::string> status;
  runLoopUntil([&] {
    status = child == nullptr ? "not started" : child->readLine(2ms);
    return status.has_value();
  });
  return status;
}

class LauncherActionTest : public sessiontest::SessionTest {
 protected:
  linuxos::Application application;
  ApplicationService service{application, bus, notifier, log};
  std::shared_ptr<Program> program = std::make_shared<Program>();
};

TEST_F(LauncherActionTest, reachesTheProgramThatRuns) {
  ASSERT_EQ(service.claim(), ApplicationService::Claim::first);
  service.setCommands(program);
  const KeyFile entry = installedEntry();
  for (const std::string& action : ApplicationService::actionNames()) {
    EXPECT_EQ(run(entry.text(groupOf(action), "Exec")), "0") << action;
    runLoopUntil([] { return false; }, 50ms);
    EXPECT_THAT(program->calls, ElementsAre(action));
    program->calls.clear();
  }
}

/// The bus of a session in which the program is installed and not started. It has no audio server
/// and no display.
class ServiceTest : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(InstalledTree::shared().isInstalled()); }

  void TearDown() override { run("gapplication action io.github.audrel.Audrel quit"); }

  /// The folder of services, with the installed one, of a program that is not where users have it.
  static std::filesystem::path writeService(const std::filesystem::path& folder) {
    KeyFile service = installedService();
    service.setText("D-BUS Service", "Exec",
                    InstalledTree::shared().here(service.text("D-BUS Service", "Exec")));
    service.save(folder / "io.github.audrel.Audrel.service");
    return folder;
  }

  bool isNameOwned() {
    std::optional<bool> isOwned;
    desktop.call(
        {"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "NameHasOwner"},
        g_variant_new("(s)", identity::bundleIdentifier),
        [&](const linuxos::SessionBus::Answer& answer) {
          gboolean value = FALSE;
          if (answer.values != nullptr) {
            g_variant_get(answer.values.get(), "(b)", &value);
          }
          isOwned = value == TRUE;
        });
    runLoopUntil([&] { return isOwned.has_value(); });
    return isOwned.value_or(false);
  }

  support::TemporaryFolder folder;
  fakes::ScopedVariable home{"HOME", folder.path().c_str()};
  fakes::ScopedVariable configuration{"XDG_CONFIG_HOME", folder.path().c_str()};
  fakes::ScopedVariable runtimeFolder{"XDG_RUNTIME_DIR", folder.path().c_str()};
  fakes::ScopedVariable display{"DISPLAY", ""};
  fakes::ScopedVariable waylandDisplay{"WAYLAND_DISPLAY", ""};
  traytest::PrivateBus privateBus{writeService(folder.path())};
  fakes::ScopedVariable address{"DBUS_SESSION_BUS_ADDRESS", privateBus.address().c_str()};
  linuxos::SessionBus desktop;
};

TEST_F(ServiceTest, startsTheProgramThatIsToQuitAndItDoes) {
  ASSERT_FALSE(isNameOwned());
  EXPECT_EQ(run(installedEntry().text(groupOf("quit"), "Exec")), "0");
  EXPECT_TRUE(runLoopUntil([this] { return !isNameOwned(); }));
}

TEST_F(ServiceTest, startsTheProgramWhichDoesNotCallThatASecondStart) {
  sessiontest::TestService notifications(
      privateBus.address(), "org.freedesktop.Notifications", {"/org/freedesktop/Notifications"},
      {{"GetCapabilities", "(@as [],)"}, {"Notify", "(uint32 1,)"}});
  EXPECT_EQ(run("gapplication launch io.github.audrel.Audrel"), "0");
  EXPECT_TRUE(isNameOwned());
  EXPECT_THAT(notifications.furtherCalls(), ElementsAre());
  EXPECT_EQ(run("gapplication launch io.github.audrel.Audrel"), "0");
  EXPECT_EQ(notifications.nextCall(), "GetCapabilities ()") << "this one was";
}

}  // namespace
}  // namespace audrel::packaging
