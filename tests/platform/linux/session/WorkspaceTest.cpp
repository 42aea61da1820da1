#include "platform/linux/session/Workspace.h"

#include <gmock/gmock.h>

#include "platform/linux/session/PrivacySettings.h"
#include "platform/linux/session/SoftwareUpdates.h"
#include "platform/linux/session/URLParser.h"
#include "tests/platform/linux/session/harness/Applications.h"
#include "tests/platform/linux/session/harness/SessionTest.h"
#include "tests/support/TemporaryFolder.h"

namespace audrel::linuxos {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr const char* privacyPane =
    "x-apple.systempreferences:com.apple.preference.security?Privacy_ScreenCapture";

sessiontest::Applications& applications() {
  static sessiontest::Applications installed({{"browser", {"x-scheme-handler/https"}},
                                              {"software", {"x-scheme-handler/appstream"}},
                                              {"files", {"inode/directory"}},
                                              {"gnome-microphone-panel", {}},
                                              {"org.gnome.Settings", {}},
                                              {"systemsettings", {}}});
  return installed;
}

class WorkspaceTest : public sessiontest::SessionTest {
 protected:
  WorkspaceTest() { applications(); }

  sessiontest::TestService fileManager(const std::string& answer) const {
    return {privateBus.address(),
            "org.freedesktop.FileManager1",
            {"/org/freedesktop/FileManager1"},
            {{"ShowItems", answer}}};
  }

