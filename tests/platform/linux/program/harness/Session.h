#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/platform/linux/pipewire/harness/Player.h"
#include "tests/platform/linux/pipewire/harness/TestServer.h"
#include "tests/platform/linux/session/harness/TestService.h"
#include "tests/platform/linux/tray/harness/Panel.h"
#include "tests/platform/linux/tray/harness/PrivateBus.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"

namespace audrel::programtest {

/// A desktop session of the test's own in which the user runs `audrel`, the executable as it is:
/// a bus with a panel, an audio server with an application that plays, a home folder. There is no
/// display, and nothing of the machine's own desktop can be reached. Main thread.
class Session : public testing::Test {
 protected:
  /// `options` of the audio server.
  explicit Session(pwtest::ServerOptions options = {.timesRealTime = 4});

  void SetUp() override;

  /// A program that runs has to end as it should: the sanitizers have their say there.
  void TearDown() override;

  /// Starts the program and finds its item.
  void startProgram();

  /// Starts another one, which ends by itself.
  std::unique_ptr<support::ChildProcess> startAgain() const;

  /// The program was told to end, or was killed: what it ended with, -1 for a signal.
  int waitForEnd();

  bool isRunning() const { return program != nullptr && program->isRunning(); }

  /// Opens the menu, as a panel does, and reads all of it: one line an item, as `Panel::menuText`.
  std::string openMenu();

  /// Chooses the item with that label.
  void choose(const std::string& label);

  /// The same by its id: the error's name, or "".
  std::string clickOn(int id);

  /// Chooses the player as what is recorded, and WAV as its format.
  void chooseWavOfWebRadio();

  /// Chooses "Start Recording" or "Stop Recording", and waits until the icon is the one that
  /// follows.
  void startRecording();
  void stopRecording();

  /// Waits until the icon is "idle-symbolic", "recording" or "warning".
  bool waitForIcon(const std::string& state);

  /// Waits for a state of the checkmark of the item with that label.
  bool waitForCheckmark(const std::string& label, bool isChecked);

  /// Waits until the player has played a second more.
  bool hearASecond() { return player.waitForMore("music", 48'000); }

  /// Performs an action of the desktop entry, as a launcher does: the error's name, or "".
  std::string performAction(const std::string& action);

  /// Performs them at once: the program finds them all when it looks.
  void performActionsTogether(const std::vector<std::string>& actions);

  /// What is in the Downloads folder, oldest first.
  std::vector<std::filesystem::path> recordings() const;

  /// The only recording.
  std::filesystem::path recording() const;

  /// A program of the desktop's.
  sessiontest::TestService service(const std::string& name, const std::string& path,
                                   const sessiontest::TestService::Answers& answers) const;

  /// The desktop's notifications, with capabilities as a list in GVariant's text form.
  sessiontest::TestService notifications(const std::string& capabilities = "@as []") const;

  /// The next call to a service that begins with that member, without it.
  static std::string nextCall(sessiontest::TestService& service, const std::string& member);

  support::TemporaryFolder home;
  traytest::PrivateBus bus;
  pwtest::TestServer server;
  pwtest::Player player{server.socketPath(), {"application.name=Web Radio"}};
  std::unique_ptr<traytest::Panel> panel;

  /// What the program starts with, beside this process's own environment.
  std::map<std::string, std::string> environment;
  std::unique_ptr<support::ChildProcess> program;
};

}  // namespace audrel::programtest
