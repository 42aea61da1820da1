// A user's session with the menu-bar program, from the panel's first question to the decoded file.

#include <gmock/gmock.h>
#include <signal.h>

#include <cstdint>
#include <fstream>
#include <sstream>
#include <string>
#include <system_error>

#include "tests/platform/linux/pipewire/harness/RecordedFile.h"
#include "tests/platform/linux/program/harness/Session.h"

namespace audrel::programtest {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Key;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

constexpr std::uint64_t second = 48'000;  // frames

/// The menu of a program that does not record.
std::string idleMenu(const std::string& sources, const std::string& formats,
                     const std::string& reveal) {
  return "'Start Recording'\n"
         " type='separator'\n"
         "'Record from' children-display='submenu'\n" +
         sources +
         "   type='separator'\n"
         "  'Refresh List'\n"
         "'Format' children-display='submenu'\n" +
         formats +
         " type='separator'\n"
         "'Show Last Recording in File Manager'" +
         reveal +
         "\n"
         " type='separator'\n"
         "'About Audrel…'\n"
         "'Check for Updates in Software Center…'\n"
         "'Quit Audrel'\n";
}

std::string recordingMenu(const std::string& source) {
  return "'Recording from: " + source +
         "' enabled=false\n"
         " type='separator'\n"
         "'Stop Recording'\n"
         " type='separator'\n"
         "'Show Recording in File Manager'\n"
         " type='separator'\n"
         "'Quit Audrel'\n";
}

const std::string noSources =
    "  'All System Audio' toggle-state=1 toggle-type='checkmark'\n"
    "   type='separator'\n"
    "  'No audible apps' enabled=false\n";
const std::string everything =
    "  'All System Audio' toggle-state=1 toggle-type='checkmark'\n"
    "   type='separator'\n"
    "  'Web Radio' toggle-state=0 toggle-type='checkmark'\n";
const std::string webRadio =
    "  'All System Audio' toggle-state=0 toggle-type='checkmark'\n"
    "   type='separator'\n"
    "  'Web Radio' toggle-state=1 toggle-type='checkmark'\n";
const std::string m4a =
    "  'M4A (AAC 256 kbps)' toggle-state=1 toggle-type='checkmark'\n"
    "  'WAV (48 kHz / 16-bit)' toggle-state=0 toggle-type='checkmark'\n";
const std::string wav =
    "  'M4A (AAC 256 kbps)' toggle-state=0 toggle-type='checkmark'\n"
    "  'WAV (48 kHz / 16-bit)' toggle-state=1 toggle-type='checkmark'\n";
const std::string noRecording = " enabled=false";
const std::string aRecording;

std::string contentsOf(const std::filesystem::path& file) {
  std::ostringstream text;
  text << std::ifstream(file).rdbuf();
  return text.str();
}

TEST_F(Session, beginsWithThePlayersInTheMenuOnceThatIsOpened) {
  startProgram();
  EXPECT_EQ(panel->menuText(), idleMenu(noSources, m4a, noRecording));
  EXPECT_EQ(openMenu(), idleMenu(everything, m4a, noRecording));
}

TEST_F(Session, recordsTheChosenApplicationToTheSampleAsWav) {
  pwtest::Player other(server.socketPath(), {"application.name=Game"});
  ASSERT_TRUE(other.open("shots", 2));
  startProgram();
  openMenu();
  chooseWavOfWebRadio();
  startRecording();
  EXPECT_EQ(openMenu(), recordingMenu("Web Radio"));
  ASSERT_TRUE(player.waitForMore("music", 3 * second));
  stopRecording();

  EXPECT_THAT(recording().filename().string(),
              AllOf(StartsWith("audio-Web-Radio-"), EndsWith(".wav")));
  pwtest::expectWholeTrack(recording(), 1, 3 * second);
}

TEST_F(Session, recordsEverythingAsM4aWithoutAnyChoice) {
  pwtest::Player other(server.socketPath(), {"application.name=Game"});
  ASSERT_TRUE(player.close("music"));
  ASSERT_TRUE(player.open("music", "tone:500 f32 2 48000"));
  ASSERT_TRUE(other.open("shots", "tone:3000 f32 2 48000"));
  startProgram();
  startRecording();
  EXPECT_EQ(openMenu(), recordingMenu("All System Audio"));
  ASSERT_TRUE(other.waitForMore("shots", 4 * second));
  stopRecording();

  EXPECT_THAT(recording().filename().string(),
              AllOf(StartsWith("audio-SystemMix-"), EndsWith(".m4a")));
  const pwtest::Audio audio = pwtest::readM4a(recording());
  ASSERT_GE(pwtest::framesOf(audio), 4 * second);
  for (const double frequency : {500.0, 3000.0}) {
    // One is linked a moment after the other, and the two together are full scale, to which the
    // encoder is not as true.
    pwtest::expectUnbrokenTone(audio, second, frequency, 0.03);
  }
}

TEST_F(Session, showsThatItRecordsAndForHowLong) {
  startProgram();
  EXPECT_TRUE(waitForIcon("idle-symbolic"));
  const auto look = [this] {
    return panel->properties("/StatusNotifierItem", "org.kde.StatusNotifierItem");
  };
  EXPECT_THAT(look(), Not(Contains(Key("XAyatanaLabel"))));
  EXPECT_THAT(look()["ToolTip"], HasSubstr("'Audrel'"));
  startRecording();
  std::string label;
  for (int change = 0; change < 3; ++change) {
    auto now = look();
    ASSERT_TRUE(panel->runUntil([&] {
      now = look();
      return now["XAyatanaLabel"] > label;
    })) << label;
    label = now["XAyatanaLabel"];
    ASSERT_THAT(label, AllOf(StartsWith("' 00:0"), SizeIs(8)));
    EXPECT_THAT(now["ToolTip"], HasSubstr("'Recording All System Audio, " + label.substr(2)));
  }
  EXPECT_GE(label, "' 00:02'");
  stopRecording();
  EXPECT_THAT(look(), Not(Contains(Key("XAyatanaLabel"))));
  EXPECT_THAT(look()["ToolTip"], HasSubstr("'Audrel'"));
}

TEST_F(Session, itsIconsAreWhereItSaysAndNeedNoPicture) {
  startProgram();
  const std::string folder = panel->itemProperty("IconThemePath").value_or("");
  ASSERT_GT(folder.size(), 2U);
  const std::filesystem::path theme =
      std::filesystem::path(folder.substr(1, folder.size() - 2)) / "hicolor";
  for (const std::string name : {"-idle-symbolic", "-recording", "-warning"}) {
    std::error_code error;
    EXPECT_TRUE(std::filesystem::exists(
        theme / ("scalable/status/io.github.audrel.Audrel" + name + ".svg"), error))
        << name;
  }
  ASSERT_TRUE(waitForIcon("idle-symbolic"));
  EXPECT_EQ(panel->itemProperty("IconPixmap"), "@a(iiay) []");
}

TEST_F(Session, revealsTheRecordingInTheFileManagerWhileItRunsAndAfterwards) {
  auto files = service("org.freedesktop.FileManager1", "/org/freedesktop/FileManager1",
                       {{"ShowItems", "()"}});
  startProgram();
  startRecording();
  const std::string expected = "(['file://" + recording().string() + "'], '')";
  choose("Show Recording in File Manager");
  EXPECT_EQ(nextCall(files, "ShowItems"), expected);
  stopRecording();
  choose("Show Last Recording in File Manager");
  EXPECT_EQ(nextCall(files, "ShowItems"), expected);
}

TEST_F(Session, keepsTheMachineAwakeWhileItRecords) {
  auto login = service("org.freedesktop.login1", "/org/freedesktop/login1", {{"Inhibit", "fd"}});
  startProgram();
  startRecording();
  EXPECT_EQ(nextCall(login, "Inhibit"), "('sleep', 'Audrel', 'Recording audio', 'block')");
  EXPECT_THAT(login.furtherCalls(), IsEmpty());
  stopRecording();
  EXPECT_EQ(login.nextCall(), "released");
}

TEST_F(Session, takesAChoiceMadeWhileItRecordsForTheNextRecording) {
  startProgram();
  openMenu();
  const auto asWav = panel->idOf("WAV (48 kHz / 16-bit)");
  ASSERT_TRUE(asWav);
  startRecording();
  // A panel that still shows the menu of before.
  EXPECT_EQ(clickOn(*asWav), "");
  ASSERT_TRUE(hearASecond());
  stopRecording();
  EXPECT_EQ(openMenu(), idleMenu(everything, wav, aRecording));
  EXPECT_THAT(recording().extension(), ".m4a");
  choose("Web Radio");
  ASSERT_TRUE(waitForCheckmark("Web Radio", true));
  EXPECT_EQ(panel->menuText(), idleMenu(webRadio, wav, aRecording));
  startRecording();
  ASSERT_TRUE(hearASecond());
  stopRecording();
  const auto files = recordings();
  ASSERT_EQ(files.size(), 2U);
  EXPECT_THAT(files.back().filename().string(),
              AllOf(StartsWith("audio-Web-Radio-"), EndsWith(".wav")));
  pwtest::expectWholeTrack(files.back(), 1, second);
}

TEST_F(Session, remembersFormatAndLastRecordingButNoSource) {
  startProgram();
  openMenu();
  chooseWavOfWebRadio();
  startRecording();
  stopRecording();
  kill(program->pid(), SIGTERM);
  ASSERT_EQ(waitForEnd(), 0);
  EXPECT_THAT(contentsOf(home.path() / ".config/audrel/defaults.ini"),
              AllOf(HasSubstr("format=\"wav\"\n"), HasSubstr("sourceName=\"Web Radio\"\n"),
                    HasSubstr("lastRecordingPath=\"" + recording().string() + "\"\n")));

  startProgram();
  EXPECT_EQ(openMenu(), idleMenu(everything, wav, aRecording));
  auto files = service("org.freedesktop.FileManager1", "/org/freedesktop/FileManager1",
                       {{"ShowItems", "()"}});
  choose("Show Last Recording in File Manager");
  EXPECT_EQ(nextCall(files, "ShowItems"), "(['file://" + recording().string() + "'], '')");
}

TEST_F(Session, endsWithQuitWhichCompletesARecordingThatRuns) {
  startProgram();
  openMenu();
  choose("Web Radio");
  choose("WAV (48 kHz / 16-bit)");
  ASSERT_TRUE(waitForCheckmark("WAV (48 kHz / 16-bit)", true));
  startRecording();
  ASSERT_TRUE(hearASecond());
  choose("Quit Audrel");
  EXPECT_EQ(waitForEnd(), 0);
  pwtest::expectWholeTrack(recording(), 1, second);
}

}  // namespace
}  // namespace audrel::programtest
