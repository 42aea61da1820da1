#pragma once

#include "platform/macos/Application.h"
#include "platform/macos/Workspace.h"

namespace audrel::macos {

/// AppKit. Main thread only.
///
/// The frameworks' objects own what the program put into them, and the objects made here own the
/// frameworks': a menu that AppKit still shows works on after the program has dropped it.
class AppKit final : public NS::AppKit {
 public:
  NS::Application& sharedApplication() override { return application_; }
  NS::Workspace& sharedWorkspace() override { return workspace_; }
  std::shared_ptr<NS::StatusItem> makeStatusItem(double length) override;
  std::shared_ptr<NS::Menu> makeMenu() override;
  std::shared_ptr<NS::MenuItem> makeMenuItem(const std::string& title,
                                             const std::optional<NS::Selector>& action,
                                             const std::string& keyEquivalent) override;
  std::shared_ptr<NS::MenuItem> makeSeparatorItem() override;
  std::shared_ptr<NS::Image> makeSystemSymbol(const std::string& name) override;
  std::shared_ptr<NS::Image> makeImage(NS::Size size) override;
  std::shared_ptr<NS::Color> systemRedColor() override;
  std::shared_ptr<NS::Color> systemOrangeColor() override;
  void fillRect(const NS::Rect& rect, NS::CompositingOperation operation) override;
  std::shared_ptr<NS::Font> monospacedDigitSystemFont(double size, double weight) override;
  std::unique_ptr<NS::Alert> makeAlert() override;

 private:
  Application application_;
  Workspace workspace_;
};

}  // namespace audrel::macos
