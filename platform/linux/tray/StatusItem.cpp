#include "platform/linux/tray/StatusItem.h"

#include <initializer_list>
#include <utility>

#include "platform/linux/tray/RecordingMenu.h"

namespace audrel::linuxos {

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
                         const std::shared_ptr<os::Logger>& logger,
                         const WatcherRegistration::PanelObserver& panelChanged)
    : item(connection, look),
      menu(connection, presenter),
      registration(connection, logger, panelChanged) {}

StatusItem::StatusItem(const Application& application, SessionBus& bus, IconTheme icons,
                       std::shared_ptr<os::Logger> logger, StatusItemObservers observers)
    : icons_(std::move(icons)),
      logger_(std::move(logger)),
      observers_(std::move(observers)),
      presenter_(MenuPresenter::make(application)),
      button_([this] { updateLook(); }),
      listener_(
          bus,
          [this](GDBusConnection* connection) {
            onBus_.emplace(connection, look_, presenter_, logger_, observers_.panelChanged);
          },
          [this] { onBus_.reset(); }) {
  presenter_->setOpenedObserver(observers_.menuOpened);
}

void StatusItem::setMenu(std::shared_ptr<NS::Menu> menu) {
  presenter_->setMenu(std::static_pointer_cast<Menu>(std::move(menu)));
  updateLook();
  observers_.menuSet(presenter_->tree());
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
  const auto recorded = recordingMenuOf(presenter_->tree()).recorded;
  return "Recording" + (recorded ? " " + *recorded : "") + ", " + button_.title().substr(time);
}

}  // namespace audrel::linuxos
