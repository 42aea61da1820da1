// The programs as they were linked for macOS, from the application's bundle, executed.

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#import "tests/macos/frameworks/FakeAppKit.h"
#import "tests/macos/frameworks/FakeCoreAudio.h"
#import "tests/macos/frameworks/FakeFoundation.h"

#include "tests/fakes/ScopedVariable.h"
#include "tests/fakes/Transcript.h"
#include "tests/macos/execution/SessionStory.h"
#include "tests/macos/frameworks/FakeMac.h"
#include "tests/macos/loader/HostSymbols.h"
#include "tests/macos/loader/Image.h"
#include "tests/macos/loader/Unwinding.h"
#include "tests/macos/runtime/Classes.h"

namespace audrel::macos {
namespace {

const std::filesystem::path programs = AUDREL_APP "/Contents/MacOS";

template <typename T>
std::span<T> sectionOf(const macho::Image& image, const char* name) {
  const auto bytes = image.section(name);
  return {reinterpret_cast<T*>(bytes.data()), bytes.size() / sizeof(T)};
}

struct LoadedProgram {
  explicit LoadedProgram(const std::filesystem::path& file) : image(file, macho::hostSymbol) {
    objcruntime::registerMetadata(
        {.selectors = sectionOf<objcruntime::Selector>(image, "__objc_selrefs"),
         .classes = sectionOf<objcruntime::Class* const>(image, "__objc_classlist"),
         .categories = sectionOf<objcruntime::Category* const>(image, "__objc_catlist")});
  }

  macho::Image image;
  macho::Unwinding unwinding{image};
};

const LoadedProgram& application() {
  static const LoadedProgram program(programs / "Audrel");
  return program;
}

const LoadedProgram& commandLine() {
  static const LoadedProgram program(programs / "audrel-record");
  return program;
}

class LoadedProgramTest : public testing::Test {
 protected:
  LoadedProgramTest() {
    fakemac::resetHardware();
  }

  static fakemac::Mac& mac() { return fakemac::mac(); }

