#include "tests/platform/linux/tray/TrayProgram.h"

#include <any>
#include <optional>
#include <utility>

#include "tests/support/MainLoop.h"

namespace audrel::traytest {

std::shared_ptr<TrayProgram> TrayProgram::start() {
  auto program = std::make_shared<TrayProgram>();
  program->rebuildMenu();
  return program;
}

void TrayProgram::menuWillOpen(const std::shared_ptr<NS::Menu>& /*menu*/) {
  journal_.emplace_back("menu will open");
  onOpen();
}

void TrayProgram::perform(const NS::Selector& selector,
                          const std::shared_ptr<NS::MenuItem>& sender) {
  const auto* object = std::any_cast<std::string>(&sender->representedObject());
  journal_.push_back("perform " + selector.name() + (object == nullptr ? "" : " " + *object));
  if (selector.name() == "toggle:") {
    toggle();
  }
  // The sender is still there, however often the menu was replaced meanwhile.
  sender->setEnabled(true);
}

void TrayProgram::add(NS::Menu& menu, const std::shared_ptr<NS::MenuItem>& item) {
  item->setTarget(weak_from_this());
  menu.addItem(item);
}

std::shared_ptr<NS::MenuItem> TrayProgram::sources() {
  auto submenu = appKit_.makeMenu();
  submenu->setAutoenablesItems(false);
  for (const std::string title : {"Everything", "some_player __x"}) {
    auto source = appKit_.makeMenuItem(title, NS::Selector("select:"), "");
    source->setRepresentedObject(title);
    source->setState(title == "Everything" ? NS::ControlState::on : NS::ControlState::off);
    add(*submenu, source);
  }
  auto item = appKit_.makeMenuItem("From", std::nullopt, "");
  item->setSubmenu(submenu);
  return item;
}

void TrayProgram::rebuildMenu() {
  auto menu = appKit_.makeMenu();
  menu->setAutoenablesItems(false);
  add(*menu, appKit_.makeMenuItem(isRunning_ ? "Stop" : "Start", NS::Selector("toggle:"), "r"));
  add(*menu, appKit_.makeSeparatorItem());
  if (!isRunning_) {
    add(*menu, sources());
  }
  auto disabled = appKit_.makeMenuItem("Reveal", NS::Selector("reveal:"), "");
  disabled->setEnabled(false);
  add(*menu, disabled);
  add(*menu, appKit_.makeMenuItem("Quit", NS::Selector("quit:"), "q"));
  menu->setDelegate(weak_from_this());
  item_->setMenu(menu);
}

void TrayProgram::replaceItem() {
  item_.reset();
  item_ = appKit_.makeStatusItem(-1);
  rebuildMenu();
}

void TrayProgram::toggle() {
  isRunning_ = !isRunning_;
  rebuildMenu();
}

std::shared_ptr<NS::Image> TrayProgram::tinted(const std::string& symbol,
                                               const std::shared_ptr<NS::Color>& color) {
  const auto drawn = appKit_.makeSystemSymbol(symbol)->withSymbolConfiguration({14, 0});
  auto image = appKit_.makeImage(drawn->size());
  const NS::Rect whole{0, 0, drawn->size()};
  image->lockFocus();
  color->set();
  drawn->drawInRect(whole);
  appKit_.fillRect(whole, NS::CompositingOperation::sourceAtop);
  image->unlockFocus();
  return image;
}

std::vector<std::string> TrayProgram::takeJournal() {
  support::drainLoop();
  return std::exchange(journal_, {});
}

}  // namespace audrel::traytest
