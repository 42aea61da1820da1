#include "cli/Console.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <optional>
#include <string>

#include "tests/cli/TerminalPair.h"
#include "tests/fakes/ScopedVariable.h"

namespace audrel::cli {
namespace {

/// Two connected descriptors: what goes into `end` is read from the other one.
class Channel {
 public:
  Channel(int end, int other) : end_(end), other_(other) {}
  Channel(const Channel&) = delete;
  Channel& operator=(const Channel&) = delete;
  ~Channel() {
    close(end_);
    close(other_);
  }

  int end() const { return end_; }

  /// What has been written so far, without waiting for more.
  std::string text() const {
    fcntl(other_, F_SETFL, O_NONBLOCK);
    std::string all;
    std::array<char, 4096> part{};
    for (ssize_t size = 0; (size = read(other_, part.data(), part.size())) > 0;) {
      all.append(part.data(), static_cast<std::size_t>(size));
    }
    return all;
  }

 private:
  const int end_;
  const int other_;
};

class ConsoleOutput : public testing::Test {
 protected:
  const fakes::ScopedVariable terminal_{"TERM", "xterm"};

  static Channel makePipe() {
    std::array<int, 2> ends{};
    EXPECT_EQ(pipe(ends.data()), 0);
    return {ends[1], ends[0]};
  }

  const Channel output_ = makePipe();
};

TEST_F(ConsoleOutput, resultsGoToStandardOutputAndAllElseToStandardError) {
  const Channel errors = makePipe();
  Console console(output_.end(), errors.end(), Options::Progress::shown);
  console.progress("Recording");
  console.result("Saved");
  console.complain("It failed.");
  console.complainFurther("  one\n  two\n");
  EXPECT_EQ(output_.text(), "Saved\n");
  EXPECT_EQ(errors.text(), "Recording\naudrel-record: It failed.\n  one\n  two\n");
}

TEST_F(ConsoleOutput, withoutATerminalThereIsNoStatusLine) {
  const Channel errors = makePipe();
  Console console(output_.end(), errors.end(), Options::Progress::shown);
  EXPECT_FALSE(console.showsStatus());
  console.status("0:01");
  EXPECT_EQ(errors.text(), "");
}

TEST_F(ConsoleOutput, theStatusLineIsOverwrittenAndClearedBeforeOtherText) {
  const TerminalPair terminal(80);
  Console console(output_.end(), terminal.terminal(), Options::Progress::shown);
  ASSERT_TRUE(console.showsStatus());
  console.progress("Recording");
  console.status("0:01");
  console.status("0:02");
  console.result("Saved");
  console.complain("Hm.");
  EXPECT_EQ(terminal.takeText(), "Recording\n\r\x1b[K0:01\r\x1b[K0:02\r\x1b[Kaudrel-record: Hm.\n");
  EXPECT_EQ(output_.text(), "Saved\n");
}

TEST_F(ConsoleOutput, theStatusLineIsClearedWholeWhereANarrowerWindowHasWrappedIt) {
  const TerminalPair terminal(80);
  Console console(output_.end(), terminal.terminal(), Options::Progress::shown);
  console.status(std::string(79, 'x'));
  terminal.takeText();
  terminal.setColumns(30);  // three lines
  console.status("0:02");
  EXPECT_EQ(terminal.takeText(), "\r\x1b[2A\x1b[J0:02");
  console.complain("Hm.");
  EXPECT_EQ(terminal.takeText(), "\r\x1b[Kaudrel-record: Hm.\n");
}

TEST_F(ConsoleOutput, aTerminalThatCannotOverwriteGetsPlainLines) {
  const fakes::ScopedVariable term("TERM", "dumb");
  const TerminalPair terminal(80);
  Console console(output_.end(), terminal.terminal(), Options::Progress::shown);
  EXPECT_TRUE(console.isTerminal());
  EXPECT_FALSE(console.showsStatus());
  console.progress("Recording");
  console.status("0:01");
  console.complain("Hm.");
  EXPECT_EQ(terminal.takeText(), "Recording\naudrel-record: Hm.\n");
}

TEST_F(ConsoleOutput, quietHasNoProgressButComplains) {
  const TerminalPair terminal(80);
  Console console(output_.end(), terminal.terminal(), Options::Progress::quiet);
  EXPECT_FALSE(console.showsStatus());
  console.progress("Recording");
  console.status("0:01");
  console.complain("It failed.");
  EXPECT_EQ(terminal.takeText(), "audrel-record: It failed.\n");
}

TEST_F(ConsoleOutput, theStatusLineIsOneNarrowerThanTheWindowAndFollowsIt) {
  const TerminalPair terminal(100);
  const Console console(output_.end(), terminal.terminal(), Options::Progress::shown);
  EXPECT_EQ(console.statusWidth(), 99);
  terminal.setColumns(7);
  EXPECT_EQ(console.statusWidth(), 6);
  terminal.setColumns(0);  // unknown
  EXPECT_EQ(console.statusWidth(), 79);
}

TEST_F(ConsoleOutput, theWindowsWidthIsKnownOfATerminalThatTellsIt) {
  const TerminalPair terminal(100);
  const Console withErrors(output_.end(), terminal.terminal(), Options::Progress::shown);
  EXPECT_EQ(withErrors.outputWidth(), std::nullopt);
  EXPECT_EQ(withErrors.errorWidth(), 100);
  const Console withOutput(terminal.terminal(), output_.end(), Options::Progress::quiet);
  EXPECT_EQ(withOutput.outputWidth(), 100);
  EXPECT_EQ(withOutput.errorWidth(), std::nullopt);
  terminal.setColumns(0);  // unknown
  EXPECT_EQ(withOutput.outputWidth(), std::nullopt);
}

TEST_F(ConsoleOutput, whatNobodyReadsIsLostAndEndsNothing) {
  std::signal(SIGPIPE, SIG_IGN);
  std::array<int, 2> ends{};
  ASSERT_EQ(pipe(ends.data()), 0);
  close(ends[0]);
  Console console(ends[1], ends[1], Options::Progress::shown);
  console.progress("Recording");
  console.complain("It failed.");
  EXPECT_EQ(errno, EPIPE);  // it was tried, and this process is still here
  EXPECT_FALSE(console.hasLostResults());
  console.result("Saved");
  EXPECT_TRUE(console.hasLostResults());
  close(ends[1]);
  std::signal(SIGPIPE, SIG_DFL);
}

TEST_F(ConsoleOutput, aResultThatIsLostIsToldOnStandardError) {
  const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
  Console console(full, output_.end(), Options::Progress::quiet);
  console.result("Saved");
  EXPECT_EQ(output_.text(),
            "audrel-record: Standard output did not take the result (No space left on device): "
            "send it elsewhere.\n");
  EXPECT_TRUE(console.hasLostResults());
  close(full);
}

}  // namespace
}  // namespace audrel::cli
