// Writes down every alert and a whole session, and compares them with docs/transcripts.

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <set>
#include <sstream>
#include <string>

#include "app/RunApplication.h"
#include "model/RecorderError.h"
#include "tests/app/AppDelegateTest.h"
#include "tests/fakes/Transcript.h"

namespace audrel {
namespace {

void expectTranscript(const std::string& name, const std::string& text) {
  const auto difference = fakes::differenceFromTranscript(name, text);
  EXPECT_EQ(difference, std::nullopt) << *difference;
}

/// Tells what the user does, and every call that the program makes in answer, as it happens.
class Session {
 public:
  Session() {
    world_.hardware.processObjects = {{70, 700, "org.example.radio"}, {71, 710, ""}};
    world_.runningApplications.applications = {{700, {"Web Radio"}}, {710, {"game"}}};
  }

  /// A process from its entry to its end; `happens` after the launch.
  void run(const std::string& title, const std::function<void()>& happens) {
    text_ += "\n== " + title + "\n";
    world_.appKit.application.whileRunning = [&] {
      tell("launch");
      happens();
    };
    // Every process has loggers of its own.
    fakes::FakeLog log(world_.journal);
    const Platform all = world_.platform();
    const int status = runApplication(
        {all.audioHardware, all.audioFramework, all.captureAccess, all.clock, all.collation,
         all.fileManager, all.runningApplications, all.uuids, all.dispatch, log, all.diagnostics},
        world_.desktop());
    tell("the event loop has ended");
    text_ += "  => exit status " + std::to_string(status) + "\n";
  }

  void open() {
    statusItem().open();
    tell("the menu opens");
  }

  void choose(const std::string& title) { choose(statusItem().menu().item(title)); }

  void choose(const std::shared_ptr<fakes::FakeMenuItem>& item) {
    const std::string title = item->contents().title;
    fakes::FakeMenuItem::choose(item);
    for (const auto& file : world_.audio.files) {
      world_.fileManager.existing.insert(file->url);
    }
    tell(fakes::inQuotes(title) + " is chosen");
  }

  std::shared_ptr<fakes::FakeMenuItem> item(const std::string& title) {
    return statusItem().menu().item(title);
  }

  void tick(std::chrono::seconds after) {
    world_.clock.advance(after);
    world_.runLoop.fire();
    tell(std::to_string(after.count()) + " s later");
  }

  void play(std::uint32_t frames) {
    world_.hardware.cycle(fakes::InputCycle({frames * 8}).list());
    tell("the device delivers " + std::to_string(frames) + " frames");
  }

  std::string text() {
    text_ += "\nthe files\n";
    for (const auto& file : world_.audio.files) {
      text_ += "    " + file->url.string() + ": " + std::to_string(file->writes.size()) +
               " buffers, " + (file->isOpen ? "open" : "closed") + "\n";
    }
    text_ += "\nthe user defaults\n";
    for (const auto& [key, value] : world_.userDefaults.values) {
      text_ += "    " + key + " = " + fakes::inQuotes(value) + "\n";
    }
    return text_;
  }

 private:
  fakes::FakeStatusItem& statusItem() { return world_.appKit.statusItem(); }

  void tell(const std::string& what) {
    text_ += "\n" + what + "\n";
    for (const std::string& line : world_.journal.lines()) {
      text_ += "    " + line + "\n";
    }
    world_.journal.clear();
  }

