// What bash and fish offer for the next word, beside a program that lists what a test says.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <system_error>
#include <utility>
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
using testing::UnorderedElementsAre;

class Completion : public testing::Test {
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

  /// The lines that a shell's script prints, with the program's folder as its first argument.
  std::vector<std::string> linesOf(std::vector<std::string> shell) const {
    const auto outcome =
        support::outcomeOf({.arguments = std::move(shell), .environment = {}, .keepsErrors = true});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.errors, "");
    std::vector<std::string> lines;
    std::istringstream text(outcome.output);
    for (std::string line; std::getline(text, line);) {
      if (!line.empty()) {
        lines.push_back(line);
      }
    }
    return lines;
  }

  support::TemporaryFolder folder_;
};

class BashCompletion : public Completion {
 protected:
  /// The words that bash offers for the last of these, as it splits them.
  std::vector<std::string> offered(std::vector<std::string> words) const {
    words.insert(words.begin(),
                 {"/bin/bash", "-c",
                  "cd \"$1\"; PATH=$1:$PATH; source \"$2\"; shift 2; COMP_WORDS=(audrel-record "
                  "\"$@\"); COMP_CWORD=$#; _audrel_record; printf '%s\\n' \"${COMPREPLY[@]}\"",
                  "bash", folder_.path().string(), AUDREL_COMPLETIONS "/audrel-record.bash"});
    return linesOf(words);
  }
};

TEST_F(BashCompletion, offersEveryOption) {
  const auto words = offered({""});
  EXPECT_THAT(words, SizeIs(11));
  for (const auto& word : words) {
    EXPECT_THAT(helpText, HasSubstr(" " + word + " "));
  }
  EXPECT_THAT(offered({"--quiet", "--du"}), ElementsAre("--duration"));
}

TEST_F(BashCompletion, offersNoOptionThatContradictsWhatStandsThere) {
  EXPECT_THAT(offered({"--list", ""}), ElementsAre("--demo", "--json", "--quiet"));
  EXPECT_THAT(offered({"-a", "x", "-d", "5", "--json", ""}),
              ElementsAre("--format", "--output", "--demo", "--quiet"));
  EXPECT_THAT(offered({"--help", ""}), IsEmpty());
}

TEST_F(BashCompletion, offersFilesToRepair) {
  std::ofstream(folder_ / "song.wav");
  EXPECT_THAT(offered({"--repair", "so"}), ElementsAre("song.wav"));
  EXPECT_THAT(offered({"--repair", "song.wav", "--"}), ElementsAre("--force", "--json", "--quiet"));
  EXPECT_THAT(offered({"--repair", "--json", "--force", "--"}), ElementsAre("--quiet"));
  EXPECT_THAT(offered({"--demo", "--re"}), IsEmpty());
}

TEST_F(BashCompletion, offersFormats) {
  EXPECT_THAT(offered({"--format", ""}), ElementsAre("m4a", "wav"));
  EXPECT_THAT(offered({"-f", "w"}), ElementsAre("wav"));
  EXPECT_THAT(offered({"--format", "="}), ElementsAre("m4a", "wav"));
  EXPECT_THAT(offered({"--format", "=", "w"}), ElementsAre("wav"));
  EXPECT_THAT(offered({"-o", "x.m4a", "-f", ""}), ElementsAre("m4a"));
}

TEST_F(BashCompletion, offersFoldersForTheOutputAndNoFilesSinceTheyAreNotOverwritten) {
  std::filesystem::create_directory(folder_ / "music");
  std::ofstream(folder_ / "music.wav");
  EXPECT_THAT(offered({"--output", "mu"}), ElementsAre("music"));
}

