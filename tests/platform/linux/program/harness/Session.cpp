#include "tests/platform/linux/program/harness/Session.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <system_error>
#include <utility>

namespace audrel::programtest {

namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

const std::string identifier = "io.github.audrel.Audrel";

std::optional<std::string> property(const traytest::ItemInMenu& item, const std::string& name) {
  const auto found = item.properties.find(name);
  return found == item.properties.end() ? std::nullopt : std::optional(found->second);
}

const traytest::ItemInMenu* itemWithLabel(const traytest::ItemInMenu& menu,
                                          const std::string& label) {
  for (const traytest::ItemInMenu& item : menu.children) {
    if (property(item, "label") == "'" + label + "'") {
      return &item;
    }
    if (const auto* found = itemWithLabel(item, label)) {
      return found;
    }
  }
  return nullptr;
}

constexpr const char* objectPath = "/io/github/audrel/Audrel";
constexpr const char* applicationInterface = "org.freedesktop.Application";

/// Of an action that is performed.
std::string argumentsOf(const std::string& action) {
  return "('" + action + "', @av [], @a{sv} {})";
}

}  // namespace

Session::Session(pwtest::ServerOptions options) : server(std::move(options)) {
  const fs::path& folder = home.path();
  environment = {
      {"HOME", folder},
      {"XDG_RUNTIME_DIR", folder / "run"},
      {"XDG_CONFIG_HOME", folder / ".config"},
      {"XDG_DATA_HOME", folder / ".local"},
      {"XDG_STATE_HOME", folder / ".state"},
      {"XDG_CACHE_HOME", folder / ".cache"},
      {"XDG_DATA_DIRS", folder / "share"},
      {"XDG_CONFIG_DIRS", folder / "etc"},
      {"XDG_CURRENT_DESKTOP", ""},
      {"XDG_DOWNLOAD_DIR", ""},
      {"DISPLAY", ""},
      {"WAYLAND_DISPLAY", ""},
      {"DBUS_SESSION_BUS_ADDRESS", bus.address()},
      {"DBUS_SYSTEM_BUS_ADDRESS", bus.address()},
      {"PIPEWIRE_REMOTE", server.socketPath()},
      {"LC_ALL", "C.UTF-8"},
  };
  std::error_code error;
  fs::create_directory(folder / "run", error);
  fs::permissions(folder / "run", fs::perms::owner_all, error);
  fs::create_directory(folder / "Downloads", error);
}

void Session::SetUp() {
  ASSERT_TRUE(server.isRunning());
  ASSERT_TRUE(player.isReady());
  ASSERT_TRUE(player.open("music", 1));
  panel = std::make_unique<traytest::Panel>(bus.address());
  panel->startWatcher();
}

void Session::TearDown() {
  if (isRunning()) {
    kill(program->pid(), SIGTERM);
    EXPECT_EQ(waitForEnd(), 0);
  }
}

void Session::startProgram() {
  const auto registered = panel->registrations().size();
  program = support::ChildProcess::start(
      {.arguments = {AUDREL_MENU_BAR_PROGRAM}, .environment = environment});
  ASSERT_NE(program, nullptr);
  ASSERT_TRUE(panel->runUntil([&] { return panel->registrations().size() > registered; }));
  ASSERT_TRUE(panel->findItem());
}

std::unique_ptr<support::ChildProcess> Session::startAgain() const {
  return support::ChildProcess::start(
      {.arguments = {AUDREL_MENU_BAR_PROGRAM}, .environment = environment, .showsErrors = false});
}

int Session::waitForEnd() {
  return std::exchange(program, nullptr)->waitForEnd();
}

std::string Session::openMenu() {
  EXPECT_EQ(panel->callMenu("AboutToShow", "(0,)").value, "(true,)");
  return panel->menuText();
}

void Session::choose(const std::string& label) {
  const auto id = panel->idOf(label);
  ASSERT_TRUE(id) << label << " is not in the menu:\n" << panel->menuText();
  // The program may be gone before its answer to "Quit" is out, so no answer is asked of it.
  clickOn(*id);
}

void Session::chooseWavOfWebRadio() {
  choose("Web Radio");
  ASSERT_TRUE(waitForCheckmark("Web Radio", true));
  choose("WAV (48 kHz / 16-bit)");
  ASSERT_TRUE(waitForCheckmark("WAV (48 kHz / 16-bit)", true));
}

std::string Session::clickOn(int id) {
  return panel->callMenu("Event", "(" + std::to_string(id) + ", 'clicked', <0>, uint32 7)").error;
}

void Session::startRecording() {
  choose("Start Recording");
  ASSERT_TRUE(waitForIcon("recording"));
}

void Session::stopRecording() {
  choose("Stop Recording");
  ASSERT_TRUE(waitForIcon("idle-symbolic"));
}

bool Session::waitForIcon(const std::string& state) {
  return panel->runUntil(
      [&] { return panel->itemProperty("IconName") == "'" + identifier + "-" + state + "'"; });
}

bool Session::waitForCheckmark(const std::string& label, bool isChecked) {
  const std::string state = isChecked ? "1" : "0";
  return panel->runUntil([&] {
    const traytest::ItemInMenu menu = panel->layout();
    const auto* item = itemWithLabel(menu, label);
    return item != nullptr && property(*item, "toggle-state").value_or("0") == state;
  });
}

std::string Session::performAction(const std::string& action) {
  return panel
      ->callTo(identifier, objectPath, applicationInterface, "ActivateAction", argumentsOf(action))
      .error;
}

void Session::performActionsTogether(const std::vector<std::string>& actions) {
  kill(program->pid(), SIGSTOP);
  for (const std::string& action : actions) {
    panel->send(identifier, objectPath, applicationInterface, "ActivateAction",
                argumentsOf(action));
  }
  // Answered when the bus has handed on what was sent before.
  panel->callTo("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "GetId",
                "");
  kill(program->pid(), SIGCONT);
}

std::vector<fs::path> Session::recordings() const {
  std::error_code error;
  std::vector<std::pair<fs::file_time_type, fs::path>> files;
  for (const auto& entry : fs::directory_iterator(home.path() / "Downloads", error)) {
    files.emplace_back(entry.last_write_time(error), entry.path());
  }
  std::ranges::sort(files);
  std::vector<fs::path> result;
  for (const auto& [time, path] : files) {
    result.push_back(path);
  }
  return result;
}

fs::path Session::recording() const {
  const auto files = recordings();
  EXPECT_EQ(files.size(), 1U);
  return files.empty() ? fs::path() : files.front();
}

sessiontest::TestService Session::service(const std::string& name, const std::string& path,
                                          const sessiontest::TestService::Answers& answers) const {
  return {bus.address(), name, {path}, answers};
}

sessiontest::TestService Session::notifications(const std::string& capabilities) const {
  return service("org.freedesktop.Notifications", "/org/freedesktop/Notifications",
                 {{"GetCapabilities", "(" + capabilities + ",)"},
                  {"Notify", "count"},
                  {"CloseNotification", "()"}});
}

std::string Session::nextCall(sessiontest::TestService& service, const std::string& member) {
  while (const auto call = service.nextCall()) {
    if (call->starts_with(member + " ")) {
      return call->substr(member.size() + 1);
    }
  }
  return "no " + member;
}

}  // namespace audrel::programtest
