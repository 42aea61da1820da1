// The menu-bar program from a terminal: what it prints, and how it exits.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <string>
#include <vector>

#include "platform/Identity.h"
#include "tests/cli/TerminalPair.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Waiting.h"

namespace audrel {
namespace {

using testing::StartsWith;

using support::Outcome;

Outcome run(const char* program, const std::vector<std::string>& arguments) {
  std::vector<std::string> words{program};
  words.insert(words.end(), arguments.begin(), arguments.end());
  return support::outcomeOf({.arguments = words, .environment = {}});
}

Outcome run(const std::vector<std::string>& arguments) {
  return run(AUDREL_PROGRAM, arguments);
}

Outcome usageError(const std::string& text) {
  return {2, "", "audrel: " + text + " Try audrel --help.\n"};
}

TEST(Arguments, helpIsPrinted) {
  const Outcome outcome = run({"--help"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.output, StartsWith("Usage: audrel [OPTION]\n\nRecords what "));
  EXPECT_EQ(outcome.errors, "");
}

TEST(Arguments, versionIsPrinted) {
  EXPECT_EQ(run({"--version"}),
            (Outcome{0, std::string("audrel ") + identity::version + "\n", ""}));
}

TEST(Arguments, thatAreNotKnownAreErrors) {
  for (const std::string argument : {"--unknown", "", "radio", "-psn_0_12345"}) {
    EXPECT_EQ(run({argument}), usageError("\"" + argument + "\" is not known."));
  }
}

TEST(Arguments, areOneAtMost) {
  EXPECT_EQ(run({"--help", "--version"}), usageError("It takes one option at most."));
  EXPECT_EQ(run({"-NSDoubleLocalizedStrings", "YES"}), usageError("It takes one option at most."));
}

TEST(Arguments, noneOnATerminalSayWhereTheIconIsAndHowToEndTheProgram) {
  const support::TemporaryFolder folder;  // without a session bus, an audio server and settings
  const cli::TerminalPair window(80);
  const auto program =
      support::ChildProcess::start({.arguments = {AUDREL_PROGRAM},
                                    .environment = {{"XDG_RUNTIME_DIR", folder.path().string()},
                                                    {"DBUS_SESSION_BUS_ADDRESS", ""},
                                                    {"HOME", folder.path().string()}},
                                    .terminal = window.terminal()});
  // Beside it, on a machine without a journal, stands that there is no session bus.
  const std::string said =
      "Audrel is running; its icon is in the panel (the menu bar). \"Quit Audrel\" in the icon's "
      "menu "
      "ends it, and so does Ctrl-C here.\n";
  std::string text;
  EXPECT_TRUE(support::waitFor([&] {
    return (text += window.takeText()).find(said) != std::string::npos;
  })) << text;
  program->signal(SIGINT);
  EXPECT_EQ(program->waitForEnd(), 0);
}

TEST(Arguments, thatAreAnsweredAtOnceMakeNoPlatform) {
  for (const std::string argument : {"--help", "--version"}) {
    EXPECT_EQ(run(AUDREL_WITHOUT_PLATFORM, {argument}), run({argument}));
  }
  const Outcome failure{1, "", "audrel: The program failed: a platform was made\n"};
  EXPECT_EQ(run(AUDREL_WITHOUT_PLATFORM, {}), failure);
  EXPECT_EQ(run(AUDREL_WITHOUT_PLATFORM, {"--demo"}), failure);
}

}  // namespace
}  // namespace audrel