  Workspace workspace{bus, notifier};
};

TEST_F(WorkspaceTest, selectsTheFilesInTheFileManager) {
  auto files = fileManager("()");
  workspace.activateFileViewerSelecting({"/home/ann/Down loads/50% #1 é.wav", "/tmp/caf\xE9?.m4a"});
  EXPECT_EQ(files.nextCall(),
            "ShowItems (['file:///home/ann/Down%20loads/50%25%20%231%20%C3%A9.wav', "
            "'file:///tmp/caf%E9%3F.m4a'], '')");
  EXPECT_THAT(files.furtherCalls(), IsEmpty());
}

TEST_F(WorkspaceTest, asksForNothingWithoutFiles) {
  auto files = fileManager("()");
  workspace.activateFileViewerSelecting({});
  EXPECT_THAT(files.furtherCalls(), IsEmpty());
}

TEST_F(WorkspaceTest, opensTheFolderWhereTheFileManagerCannotSelectOrRefuses) {
  const support::TemporaryFolder folder;
  workspace.activateFileViewerSelecting({folder.path() / "a.wav"});
  EXPECT_THAT(applications().takeStarted(), ElementsAre("files " + folder.path().string()));
  auto files = fileManager("!org.freedesktop.DBus.Error.AccessDenied");
  workspace.activateFileViewerSelecting({folder.path() / "a.wav"});
  EXPECT_THAT(applications().takeStarted(), ElementsAre("files " + folder.path().string()));
}

TEST_F(WorkspaceTest, saysWhereTheFileIsWhenNeitherWorks) {
  auto service = notifications();
  workspace.activateFileViewerSelecting({"/nonexistent/audrel/a.wav"});
  EXPECT_THAT(nextNotification(service),
              HasSubstr("'No file manager was found', 'The file: /nonexistent/audrel/a.wav'"));
}

TEST_F(WorkspaceTest, opensALinkWithTheUsersProgramForIt) {
  EXPECT_TRUE(workspace.openURL({"https://example.org/?a=b&c"}));
  EXPECT_THAT(applications().takeStarted(), ElementsAre("browser https://example.org/?a=b&c"));
}

TEST_F(WorkspaceTest, survivesTheEndOfTheBusAfterSomethingWasOpened) {
  EXPECT_TRUE(workspace.openURL({"https://example.org/"}));
  EXPECT_THAT(applications().takeStarted(), ElementsAre("browser https://example.org/"));
  bool isLost = false;
  const SessionBus::Listener listener(bus, [](GDBusConnection*) {}, [&] { isLost = true; });
  bus.withConnection(
      [](GDBusConnection* connection, const std::string&) { EXPECT_NE(connection, nullptr); });
  notifier.notify({.summary = "", .body = ""});
  ASSERT_TRUE(support::runLoopUntil([&] { return !notifier.isBusy(); }));
  privateBus.crash();
  ASSERT_TRUE(support::runLoopUntil([&] { return isLost; }));
  // A process that ends with its bus does so on GIO's own thread, about now.
  EXPECT_FALSE(support::runLoopUntil([] { return false; }, std::chrono::milliseconds(100)));
}

TEST_F(WorkspaceTest, saysThatALinkHasNoProgram) {
  auto service = notifications();
  EXPECT_FALSE(workspace.openURL({"gopher://example.org/"}));
  EXPECT_THAT(nextNotification(service),
              HasSubstr("'The link could not be opened', 'gopher://example.org/\\n"));
}

TEST_F(WorkspaceTest, opensTheDesktopsOwnPrivacySettingsForTheProgramsLink) {
  {
    const fakes::ScopedVariable desktop("XDG_CURRENT_DESKTOP", "ubuntu:GNOME");
    EXPECT_TRUE(workspace.openURL({privacyPane}));
    EXPECT_THAT(applications().takeStarted(), ElementsAre("gnome-microphone-panel"));
  }
  const fakes::ScopedVariable desktop("XDG_CURRENT_DESKTOP", "KDE");
  EXPECT_TRUE(workspace.openURL({privacyPane}));
  EXPECT_THAT(applications().takeStarted(), ElementsAre("systemsettings"));
}

TEST_F(WorkspaceTest, saysWhereToLookWhereThereAreNoPrivacySettings) {
  auto service = notifications();
  const fakes::ScopedVariable desktop("XDG_CURRENT_DESKTOP", "XFCE");
  EXPECT_FALSE(workspace.openURL({privacyPane}));
  EXPECT_THAT(nextNotification(service), HasSubstr("session manager"));
}

TEST_F(WorkspaceTest, checkingForUpdatesOpensTheProgramsPageInTheSoftwareCenter) {
  SoftwareUpdates updates([]() -> std::unique_ptr<NS::Alert> {
    ADD_FAILURE() << "there is a software center";
    return nullptr;
  });
  updates.makeStandardUpdaterController(true)->checkForUpdates();
  EXPECT_THAT(applications().takeStarted(),
              ElementsAre("software appstream://io.github.audrel.Audrel"));
}

TEST(PrivacySettings, areThoseOfTheDesktopNewestFirstAndWholeSettingsLast) {
  EXPECT_THAT(privacySettingsEntries("GNOME"),
              ElementsAre("gnome-privacy-panel.desktop", "gnome-microphone-panel.desktop",
                          "org.gnome.Settings.desktop"));
}

TEST(PrivacySettings, areThoseOfEachDesktopThatTheSessionNames) {
  EXPECT_THAT(privacySettingsEntries("Budgie:Unity7::XFCE"),
              ElementsAre("budgie-microphone-panel.desktop", "budgie-control-center.desktop",
                          "xfce-settings-manager.desktop"));
}

TEST(PrivacySettings, areNoneWhereTheDesktopIsNotKnown) {
  for (const char* desktop : {"", "sway", "GNOMETRIX"}) {
    EXPECT_THAT(privacySettingsEntries(desktop), IsEmpty());
  }
}

TEST(LinuxURLParser, takesNothingButURLs) {
  for (const char* text : {"appstream://io.github.audrel.Audrel", "file:///home/ann"}) {
    EXPECT_EQ(URLParser().urlWithString(text), NS::URL{text}) << text;
  }
  for (const char* text : {"", "relative/path", "/absolute/path", "://example.org", "1a://b",
                           "https://[::1", "https://a/%zz"}) {
    EXPECT_EQ(URLParser().urlWithString(text), std::nullopt) << text;
  }
}

}  // namespace
}  // namespace audrel::linuxos
