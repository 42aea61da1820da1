#include "tests/fakes/FakeMenus.h"

#include <stdexcept>
#include <utility>

namespace audrel::fakes {
namespace {

const FakeMenu& fake(const NS::Menu& menu) {
  return dynamic_cast<const FakeMenu&>(menu);
}

}  // namespace

FakeMenuItem::FakeMenuItem(Journal& journal, std::string title, std::optional<NS::Selector> action,
                           std::string keyEquivalent)
    : journal_(journal),
      title_(std::move(title)),
      action_(std::move(action)),
      keyEquivalent_(std::move(keyEquivalent)) {}

std::shared_ptr<FakeMenuItem> FakeMenuItem::separator(Journal& journal) {
  auto item = std::make_shared<FakeMenuItem>(journal, "", std::nullopt, "");
  item->isSeparator_ = true;
  return item;
}

void FakeMenuItem::setTarget(const std::weak_ptr<NS::Target>& target) {
  target_ = target;
  changed("target");
}

void FakeMenuItem::setEnabled(bool isEnabled) {
  isEnabled_ = isEnabled;
  changed("enabled");
}

void FakeMenuItem::setState(NS::ControlState state) {
  state_ = state;
  changed("state");
}

void FakeMenuItem::setSubmenu(std::shared_ptr<NS::Menu> submenu) {
  submenu_ = std::move(submenu);
  changed("submenu");
}

void FakeMenuItem::setRepresentedObject(std::any object) {
  representedObject_ = std::move(object);
  changed("representedObject");
}

void FakeMenuItem::changed(const char* what) {
  if (isInAMenu_) {
    journal_.add("item " + inQuotes(title_) + " changes its " + what);
  }
}

ItemContents FakeMenuItem::contents() const {
  ItemContents contents;
  contents.title = title_;
  contents.isSeparator = isSeparator_;
  if (action_) {
    contents.action = action_->name();
  }
  contents.target = target_.lock().get();
  contents.keyEquivalent = keyEquivalent_;
  contents.isEnabled = isEnabled_;
  contents.isOn = state_ == NS::ControlState::on;
  if (const auto* source = std::any_cast<RecordingSource>(&representedObject_)) {
    contents.representedObject = *source;
  }
  if (submenu_) {
    contents.submenu = fake(*submenu_).contents();
  }
  return contents;
}

void FakeMenuItem::choose(const std::shared_ptr<FakeMenuItem>& item) {
  const auto target = item->target_.lock();
  if (!item->isEnabled_ || !item->action_ || !target) {
    throw std::runtime_error("nobody can choose " + inQuotes(item->title_));
  }
  item->journal_.add("the user chooses " + inQuotes(item->title_));
  const NS::Selector& action = *item->action_;
  target->perform(action, item);
}

void FakeMenu::setAutoenablesItems(bool autoenables) {
  autoenablesItems_ = autoenables;
  journal_.add(name() + ".autoenablesItems = " + (autoenables ? "true" : "false"));
}

void FakeMenu::addItem(std::shared_ptr<NS::MenuItem> item) {
  auto added = std::dynamic_pointer_cast<FakeMenuItem>(std::move(item));
  std::string line = name() + ".addItem(" + shown(added->contents());
  if (added->submenu()) {
    line += " " + fake(*added->submenu()).name();
  }
  journal_.add(line + ")");
  added->isInAMenuNow();
  items_.push_back(std::move(added));
}

void FakeMenu::setDelegate(const std::weak_ptr<NS::MenuDelegate>& delegate) {
  delegate_ = delegate;
  journal_.add(name() + ".delegate = " + (delegate.expired() ? "nil" : "delegate"));
}

MenuContents FakeMenu::contents() const {
  MenuContents contents;
  contents.autoenablesItems = autoenablesItems_;
  contents.delegate = delegate_.lock().get();
  for (const auto& item : items_) {
    contents.items.push_back(item->contents());
  }
  return contents;
}

std::shared_ptr<FakeMenuItem> FakeMenu::item(const std::string& title) const {
  auto found = find(title);
  if (!found) {
    throw std::runtime_error("there is no item " + inQuotes(title));
  }
  return found;
}

std::shared_ptr<FakeMenuItem> FakeMenu::find(const std::string& title) const {
  for (const auto& item : items_) {
    if (item->contents().title == title && !item->contents().isSeparator) {
      return item;
    }
    if (item->submenu()) {
      if (auto found = fake(*item->submenu()).find(title)) {
        return found;
      }
    }
  }
  return nullptr;
}

}  // namespace audrel::fakes
