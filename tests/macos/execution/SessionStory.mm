#include "tests/macos/execution/SessionStory.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <cstddef>
#include <sstream>

#import "tests/macos/frameworks/FakeAppKit.h"
#import "tests/macos/frameworks/FakeCoreAudio.h"
#import "tests/macos/frameworks/FakeFoundation.h"

#include "tests/macos/frameworks/FakeMac.h"

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

/// What a run leaves to the next.
std::string leftOnTheMac() {
  std::ostringstream all;
  all << fakemac::mac().menus << " " << fakemac::mac().images << " " << fakemac::mac().timers
      << "\n";
  for (const auto& file : fakemac::mac().files) {
    all << "file\t" << file.path << "\t" << file.writes.size() << " buffers, "
        << (file.isOpen ? "open" : "closed") << "\n";
  }
  for (const auto& [key, value] : fakemac::mac().defaults) {
    all << "default\t" << key << "\t" << value << "\n";
  }
  return all.str();
}

NSMenuItem* itemOfTheMenu(const std::string& title) {
  return fakemac::itemNamed(fakemac::statusItem().menu, title);
}

}  // namespace

std::string SessionStory::tell() {
  using namespace std::chrono_literals;
  fakemac::mac().processes = {{70, 700, "org.example.radio"}, {71, 710, ""}};
  fakemac::mac().applications = {{700, "Web Radio"}, {710, "game"}};
  fakemac::mac().holdsQueues = true;
  setTime(std::chrono::sys_days(std::chrono::year(2026) / 11 / 16) + 7h + 9min);
  firstRun();
  runUntilQuit("the second run", [this] {
    open();
    choose("Reveal Last Recording in Finder");
  });
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

void SessionStory::firstRun() {
  using namespace std::chrono_literals;
  runUntilQuit("the first run", [this] {
    open();
    choose("Web Radio");
    choose("WAV (48 kHz / 16-bit)");
    @autoreleasepool {
      // Of the menu that is open while the recording starts.
      NSMenuItem* m4a = itemOfTheMenu("M4A (AAC 256 kbps)");
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
}

/// From the launch to "Quit Audrel", with what `happens` between them.
void SessionStory::runUntilQuit(const std::string& title, const std::function<void()>& happens) {
  story_ += "\n== " + title + "\n";
  const Output output = outputOfAProcess([&](int to) {
    story_.clear();
    fakemac::mac().whenTerminated = [this, to] {
      note("\"Quit Audrel\" is chosen");
      const std::string text = story_ + '\0' + leftOnTheMac();
      EXPECT_EQ(write(to, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    };
    program_.run([&] {
      note("launch");
      happens();
      @autoreleasepool {
        fakemac::choose(itemOfTheMenu("Quit Audrel"));
      }
    });
  });
  const std::size_t end = output.text.find('\0');
  ASSERT_NE(end, std::string::npos) << "it ended otherwise, with status " << output.status;
  story_ += output.text.substr(0, end) + "\nthe event loop has ended\n  => exit status " +
            std::to_string(output.status) + "\n";
  findOnTheMac(output.text.substr(end + 1));
}

void SessionStory::open() {
  @autoreleasepool {
    fakemac::openMenu();
  }
  note("the menu opens");
}

void SessionStory::choose(NSMenuItem* item) {
  fakemac::choose(item);
  for (const auto& file : fakemac::mac().files) {
    fakemac::mac().existing.insert(file.path);
  }
  note("\"" + fakemac::titleOf(item) + "\" is chosen");
}

void SessionStory::choose(const std::string& title) {
  @autoreleasepool {
    choose(itemOfTheMenu(title));
  }
}

void SessionStory::setTime(NS::Date time) {
  time_ = time;
  program_.setClock(time);
}

void SessionStory::letPass(std::chrono::seconds time) {
  setTime(time_ + time);
  fireTimers();
  note(std::to_string(time.count()) + " s later");
}

void SessionStory::deliver(std::uint32_t frames) {
  fakemac::deliver({std::vector<std::byte>(std::size_t{frames} * 8)});
  note("the device delivers " + std::to_string(frames) + " frames");
}

/// What was done, and below it what the frameworks were asked since.
void SessionStory::note(const std::string& what) {
  story_ += "\n" + what + "\n";
  for (const std::string& line : fakemac::mac().takeJournal()) {
    story_ += "    " + line + "\n";
  }
}

void SessionStory::findOnTheMac(const std::string& left) {
  std::istringstream lines(left);
  lines >> fakemac::mac().menus >> fakemac::mac().images >> fakemac::mac().timers >> std::ws;
  for (std::string kind, name, value; std::getline(lines, kind, '\t') &&
                                      std::getline(lines, name, '\t') &&
                                      std::getline(lines, value);) {
    if (kind == "file") {
      files_.push_back(name + ": " + value);
      fakemac::mac().existing.insert(name);
    } else {
      fakemac::mac().defaults[name] = value;
    }
  }
}

}  // namespace audrel::macos
