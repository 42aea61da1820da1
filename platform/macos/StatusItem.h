#pragma once

#import <AppKit/AppKit.h>

#include <optional>

#include "platform/AppKit.h"

namespace audrel::macos {

class StatusBarButton final : public NS::StatusBarButton {
 public:
  explicit StatusBarButton(NSStatusBarButton* button) : button_(button) {}

  void setFont(std::shared_ptr<NS::Font> font) override;
  void setImagePosition(NS::CellImagePosition position) override;
  void setImage(std::shared_ptr<NS::Image> image) override;
  void setTitle(const std::string& title) override;

 private:
  NSStatusBarButton* button_;
};

/// Stands in the menu bar for as long as it lives.
class StatusItem final : public NS::StatusItem {
 public:
  explicit StatusItem(NSStatusItem* item);
  ~StatusItem() override;
  StatusItem(const StatusItem&) = delete;
  StatusItem& operator=(const StatusItem&) = delete;

  NS::StatusBarButton* button() override;
  void setMenu(std::shared_ptr<NS::Menu> menu) override;

 private:
  NSStatusItem* item_;
  std::optional<StatusBarButton> button_;
};

}  // namespace audrel::macos
