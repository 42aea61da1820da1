#include "tests/fakes/FakeStatusItem.h"

#include <cstdint>
#include <stdexcept>
#include <utility>

namespace audrel::fakes {

void FakeButton::setFont(std::shared_ptr<NS::Font> font) {
  font_ = std::move(font);
  journal_.add("button.font = " + dynamic_cast<const FakeFont&>(*font_).description());
}

void FakeButton::setImagePosition(NS::CellImagePosition position) {
  journal_.add("button.imagePosition = " + std::to_string(static_cast<std::uint64_t>(position)));
}

void FakeButton::setImage(std::shared_ptr<NS::Image> image) {
  image_ = std::dynamic_pointer_cast<FakeImage>(std::move(image));
  journal_.add("button.image = " + (image_ ? image_->name() : "nil"));
}

void FakeButton::setTitle(const std::string& title) {
  title_ = title;
  journal_.add("button.title = " + inQuotes(title));
}

FakeStatusItem::FakeStatusItem(Journal& journal, bool hasButton)
    : journal_(journal), button_(hasButton ? std::make_unique<FakeButton>(journal) : nullptr) {}

void FakeStatusItem::setMenu(std::shared_ptr<NS::Menu> menu) {
  menu_ = std::dynamic_pointer_cast<FakeMenu>(std::move(menu));
  journal_.add("statusItem.menu = " + menu_->name());
}

void FakeStatusItem::open() {
  const std::shared_ptr<NS::Menu> opening = menu_;
  journal_.add("the user opens " + menu_->name());
  const auto delegate = menu_->delegate();
  if (!delegate) {
    throw std::runtime_error(menu_->name() + " has no delegate");
  }
  delegate->menuWillOpen(opening);
}

}  // namespace audrel::fakes
