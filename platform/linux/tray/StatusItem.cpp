#include "platform/linux/tray/StatusItem.h"

#include <initializer_list>
#include <string_view>
#include <utility>

namespace audrel::linuxos {

namespace {

/// Of the menu while the program records.
constexpr std::string_view captionStart = "Recording from: ";

}  // namespace

StatusBarButton::StatusBarButton(std::function<void()> onChange) : onChange_(std::move(onChange)) {}

void StatusBarButton::setFont(std::shared_ptr<NS::Font> /*font*/) {}

void StatusBarButton::setImagePosition(NS::CellImagePosition /*position*/) {}

void StatusBarButton::setImage(std::shared_ptr<NS::Image> image) {
  image_ = std::static_pointer_cast<Image>(std::move(image));
  onChange_();
}

void StatusBarButton::setTitle(const std::string& title) {
  title_ = title;
  onChange_();
}

// The item is there before the menu that it names, and both before panels hear of them.
StatusItem::OnBus::OnBus(GDBusConnection* connection, const StatusItemLook& look,
                         const std::shared_ptr<MenuPresenter>& presenter,
                         const std::shared_ptr<os::Logger>& logger)
    : item(connection, look), menu(connection, presenter), registration(connection, logger) {}

StatusItem::StatusItem(const Application& application, SessionBus& bus, IconTheme icons,
                       std::shared_ptr<os::Logger> logger,
                       std::function<void(const MenuTree&)> menuOpened)
    : icons_(std::move(icons)),
      logger_(std::move(logger)),
      presenter_(MenuPresenter::make(application)),
      button_([this] { updateLook(); }),
      listener_(
          bus,
          [this](GDBusConnection* connection) {
            onBus_.emplace(connection, look_, presenter_, logger_);
          },
          [this] { onBus_.reset(); }) {
  presenter_->setOpenedObserver(std::move(menuOpened));
}

void StatusItem::setMenu(std::shared_ptr<NS::Menu> menu) {
  presenter_->setMenu(std::static_pointer_cast<Menu>(std::move(menu)));
  updateLook();
}

void StatusItem::updateLook() {
  std::optional<Picture> picture;
  if (button_.image() != nullptr) {
    picture = button_.image()->picture();
  }
  if (picture != shownPicture_) {
    shownPicture_ = std::move(picture);
    drawPicture(shownPicture_.value_or(Picture()));
  }
  look_.label = button_.title();
  look_.title = title();
  if (onBus_) {
    onBus_->item.show(look_);
  }
}

void StatusItem::drawPicture(const Picture& picture) {
  look_.iconName = icons_.iconFor(picture).value_or("");
  look_.iconThemePath = icons_.folder().string();
  const StateIcon* icon = stateIconOf(picture);
  look_.iconDescription = icon == nullptr ? StatusItemLook().iconDescription : icon->description;
  look_.pixmaps.clear();
  if (look_.iconName.empty() && !picture.steps.empty()) {
    const Picture drawn = inShapeOfState(picture);
    // The sizes of common panels; they scale between them.
    for (const int side : {16, 22, 24, 32, 48}) {
      look_.pixmaps.push_back(drawPixmap(drawn, side));
    }
  }
}

/// What is recorded, and for how long: the caption of the program's menu and the button's title.
std::string StatusItem::title() const {
  const auto time = button_.title().find_first_not_of(' ');
  if (time == std::string::npos) {
    return StatusItemLook().title;
  }
  std::string what;
  const auto& items = presenter_->tree().root().children;
  if (!items.empty() && items.front().item->title().starts_with(captionStart)) {
    what = " " + items.front().item->title().substr(captionStart.size());
  }
  return "Recording" + what + ", " + button_.title().substr(time);
}

}  // namespace audrel::linuxos
