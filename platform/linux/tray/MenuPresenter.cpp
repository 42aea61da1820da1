#include "platform/linux/tray/MenuPresenter.h"

#include <cstddef>
#include <utility>

#include "platform/Selectors.h"

namespace audrel::linuxos {

namespace {

constexpr std::size_t mostWaitingClicks = 16;

const NS::Selector quit(selectors::quit);

}  // namespace

std::shared_ptr<MenuPresenter> MenuPresenter::make(const Application& application) {
  return std::shared_ptr<MenuPresenter>(new MenuPresenter(application));
}

// An action may wait in an inner loop for an alert's answer: quit has to come through meanwhile.
MenuPresenter::MenuPresenter(const Application& application)
    : application_(application), clicks_([this] { performNextClick(); }, Reentry::allowed) {}

void MenuPresenter::setMenu(std::shared_ptr<Menu> menu) {
  menu_ = std::move(menu);
  readMenu();
}

void MenuPresenter::setObserver(std::function<void()> observer) {
  observer_ = std::move(observer);
}

void MenuPresenter::setOpenedObserver(std::function<void(const MenuTree&)> observer) {
  openedObserver_ = std::move(observer);
}

void MenuPresenter::readMenu() {
  previousTree_ = std::move(tree_);
  tree_ = menu_ == nullptr ? MenuTree() : MenuTree(*menu_, nextId_, [this](const MenuItem& item) {
    return isHonoured(item);
  });
  ++revision_;
  if (observer_) {
    observer_();
  }
}

std::vector<std::int32_t> MenuPresenter::takeSubmenus() {
  std::vector<std::int32_t> submenus;
  if (std::exchange(submenusTakenAt_, revision_) != revision_) {
    for (const MenuNode& node : tree_.root().children) {
      if (!node.children.empty()) {
        submenus.push_back(node.id);
      }
    }
  }
  return submenus;
}

const MenuNode* MenuPresenter::known(std::int32_t id) const {
  const MenuNode* node = tree_.find(id);
  return node != nullptr ? node : previousTree_.find(id);
}

bool MenuPresenter::isHonoured(const MenuItem& item) const {
  return !application_.isTerminating() && (!application_.isModal() || item.action() == quit);
}

bool MenuPresenter::opens(const std::string& panel, MenuOpening::Notice notice) {
  if (notice == MenuOpening::Notice::opened && openedObserver_) {
    openedObserver_(tree_);
  }
  if (!opening_.begins(panel, notice, LoopSource::now())) {
    return true;
  }
  const auto self = shared_from_this();
  const auto menu = menu_;
  const auto delegate = menu == nullptr ? nullptr : menu->delegate();
  const bool isBusy = application_.isModal() || application_.isTerminating();
  if (delegate == nullptr && !isBusy) {
    return false;
  }
  if (!isBusy) {
    delegate->menuWillOpen(menu);
  }
  if (menu_ == menu) {
    readMenu();
  }
  return true;
}

bool MenuPresenter::click(std::int32_t id) {
  const MenuNode* node = known(id);
  if (node == nullptr) {
    return false;
  }
  if (node->item != nullptr && node->isEnabled) {
    std::erase(clicked_, node->item);
    if (clicked_.size() < mostWaitingClicks) {
      clicked_.push_back(node->item);
    }
    clicks_.callSoon();
  }
  return true;
}

void MenuPresenter::choose(const NS::Selector& action) {
  const MenuNode* chosen = nullptr;
  tree_.forEach([&](const MenuNode& node) {
    if (chosen == nullptr && node.item != nullptr && node.item->action() == action) {
      chosen = &node;
    }
  });
  if (chosen != nullptr && chosen->isEnabled) {
    perform(std::shared_ptr(chosen->item));
  }
}

void MenuPresenter::performNextClick() {
  const std::shared_ptr<MenuItem> item = std::move(clicked_.front());
  clicked_.pop_front();
  if (!clicked_.empty()) {
    clicks_.callSoon();
  }
  perform(item);
}

void MenuPresenter::perform(const std::shared_ptr<MenuItem>& item) {
  const auto self = shared_from_this();
  if (isHonoured(*item) && tree_.stillOffers(*item)) {
    MenuItem::perform(item);
  }
}

}  // namespace audrel::linuxos
