// The programs as they were linked for macOS, from the application's bundle, executed.

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#import "tests/macos/frameworks/FakeAppKit.h"
#import "tests/macos/frameworks/FakeCoreAudio.h"

#include "tests/fakes/ScopedVariable.h"
#include "tests/fakes/Transcript.h"
#include "tests/macos/execution/SessionStory.h"
#include "tests/macos/frameworks/FakeMac.h"
#include "tests/macos/loader/LoadedProgram.h"

extern "C" {
extern const audrel::macho::LoadedProgram audrelApp;
extern const audrel::macho::LoadedProgram audrelRecord;
extern const audrel::macho::LoadedProgram audrelWithUpdater;
}

namespace audrel::macos {
namespace {

class LoadedProgramTest : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    for (const auto* program : {&audrelApp, &audrelRecord, &audrelWithUpdater}) {
      program->prepare();
    }
  }

  LoadedProgramTest() { fakemac::resetHardware(); }

  static fakemac::Mac& mac() { return fakemac::mac(); }

 private:
  fakemac::ScopedMac scopedMac_;
};

// What is shipped does what the sanitized build of the same sources does, to the letter.
TEST_F(LoadedProgramTest, tellsTheStoryThatTheAdaptersTell) {
  const fakes::ScopedVariable utc{"TZ", "UTC0"};
  SessionStory story({.run =
                          [](const std::function<void()>& happens) {
                            mac().whileRunning = happens;
                            audrelWithUpdater.run({"Audrel"});
                          },
                      .setClock =
                          [](NS::Date time) {
                            macho::scriptedTime =
                                std::chrono::duration_cast<std::chrono::microseconds>(
                                    time.time_since_epoch())
                                    .count();
                          }});
  const auto difference = fakes::differenceFromTranscript("macos-session", story.tell());
  EXPECT_EQ(difference, std::nullopt) << difference.value_or("");
}

// The first is what the system may add to the first launch of a downloaded copy, the second what
// tools and people add to try something.
TEST_F(LoadedProgramTest, startsWhateverArgumentsItIsGiven) {
  const std::vector<std::vector<std::string>> all = {{"Audrel", "-psn_0_12345"},
                                                     {"Audrel", "-NSDoubleLocalizedStrings", "YES"},
                                                     {"Audrel", "--unknown"},
                                                     {"Audrel", ""},
                                                     {"Audrel"},
                                                     {}};
  int launches = 0;
  mac().whileRunning = [&launches] { ++launches; };
  for (const auto& arguments : all) {
    EXPECT_EQ(audrelApp.run(arguments), 0);
  }
  EXPECT_EQ(launches, static_cast<int>(all.size()));
}

// By an exception of the program's own, and by one that a framework raises.
TEST_F(LoadedProgramTest, tellsOfAStartThatFails) {
  mac().whileRunning = [] {
    const auto start = [] {
      @autoreleasepool {
        fakemac::choose(fakemac::itemNamed(fakemac::statusItem().menu, "Start Recording"));
      }
    };
    mac().failing["AudioDeviceStart"] = -50;
    start();
    mac().raising["AVAudioFile.initForWriting:settings:commonFormat:interleaved:error:"] =
        "required condition is false";
    start();
  };
  EXPECT_EQ(audrelApp.run({"Audrel"}), 0);
  ASSERT_EQ(mac().alerts.size(), 2U);
  EXPECT_EQ(mac().alerts[0].text, "Could not install the audio callback (OSStatus -50).");
  EXPECT_EQ(mac().alerts[1].text, "Could not create the output file: required condition is false");
}

TEST_F(LoadedProgramTest, keepsItsConstantsFromBeingWritten) {
  EXPECT_DEATH(audrelApp.constants.begin[0] = std::byte{0}, "SEGV");
}

/// And tells whether it asked the frameworks for anything.
[[noreturn]] void answerInThisProcess(const macho::LoadedProgram& program,
                                      const std::vector<std::string>& arguments) {
  dup2(STDERR_FILENO, STDOUT_FILENO);
  const int status = program.run(arguments);
  std::puts(fakemac::mac().takeJournal().empty() ? "Nothing was asked." : "Something was asked.");
  std::exit(status);
}

TEST_F(LoadedProgramTest, answersWhatAPersonTyped) {
  mac().processes = {{70, 700, "org.example.radio"}, {71, 710, ""}};
  mac().applications = {{700, "Web Radio"}, {710, "game"}};
  const struct {
    const macho::LoadedProgram& program;
    std::vector<std::string> arguments;
    int status;
    const char* answer;
  } answers[] = {
      {audrelApp, {"Audrel", "--version"}, 0, "^audrel 1.0.0\nNothing was asked.\n$"},
      {audrelApp,
       {"Audrel", "-NSDoubleLocalizedStrings", "YES", "--help"},
       0,
       "^Usage: audrel .*\n(.*\n)*Nothing was asked.\n$"},
      {audrelRecord,
       {"audrel-record", "--list"},
       0,
       "#71  710  game       -                  -\n#70  700  Web Radio  org.example.radio  -\n"},
      {audrelRecord, {"audrel-record", "--unknown"}, 2, "'--unknown' is no option"},
      // On macOS the option parser of the C library says these two in another way.
      {audrelRecord, {"audrel-record", "--json=1"}, 2, "--json takes no value"},
      {audrelRecord, {"audrel-record", "--app"}, 2, "'--app' needs a value"},
  };
  for (const auto& [program, arguments, status, answer] : answers) {
    EXPECT_EXIT(answerInThisProcess(program, arguments), testing::ExitedWithCode(status), answer);
  }
}

}  // namespace
}  // namespace audrel::macos
