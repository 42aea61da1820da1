#include "platform/linux/tray/TrayAppKit.h"

#include <utility>

#include "platform/Identity.h"
#include "platform/linux/system/Wording.h"
#include "platform/linux/tray/Menu.h"
#include "platform/linux/tray/StatusItem.h"
#include "platform/linux/tray/Symbols.h"

namespace audrel::linuxos {

TrayAppKit::TrayAppKit(TrayParts parts) : parts_(std::move(parts)) {
  parts_.application.setModalObserver([this] {
    if (const auto item = statusItem_.lock()) {
      item->refreshMenu();
    }
  });
}

TrayAppKit::~TrayAppKit() {
  parts_.application.setModalObserver({});
}

std::shared_ptr<NS::StatusItem> TrayAppKit::makeStatusItem(double /*length*/) {
  const auto item = std::make_shared<StatusItem>(
      parts_.application, parts_.bus, parts_.icons,
      parts_.log.makeLogger(identity::bundleIdentifier, "statusitem"), parts_.observers);
  statusItem_ = item;
  return item;
}

void TrayAppKit::chooseMenuItem(const NS::Selector& action) {
  if (const auto item = statusItem_.lock()) {
    item->choose(action);
  }
}

void TrayAppKit::chooseMenuItem(const std::shared_ptr<MenuItem>& menuItem) {
  if (const auto item = statusItem_.lock()) {
    item->choose(menuItem);
  }
}

std::shared_ptr<NS::Menu> TrayAppKit::makeMenu() {
  return std::make_shared<Menu>();
}

std::shared_ptr<NS::MenuItem> TrayAppKit::makeMenuItem(const std::string& title,
                                                       const std::optional<NS::Selector>& action,
                                                       const std::string& /*keyEquivalent*/) {
  return std::make_shared<MenuItem>(MenuItem::Kind::command, desktopWording(title), action);
}

std::shared_ptr<NS::MenuItem> TrayAppKit::makeSeparatorItem() {
  return std::make_shared<MenuItem>(MenuItem::Kind::separator, "", std::nullopt);
}

std::shared_ptr<NS::Image> TrayAppKit::makeSystemSymbol(const std::string& name) {
  return isSymbol(name) ? makeSymbolImage(drawing_, name) : nullptr;
}

std::shared_ptr<NS::Image> TrayAppKit::makeImage(NS::Size size) {
  return std::make_shared<Image>(drawing_, Picture{.size = size, .isTemplate = false, .steps = {}});
}

std::shared_ptr<NS::Color> TrayAppKit::systemRedColor() {
  return std::make_shared<Color>(drawing_, systemRed);
}

std::shared_ptr<NS::Color> TrayAppKit::systemOrangeColor() {
  return std::make_shared<Color>(drawing_, systemOrange);
}

void TrayAppKit::fillRect(const NS::Rect& rect, NS::CompositingOperation /*sourceAtop*/) {
  if (!drawing_->focus.empty()) {
    drawing_->focus.back()->fillAtop(drawing_->color, rect);
  }
}

std::shared_ptr<NS::Font> TrayAppKit::monospacedDigitSystemFont(double /*size*/,
                                                                double /*weight*/) {
  return std::make_shared<Font>();
}

}  // namespace audrel::linuxos
