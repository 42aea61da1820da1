#pragma once

#include <memory>
#include <string>

#include "platform/AppKit.h"
#include "tests/fakes/FakeGraphics.h"
#include "tests/fakes/FakeMenus.h"
#include "tests/fakes/Journal.h"

namespace audrel::fakes {

class FakeButton final : public NS::StatusBarButton {
 public:
  explicit FakeButton(Journal& journal) : journal_(journal) {}

  void setFont(std::shared_ptr<NS::Font> font) override;
  void setImagePosition(NS::CellImagePosition position) override;
  void setImage(std::shared_ptr<NS::Image> image) override;
  void setTitle(const std::string& title) override;

  const std::string& title() const { return title_; }

  /// "no image" when it has none.
  std::string image() const { return image_ ? image_->shown() : "no image"; }

 private:
  Journal& journal_;
  std::string title_;
  std::shared_ptr<NS::Font> font_;
  std::shared_ptr<FakeImage> image_;
};

/// The item and the user who clicks it.
class FakeStatusItem final : public NS::StatusItem {
 public:
  FakeStatusItem(Journal& journal, bool hasButton);

  NS::StatusBarButton* button() override { return button_.get(); }
  void setMenu(std::shared_ptr<NS::Menu> menu) override;

  FakeButton& fakeButton() { return *button_; }

  /// What is attached now.
  const FakeMenu& menu() const { return *menu_; }
  std::weak_ptr<const FakeMenu> weakMenu() const { return menu_; }

  /// The user opens the menu, which the call alone keeps alive.
  void open();

  /// The user chooses the first item with that title in the menu or a submenu.
  void choose(const std::string& title) { FakeMenuItem::choose(menu_->item(title)); }

 private:
  Journal& journal_;
  std::unique_ptr<FakeButton> button_;
  std::shared_ptr<FakeMenu> menu_;
};

}  // namespace audrel::fakes
