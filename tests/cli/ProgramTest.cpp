// The whole command line program on a scripted operating system: what it prints, and how it exits.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <string>
#include <vector>

#include "tests/cli/TerminalPair.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Waiting.h"

namespace audrel::cli {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

using support::ChildProcess;
using support::Outcome;

/// How the program is run with these words, where the script says what goes wrong.
ChildProcess::Program program(std::vector<std::string> words, const std::string& script = "") {
  words.insert(words.begin(), AUDREL_SCRIPTED_PROGRAM);
  return {.arguments = words,
          .environment = {{"AUDREL_SCRIPT", script}, {"TZ", "UTC"}},
          .keepsErrors = true};
}

Outcome run(const std::vector<std::string>& words, const std::string& script = "") {
  return support::outcomeOf(program(words, script));
}

TEST(Program, recordsTheExactLengthAndTellsWhere) {
  const auto outcome = run({"--duration", "1", "--output", "take.wav"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.errors, "Recording all system audio to take.wav\n");
  EXPECT_EQ(outcome.output, "Saved take.wav: 1.0 s, 0 B, peak -6.0 dBFS\n");
}

TEST(Program, recordsPartsOfASecond) {
  for (const char* length : {"0.5", "0.5s"}) {
    const auto outcome = run({"--duration", length, "--output", "take.wav", "--json"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.output, HasSubstr("\"seconds\": 0.5, \"frames\": 24000,"));
  }
  EXPECT_THAT(run({"--duration", "0.000001", "--output", "take.wav", "--json"}).output,
              HasSubstr("\"frames\": 1,"));
}

TEST(Program, printsOneJsonObject) {
  const auto outcome = run({"--duration", "2", "--output", "take.wav", "--json"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.output,
            R"({"file": "take.wav", "seconds": 2, "frames": 96000, "complete": true, )"
            R"("missingFrames": 0, "failedWrites": 0, "underruns": 0, )"
            R"("lostFrames": 0, "peakDBFS": -6.02})"
            "\n");
}

TEST(Program, isQuietOnRequest) {
  const auto outcome = run({"--duration", "1", "--output", "take.wav", "--quiet"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.output + outcome.errors, "");
}

TEST(Program, quietJsonIsTheObjectAlone) {
  const auto outcome = run({"--duration", "1", "--output", "take.wav", "--quiet", "--json"});
  EXPECT_EQ(outcome.errors, "");
  EXPECT_THAT(outcome.output, StartsWith("{\"file\": \"take.wav\""));
}

TEST(Program, namesTheFileAfterSourceAndTime) {
  const auto all = run({"--duration", "1", "--json"});
  EXPECT_THAT(all.output,
              StartsWith(R"({"file": "/scripted/audio-SystemMix-2026-11-16-070900.m4a")"));
  const auto one = run({"--duration", "1", "--json", "--app", "RAD", "--format", "wav"});
  EXPECT_THAT(one.errors, StartsWith("Recording Web Radio to /scripted/audio-Web-Radio-"));
  EXPECT_THAT(one.output,
              StartsWith(R"({"file": "/scripted/audio-Web-Radio-2026-11-16-070900.wav")"));
}

TEST(Program, takesTheNextNameWhereAnotherProgramHasJustTakenIt) {
  const auto own = run({"--duration", "1"}, "other-takes-name");
  EXPECT_EQ(own.status, 0);
  EXPECT_EQ(own.errors,
            "Recording all system audio to /scripted/audio-SystemMix-2026-11-16-070900-2.m4a\n");
  const auto given = run({"--duration", "1", "--output", "take.wav"}, "other-takes-name");
  EXPECT_EQ(given.status, 1);
  EXPECT_EQ(given.errors, "audrel-record: Could not create the output file: It exists already.\n");
  EXPECT_EQ(run({"--duration", "1"}, "forbidden-once").errors,
            "audrel-record: Could not create the output file: The folder is closed.\n");
}

TEST(Program, repairsFilesAndTellsWhatBecameOfEach) {
  const auto outcome = run({"--repair", "music/cut.m4a", "whole.wav", "--", "-cut\x1b.wav"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.output, "music/cut.m4a: repaired (1:23)\nwhole.wav: whole already\n");
  EXPECT_EQ(outcome.errors,
            "audrel-record: -cut\\x1b.wav: not ours: no recording of this program, or changed "
            "since\n");
  const auto good = run({"--repair", "cut.m4a", "whole.wav"});
  EXPECT_EQ(good.status, 0);
  EXPECT_EQ(good.errors, "");
}

TEST(Program, tellsWhyAFileIsNotRepairedAndWhatToDo) {
  const auto outcome = run({"--repair", "recording.m4a", "none.m4a", "unlockable.m4a"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.output, "");
  EXPECT_EQ(outcome.errors,
            "audrel-record: recording.m4a: in use. Stop the recording first.\n"
            "audrel-record: none.m4a: unreadable. There is none\\x1b.\n"
            "audrel-record: unlockable.m4a: in use? The disk offers no locks. If none does, add "
            "--force.\n");
  EXPECT_EQ(run({"--repair", "--force", "unlockable.m4a"}).output,
            "unlockable.m4a: repaired (0.5 s)\n");
}

TEST(Program, printsAnObjectForEachFileThatIsToBeRepaired) {
  const auto outcome =
      run({"--json", "--repair", "cut.m4a", "whole.m4a", "x", "recording.m4a", "none.m4a"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.errors, "");
  EXPECT_EQ(outcome.output,
            R"({"file": "cut.m4a", "outcome": "repaired", "seconds": 83.25, "problem": null})"
            "\n"
            R"({"file": "whole.m4a", "outcome": "whole", "seconds": 2.5, "problem": null})"
            "\n"
            R"({"file": "x", "outcome": "notOurs", "seconds": null, "problem": null})"
            "\n"
            R"({"file": "recording.m4a", "outcome": "inUse", "seconds": null, "problem": null})"
            "\n"
            R"({"file": "none.m4a", "outcome": "unreadable", "seconds": null, )"
            R"("problem": "There is none\u001b."})"
            "\n");
}

TEST(Program, repairsQuietlyOnRequest) {
  const auto outcome = run({"-q", "--repair", "cut.m4a", "whole.m4a", "recording.m4a"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.output, "");
  EXPECT_EQ(outcome.errors, "audrel-record: recording.m4a: in use. Stop the recording first.\n");
}

TEST(Program, stopsRepairingBetweenTwoFiles) {
  const auto outcome = run({"--repair", "interrupted.m4a", "cut.m4a", "whole.m4a"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.output, "interrupted.m4a: repaired (1.0 s)\n");
  EXPECT_EQ(outcome.errors, "audrel-record: Stopped before cut.m4a.\n");
}

TEST(Program, saysWhereNothingCanBeRepaired) {
  const auto outcome = run({"--repair", "cut.m4a"}, "no-repair");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.errors, "audrel-record: Recordings cannot be repaired on this system.\n");
}

/// A program that is asked to stop in the middle of its recording.
Outcome runUntil(int signal, int times) {
  const auto child = ChildProcess::start(program({"--output", "take.wav", "--json"}));
  EXPECT_TRUE(support::waitFor([&] { return child->errorOutput().starts_with("Recording"); }));
  for (int i = 0; i < times; ++i) {
    child->signal(signal);
  }
  const int status = child->waitForEnd();
  return {status, child->output(), child->errorOutput()};
}

TEST(Program, stopsProperlyOnEverySignalThatAsksForIt) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    const auto outcome = runUntil(signal, 1);
    EXPECT_EQ(outcome.status, 0) << signal;
    EXPECT_THAT(outcome.output, StartsWith("{\"file\": \"take.wav\"")) << signal;
  }
}

TEST(Program, stopsProperlyWhenCtrlCComesAgainAndAgain) {
  const auto outcome = runUntil(SIGINT, 100);
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.output, StartsWith("{\"file\": \"take.wav\""));
}

TEST(Program, needsNoStandardDescriptors) {
  auto withoutSome = program({"--duration", "1", "--output", "take.wav", "--json"});
  withoutSome.closed = {STDIN_FILENO, STDERR_FILENO};
  const auto outcome = support::outcomeOf(withoutSome);
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.output, StartsWith("{\"file\": \"take.wav\""));
}

TEST(Program, saysWhenAllWasSilence) {
  const auto outcome = run({"--duration", "1", "--output", "take.wav", "--json"}, "silence");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.errors, HasSubstr("audrel-record: All of the recording is digital silence"));
  EXPECT_THAT(outcome.output, HasSubstr("\"peakDBFS\": null"));
}

TEST(Program, saysWhenFramesWereLost) {
  const auto outcome = run({"--duration", "1", "--output", "take.wav", "--json"}, "loses-frames");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.errors, HasSubstr("480 frames were not delivered in time (0.010 s)"));
  EXPECT_THAT(outcome.output, HasSubstr("\"lostFrames\": 480"));
}

TEST(Program, goesOnWhenWritesFailAndTellsInTheEndWhatIsMissing) {
  const auto outcome = run({"--duration", "1", "--output", "take.wav"}, "cannot-write");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.output, "Saved take.wav: 0.0 s, 0 B, peak -6.0 dBFS\n");
  EXPECT_EQ(outcome.errors,
            "Recording all system audio to take.wav\n"
            "audrel-record: The disk is full.\n"
            "audrel-record: Missing in the file: 1.0 s of audio (48000 frames), which could not be "
            "written. The disk is full.\n");
  EXPECT_EQ(run({"--duration", "1", "--output", "take.wav", "--json"}, "cannot-write").output,
            R"({"file": "take.wav", "seconds": 0, "frames": 0, "complete": false, )"
            R"("missingFrames": 48000, "failedWrites": 94, "underruns": 0, )"
            R"("lostFrames": 0, "peakDBFS": -6.02})"
            "\n");
}

TEST(Program, tellsAtOnceThatWritesFail) {
  const auto child =
      ChildProcess::start(program({"--output", "take.wav", "--quiet"}, "cannot-write"));
  EXPECT_TRUE(support::waitFor([&] { return !child->errorOutput().empty(); }));
  EXPECT_EQ(child->errorOutput(), "audrel-record: The disk is full.\n");
  child->signal(SIGTERM);
  EXPECT_EQ(child->waitForEnd(), 1);
}

TEST(Program, tellsWhileItRecordsWhatBecomesOfTheAudio) {
  const auto child = ChildProcess::start(program({"--output", "take.wav", "-q"}, "server-goes"));
  const std::string told =
      "audrel-record: The audio server has gone.\\x1b\n"
      "audrel-record: The audio server is back.\n";
  EXPECT_TRUE(support::waitFor([&] { return child->errorOutput() == told; }))
      << child->errorOutput();
  child->signal(SIGTERM);
  EXPECT_EQ(child->waitForEnd(), 0);
}

TEST(Program, tellsWhatTheSystemSaysOfTheFile) {
  const auto outcome = run({"-d", "2", "-o", "take.wav"}, "loses-the-end");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.output, "Saved take.wav: 1.5 s, 0 B, peak -6.0 dBFS\n");
  EXPECT_EQ(outcome.errors,
            "Recording all system audio to take.wav\n"
            "audrel-record: Missing in the file: 0.5 s of audio (24000 frames), which could not be "
            "written. The disk is full.\n"
            "audrel-record: Silence in the file in place of 0.3 s of audio (12000 frames), which "
            "could not be written. The disk is full.\n");
}

TEST(Program, tellsWhyItCannotStart) {
  const auto noServer = run({"--output", "take.wav"}, "no-server");
  EXPECT_EQ(noServer.status, 1);
  EXPECT_EQ(noServer.output, "");
  EXPECT_EQ(noServer.errors,
            "audrel-record: The audio server is not running: start it.\n"
            "audrel-record: Could not create the audio tap (OSStatus -7). Try restarting "
            "Audrel.\n");

  const auto cannotOpen = run({"--output", "take.wav"}, "cannot-open");
  EXPECT_EQ(cannotOpen.status, 1);
  EXPECT_EQ(cannotOpen.errors,
            "audrel-record: Could not create the output file: It exists\\x1b already.\n");

  const auto denied = run({"--output", "take.wav"}, "denied");
  EXPECT_EQ(denied.status, 1);
  EXPECT_THAT(denied.errors, StartsWith("audrel-record: Audrel needs permission"));

  const auto noDemo = run({"--demo"}, "no-demo");
  EXPECT_EQ(noDemo.status, 1);
  EXPECT_EQ(noDemo.errors, "audrel-record: The demo's server is not installed: install it.\n");
}

TEST(Program, saysOnceWhatFailsWhereTheLogIsOnStandardErrorToo) {
  for (const std::string what : {"no-server", "cannot-open", "cannot-write", "nobody-plays"}) {
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"--output", "take.wav", "--duration", "1"}, {"--list"}}) {
      EXPECT_EQ(run(words, what + " no-journal").errors, run(words, what).errors);
    }
  }
}

