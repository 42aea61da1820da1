// What becomes of a recording whose program was killed: the next one finishes it.

#include <gmock/gmock.h>

#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include "tests/platform/linux/pipewire/harness/RecordedFile.h"
#include "tests/platform/linux/program/harness/Session.h"
#include "tests/platform/linux/program/harness/WavRecording.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/RunTool.h"
#include "tests/support/Waiting.h"

namespace audrel::programtest {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;
using testing::ContainsRegex;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

std::string bytesOf(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

std::uint32_t bigEndian(const std::string& bytes, std::size_t offset) {
  std::uint32_t number = 0;
  for (std::size_t i = 0; i < sizeof(number); ++i) {
    number = number << 8U | static_cast<unsigned char>(bytes.at(offset + i));
  }
  return number;
}

/// The boxes that an M4A consists of.
std::vector<std::string> boxesOf(const fs::path& file) {
  const std::string bytes = bytesOf(file);
  std::vector<std::string> boxes;
  for (std::size_t at = 0; at < bytes.size(); at += bigEndian(bytes, at)) {
    boxes.push_back(bytes.substr(at + 4, 4));
  }
  return boxes;
}

double durationOf(const fs::path& file) {
  return std::stod(support::runTool({"ffprobe", "-v", "error", "-show_entries", "format=duration",
                                     "-of", "csv=p=0", file.string()})
                       .output);
}

class Healing : public Session {
 protected:
  std::vector<fs::path> entries() const {
    std::error_code none;
    return {fs::directory_iterator(folder, none), {}};
  }

  /// An entry that says nothing: the last one to be removed, by whoever looks at the entries.
  void putLastEntry() const {
    fs::create_directories(folder);
    std::ofstream(folder / "recording-~") << "nothing";
  }
  bool hasLastEntry() const { return fs::exists(folder / "recording-~"); }

  void startNotedRecording() {
    startProgram();
    openMenu();
    if (isWav) {
      chooseWavOfWebRadio();
    }
    startRecording();
    ASSERT_TRUE(player.waitForMore("music", 6 * second));
    ASSERT_TRUE(support::waitFor([this] { return entries().size() == 1; }));
  }

  void killRecording() {
    startNotedRecording();
    kill(program->pid(), SIGKILL);
    EXPECT_EQ(waitForEnd(), -1);
    cutOff = recording();
  }

  /// As if it had not been written for a while.
  static void makeOlder(const fs::path& file) {
    fs::last_write_time(file, fs::file_time_type::clock::now() - 11s);
  }

  std::unique_ptr<support::ChildProcess> command(std::vector<std::string> words) const {
    words.insert(words.begin(), AUDREL_COMMAND);
    return support::ChildProcess::start(
        {.arguments = words, .environment = environment, .keepsErrors = true});
  }

  std::unique_ptr<support::ChildProcess> recordingCommand() const {
    return command({"--output", home.path() / "take.wav", "--quiet"});
  }

  const fs::path folder = home.path() / ".state/audrel";
  bool isWav = false;
  fs::path cutOff;
};

TEST_F(Healing, isPreparedWhileARecordingRuns) {
  startNotedRecording();
  stopRecording();
  EXPECT_THAT(entries(), IsEmpty());
}

TEST_F(Healing, isDoneByTheNextCommandThatRecords) {
  killRecording();
  makeOlder(cutOff);
  EXPECT_THAT(boxesOf(cutOff), testing::Contains("moof"));
  const auto next = recordingCommand();
  const std::string line = "audrel-record: \"" + cutOff.filename().string() + "\" in \"" +
                           cutOff.parent_path().string() +
                           "\" was cut off, and is finished now: 00:[0-9]{2}\\.\n";
  EXPECT_TRUE(support::waitFor([&] { return !next->errorOutput().empty(); }));
  next->signal(SIGTERM);
  EXPECT_EQ(next->waitForEnd(), 0);
  EXPECT_THAT(next->errorOutput(), testing::MatchesRegex(line));
  EXPECT_THAT(boxesOf(cutOff), ElementsAre("ftyp", "mdat", "moov"));
  EXPECT_GE(pwtest::framesOf(pwtest::readM4a(cutOff)), 4 * second);
  EXPECT_GE(durationOf(cutOff), 4.0);
  EXPECT_THAT(entries(), IsEmpty());
}

TEST_F(Healing, isDoneByTheMenuBarProgramOnceItsItemIsInThePanelAndTold) {
  isWav = true;
  killRecording();
  // Killed after a block was written, and before the header counted it.
  std::ofstream(cutOff, std::ios::app | std::ios::binary) << std::string(4 * second, '\1');
  makeOlder(cutOff);
  auto desktop = notifications("['actions']");
  auto files = service("org.freedesktop.FileManager1", "/org/freedesktop/FileManager1",
                       {{"ShowItems", "()"}});
  startProgram();
  EXPECT_THAT(nextCall(desktop, "Notify"),
              ContainsRegex("'Recording recovered', '\"" + cutOff.filename().string() + "\" in \"" +
                            cutOff.parent_path().string() +
                            "\" was cut off, and is finished now: 00:[0-9]{2}\\.', "
                            "\\['show-file', 'Show in Folder'\\], "));
  desktop.emitSignal("/org/freedesktop/Notifications", "org.freedesktop.Notifications",
                     "ActionInvoked", g_variant_new("(us)", 1, "show-file"));
  EXPECT_EQ(nextCall(files, "ShowItems"), "(['file://" + cutOff.string() + "'], '')");
  const std::string bytes = bytesOf(cutOff);
  EXPECT_EQ(bytes.substr(bytes.size() - 4), std::string(4, '\1'));
  EXPECT_GE(pwtest::framesOf(pwtest::readWav(cutOff)), 5 * second);
  EXPECT_NEAR(durationOf(cutOff),
              static_cast<double>(pwtest::framesOf(pwtest::readWav(cutOff))) / second, 1e-5);
  EXPECT_THAT(entries(), IsEmpty());
}

TEST_F(Healing, leavesARecordingThatAnotherProcessMakes) {
  startNotedRecording();
  kill(program->pid(), SIGSTOP);
  const fs::path running = recording();
  makeOlder(running);
  putLastEntry();
  const std::string before = bytesOf(running);
  const auto next = recordingCommand();
  EXPECT_TRUE(support::waitFor([this] { return !hasLastEntry(); }));
  next->signal(SIGTERM);
  EXPECT_EQ(next->waitForEnd(), 0);
  EXPECT_THAT(next->errorOutput(), testing::Not(testing::HasSubstr("cut off")));
  EXPECT_EQ(bytesOf(running), before);
  EXPECT_THAT(entries(), SizeIs(1));
  kill(program->pid(), SIGCONT);
  stopRecording();
  EXPECT_THAT(boxesOf(running), ElementsAre("ftyp", "mdat", "moov"));
  EXPECT_THAT(entries(), IsEmpty());
}

TEST_F(Healing, isNotDoneByACommandThatRecordsNothing) {
  putLastEntry();
  for (const char* word : {"--list", "--help", "--version", "--repair=none.wav"}) {
    const auto answer = command({word});
    answer->waitForEnd();
    EXPECT_TRUE(hasLastEntry()) << word;
  }
}

}  // namespace
}  // namespace audrel::programtest
