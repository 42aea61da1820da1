// What bash offers for the next word, beside a program that lists what a test says.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <system_error>
#include <vector>

#include "cli/Options.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"

namespace audrel::cli {
namespace {

using std::filesystem::path;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

class BashCompletion : public testing::Test {
 protected:
  /// Makes `audrel-record --list --json` print a list of `names`, as they stand in JSON.
  void play(const std::vector<std::string>& names) const {
    std::ofstream program(folder_ / "audrel-record");
    program << "#!/bin/sh\ncat <<'END'\n[\n";
    for (const auto& name : names) {
      program << R"(  {"id": 1, "pid": 2, "name": ")" << name << R"(", "bundleIdentifier": null},)"
              << '\n';
    }
    program << "]\nEND\n";
    program.close();
    std::error_code error;
    std::filesystem::permissions(folder_ / "audrel-record", std::filesystem::perms::owner_all,
                                 error);
  }

  /// The words that bash offers for `current`, which follows `previous`.
  std::vector<std::string> offered(const std::string& previous, const std::string& current) const {
    const auto bash = support::outcomeOf(
        {.arguments = {"/bin/bash", "-c",
                       "cd \"$1\"; PATH=$1:$PATH; source \"$2\"; COMP_WORDS=(audrel-record \"$3\" "
                       "\"$4\"); COMP_CWORD=2; _audrel_record; printf '%s\\n' \"${COMPREPLY[@]}\"",
                       "bash", folder_.path().string(), AUDREL_BASH_COMPLETION, previous, current},
         .environment = {}});
    EXPECT_EQ(bash.status, 0);
    EXPECT_EQ(bash.errors, "");
    std::vector<std::string> words;
    std::istringstream lines(bash.output);
    for (std::string line; std::getline(lines, line);) {
      if (!line.empty()) {
        words.push_back(line);
      }
    }
    return words;
  }

  support::TemporaryFolder folder_;
};

TEST_F(BashCompletion, offersEveryOption) {
  const auto words = offered("--quiet", "");
  EXPECT_THAT(words, SizeIs(10));
  for (const auto& word : words) {
    EXPECT_THAT(helpText, HasSubstr(" " + word + " "));
  }
  EXPECT_THAT(offered("--quiet", "--du"), ElementsAre("--duration"));
}

TEST_F(BashCompletion, offersFormats) {
  EXPECT_THAT(offered("--format", ""), ElementsAre("m4a", "wav"));
  EXPECT_THAT(offered("--format", "w"), ElementsAre("wav"));
}

TEST_F(BashCompletion, offersApplicationsWhateverTheCase) {
  play({"Web Radio", "webcam", "Player"});
  EXPECT_THAT(offered("--app", ""), ElementsAre("Web\\ Radio", "webcam", "Player"));
  EXPECT_THAT(offered("--app", "WEB"), ElementsAre("Web\\ Radio", "webcam"));
  EXPECT_THAT(offered("--app", "Web\\ R"), ElementsAre("Web\\ Radio"));
}

TEST_F(BashCompletion, neverRunsWhatAnApplicationIsNamed) {
  play({"$(touch ran)", "`touch ran`", "; touch ran", R"(\"; touch ran)"});
  EXPECT_THAT(offered("--app", ""),
              ElementsAre("\\$\\(touch\\ ran\\)", "\\`touch\\ ran\\`", "\\;\\ touch\\ ran"));
  EXPECT_FALSE(std::filesystem::exists(folder_ / "ran"));
}

TEST_F(BashCompletion, offersNothingWhereNothingPlaysOrTheProgramFails) {
  play({});
  EXPECT_THAT(offered("--app", ""), IsEmpty());
  std::ofstream(folder_ / "audrel-record") << "#!/bin/sh\necho failed >&2\nexit 1\n";
  EXPECT_THAT(offered("--app", ""), IsEmpty());
}

}  // namespace
}  // namespace audrel::cli