TEST(Program, namesTheFileItselfInAFolder) {
  const auto outcome = run({"-d", "1", "-f", "wav", "-o", "/tmp"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.errors,
            "Recording all system audio to /tmp/audio-SystemMix-2026-11-16-070900.wav\n");
}

TEST(Program, failsWhenStandardOutputDoesNotTakeItsResults) {
  const std::vector<std::vector<std::string>> all = {
      {"--list"}, {"--list", "--json"}, {"--help"}, {"--version"}, {"-qd1", "--json"}};
  for (auto words : all) {
    words.insert(words.begin(),
                 {"/bin/sh", "-c", "exec \"$@\" >/dev/full", "sh", AUDREL_SCRIPTED_PROGRAM});
    const auto outcome =
        support::outcomeOf({.arguments = words, .environment = {}, .keepsErrors = true});
    EXPECT_EQ(outcome.status, 1) << words.back();
    EXPECT_EQ(outcome.errors,
              "audrel-record: Standard output did not take the result (No space left on device): "
              "send it elsewhere.\n")
        << words.back();
  }
}

TEST(Program, listsWhatCanBeRecorded) {
  const auto table = run({"--list"});
  EXPECT_EQ(table.status, 0);
  EXPECT_EQ(table.output,
            "ID   PID   NAME       BUNDLE IDENTIFIER  PLAYS\n"
            "#12  1200  Player     -                  音楽 \\x1b[1m\n"
            "#13  1300  Player     -                  idle\n"
            "#11  1100  Web Radio  org.example.Radio  -\n");
  const auto json = run({"--list", "--json"});
  EXPECT_EQ(json.status, 0);
  EXPECT_THAT(json.output, StartsWith("[\n  {\"id\": 12, \"pid\": 1200, \"name\": \"Player\", "
                                      "\"bundleIdentifier\": null, \"playing\": true, "
                                      "\"title\": \"音楽 \\u001b[1m\"},\n"));
}

TEST(Program, listsNothingWithoutAnError) {
  const auto table = run({"--list"}, "nobody-plays");
  EXPECT_EQ(table.status, 0);
  EXPECT_EQ(table.output, "");
  EXPECT_EQ(table.errors, "No application has an audio stream open.\n");
  EXPECT_EQ(run({"--list", "--json"}, "nobody-plays").output, "[]\n");
}

TEST(Program, cannotListWithoutAServer) {
  const auto outcome = run({"--list", "--json"}, "no-server");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.output, "");
  EXPECT_EQ(outcome.errors, "audrel-record: The audio server is not running: start it.\n");
}

