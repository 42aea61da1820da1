// The counterpart on macOS of docs/transcripts/app-session.txt: the same user, and the journal of
// frameworks of another make.

#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <sstream>

#include "tests/fakes/Transcript.h"
#include "tests/macos/execution/MacProgramTest.h"

namespace audrel::macos {
namespace {

struct Output {
  std::string text;
  int status = -1;
};

/// Of a process of its own, which `writes` to the file descriptor that it is given.
Output outputOfAProcess(const std::function<void(int)>& writes) {
  int ends[2] = {-1, -1};
  if (pipe(ends) != 0) {
    return {};
  }
  const pid_t child = fork();
  if (child == 0) {
    close(ends[0]);
    writes(ends[1]);
    _exit(1);
  }
  close(ends[1]);
  Output output;
  char bytes[4096];
  for (ssize_t size = 0; (size = read(ends[0], bytes, sizeof bytes)) > 0;) {
    output.text.append(bytes, static_cast<std::size_t>(size));
  }
  close(ends[0]);
  int status = 0;
  if (waitpid(child, &status, 0) == child && WIFEXITED(status)) {
    output.status = WEXITSTATUS(status);
  }
  return output;
}

/// Each run of the program is a process of its own, since quitting ends it. The Mac outlives it.
class SessionTranscriptTest : public MacProgramTest {
 protected:
  SessionTranscriptTest() {
    using namespace std::chrono_literals;
    mac().holdsQueues = true;
    mac().tellsAll = true;
    clock.date = std::chrono::sys_days(std::chrono::year(2026) / 11 / 16) + 7h + 9min;
  }

  /// From the launch to "Quit Audrel", with what `happens` between them.
  void runUntilQuit(const std::string& title, const std::function<void()>& happens) {
    story_ += "\n== " + title + "\n";
    const Output output = outputOfAProcess([&](int to) {
      story_.clear();
      mac().whenTerminated = [this, to] {
        tell("\"Quit Audrel\" is chosen");
        const std::string text = story_ + '\0' + leftOnTheMac();
        EXPECT_EQ(write(to, text.data(), text.size()), static_cast<ssize_t>(text.size()));
      };
      run([&] {
        tell("launch");
        happens();
        MacProgramTest::choose("Quit Audrel");
      });
    });
    const std::size_t end = output.text.find('\0');
    ASSERT_NE(end, std::string::npos) << "it ended otherwise, with status " << output.status;
    story_ += output.text.substr(0, end) + "\nthe event loop has ended\n  => exit status " +
              std::to_string(output.status) + "\n";
    findOnTheMac(output.text.substr(end + 1));
  }

  void open() {
    MacProgramTest::open();
    tell("the menu opens");
  }

  void choose(NSMenuItem* item) {
    fakemac::choose(item);
    for (const auto& file : mac().files) {
      mac().existing.insert(file.path);
    }
    tell("\"" + fakemac::titleOf(item) + "\" is chosen");
  }

  void choose(const std::string& title) {
    @autoreleasepool {
      choose(item(title));
    }
  }

  void letPass(std::chrono::seconds time) {
    tick(time);
    tell(std::to_string(time.count()) + " s later");
  }

  void deliver(std::uint32_t frames) {
    fakemac::deliver({counting(std::size_t{frames} * 8)});
    tell("the device delivers " + std::to_string(frames) + " frames");
  }

  std::string story() const {
    std::string files;
    for (const std::string& file : files_) {
      files += "    " + file + "\n";
    }
    std::string defaults;
    for (const auto& [key, value] : fakemac::mac().defaults) {
      defaults += "    " + key + " = \"" + value + "\"\n";
    }
    return "A whole session, with every call to the system and every line of the log.\n" + story_ +
           "\nthe files\n" + files + "\nthe user defaults\n" + defaults;
  }

 private:
  /// What was done, and below it what the frameworks were asked since.
  void tell(const std::string& what) {
    story_ += "\n" + what + "\n";
    for (const std::string& line : journal()) {
      story_ += "    " + line + "\n";
    }
  }

  /// What a run leaves to the next.
  static std::string leftOnTheMac() {
    std::ostringstream all;
    all << mac().menus << " " << mac().images << " " << mac().timers << "\n";
    for (const auto& file : mac().files) {
      all << "file\t" << file.path << "\t" << file.writes.size() << " buffers, "
          << (file.isOpen ? "open" : "closed") << "\n";
    }
    for (const auto& [key, value] : mac().defaults) {
      all << "default\t" << key << "\t" << value << "\n";
    }
    return all.str();
  }

  void findOnTheMac(const std::string& left) {
    std::istringstream lines(left);
    lines >> mac().menus >> mac().images >> mac().timers >> std::ws;
    for (std::string kind, name, value; std::getline(lines, kind, '\t') &&
                                        std::getline(lines, name, '\t') &&
                                        std::getline(lines, value);) {
      if (kind == "file") {
        files_.push_back(name + ": " + value);
        mac().existing.insert(name);
      } else {
        mac().defaults[name] = value;
      }
    }
  }

  std::string story_;
  std::vector<std::string> files_;
};

TEST_F(SessionTranscriptTest, isTheOneInTheTree) {
  using namespace std::chrono_literals;
  runUntilQuit("the first run", [this] {
    open();
    choose("Web Radio");
    choose("WAV (48 kHz / 16-bit)");
    @autoreleasepool {
      // Of the menu that is open while the recording starts.
      NSMenuItem* m4a = item("M4A (AAC 256 kbps)");
      choose("Start Recording");
      deliver(512);
      letPass(1s);
      letPass(1s);
      open();
      letPass(3597s);
      letPass(1s);
      letPass(1s);
      choose(m4a);
    }
    deliver(512);
    choose("Stop Recording");
    choose("Reveal Last Recording in Finder");
    choose("Start Recording");
    deliver(512);
    letPass(1s);
  });
  runUntilQuit("the second run", [this] {
    open();
    choose("Reveal Last Recording in Finder");
  });
  const auto difference = fakes::differenceFromTranscript("macos-session", story());
  EXPECT_EQ(difference, std::nullopt) << difference.value_or("");
}

}  // namespace
}  // namespace audrel::macos
