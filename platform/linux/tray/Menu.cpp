#include "platform/linux/tray/Menu.h"

namespace audrel::linuxos {

MenuItem::MenuItem(Kind kind, std::string title, std::optional<NS::Selector> action)
    : kind_(kind), title_(std::move(title)), action_(std::move(action)) {}

void MenuItem::setTarget(const std::weak_ptr<NS::Target>& target) {
  target_ = target;
}

void MenuItem::setEnabled(bool isEnabled) {
  isEnabled_ = isEnabled;
}

void MenuItem::setState(NS::ControlState state) {
  state_ = state;
}

void MenuItem::setSubmenu(std::shared_ptr<NS::Menu> submenu) {
  submenu_ = std::static_pointer_cast<Menu>(std::move(submenu));
}

void MenuItem::setRepresentedObject(std::any object) {
  representedObject_ = std::move(object);
}

bool MenuItem::isEnabled(bool autoenables) const {
  if (autoenables) {
    return submenu_ != nullptr || (action_ && !target_.expired());
  }
  return isEnabled_;
}

void MenuItem::perform(const std::shared_ptr<MenuItem>& item) {
  const std::shared_ptr<NS::Target> target = item->target_.lock();
  if (target != nullptr && item->action_) {
    target->perform(*item->action_, item);
  }
}

void Menu::setAutoenablesItems(bool autoenables) {
  autoenablesItems_ = autoenables;
}

void Menu::addItem(std::shared_ptr<NS::MenuItem> item) {
  items_.push_back(std::static_pointer_cast<MenuItem>(std::move(item)));
}

void Menu::setDelegate(const std::weak_ptr<NS::MenuDelegate>& delegate) {
  delegate_ = delegate;
}

}  // namespace audrel::linuxos