TEST(Program, listsWhatThereIsWhenTheApplicationIsUnclear) {
  const auto several = run({"--app", "player"});
  EXPECT_EQ(several.status, 1);
  EXPECT_EQ(several.errors,
            "audrel-record: \"player\" may be any of these; give the id of one, as in --app "
            "'#12':\n"
            "ID   PID   NAME    BUNDLE IDENTIFIER  PLAYS\n"
            "#12  1200  Player  -                  音楽 \\x1b[1m\n"
            "#13  1300  Player  -                  idle\n");
  const auto unknown = run({"--app", "nobody"});
  EXPECT_EQ(unknown.status, 1);
  EXPECT_THAT(unknown.errors, AllOf(HasSubstr("\"nobody\" is no application"),
                                    HasSubstr("#11  1100  Web Radio  org.example.Radio  -\n")));
}

TEST(Program, saysOnATerminalWhatMustBeSeen) {
  const auto shownUntil = [](const std::string& text, const std::vector<std::string>& words,
                             const std::string& script) {
    const TerminalPair window(80);
    auto inTheWindow = program(words, script);
    inTheWindow.environment["TERM"] = "xterm";
    inTheWindow.terminal = window.terminal();
    const auto child = ChildProcess::start(inTheWindow);
    std::string shown;
    EXPECT_TRUE(support::waitFor([&] {
      return (shown += window.takeText()).find(text) != shown.npos;
    })) << shown;
    child->end(SIGTERM);
    return shown;
  };
  EXPECT_THAT(shownUntil("  [", {"-o", "take.wav", "-d", "1h"}, ""),
              StartsWith("Recording all system audio to take.wav (Ctrl-C stops)\n"
                         "\r\x1b[K0:00 / 1:00:00  ["));
  shownUntil("\r\x1b[K0:00  CLIPPED  [", {"-o", "take.wav"}, "clips");
  shownUntil("\r\x1b[K0:00  the application has quit  [", {"-o", "take.wav", "-a", "radio"},
             "radio-quits");
  shownUntil("audrel-record: The disk is full.\n\r\x1b[K0:00  WRITING FAILS  [", {"-o", "take.wav"},
             "cannot-write");
}

