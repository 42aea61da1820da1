#include "cli/Options.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <sstream>
#include <string>
#include <variant>
#include <vector>

#include "tests/support/TemporaryFolder.h"

namespace audrel::cli {
namespace {

using testing::AllOf;
using testing::HasSubstr;

std::variant<Options, UsageError> parse(std::vector<std::string> words) {
  words.insert(words.begin(), "audrel-record");
  std::vector<char*> arguments(words.size());
  std::ranges::transform(words, arguments.begin(), [](std::string& word) { return word.data(); });
  return parseOptions(arguments);
}

Options options(const std::vector<std::string>& words) {
  auto parsed = parse(words);
  if (const auto* error = std::get_if<UsageError>(&parsed)) {
    ADD_FAILURE() << error->text;
    return {};
  }
  return std::get<Options>(parsed);
}

std::string usageError(const std::vector<std::string>& words) {
  auto parsed = parse(words);
  const auto* error = std::get_if<UsageError>(&parsed);
  return error != nullptr ? error->text : "no error";
}

TEST(Options, withoutWordsEverythingIsRecordedToM4aUntilStopped) {
  const auto none = options({});
  EXPECT_EQ(none.task, Options::Task::record);
  EXPECT_EQ(none.server, Options::Server::system);
  EXPECT_EQ(none.output, Options::Output::text);
  EXPECT_EQ(none.progress, Options::Progress::shown);
  EXPECT_EQ(none.app, std::nullopt);
  EXPECT_EQ(none.format, RecordingFormat::m4a);
  EXPECT_EQ(none.file, std::nullopt);
  EXPECT_EQ(none.duration, std::nullopt);
}

TEST(Options, eachIsTaken) {
  const auto all = options({"--app", "#42", "--format", "wav", "--output=take.wav", "--duration",
                            "1:30", "--demo", "--json", "--quiet"});
  EXPECT_EQ(all.task, Options::Task::record);
  EXPECT_EQ(all.server, Options::Server::demo);
  EXPECT_EQ(all.output, Options::Output::json);
  EXPECT_EQ(all.progress, Options::Progress::quiet);
  EXPECT_EQ(all.app, "#42");
  EXPECT_EQ(all.format, RecordingFormat::wav);
  EXPECT_EQ(all.file, "take.wav");
  EXPECT_EQ(all.duration, std::chrono::seconds(90));
  EXPECT_EQ(options({"--list", "--json", "--demo"}).task, Options::Task::list);
  EXPECT_EQ(options({"--version"}).task, Options::Task::version);
  EXPECT_EQ(options({"--help"}).task, Options::Task::help);
}

TEST(Options, eachThatIsTypedOftenHasALetter) {
  const auto all = options({"-a", "#42", "-fwav", "-o", "take.wav", "-qd", "1:30"});
  EXPECT_EQ(all.app, "#42");
  EXPECT_EQ(all.format, RecordingFormat::wav);
  EXPECT_EQ(all.file, "take.wav");
  EXPECT_EQ(all.progress, Options::Progress::quiet);
  EXPECT_EQ(all.duration, std::chrono::seconds(90));
  EXPECT_EQ(options({"-l"}).task, Options::Task::list);
  EXPECT_EQ(options({"-h"}).task, Options::Task::help);
  EXPECT_EQ(options({"-V"}).task, Options::Task::version);
}

TEST(Options, eachMayBeShortened) {
  EXPECT_EQ(options({"--du=90"}).duration, std::chrono::seconds(90));
  EXPECT_EQ(options({"--q"}).progress, Options::Progress::quiet);
}

TEST(Options, helpWinsOverWhatStandsBeside) {
  EXPECT_EQ(options({"--list", "--help"}).task, Options::Task::help);
  EXPECT_EQ(options({"--help", "--list"}).task, Options::Task::help);
}

TEST(Options, theNameOfTheFileImpliesTheFormat) {
  EXPECT_EQ(options({"--output", "x.wav"}).format, RecordingFormat::wav);
  EXPECT_EQ(options({"--output", "x.WAV"}).format, RecordingFormat::wav);
  EXPECT_EQ(options({"--output", "x.m4a"}).format, RecordingFormat::m4a);
  EXPECT_EQ(options({"--output", "folder.wav/x"}).format, RecordingFormat::m4a);
  EXPECT_EQ(options({"--output", "x.mp4", "--format", "m4a"}).format, RecordingFormat::m4a);
  EXPECT_EQ(options({"--output", "x.wav", "--format", "wav"}).format, RecordingFormat::wav);
}

TEST(Options, aNameWithoutAnEndingGetsTheFormats) {
  EXPECT_EQ(options({"--output", "x"}).file, "x.m4a");
  EXPECT_EQ(options({"--output", "x."}).file, "x.m4a");
  EXPECT_EQ(options({"--output", "folder.wav/.x", "--format", "wav"}).file, "folder.wav/.x.wav");
  EXPECT_EQ(options({"--output", "x.mp4", "--format", "m4a"}).file, "x.mp4");
}

TEST(Options, theOutputMayBeAFolder) {
  const support::TemporaryFolder parent;
  const auto folder = parent / "in 2.0";
  std::filesystem::create_directory(folder);
  EXPECT_EQ(options({"--output", folder.string()}).folder, folder);
  EXPECT_EQ(options({"--output", folder.string()}).file, std::nullopt);
  EXPECT_EQ(options({"--output", "missing/"}).folder, "missing/");
  EXPECT_EQ(options({"--output", folder.string(), "--output", "x.wav"}).folder, std::nullopt);
  EXPECT_EQ(options({"--output", "x.wav", "--output", folder.string()}).format,
            RecordingFormat::m4a);
}

TEST(Options, standardOutputIsNoFileToRecordTo) {
  EXPECT_EQ(usageError({"--output", "-"}),
            "'-' is no file to record to, and standard output takes no recording: give --output "
            "the name of a file or folder.");
}

TEST(Options, aFormatThatTheNameContradictsIsAnError) {
  EXPECT_EQ(usageError({"--output", "x.wav", "--format", "m4a"}),
            "--output 'x.wav' and --format m4a contradict each other: change one of them, or leave "
            "--format out.");
  EXPECT_THAT(usageError({"--format", "wav", "--output", "x.M4A"}), HasSubstr("contradict"));
}

TEST(Options, aNameThatTellsAnotherFormatNeedsAFormat) {
  EXPECT_THAT(usageError({"--output", "x.mp3"}),
              AllOf(HasSubstr("'x.mp3'"), HasSubstr(".m4a or .wav")));
}

TEST(Options, errorsNameTheWordAndWhatToTypeInstead) {
  EXPECT_EQ(usageError({"--fromat", "wav"}),
            "'--fromat' is no option. Try 'audrel-record --help'.");
  EXPECT_EQ(usageError({"--d=5"}), "'--d=5' may be --demo or --duration: write one of them.");
  EXPECT_EQ(usageError({"-qx"}), "'-x' is no option. Try 'audrel-record --help'.");
  EXPECT_EQ(usageError({"-qa"}), "'-a' needs a value. Try 'audrel-record --help'.");
  EXPECT_EQ(usageError({"--list=1"}), "--list takes no value: leave out what follows the \"=\".");
  EXPECT_EQ(usageError({"-x"}), "'-x' is no option. Try 'audrel-record --help'.");
  EXPECT_EQ(usageError({"music"}),
            "'music' is not expected: every argument is an option or its value. Try "
            "'audrel-record --help'.");
  EXPECT_EQ(usageError({"--app"}), "'--app' needs a value. Try 'audrel-record --help'.");
  EXPECT_EQ(usageError({"--json=1"}), "--json takes no value: leave out what follows the \"=\".");
  EXPECT_EQ(usageError({"--format", "mp3"}),
            "'mp3' is no format: write --format m4a or --format wav.");
  EXPECT_THAT(usageError({"--duration", "soon"}), AllOf(HasSubstr("'soon'"), HasSubstr("1:30")));
  EXPECT_EQ(usageError({"--app", ""}),
            "--app got an empty word: give it a name, bundle identifier, pid or \"#\" object id.");
  EXPECT_EQ(usageError({"--output", ""}),
            "--output got an empty word: give it the name of a file or folder.");
}

TEST(Options, whatRecordsIsNoUseForAList) {
  for (const auto& words : std::vector<std::vector<std::string>>{
           {"--app", "x"}, {"--format", "wav"}, {"--output", "x"}, {"--duration", "1"}}) {
    auto withList = words;
    withList.emplace_back("--list");
    EXPECT_THAT(usageError(withList), AllOf(HasSubstr(words[0]), HasSubstr("--list")));
  }
}

TEST(Options, repairTakesFilesWhereverTheyStand) {
  const auto all = options({"x.m4a", "--repair", "--json", "y.wav", "-q", "--force", "--", "-z"});
  EXPECT_EQ(all.task, Options::Task::repair);
  EXPECT_EQ(all.repaired, (std::vector<std::filesystem::path>{"x.m4a", "y.wav", "-z"}));
  EXPECT_EQ(all.locks, Options::Locks::ifOffered);
  EXPECT_EQ(all.output, Options::Output::json);
  EXPECT_EQ(all.progress, Options::Progress::quiet);
  EXPECT_EQ(options({"--repair", "x.m4a"}).locks, Options::Locks::needed);
  EXPECT_EQ(options({"--repair", "x.m4a", "--help"}).task, Options::Task::help);
}

TEST(Options, nothingElseGoesWithRepair) {
  for (const auto& words : std::vector<std::vector<std::string>>{{"--app", "x"},
                                                                 {"--format", "wav"},
                                                                 {"--output", "x"},
                                                                 {"--duration", "1"},
                                                                 {"--demo"}}) {
    auto withRepair = words;
    withRepair.insert(withRepair.end(), {"--repair", "x.m4a"});
    EXPECT_EQ(usageError(withRepair),
              words[0] + " is for recording and --repair records nothing: leave one of them out.");
  }
  EXPECT_EQ(usageError({"--list", "--repair", "x"}),
            "--list and --repair contradict each other: leave one of them out.");
  EXPECT_EQ(usageError({"--repair", "x", "--list"}), usageError({"--list", "--repair", "x"}));
  EXPECT_EQ(usageError({"--repair"}),
            "--repair needs the names of the files to repair: write them behind it.");
  EXPECT_EQ(usageError({"--force"}), "--force is for --repair alone: leave it out.");
  EXPECT_EQ(usageError({"--repair=x"}),
            "--repair takes no value: leave out what follows the \"=\".");
}

TEST(Options, anErrorLeavesNothingBehindForTheNextCommandLine) {
  EXPECT_NE(usageError({"-xyz", "--json"}), "no error");
  EXPECT_EQ(options({"--json"}).output, Options::Output::json);
}

TEST(HelpText, fitsAScreen) {
  std::istringstream text(helpText);
  int lines = 0;
  for (std::string line; std::getline(text, line); ++lines) {
    EXPECT_LE(line.size(), 80U) << line;
  }
  EXPECT_LE(lines, 23);  // and the prompt
}

TEST(HelpText, namesEveryOption) {
  for (const char* option : {"-l, --list", "    --json", "-a, --app", "-f, --format",
                             "-o, --output", "-d, --duration", "-q, --quiet", "-h, --help",
                             "-V, --version", "    --demo", "    --repair", "    --force"}) {
    EXPECT_THAT(helpText, HasSubstr(std::string("  ") + option + " ")) << option;
  }
}

TEST(Readme, hasCommandLinesThatAreUnderstood) {
  std::ifstream readme("README.md");
  int count = 0;
  for (std::string line; std::getline(readme, line);) {
    std::istringstream stream(line.substr(0, line.find('#')));
    std::vector<std::string> words(std::istream_iterator<std::string>(stream), {});
    if (!words.empty() && words.front() == "build/run/audrel-record") {
      words.erase(words.begin());
      EXPECT_EQ(usageError(words), "no error") << line;
      ++count;
    }
  }
  EXPECT_GE(count, 3);
}

}  // namespace
}  // namespace audrel::cli
