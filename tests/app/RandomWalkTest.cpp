// The program and a second model of it take the same steps at random: every command of menus new
// and old, alerts with steps of their own while they are up, calls that fail, a clock that is set
// back, applications that come and go. After each step they have to agree.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <iostream>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "tests/app/AppDelegateTest.h"
#include "tests/app/ProgramModel.h"

namespace audrel {
namespace {

using Call = fakes::FakeHardware::Call;
using Item = std::shared_ptr<fakes::FakeMenuItem>;

class RandomWalk : public AppDelegateTest {
 protected:
  void SetUp() override {
    world.hardware.processObjects.clear();
    world.runningApplications.applications = {{710, {"Game"}}, {700, {"Mail"}}, {720, {"Radio"}}};
    relaunch();
    model.launch();
    world.appKit.user.meanwhile = [this] { stepsUnderAnAlert(); };
  }

  /// The same numbers from one seed on every machine, which distributions do not promise.
  std::uint32_t below(std::size_t bound) {
    return static_cast<std::uint32_t>(random() % static_cast<std::uint32_t>(bound));
  }

  void walk(std::uint32_t seed, int steps) {
    random.seed(seed);
    for (int i = 0; i < steps && !HasFailure(); ++i) {
      SCOPED_TRACE("seed " + std::to_string(seed) + ", step " + std::to_string(i));
      step();
      agree();
      world.journal.clear();
    }
  }

  void step() {
    for (const auto& file : world.audio.files) {
      world.fileManager.existing.insert(file->url);
    }
    switch (below(16)) {
      case 0:
        setProcesses();
        break;
      case 1:
        setFailure();
        break;
      case 2:
        setPermission();
        break;
      case 3:
        deleteFiles();
        break;
      case 4:
        restart();
        break;
      case 5:
      case 6:
      case 7:
        letTimePass();
        break;
      case 8:
      case 9:
        model.open();
        statusItem().open();
        break;
      case 10:
        chooseStale();
        break;
      default:
        chooseCurrent();
        break;
    }
  }

  /// What the alert's window does not keep the user from.
  void stepsUnderAnAlert() {
    if (depth == 2) {
      return;
    }
    ++depth;
    for (std::uint32_t i = below(4); i > 0; --i) {
      step();
    }
    world.appKit.user.answer = below(2) == 0 ? NS::alertFirstButtonReturn : 1001;
    --depth;
  }

  void setProcesses() {
    world.hardware.processObjects.clear();
    model.playing.clear();
    for (const auto& [id, name] :
         std::vector<std::pair<int, std::string>>{{71, "Game"}, {70, "Mail"}, {72, "Radio"}}) {
      if (below(2) == 0) {
        world.hardware.processObjects.push_back(
            {static_cast<CA::AudioObjectID>(id), id * 10, "org." + name});
        model.playing.push_back(name);
      }
    }
  }

  void setFailure() {
    // In the order of a start; nothing is the opening of the file.
    constexpr std::optional<Call> calls[] = {
        Call::createProcessTap,      Call::tapUID, Call::tapFormat,      Call::defaultOutputDevice,
        Call::createAggregateDevice, std::nullopt, Call::createIOProcID, Call::deviceStart};
    for (const auto& call : calls) {
      if (call) {
        world.hardware.restore(*call);
      }
    }
    world.audio.openError.reset();
    model.failsAt.reset();
    const std::uint32_t which = below(2 * std::size(calls));
    if (which >= std::size(calls)) {
      return;
    }
    model.failsAt = which;
    if (calls[which]) {
      world.hardware.fail(*calls[which], -100 - static_cast<CA::OSStatus>(which));
    } else {
      world.audio.openError = NS::Error{"", 28, "The disk is full."};
    }
  }

  void setPermission() {
    world.captureAccess.isGranted = model.isPermitted = below(3) > 0;
    world.captureAccess.requestGrants = model.requestGrants = below(2) == 0;
  }

