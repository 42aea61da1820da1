// The real program, on the private server of its demo and without a server.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sndfile.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <regex>
#include <sstream>
#include <string>
#include <system_error>
#include <vector>

#include "tests/cli/ChildProcess.h"
#include "tests/cli/TerminalPair.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Waiting.h"

namespace audrel::cli {
namespace {

using std::filesystem::path;
using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

/// 0 for a file that is not there yet.
std::uintmax_t sizeOf(const path& file) {
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(file, error);
  return error ? 0 : size;
}

struct Wave {
  std::int64_t frames = -1;  ///< -1: it cannot be read
  float peak = 0;
};

Wave readWave(const path& file) {
  SF_INFO info{};
  const std::unique_ptr<SNDFILE, int (*)(SNDFILE*)> opened(sf_open(file.c_str(), SFM_READ, &info),
                                                           sf_close);
  if (opened == nullptr) {
    return {};
  }
  std::vector<float> samples(static_cast<std::size_t>(info.frames * info.channels));
  Wave wave = {sf_readf_float(opened.get(), samples.data(), info.frames), 0};
  for (const float sample : samples) {
    wave.peak = std::max(wave.peak, std::fabs(sample));
  }
  return wave;
}

std::string contentsOf(const path& file) {
  std::ostringstream text;
  text << std::ifstream(file).rdbuf();
  return text.str();
}

class Demo : public testing::Test {
 protected:
  std::vector<std::string> commandLine(std::vector<std::string> words) const {
    words.insert(words.begin(), {AUDREL_PROGRAM, "--output", file_.string()});
    return words;
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
  ChildProcess program(commandLine({"--demo", "--duration", "2", "--json"}));
  EXPECT_EQ(program.wait(), 0) << program.errorOutput();
  EXPECT_EQ(number(program.output(), "frames"), 96000);
  const auto wave = readWave(file_);
  EXPECT_EQ(wave.frames, 96000);
  EXPECT_GT(wave.peak, 0.1F);
}

TEST_F(Demo, isCompleteAfterCtrlC) {
  ChildProcess program(commandLine({"--demo", "--json"}));
  ASSERT_TRUE(support::waitFor([this] { return sizeOf(file_) > 12000 * 4; }))
      << program.errorOutput();
  program.signal(SIGINT);
  program.signal(SIGINT);
  EXPECT_EQ(program.wait(), 0);
  const auto frames = number(program.output(), "frames");
  EXPECT_GE(frames, 12000);
  EXPECT_EQ(readWave(file_).frames, frames);
}

TEST_F(Demo, keepsItsMessagesOutOfTheFileWhenStandardOutputIsClosed) {
  ChildProcess program(commandLine({"--demo", "--duration", "1"}),
                       {.set = {}, .closed = {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}});
  EXPECT_EQ(program.wait(), 0);
  EXPECT_EQ(readWave(file_).frames, 48000);
  EXPECT_THAT(contentsOf(file_), testing::Not(HasSubstr("Saved")));
}

TEST_F(Demo, drawsALevelThatFitsTheWindowAndStopsWhenTheWindowIsClosed) {
  TerminalPair window(60);
  ChildProcess program(commandLine({"--demo"}),
                       {.set = {}, .closed = {}, .terminal = window.terminal()});
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
  EXPECT_EQ(program.wait(), 0);
  EXPECT_GT(readWave(file_).frames, 48000);
}

TEST_F(Demo, neverReplacesAFile) {
  std::ofstream(file_) << "precious";
  ChildProcess program(commandLine({"--demo", "--duration", "1"}));
  EXPECT_EQ(program.wait(), 1);
  EXPECT_THAT(program.errorOutput(),
              HasSubstr("audrel-record: Could not create the output file: "));
  EXPECT_EQ(contentsOf(file_), "precious");
}

TEST_F(Demo, namesAFolderThatIsMissing) {
  file_ = folder_ / "missing/take.wav";
  ChildProcess program(commandLine({"--demo", "--duration", "1"}));
  EXPECT_EQ(program.wait(), 1);
  EXPECT_THAT(program.errorOutput(),
              AllOf(HasSubstr("Could not create the output file: "), HasSubstr("missing")));
}

TEST_F(Demo, listsThePlayerWhichCanBeChosenByName) {
  ChildProcess list({AUDREL_PROGRAM, "--demo", "--list"});
  EXPECT_EQ(list.wait(), 0);
  EXPECT_THAT(list.output(), HasSubstr("Audrel Demo"));

  ChildProcess program(
      commandLine({"--demo", "--app", "audrel demo", "--duration", "1", "--json"}));
  EXPECT_EQ(program.wait(), 0) << program.errorOutput();
  const auto wave = readWave(file_);
  EXPECT_EQ(wave.frames, 48000);
  EXPECT_GT(wave.peak, 0.1F);
}

TEST_F(Demo, withoutAServerSaysWhatToDo) {
  const ChildEnvironment noServer = {.set = {{"XDG_RUNTIME_DIR", folder_.path().string()},
                                             {"PIPEWIRE_RUNTIME_DIR", folder_.path().string()}},
                                     .closed = {}};
  ChildProcess program(commandLine({"--duration", "1"}), noServer);
  EXPECT_EQ(program.wait(), 1);
  EXPECT_THAT(program.errorOutput(),
              AllOf(HasSubstr("audrel-record: Could not create the audio tap"),
                    HasSubstr("audrel-record: PipeWire")));
  EXPECT_FALSE(std::filesystem::exists(file_));

  ChildProcess list({AUDREL_PROGRAM, "--list"}, noServer);
  EXPECT_EQ(list.wait(), 1);
  EXPECT_THAT(list.errorOutput(), HasSubstr("audrel-record: PipeWire"));
}

}  // namespace
}  // namespace audrel::cli
