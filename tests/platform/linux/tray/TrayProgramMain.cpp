// A program with a status item, for tests of that item from outside: told what to do by lines on
// its standard input, it writes down what happens to it.

#include <glib-unix.h>
#include <malloc.h>
#include <unistd.h>

#include <array>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <utility>

#include "platform/Log.h"
#include "platform/linux/bus/SessionBus.h"
#include "platform/linux/loop/RunLoop.h"
#include "platform/linux/session/LogoutWatch.h"
#include "platform/linux/tray/Application.h"
#include "platform/linux/tray/TrayAppKit.h"

#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define AUDREL_COUNTED_BY_SANITIZER
#endif
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define AUDREL_COUNTED_BY_SANITIZER
#endif
#ifdef AUDREL_COUNTED_BY_SANITIZER
#include <sanitizer/allocator_interface.h>
#endif

namespace {

using audrel::linuxos::Application;
using audrel::linuxos::IconTheme;
using audrel::linuxos::LogoutWatch;
using audrel::linuxos::ModalSession;
using audrel::linuxos::RunLoop;
using audrel::linuxos::SessionBus;
using audrel::linuxos::TrayAppKit;

void say(const std::string& line) {
  std::cout << line << std::endl;
}

/// Bytes in blocks of the heap that are in use.
std::size_t allocatedBytes() {
#ifdef AUDREL_COUNTED_BY_SANITIZER
  return __sanitizer_get_current_allocated_bytes();
#else
  return mallinfo2().uordblks;
#endif
}

class SayingLogger final : public os::Logger {
 public:
  void log(os::LogLevel level, std::string_view line) noexcept override {
    say((level == os::LogLevel::error ? "log error: " : "log info: ") + std::string(line));
  }
};

class SayingLog final : public os::Log {
 public:
  std::shared_ptr<os::Logger> makeLogger(const std::string& /*subsystem*/,
                                         const std::string& /*category*/) override {
    return std::make_shared<SayingLogger>();
  }
};

class NoWorkspace final : public NS::Workspace {
 public:
  bool openURL(const NS::URL& /*url*/) override { return false; }
  void activateFileViewerSelecting(const std::vector<std::filesystem::path>& /*files*/) override {}
};

/// What the program does when its menu is about to open.
enum class OnOpen { rebuildMenu, keepMenu, replaceItem };

class Program final : public NS::ApplicationDelegate,
                      public NS::MenuDelegate,
                      public NS::Target,
                      public std::enable_shared_from_this<Program> {
 public:
  Program(Application& application, TrayAppKit& appKit)
      : application_(application), appKit_(appKit), item_(appKit.makeStatusItem(-1)) {}

  void applicationDidFinishLaunching() override {
    rebuildMenu();
    say("launched");
  }

  void applicationWillTerminate() override { say("will terminate"); }

  void menuWillOpen(const std::shared_ptr<NS::Menu>& /*menu*/) override {
    say("menu will open");
    if (onOpen_ == OnOpen::rebuildMenu) {
      rebuildMenu();
    }
    if (onOpen_ == OnOpen::replaceItem) {
      replaceItem();
    }
  }

  void perform(const NS::Selector& selector, const std::shared_ptr<NS::MenuItem>& sender) override {
    const auto* object = std::any_cast<std::string>(&sender->representedObject());
    say("perform " + selector.name() + (object == nullptr ? "" : " " + *object));
    if (const auto action = actions_.find(selector.name()); action != actions_.end()) {
      action->second();
    }
    // The sender is still there, however often the menu was replaced meanwhile.
    sender->setEnabled(true);
  }

  void obey(const std::string& line) {
    const auto space = line.find(' ');
    const std::string rest = space == std::string::npos ? "" : line.substr(space + 1);
    if (const auto found = commands_.find(line.substr(0, space)); found != commands_.end()) {
      found->second(rest);
    }
    say("done " + line);
  }

 private:
  void add(NS::Menu& menu, std::shared_ptr<NS::MenuItem> item) {
    item->setTarget(weak_from_this());
    menu.addItem(std::move(item));
  }

  std::shared_ptr<NS::MenuItem> command(const std::string& title, const char* action,
                                        const std::string& key = "") {
    return appKit_.makeMenuItem(title, NS::Selector(action), key);
  }

  std::shared_ptr<NS::MenuItem> source(const std::string& title, bool isChosen) {
    auto item = command(title, "select:");
    item->setRepresentedObject(title);
    item->setState(isChosen ? NS::ControlState::on : NS::ControlState::off);
    return item;
  }

  std::shared_ptr<NS::MenuItem> sources() {
    auto submenu = appKit_.makeMenu();
    submenu->setAutoenablesItems(false);
    add(*submenu, source("Everything", chosen_ == "Everything"));
    add(*submenu, source("some_player __x", chosen_ == "some_player __x"));
    auto item = appKit_.makeMenuItem("From", std::nullopt, "");
    item->setSubmenu(submenu);
    return item;
  }

  void rebuildMenu() {
    auto menu = appKit_.makeMenu();
    menu->setAutoenablesItems(false);
    add(*menu, command(isRunning_ ? "Stop" : "Start", "toggle:", "r"));
    add(*menu, appKit_.makeSeparatorItem());
    if (!isRunning_) {
      add(*menu, sources());
    }
    auto disabled = command("Reveal", "reveal:");
    disabled->setEnabled(false);
    add(*menu, std::move(disabled));
    add(*menu, command("Ask", "ask:"));
    add(*menu, command("Quit", "quit:", "q"));
    menu->setDelegate(weak_from_this());
    item_->setMenu(menu);
  }

  void replaceItem() {
    item_.reset();
    item_ = appKit_.makeStatusItem(-1);
    rebuildMenu();
  }

  void ask() {
    ModalSession session(application_);
    asked_ = &session;
    say("asking");
    const bool isAnswered = session.wait();
    asked_ = nullptr;
    say(isAnswered ? "answered" : "called off");
  }

  void setImage(const std::string& kind) {
    if (kind == "none") {
      item_->button()->setImage(nullptr);
      return;
    }
    auto symbol =
        appKit_.makeSystemSymbol(kind == "idle" ? "waveform.circle" : "waveform.circle.fill");
    symbol = symbol->withSymbolConfiguration({14, NS::fontWeightRegular});
    symbol->setTemplate(kind == "idle");
    item_->button()->setImage(kind == "idle" ? symbol : tinted(symbol, kind));
  }

  std::shared_ptr<NS::Image> tinted(const std::shared_ptr<NS::Image>& symbol,
                                    const std::string& kind) {
    auto image = appKit_.makeImage(symbol->size());
    const NS::Rect whole{0, 0, symbol->size()};
    image->lockFocus();
    (kind == "warning" ? appKit_.systemOrangeColor() : appKit_.systemRedColor())->set();
    symbol->drawInRect(whole);
    appKit_.fillRect(whole, NS::CompositingOperation::sourceAtop);
    image->unlockFocus();
    return image;
  }

  Application& application_;
  TrayAppKit& appKit_;
  std::shared_ptr<NS::StatusItem> item_;
  OnOpen onOpen_ = OnOpen::rebuildMenu;
  bool isRunning_ = false;
  std::string chosen_ = "Everything";
  ModalSession* asked_ = nullptr;
  std::shared_ptr<NS::Timer> timer_;

  const std::map<std::string, std::function<void()>> actions_ = {
      {"toggle:",
       [this] {
         isRunning_ = !isRunning_;
         rebuildMenu();
       }},
      {"ask:", [this] { ask(); }},
      {"quit:", [this] { application_.terminate(); }},
  };

  const std::map<std::string, std::function<void(const std::string&)>> commands_ = {
      {"title", [this](const std::string& title) { item_->button()->setTitle(title); }},
      {"image", [this](const std::string& kind) { setImage(kind); }},
      {"toggle",
       [this](const std::string&) {
         isRunning_ = !isRunning_;
         rebuildMenu();
       }},
      {"rebuild", [this](const std::string&) { rebuildMenu(); }},
      {"no-menu", [this](const std::string&) { item_->setMenu(nullptr); }},
      {"keep-menu", [this](const std::string&) { onOpen_ = OnOpen::keepMenu; }},
      {"replace-item-on-open", [this](const std::string&) { onOpen_ = OnOpen::replaceItem; }},
      {"replace-item", [this](const std::string&) { replaceItem(); }},
      {"answer", [this](const std::string&) { asked_->finish(); }},
      {"tick",
       [this](const std::string&) {
         timer_ = RunLoop().scheduleRepeatingTimer(0.01, [this] {
           timer_->invalidate();
           say("tick");
         });
       }},
      {"allocated",
       [](const std::string&) { say("allocated " + std::to_string(allocatedBytes())); }},
  };
};

/// Hands the lines of standard input to the program, each when nothing else is left to do.
class CommandReader {
 public:
  explicit CommandReader(Program& program) : program_(program) {
    source_ = g_unix_fd_add_full(
        G_PRIORITY_DEFAULT_IDLE, STDIN_FILENO, G_IO_IN,
        [](int, GIOCondition, gpointer self) -> gboolean {
          return static_cast<CommandReader*>(self)->read() ? G_SOURCE_CONTINUE : G_SOURCE_REMOVE;
        },
        this, nullptr);
  }

 private:
  bool read() {
    std::array<char, 256> block{};
    const ssize_t size = ::read(STDIN_FILENO, block.data(), block.size());
    if (size <= 0) {
      return false;
    }
    unread_.append(block.data(), static_cast<std::size_t>(size));
    for (auto end = unread_.find('\n'); end != std::string::npos; end = unread_.find('\n')) {
      const std::string line = unread_.substr(0, end);
      unread_.erase(0, end + 1);
      program_.obey(line);
    }
    return true;
  }

  Program& program_;
  std::string unread_;
  guint source_ = 0;
};

}  // namespace

int main(int argc, char** argv) {
  SayingLog log;
  NoWorkspace workspace;
  Application application;
  SessionBus bus(log.makeLogger("io.example", "test"));
  TrayAppKit appKit({.application = application,
                     .bus = bus,
                     .workspace = workspace,
                     .makeAlert = [] { return nullptr; },
                     .icons = IconTheme(argc > 1 ? argv[1] : ""),
                     .log = log});
  auto program = std::make_shared<Program>(application, appKit);
  application.setDelegate(program);
  CommandReader reader(*program);
  const LogoutWatch logout(application, bus);
  application.run();
  program.reset();
  say("ended");
}
