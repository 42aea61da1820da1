#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "app/AppDelegate.h"
#include "tests/app/AppDelegateInspector.h"
#include "tests/fakes/DesktopWorld.h"
#include "tests/fakes/InputCycle.h"
#include "tests/fakes/ScopedVariable.h"

namespace audrel {

/// A launched controller on a scripted system, and the user who works with its menu. The journal
/// begins after the launch. What stands in docs/transcripts, call by call, item by item and word by
/// word, is asserted by no other test again.
class AppDelegateTest : public testing::Test {
 protected:
  using Call = fakes::FakeHardware::Call;
  using Inspector = AppDelegateInspector;

  /// The first recording of the day, whatever it is of: "audio-SystemMix" and so on follows.
  static constexpr const char* firstM4A =
      "/home/listener/Downloads/audio-SystemMix-2026-11-16-070900.m4a";

  AppDelegateTest();

  /// Two applications that can be recorded: "Radio" (70) and "game" (71, without identifier).
  static RecordingSource radio() { return RecordingSource::process(70, "Radio", "org.radio"); }
  static RecordingSource game() { return RecordingSource::process(71, "game", std::nullopt); }

  fakes::FakeStatusItem& statusItem() { return world.appKit.statusItem(); }
  fakes::FakeButton& button() { return statusItem().fakeButton(); }

  /// Chooses from the menu as it is.
  void choose(const std::string& title);

  /// Opens the menu, then chooses.
  void openAndChoose(const std::string& title);

  void start() { choose("Start Recording"); }
  void stop() { choose("Stop Recording"); }

  /// The clock moves to that many seconds after the epoch, and every timer fires.
  void tickAt(double seconds);

  /// The process ends, and another begins with what is stored. Launched.
  void relaunch();

  bool isRecording() const { return Inspector::engine(*app).isRecording(); }
  fakes::MenuContents menu() { return statusItem().menu().contents(); }

  std::vector<std::string> marked() { return fakes::markedIn(menu()); }
  std::vector<std::string> applications() { return fakes::applicationsIn(menu()); }

  /// The paths that the file viewer was asked to select.
  std::vector<std::string> revealed() const;

  /// What happened since the last call.
  std::vector<std::string> journal();

  fakes::ScopedVariable utc{"TZ", "UTC0"};
  fakes::DesktopWorld world;
  std::shared_ptr<AppDelegate> app;
};

}  // namespace audrel
