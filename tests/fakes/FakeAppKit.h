#pragma once

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "platform/AppKit.h"
#include "tests/fakes/FakeApplication.h"
#include "tests/fakes/FakeGraphics.h"
#include "tests/fakes/FakeMenus.h"
#include "tests/fakes/FakeStatusItem.h"
#include "tests/fakes/Journal.h"

namespace audrel::fakes {

/// Keeps nothing alive that it made but the application, the workspace and the alerts' texts.
class FakeAppKit final : public NS::AppKit {
 public:
  explicit FakeAppKit(Journal& journal);

  FakeApplication application;
  FakeWorkspace workspace;
  AlertUser user;
  std::vector<std::shared_ptr<AlertRecord>> alerts;  ///< in the order in which they were made

  bool statusItemsHaveButtons = true;
  std::set<std::string> missingSymbols;
  bool symbolsHaveConfigurations = true;

  /// The one made last. Throws when it is gone.
  FakeStatusItem& statusItem() const;

  /// Menus that exist now, submenus too.
  std::size_t liveMenus() const;

  NS::Application& sharedApplication() override { return application; }
  NS::Workspace& sharedWorkspace() override { return workspace; }
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
  Journal& journal_;
  FakeGraphics graphics_;
  std::weak_ptr<FakeStatusItem> statusItem_;
  std::vector<std::weak_ptr<FakeMenu>> menus_;
};

}  // namespace audrel::fakes
