#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/AppKit.h"
#include "platform/Log.h"
#include "platform/linux/bus/SessionBus.h"
#include "platform/linux/tray/DBusMenu.h"
#include "platform/linux/tray/IconTheme.h"
#include "platform/linux/tray/Image.h"
#include "platform/linux/tray/MenuPresenter.h"
#include "platform/linux/tray/StatusNotifierItem.h"
#include "platform/linux/tray/WatcherRegistration.h"

namespace audrel::linuxos {

/// The button's content, of which the panel draws image and title its own way: fonts and positions
/// are without effect.
class StatusBarButton final : public NS::StatusBarButton {
 public:
  explicit StatusBarButton(std::function<void()> onChange);

  void setFont(std::shared_ptr<NS::Font> font) override;
  void setImagePosition(NS::CellImagePosition position) override;

  /// `image` is one of this platform's images.
  void setImage(std::shared_ptr<NS::Image> image) override;
  void setTitle(const std::string& title) override;

  /// Null when there is no image.
  const std::shared_ptr<Image>& image() const { return image_; }
  const std::string& title() const { return title_; }

 private:
  std::function<void()> onChange_;
  std::shared_ptr<Image> image_;
  std::string title_;
};

/// Who is told what of a status item.
struct StatusItemObservers {
  std::function<void(const MenuTree&)> menuOpened;  ///< a panel says that it shows this menu
  std::function<void(const MenuTree&)> menuSet;     ///< the program has set this menu

  /// A panel shows the item; or none has for a while.
  WatcherRegistration::PanelObserver panelChanged;
};

/// A status item, shown by whatever panel the session has, whenever it has one: it survives that
/// panel and the bus. One on a connection, whose name tells it from another program's item. May be
/// dropped inside its own menu's callbacks. Main thread.
class StatusItem final : public NS::StatusItem {
 public:
  /// `application` and `bus` must outlive the item.
  StatusItem(const Application& application, SessionBus& bus, IconTheme icons,
             std::shared_ptr<os::Logger> logger, StatusItemObservers observers);

  NS::StatusBarButton* button() override { return &button_; }

  /// `menu` is one of this platform's menus.
  void setMenu(std::shared_ptr<NS::Menu> menu) override;

  /// Performs the action of the menu's first item that has it, at once.
  void choose(const NS::Selector& action) { presenter_->choose(action); }

  /// The same for an item of this menu or of an earlier one, as long as the menu offers that.
  void choose(const std::shared_ptr<MenuItem>& item) { presenter_->choose(item); }

  /// An alert has come up or gone, which changes what the menu honours.
  void refreshMenu() { presenter_->refresh(); }

 private:
  /// What is there only while there is a bus.
  struct OnBus {
    OnBus(GDBusConnection* connection, const StatusItemLook& look,
          const std::shared_ptr<MenuPresenter>& presenter,
          const std::shared_ptr<os::Logger>& logger,
          const WatcherRegistration::PanelObserver& panelChanged);

    StatusNotifierItem item;
    DBusMenu menu;
    WatcherRegistration registration;
  };

  void updateLook();
  void drawPicture(const Picture& picture);
  std::string title() const;

  IconTheme icons_;
  std::shared_ptr<os::Logger> logger_;
  StatusItemObservers observers_;
  std::shared_ptr<MenuPresenter> presenter_;
  StatusBarButton button_;
  std::optional<Picture> shownPicture_;
  StatusItemLook look_;
  std::optional<OnBus> onBus_;
  SessionBus::Listener listener_;
};

}  // namespace audrel::linuxos