  fakes::ScopedVariable utc_{"TZ", "UTC0"};
  fakes::DesktopWorld world_;
  std::string text_ = "A whole session, with every call to the system and every line of the log.\n";
};

TEST(SessionTranscript, isTheOneInTheTree) {
  using namespace std::chrono_literals;
  Session session;
  session.run("the first run", [&] {
    session.open();
    session.choose("Web Radio");
    session.choose("WAV (48 kHz / 16-bit)");
    // Of the menu that is open while the recording starts.
    const auto m4a = session.item("M4A (AAC 256 kbps)");
    session.choose("Start Recording");
    session.play(512);
    session.tick(1s);
    session.tick(1s);
    session.open();
    session.tick(3597s);
    session.tick(1s);
    session.tick(1s);
    session.choose(m4a);
    session.play(512);
    session.choose("Stop Recording");
    session.choose("Reveal Last Recording in Finder");
    session.choose("Start Recording");
    session.play(512);
    session.tick(1s);
    session.choose("Quit Audrel");
  });
  session.run("the second run", [&] {
    session.open();
    session.choose("Reveal Last Recording in Finder");
    session.choose("Quit Audrel");
  });
  expectTranscript("app-session", session.text());
}

const char* nameOf(NS::AlertStyle style) {
  switch (style) {
    case NS::AlertStyle::warning:
      return "warning";
    case NS::AlertStyle::informational:
      return "informational";
    case NS::AlertStyle::critical:
      return "critical";
  }
  return "none";
}

std::string indented(const std::string& text) {
  std::istringstream lines(text);
  std::string result;
  for (std::string line; std::getline(lines, line);) {
    result += line.empty() ? "\n" : "        " + line + "\n";
  }
  return result;
}

class AlertTranscript : public AppDelegateTest {
 protected:
  void tell(const std::string& title, const std::function<void()>& leadToIt) {
    const std::size_t before = world.appKit.alerts.size();
    text_ += "\n" + title + "\n";
    leadToIt();
    ASSERT_EQ(world.appKit.alerts.size(), before + 1) << title;
    const fakes::AlertRecord& alert = *world.appKit.alerts.back();
    text_ += "    style   " + std::string(nameOf(alert.style)) + "\n    message " +
             alert.messageText + "\n";
    text_ += "    text\n" + indented(alert.informativeText);
    for (const std::string& button : alert.buttons) {
      text_ += "    button  " + button + "\n";
    }
    // What each answer leads to.
    for (std::size_t button = 0; button < alert.buttons.size(); ++button) {
      world.appKit.user.answer =
          NS::alertFirstButtonReturn + static_cast<NS::ModalResponse>(button);
      world.journal.clear();
      leadToIt();
      text_ += "    " + alert.buttons[button] + " leads to\n" + afterTheAnswer();
    }
  }

  std::string text_ = "Every alert, and what its buttons lead to.\n";

 private:
  std::string afterTheAnswer() const {
    std::string text;
    bool isAfter = false;
    for (const std::string& line : world.journal.lines()) {
      if (isAfter) {
        text += "        " + line + "\n";
      }
      isAfter = isAfter || line.starts_with("alert.runModal() -> ");
    }
    return text.empty() ? "        nothing\n" : text;
  }
};

TEST_F(AlertTranscript, isTheOneInTheTree) {
  const auto about = [this] { choose("About Audrel…"); };
  tell("About, with the permission", about);
  world.captureAccess.isGranted = false;
  tell("About, without the permission", about);
  tell("A start without the permission", [this] { start(); });

  const NS::Error error{NS::POSIXErrorDomain, 28, "The disk is full."};
  const std::vector<std::pair<std::string, RecorderError>> failures{
      {"tapCreationFailed", RecorderError::tapCreationFailed(-50)},
      {"aggregateDeviceFailed", RecorderError::aggregateDeviceFailed(560947818)},
      {"streamFormatUnavailable", RecorderError::streamFormatUnavailable(-1)},
      {"ioProcInstallFailed", RecorderError::ioProcInstallFailed(0)},
      {"fileOpenFailed", RecorderError::fileOpenFailed(error)},
      {"fileWriteFailed, which nothing raises", RecorderError::fileWriteFailed(error)},
      {"sourceProcessExited, which nothing raises", RecorderError::sourceProcessExited("Radio")},
      {"permissionDenied, when it is taken away at the last moment",
       RecorderError::permissionDenied()},
      {"alreadyRecording", RecorderError::alreadyRecording()},
  };
  for (const auto& failure : failures) {
    tell("A start that throws " + failure.first,
         [&] { Inspector::presentError(*app, failure.second); });
  }
  expectTranscript("app-alerts", text_);
}

TEST(AppTranscripts, inTheTreeAreTheFourAndNoOthers) {
  std::set<std::string> kept;
  for (const auto& entry : std::filesystem::directory_iterator(
           std::filesystem::path(AUDREL_SOURCE_DIR) / "docs" / "transcripts")) {
    const std::string name = entry.path().filename().string();
    if (name.starts_with("app-")) {
      kept.insert(name);
    }
  }
  EXPECT_EQ(kept, (std::set<std::string>{"app-alerts.txt", "app-menus.txt", "app-session.txt",
                                         "app-status-item.txt"}));
}

}  // namespace
}  // namespace audrel
