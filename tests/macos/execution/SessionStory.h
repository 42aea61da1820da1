#pragma once

#import <AppKit/AppKit.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "platform/Foundation.h"

namespace audrel::macos {

/// The program, however it runs.
struct Runnable {
  /// Runs it, and calls what it is given while its event loop runs.
  std::function<void(const std::function<void()>&)> run;

  /// Sets the clock that it reads.
  std::function<void(NS::Date)> setClock;
};

/// The session of docs/transcripts/app-session.txt, on the Mac of the test that runs: what a user
/// does in two runs of the program, and what that asks of the frameworks. Each run is a process of
/// its own, since quitting ends it; the Mac outlives it.
class SessionStory {
 public:
  explicit SessionStory(const Runnable& program) : program_(program) {}

  std::string tell();

 private:
  void firstRun();
  void runUntilQuit(const std::string& title, const std::function<void()>& happens);
  void open();
  void choose(NSMenuItem* item);
  void choose(const std::string& title);
  void setTime(NS::Date time);
  void letPass(std::chrono::seconds time);
  void deliver(std::uint32_t frames);
  void note(const std::string& what);
  void findOnTheMac(const std::string& left);

  Runnable program_;
  NS::Date time_;
  std::string story_;
  std::vector<std::string> files_;
};

}  // namespace audrel::macos