  void deleteFiles() {
    world.audio.files.clear();
    world.fileManager.existing.clear();
    model.files.clear();
  }

  /// Never under an alert: after it the old program would go on.
  void restart() {
    if (depth > 0) {
      return;
    }
    timersOfThePast += model.isRecording ? 1 : 0;
    model.terminate();
    world.appKit.application.terminate();
    EXPECT_EQ(openFiles(), 0);
    stale.clear();
    relaunch();
    model.launch();
  }

  void letTimePass() {
    constexpr int seconds[] = {0, 1, 1, 2, 59, 1800, 3600, 40'000, -3, -90};
    model.now += seconds[below(std::size(seconds))];
    model.tick();
    tickAt(static_cast<double>(model.now));
  }

  void chooseCurrent() {
    std::vector<std::string> titles;
    fakes::forEachItem(menu(), [&](const fakes::ItemContents& item) {
      if (item.action && item.isEnabled) {
        titles.push_back(item.title);
      }
    });
    choose(statusItem().menu().item(titles[below(titles.size())]));
  }

  /// From a menu of before, as a panel may still show it.
  void chooseStale() {
    if (!stale.empty()) {
      choose(stale[below(stale.size())]);
    }
  }

  void choose(const Item& item) {
    const std::string title = item->contents().title;
    if (title == "Quit Audrel") {
      restart();
      return;
    }
    stale.push_back(item);
    if (stale.size() > 20) {
      stale.pop_front();
    }
    model.choose(title);
    if (below(8) == 0) {
      world.hardware.cycle(fakes::InputCycle({64}).list());
    }
    fakes::FakeMenuItem::choose(item);
  }

  std::ptrdiff_t openFiles() const {
    return std::ranges::count_if(world.audio.files, [](const auto& file) { return file->isOpen; });
  }

  void agree() {
    EXPECT_EQ(fakes::outlineOf(menu()), model.menu);
    EXPECT_EQ(button().title(), model.statusTitle);
    EXPECT_EQ(button().image().find("systemRedColor") != std::string::npos,
              model.statusImage == "red");
    EXPECT_EQ(button().image().find("systemOrangeColor") != std::string::npos,
              model.statusImage == "orange");
    EXPECT_EQ(isRecording(), model.isRecording);
    const std::size_t running = model.isRecording ? 1 : 0;
    EXPECT_EQ(world.runLoop.scheduled(), running + timersOfThePast);
    EXPECT_EQ(world.hardware.aggregateDevices().size(), running);
    EXPECT_EQ(world.hardware.installedIOProcs(), running);
    EXPECT_EQ(world.hardware.taps().size(), running + model.tapsLeftBehind);
    EXPECT_EQ(world.userDefaults.values, model.settings);
    EXPECT_EQ(revealed(), model.revealed);
    model.revealed.clear();
    agreeOnAlerts();
  }

  void agreeOnAlerts() {
    ASSERT_EQ(world.appKit.alerts.size(), model.alerts.size());
    for (std::size_t i = 0; i < model.alerts.size(); ++i) {
      const fakes::AlertRecord& alert = *world.appKit.alerts[i];
      EXPECT_EQ(alert.messageText +
                    (alert.messageText == "Recording failed" ? ": " + alert.informativeText : ""),
                model.alerts[i]);
      EXPECT_EQ(alert.timesRun, 1);
    }
    world.appKit.alerts.clear();
    model.alerts.clear();
  }

  std::mt19937 random;
  ProgramModel model;
  std::deque<Item> stale;
  int depth = 0;
  std::size_t timersOfThePast = 0;  ///< which a real process takes with it
};

TEST_F(RandomWalk, ofTheProgramIsThatOfItsModel) {
  const std::uint32_t seed = std::random_device{}();
  std::cout << "seed " << seed << "\n";
  walk(seed, 4'000);
}

}  // namespace
}  // namespace audrel
