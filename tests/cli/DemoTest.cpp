// The real program, on the private server of its demo and without a server.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <system_error>
#include <vector>

#include "tests/cli/TerminalPair.h"
#include "tests/contract/RecordedFiles.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Waiting.h"

namespace audrel::cli {
namespace {

using std::filesystem::path;
using support::ChildProcess;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

/// 0 for a file that is not there yet.
std::uintmax_t sizeOf(const path& file) {
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(file, error);
  return error ? 0 : size;
}

struct Wave {
  std::size_t frames = 0;
  int peak = 0;  ///< of 32768
};

Wave readWave(const path& file) {
  const auto wav = contract::readWav(file);
  Wave wave{wav.samples.size() / wav.channels};
  for (const int sample : wav.samples) {
    wave.peak = std::max(wave.peak, std::abs(sample));
  }
  return wave;
}

/// A tenth of the full scale: silence is far below it, and every melody above.
constexpr int audible = 3276;

std::string contentsOf(const path& file) {
  std::ostringstream text;
  text << std::ifstream(file).rdbuf();
  return text.str();
}

class Demo : public testing::Test {
 protected:
  /// How the program is run with these words.
  ChildProcess::Program program(std::vector<std::string> words) const {
    words.insert(words.begin(), {AUDREL_PROGRAM, "--output", file_.string()});
    return {.arguments = words,
            .environment = {{"XDG_STATE_HOME", folder_.path()}},
            .keepsErrors = true};
  }

  support::Outcome run(const std::vector<std::string>& words) const {
    return support::outcomeOf(program(words));
  }

  /// The number behind `"key": ` in one line of JSON.
  static std::int64_t number(const std::string& json, const std::string& key) {
    const auto at = json.find("\"" + key + "\": ");
    return at == std::string::npos ? -1 : std::strtoll(&json[at + key.size() + 4], nullptr, 10);
  }