TEST(Program, saysItInPlainLinesOnATerminalThatCannotOverwrite) {
  const TerminalPair window(80);
  auto inTheWindow = program({"-o", "take.wav", "-d", "1"});
  inTheWindow.environment["TERM"] = "dumb";
  inTheWindow.terminal = window.terminal();
  EXPECT_EQ(ChildProcess::start(inTheWindow)->waitForEnd(), 0);
  EXPECT_EQ(window.takeText(),
            "Recording all system audio to take.wav (Ctrl-C stops)\n"
            "Saved take.wav: 1.0 s, 0 B, peak -6.0 dBFS\n");
}

TEST(Program, saysThatItWasStoppedWhereFramesWereLostMeanwhile) {
  const auto child = ChildProcess::start(program({"-o", "take.wav"}, "loses-frames"));
  EXPECT_TRUE(support::waitFor([&] { return child->errorOutput().starts_with("Recording"); }));
  child->signal(SIGSTOP);
  child->signal(SIGCONT);
  child->signal(SIGTERM);
  EXPECT_EQ(child->waitForEnd(), 0);
  EXPECT_THAT(child->errorOutput(),
              HasSubstr("; silence stands in their place. The program was stopped for a while, by "
                        "Ctrl-Z for instance.\n"));
}

TEST(Program, refusesAWrongCommandLine) {
  const auto outcome = run({"--duration", "soon\x1b"});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.output, "");
  EXPECT_THAT(outcome.errors, StartsWith("audrel-record: 'soon\\x1b' is no length of time"));
  EXPECT_EQ(run({"--nonsense"}).status, 2);
  EXPECT_EQ(run({"--output", "x.wav", "--format", "m4a"}).status, 2);
}

TEST(Program, printsHelpAndVersion) {
  const auto help = run({"--help"});
  EXPECT_EQ(help.status, 0);
  EXPECT_THAT(help.output, StartsWith("Usage: audrel-record"));
  const auto version = run({"--version"});
  EXPECT_EQ(version.status, 0);
  EXPECT_EQ(version.output, "audrel-record 1.0.0\n");
}

}  // namespace
}  // namespace audrel::cli
