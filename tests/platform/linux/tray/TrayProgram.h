#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/linux/bus/SessionBus.h"
#include "platform/linux/tray/Application.h"
#include "platform/linux/tray/TrayAppKit.h"
#include "tests/support/KeptLog.h"

namespace audrel::traytest {

/// A program with a status item on the session bus that the environment names, as soon as this
/// thread's main loop runs. It writes down what happens to it.
class TrayProgram final : public NS::MenuDelegate,
                          public NS::Target,
                          public std::enable_shared_from_this<TrayProgram> {
 public:
  static std::shared_ptr<TrayProgram> start();

  void menuWillOpen(const std::shared_ptr<NS::Menu>& menu) override;
  void perform(const NS::Selector& selector, const std::shared_ptr<NS::MenuItem>& sender) override;

  NS::AppKit& appKit() { return appKit_; }
  NS::StatusItem& item() { return *item_; }
  void setTitle(const std::string& title) { item_->button()->setTitle(title); }

  void rebuildMenu();
  void replaceItem();

  /// The menu is another one while something runs.
  void toggle();

  /// A symbol in that colour, as the program makes one.
  std::shared_ptr<NS::Image> tinted(const std::string& symbol,
                                    const std::shared_ptr<NS::Color>& color);

  /// What happened since the last call, after all that waits has happened.
  std::vector<std::string> takeJournal();

  std::vector<std::string> logged() const { return log_.lines(); }

  /// When the menu is about to open.
  std::function<void()> onOpen = [this] { rebuildMenu(); };

 private:
  class NoWorkspace final : public NS::Workspace {
   public:
    bool openURL(const NS::URL& /*url*/) override { return false; }
    void activateFileViewerSelecting(const std::vector<std::filesystem::path>&) override {}
  };

  void add(NS::Menu& menu, const std::shared_ptr<NS::MenuItem>& item);
  std::shared_ptr<NS::MenuItem> sources();

  support::KeptLog log_;
  NoWorkspace workspace_;
  linuxos::Application application_;
  linuxos::SessionBus bus_{log_.makeLogger("io.example", "test")};
  linuxos::TrayAppKit appKit_{{.application = application_,
                               .bus = bus_,
                               .workspace = workspace_,
                               .makeAlert = [] { return nullptr; },
                               .observers = {.menuOpened = [](const auto&) {},
                                             .menuSet = [](const auto&) {},
                                             .panelChanged = [](bool) {}},
                               .icons = linuxos::IconTheme(""),
                               .log = log_}};
  std::shared_ptr<NS::StatusItem> item_ = appKit_.makeStatusItem(-1);
  bool isRunning_ = false;
  std::vector<std::string> journal_;
};

}  // namespace audrel::traytest