  support::TemporaryFolder folder_;
  path file_ = folder_ / "take.wav";
};

TEST_F(Demo, recordsItsMelodyForExactlyTheLength) {
  const auto outcome = run({"--demo", "--duration", "2", "--json"});
  EXPECT_EQ(outcome.status, 0) << outcome.errors;
  EXPECT_EQ(number(outcome.output, "frames"), 96000);
  const auto wave = readWave(file_);
  EXPECT_EQ(wave.frames, 96000U);
  EXPECT_GT(wave.peak, audible);
}

TEST_F(Demo, isCompleteAfterCtrlC) {
  const auto child = ChildProcess::start(program({"--demo", "--json"}));
  ASSERT_TRUE(support::waitFor([this] { return sizeOf(file_) > 12000 * 4; }))
      << child->errorOutput();
  child->signal(SIGINT);
  child->signal(SIGINT);
  EXPECT_EQ(child->waitForEnd(), 0);
  const auto frames = number(child->output(), "frames");
  EXPECT_GE(frames, 12000);
  EXPECT_EQ(static_cast<std::int64_t>(readWave(file_).frames), frames);
}

TEST_F(Demo, keepsItsMessagesOutOfTheFileWhenStandardOutputIsClosed) {
  auto closed = program({"--demo", "--duration", "1"});
  closed.closed = {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO};
  EXPECT_EQ(support::outcomeOf(closed).status, 0);
  EXPECT_EQ(readWave(file_).frames, 48000U);
  EXPECT_THAT(contentsOf(file_), Not(HasSubstr("Saved")));
}

TEST_F(Demo, drawsALevelThatFitsTheWindowAndStopsWhenTheWindowIsClosed) {
  TerminalPair window(60);
  auto inTheWindow = program({"--demo"});
  inTheWindow.terminal = window.terminal();
  inTheWindow.environment["TERM"] = "xterm";
  const auto child = ChildProcess::start(inTheWindow);
  std::string text;
  ASSERT_TRUE(support::waitFor([&] {
    return (text += window.takeText()).find("0:02  [") != text.npos;
  })) << text;
  EXPECT_THAT(text, AllOf(StartsWith("Recording all system audio to "), HasSubstr("Ctrl-C"),
                          HasSubstr("dBFS")));
  std::istringstream lines(text);
  std::string line;
  std::getline(lines, line);  // the start
  int redrawn = 0;
  while (std::getline(lines, line, '\r')) {
    const std::string clear = "\x1b[K";
    if (line.starts_with(clear)) {
      ++redrawn;
      EXPECT_LT(line.size() - clear.size(), 60U) << line;
    }
  }
  EXPECT_GE(redrawn, 3);

  window.setColumns(12);
  std::string narrow;
  EXPECT_TRUE(support::waitFor([&] {
    narrow += window.takeText();
    return std::regex_search(narrow, std::regex("\r\x1b\\[K0:0[0-9][^\r]{0,7}\r"));
  })) << narrow;

  window.hangUp();
  EXPECT_EQ(child->waitForEnd(), 1);  // nobody was there to take the result
  EXPECT_GT(readWave(file_).frames, 48000U);
}

TEST_F(Demo, neverReplacesAFile) {
  std::ofstream(file_) << "precious";
  const auto outcome = run({"--demo", "--duration", "1"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.errors, HasSubstr("audrel-record: Could not create the output file: "));
  EXPECT_EQ(contentsOf(file_), "precious");
}

TEST_F(Demo, tellsOnceWhatTheFileDoesNotHold) {
  const auto child =
      ChildProcess::start(program({"--demo", "--duration", "3", "--json", "--quiet"}));
  ASSERT_TRUE(support::waitFor([this] { return sizeOf(file_) > 0; })) << child->errorOutput();
  const rlimit half = {100'000, RLIM_INFINITY};  // a block of half a second, and the header
  ASSERT_EQ(prlimit(child->pid(), RLIMIT_FSIZE, &half, nullptr), 0);
  EXPECT_EQ(child->waitForEnd(), 1);

  const auto json = child->output();
  const auto missing = number(json, "missingFrames");
  EXPECT_EQ(static_cast<std::int64_t>(readWave(file_).frames), number(json, "frames"));
  EXPECT_EQ(number(json, "frames") + missing, 144'000);
  EXPECT_GT(missing, 0);
  EXPECT_THAT(json, AllOf(HasSubstr("\"complete\": false"), Not(HasSubstr("\"failedWrites\": 0"))));
  const std::string why =
      "\"take.wav\" has reached the largest size that a file may have here. Raise the limit "
      "(\"ulimit -f\"), or record to another disk.";
  EXPECT_THAT(child->errorOutput(), StartsWith("audrel-record: " + why +
                                               " Until then the recording is kept in memory.\n"
                                               "audrel-record: Missing in the file: "));
  EXPECT_THAT(child->errorOutput(),
              HasSubstr("(" + std::to_string(missing) + " frames), which could not be written. " +
                        why + "\n"));
  EXPECT_THAT(child->errorOutput(), Not(HasSubstr("[")));  // no line of the log beside them
}

TEST_F(Demo, namesAFolderThatIsMissing) {
  file_ = folder_ / "missing/take.wav";
  const auto outcome = run({"--demo", "--duration", "1"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.errors,
              AllOf(HasSubstr("Could not create the output file: "), HasSubstr("missing")));
}

TEST_F(Demo, looksForNothingThatWasCutOff) {
  const path entry = folder_ / "audrel/recording-x";
  std::filesystem::create_directory(entry.parent_path());
  std::ofstream(entry) << "no entry, so it would be removed";
  EXPECT_EQ(run({"--demo", "--duration", "1", "--quiet"}).status, 0);
  EXPECT_TRUE(std::filesystem::exists(entry));
}

TEST_F(Demo, listsThePlayerWhichCanBeChosenByName) {
  const auto list =
      support::outcomeOf({.arguments = {AUDREL_PROGRAM, "--demo", "--list"}, .environment = {}});
  EXPECT_EQ(list.status, 0);
  EXPECT_THAT(list.output, HasSubstr("Audrel Demo"));

  const auto outcome = run({"--demo", "--app", "audrel demo", "--duration", "1", "--json"});
  EXPECT_EQ(outcome.status, 0) << outcome.errors;
  const auto wave = readWave(file_);
  EXPECT_EQ(wave.frames, 48000U);
  EXPECT_GT(wave.peak, audible);
}

TEST_F(Demo, withoutAServerSaysWhatToDo) {
  auto withoutServer = program({"--duration", "1"});
  withoutServer.environment = {{"XDG_RUNTIME_DIR", folder_.path().string()},
                               {"PIPEWIRE_RUNTIME_DIR", folder_.path().string()}};
  const auto outcome = support::outcomeOf(withoutServer);
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.errors, AllOf(HasSubstr("audrel-record: Could not create the audio tap"),
                                    HasSubstr("audrel-record: PipeWire")));
  EXPECT_FALSE(std::filesystem::exists(file_));

  withoutServer.arguments = {AUDREL_PROGRAM, "--list"};
  const auto list = support::outcomeOf(withoutServer);
  EXPECT_EQ(list.status, 1);
  EXPECT_THAT(list.errors, HasSubstr("audrel-record: PipeWire"));
}

}  // namespace
}  // namespace audrel::cli