TEST_F(BashCompletion, offersApplicationsWhateverTheCase) {
  play({"Web Radio", "webcam", "Player"});
  EXPECT_THAT(offered({"--app", ""}), ElementsAre("Web\\ Radio", "webcam", "Player"));
  EXPECT_THAT(offered({"-a", "WEB"}), ElementsAre("Web\\ Radio", "webcam"));
  EXPECT_THAT(offered({"--app", "Web\\ R"}), ElementsAre("Web\\ Radio"));
  EXPECT_THAT(offered({"--app", "=", "Web\\ R"}), ElementsAre("Web\\ Radio"));
}

TEST_F(BashCompletion, offersApplicationsAsTheyAreInsideOfQuotes) {
  play({"Web Radio", "It's $5"});
  EXPECT_THAT(offered({"--app", "\"web r"}), ElementsAre("Web Radio"));
  EXPECT_THAT(offered({"--app", "'web r"}), ElementsAre("Web Radio"));
  EXPECT_THAT(offered({"--app", "'it"}), IsEmpty());
  EXPECT_THAT(offered({"--app", "\"it"}), IsEmpty());
}

TEST_F(BashCompletion, neverRunsWhatAnApplicationIsNamed) {
  play({"$(touch ran)", "`touch ran`", "; touch ran", R"(\"; touch ran)"});
  EXPECT_THAT(offered({"--app", ""}),
              ElementsAre("\\$\\(touch\\ ran\\)", "\\`touch\\ ran\\`", "\\;\\ touch\\ ran"));
  EXPECT_THAT(offered({"--app", "\""}), ElementsAre("; touch ran"));
  EXPECT_FALSE(std::filesystem::exists(folder_ / "ran"));
}

TEST_F(BashCompletion, offersNothingWhereNothingPlaysOrTheProgramFails) {
  play({});
  EXPECT_THAT(offered({"--app", ""}), IsEmpty());
  std::ofstream(folder_ / "audrel-record") << "#!/bin/sh\necho failed >&2\nexit 1\n";
  EXPECT_THAT(offered({"--app", ""}), IsEmpty());
}

class FishCompletion : public Completion {
 protected:
  /// What fish offers at the end of `line`, without the descriptions.
  std::vector<std::string> offered(const std::string& line) const {
    auto lines = linesOf({"fish", "--no-config", "-c",
                          "cd $argv[1]; set -x PATH $argv[1] $PATH; source $argv[2]; "
                          "complete -C $argv[3]",
                          folder_.path().string(), AUDREL_COMPLETIONS "/audrel-record.fish",
                          "audrel-record " + line});
    for (auto& word : lines) {
      word = word.substr(0, word.find('\t'));
    }
    return lines;
  }
};

TEST_F(FishCompletion, offersWhatBashOffers) {
  play({"Web Radio", "webcam", "Player"});
  EXPECT_THAT(offered("--"), SizeIs(11));
  EXPECT_THAT(offered("--list --"), ElementsAre("--demo", "--json", "--quiet"));
  EXPECT_THAT(offered("-a x -d 5 --json --"),
              ElementsAre("--demo", "--format", "--output", "--quiet"));
  EXPECT_THAT(offered("--help --"), IsEmpty());
  std::ofstream(folder_ / "song.wav");
  EXPECT_THAT(offered("--repair son"), ElementsAre("song.wav"));
  EXPECT_THAT(offered("--repair song.wav --"), ElementsAre("--force", "--json", "--quiet"));
  EXPECT_THAT(offered("--demo --re"), IsEmpty());
  EXPECT_THAT(offered("--format="), ElementsAre("--format=m4a", "--format=wav"));
  EXPECT_THAT(offered("-o x.m4a -f "), ElementsAre("m4a"));
  EXPECT_THAT(offered("--app=Web"), ElementsAre("--app=Web Radio"));
  EXPECT_THAT(offered("--app \"Web R"), ElementsAre("Web Radio"));
  EXPECT_THAT(offered("-a web"), UnorderedElementsAre("Web Radio", "webcam"));
}

}  // namespace
}  // namespace audrel::cli
