#include "tests/fakes/FakeAppKit.h"

#include <algorithm>
#include <stdexcept>

namespace audrel::fakes {
namespace {

constexpr NS::Size unconfiguredSize{13, 12};

}  // namespace

FakeAppKit::FakeAppKit(Journal& journal)
    : application(journal), workspace(journal), journal_(journal), graphics_(journal) {}

FakeStatusItem& FakeAppKit::statusItem() const {
  const auto item = statusItem_.lock();
  if (!item) {
    throw std::runtime_error("there is no status item");
  }
  return *item;
}

std::size_t FakeAppKit::liveMenus() const {
  return static_cast<std::size_t>(std::count_if(menus_.begin(), menus_.end(),
                                                [](const auto& menu) { return !menu.expired(); }));
}

std::shared_ptr<NS::StatusItem> FakeAppKit::makeStatusItem(double length) {
  journal_.add("statusItem(withLength " + shortNumber(length) + ")");
  auto item = std::make_shared<FakeStatusItem>(journal_, statusItemsHaveButtons);
  statusItem_ = item;
  return item;
}

std::shared_ptr<NS::Menu> FakeAppKit::makeMenu() {
  auto menu = std::make_shared<FakeMenu>(journal_, static_cast<int>(menus_.size()) + 1);
  journal_.add("NSMenu() -> " + menu->name());
  menus_.push_back(menu);
  return menu;
}

std::shared_ptr<NS::MenuItem> FakeAppKit::makeMenuItem(const std::string& title,
                                                       const std::optional<NS::Selector>& action,
                                                       const std::string& keyEquivalent) {
  return std::make_shared<FakeMenuItem>(journal_, title, action, keyEquivalent);
}

std::shared_ptr<NS::MenuItem> FakeAppKit::makeSeparatorItem() {
  return FakeMenuItem::separator(journal_);
}

std::shared_ptr<NS::Image> FakeAppKit::makeSystemSymbol(const std::string& name) {
  std::shared_ptr<FakeImage> image;
  if (!missingSymbols.contains(name)) {
    image = std::make_shared<FakeImage>(graphics_, "symbol " + inQuotes(name), unconfiguredSize,
                                        symbolsHaveConfigurations);
  }
  journal_.add("imageWithSystemSymbolName(" + inQuotes(name) + ") -> " +
               (image ? image->name() : "nil"));
  return image;
}

std::shared_ptr<NS::Image> FakeAppKit::makeImage(NS::Size size) {
  auto image = std::make_shared<FakeImage>(graphics_, "picture of " + shown(size), size, false);
  journal_.add("NSImage(" + shown(size) + ") -> " + image->name());
  return image;
}

std::shared_ptr<NS::Color> FakeAppKit::systemRedColor() {
  return std::make_shared<FakeColor>(graphics_, "systemRedColor");
}

std::shared_ptr<NS::Color> FakeAppKit::systemOrangeColor() {
  return std::make_shared<FakeColor>(graphics_, "systemOrangeColor");
}

void FakeAppKit::fillRect(const NS::Rect& rect, NS::CompositingOperation operation) {
  graphics_.fill(rect, operation);
}

std::shared_ptr<NS::Font> FakeAppKit::monospacedDigitSystemFont(double size, double weight) {
  return std::make_shared<FakeFont>("monospacedDigitSystemFont(size " + shortNumber(size) +
                                    ", weight " + shortNumber(weight) + ")");
}

std::unique_ptr<NS::Alert> FakeAppKit::makeAlert() {
  journal_.add("NSAlert()");
  return std::make_unique<FakeAlert>(journal_, user,
                                     alerts.emplace_back(std::make_shared<AlertRecord>()));
}

}  // namespace audrel::fakes
