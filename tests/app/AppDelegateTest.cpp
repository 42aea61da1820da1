#include "tests/app/AppDelegateTest.h"

namespace audrel {

AppDelegateTest::AppDelegateTest() {
  world.hardware.processObjects = {{70, 700, "org.radio"}, {71, 710, ""}};
  world.runningApplications.applications = {{700, {"Radio"}}, {710, {"game"}}};
  relaunch();
}

void AppDelegateTest::choose(const std::string& title) {
  statusItem().choose(title);
  for (const auto& file : world.audio.files) {
    world.fileManager.existing.insert(file->url);
  }
}

void AppDelegateTest::openAndChoose(const std::string& title) {
  statusItem().open();
  choose(title);
}

void AppDelegateTest::tickAt(double seconds) {
  world.clock.date = fakes::FakeClock::epoch() +
                     std::chrono::milliseconds(static_cast<std::int64_t>(seconds * 1000));
  world.runLoop.fire();
}

void AppDelegateTest::relaunch() {
  app = nullptr;
  app = AppDelegate::make(world.platform(), world.desktop());
  world.appKit.application.setDelegate(app);
  app->applicationDidFinishLaunching();
  world.journal.clear();
}

std::vector<std::string> AppDelegateTest::revealed() const {
  std::vector<std::string> paths;
  const std::string call = "workspace.activateFileViewerSelecting(\"";
  for (const std::string& line : world.journal.lines(call)) {
    paths.push_back(line.substr(call.size(), line.size() - call.size() - 2));
  }
  return paths;
}

std::vector<std::string> AppDelegateTest::journal() {
  auto lines = world.journal.lines();
  world.journal.clear();
  return lines;
}

}  // namespace audrel
