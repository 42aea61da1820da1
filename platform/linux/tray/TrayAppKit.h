#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/AppKit.h"
#include "platform/Log.h"
#include "platform/linux/tray/Application.h"
#include "platform/linux/tray/IconTheme.h"
#include "platform/linux/tray/Image.h"
#include "platform/linux/tray/Menu.h"
#include "platform/linux/tray/StatusItem.h"

namespace audrel::linuxos {

class SessionBus;

/// What the tray's AppKit is put together from. The references must outlive it.
struct TrayParts {
  Application& application;
  SessionBus& bus;
  NS::Workspace& workspace;
  std::function<std::unique_ptr<NS::Alert>()> makeAlert;
  StatusItemObservers observers;
  IconTheme icons;
  os::Log& log;
};

/// AppKit's objects for a desktop with a status area, on the session bus and a GLib main loop.
/// Main thread.
class TrayAppKit final : public NS::AppKit {
 public:
  explicit TrayAppKit(TrayParts parts);
  ~TrayAppKit() override;
  TrayAppKit(const TrayAppKit&) = delete;
  TrayAppKit& operator=(const TrayAppKit&) = delete;

  NS::Application& sharedApplication() override { return parts_.application; }
  NS::Workspace& sharedWorkspace() override { return parts_.workspace; }

  /// The panel decides on the length.
  std::shared_ptr<NS::StatusItem> makeStatusItem(double length) override;
  std::shared_ptr<NS::Menu> makeMenu() override;

  /// The item shows its title in the desktop's own words, and no key: a panel's menu hears none
  /// while it is closed.
  std::shared_ptr<NS::MenuItem> makeMenuItem(const std::string& title,
                                             const std::optional<NS::Selector>& action,
                                             const std::string& keyEquivalent) override;
  std::shared_ptr<NS::MenuItem> makeSeparatorItem() override;

  /// "waveform.circle" and "waveform.circle.fill".
  std::shared_ptr<NS::Image> makeSystemSymbol(const std::string& name) override;
  std::shared_ptr<NS::Image> makeImage(NS::Size size) override;
  std::shared_ptr<NS::Color> systemRedColor() override;
  std::shared_ptr<NS::Color> systemOrangeColor() override;
  void fillRect(const NS::Rect& rect, NS::CompositingOperation operation) override;
  std::shared_ptr<NS::Font> monospacedDigitSystemFont(double size, double weight) override;
  std::unique_ptr<NS::Alert> makeAlert() override { return parts_.makeAlert(); }

  /// Performs the action of the first item that has it in the status item's menu, at once. Nothing
  /// when there is none, or it is disabled.
  void chooseMenuItem(const NS::Selector& action);

  /// The same for an item of this menu or of an earlier one, as long as the menu offers that.
  void chooseMenuItem(const std::shared_ptr<MenuItem>& menuItem);

 private:
  TrayParts parts_;
  std::weak_ptr<StatusItem> statusItem_;  ///< the last one that was made
  std::shared_ptr<DrawingContext> drawing_ = std::make_shared<DrawingContext>();
};

}  // namespace audrel::linuxos