 private:
  fakemac::ScopedMac scopedMac_;
};

// What is shipped does what the sanitized build of the same sources does, to the letter.
TEST_F(LoadedProgramTest, tellsTheStoryThatTheAdaptersTell) {
  static const LoadedProgram program(AUDREL_WITH_UPDATER);
  const fakes::ScopedVariable utc{"TZ", "UTC0"};
  SessionStory story({.run =
                          [](const std::function<void()>& happens) {
                            mac().whileRunning = happens;
                            program.image.run({"Audrel"});
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

void choose(const std::string& title) {
  @autoreleasepool {
    fakemac::choose(fakemac::itemNamed(fakemac::statusItem().menu, title));
  }
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
    EXPECT_EQ(application().image.run(arguments), 0);
  }
  EXPECT_EQ(launches, static_cast<int>(all.size()));
}

/// And tells what it asked the frameworks for.
[[noreturn]] void answerInThisProcess(const std::vector<std::string>& arguments) {
  dup2(STDERR_FILENO, STDOUT_FILENO);
  const int status = application().image.run(arguments);
  std::puts(fakemac::mac().takeJournal().empty() ? "Nothing was asked." : "Something was asked.");
  std::exit(status);
}

TEST_F(LoadedProgramTest, answersWhatAPersonTypedAndAsksTheFrameworksForNothing) {
  EXPECT_EXIT(answerInThisProcess({"Audrel", "--version"}), testing::ExitedWithCode(0),
              "^audrel 1.0.0\nNothing was asked.\n$");
  EXPECT_EXIT(answerInThisProcess({"Audrel", "-NSDoubleLocalizedStrings", "YES", "--help"}),
              testing::ExitedWithCode(0), "^Usage: audrel .*\n(.*\n)*Nothing was asked.\n$");
}

TEST_F(LoadedProgramTest, completesTheFileWhenItIsQuitInMidRecording) {
  mac().whileRunning = [] {
    choose("Start Recording");
    fakemac::deliver({std::vector<std::byte>(4096)});
    mac().takeJournal();
    choose("Quit Audrel");
  };
  EXPECT_EXIT(application().image.run({"Audrel"}), testing::ExitedWithCode(0),
              "NSApplication.terminate:\n(.*\n)*AudioDeviceStop.*\n(.*\n)*AVAudioFile closed: "
              ".*\n(.*\n)*.*Recording stopped");
}

TEST_F(LoadedProgramTest, tellsOfAStartThatFailsByAnExceptionOfItsOwn) {
  mac().whileRunning = [] {
    mac().failing["AudioDeviceStart"] = -50;
    choose("Start Recording");
  };
  EXPECT_EQ(application().image.run({"Audrel"}), 0);
  ASSERT_EQ(mac().alerts.size(), 1U);
  EXPECT_EQ(mac().alerts.front().text, "Could not install the audio callback (OSStatus -50).");
}

TEST_F(LoadedProgramTest, tellsOfAStartThatFailsByAnExceptionOfTheFrameworks) {
  mac().whileRunning = [] {
    mac().raising["AVAudioFile.initForWriting:settings:commonFormat:interleaved:error:"] =
        "required condition is false";
    choose("Start Recording");
  };
  EXPECT_EQ(application().image.run({"Audrel"}), 0);
  ASSERT_EQ(mac().alerts.size(), 1U);
  EXPECT_EQ(mac().alerts.front().text,
            "Could not create the output file: required condition is false");
}

/// What goes to standard output too.
[[noreturn]] void runInThisProcess(const LoadedProgram& program,
                                   const std::vector<std::string>& arguments) {
  dup2(STDERR_FILENO, STDOUT_FILENO);
  std::exit(program.image.run(arguments));
}

TEST_F(LoadedProgramTest, listsWhatPlaysOnTheCommandLine) {
  mac().processes = {{70, 700, "org.example.radio"}, {71, 710, ""}};
  mac().applications = {{700, "Web Radio"}, {710, "game"}};
  EXPECT_EXIT(runInThisProcess(commandLine(), {"audrel-record", "--list"}),
              testing::ExitedWithCode(0),
              "#71  710  game       -\n#70  700  Web Radio  org.example.radio\n");
}

TEST_F(LoadedProgramTest, refusesAnUnknownOptionOnTheCommandLine) {
  EXPECT_EXIT(runInThisProcess(commandLine(), {"audrel-record", "--unknown"}),
              testing::ExitedWithCode(2), "'--unknown' is no option");
}

// On macOS the option parser of the C library says it in another way.
TEST_F(LoadedProgramTest, tellsAValueThatIsNotTakenFromOneThatIsMissing) {
  EXPECT_EXIT(runInThisProcess(commandLine(), {"audrel-record", "--json=1"}),
              testing::ExitedWithCode(2), "--json takes no value");
  EXPECT_EXIT(runInThisProcess(commandLine(), {"audrel-record", "--app"}),
              testing::ExitedWithCode(2), "'--app' needs a value");
}

// The loader itself.

std::string refusal(const std::filesystem::path& file, const macho::Image::Resolve& resolve) {
  try {
    const macho::Image image(file, resolve);
    return "none";
  } catch (const std::runtime_error& error) {
    return error.what();
  }
}

TEST(LoaderTest, namesEachImportThatNothingKnows) {
  const auto withoutTwo = [](const std::string& name) {
    return name == "AudioDeviceStart" || name == "objc_msgSend" ? nullptr : macho::hostSymbol(name);
  };
  EXPECT_EQ(refusal(programs / "Audrel", withoutTwo),
            "nothing is known by the names _objc_msgSend _AudioDeviceStart");
}

TEST(LoaderTest, refusesWhatIsNoProgramForThisProcessor) {
  EXPECT_EQ(refusal("/proc/self/exe", macho::hostSymbol), "no Mach-O file for x86-64");
  EXPECT_EQ(refusal("/nowhere", macho::hostSymbol), "cannot read /nowhere");
}

TEST(LoaderTest, keepsConstantsFromBeingWritten) {
  EXPECT_DEATH(application().image.section("__cfstring")[0] = std::byte{0}, "SEGV");
}

}  // namespace
}  // namespace audrel::macos
