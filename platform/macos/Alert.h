#pragma once

#import <AppKit/AppKit.h>

#include "platform/AppKit.h"

namespace audrel::macos {

class Alert final : public NS::Alert {
 public:
  explicit Alert(NSAlert* alert) : alert_(alert) {}

  void setMessageText(const std::string& text) override;
  void setInformativeText(const std::string& text) override;
  void setAlertStyle(NS::AlertStyle style) override;
  void addButton(const std::string& title) override;
  NS::ModalResponse runModal() override;

 private:
  NSAlert* alert_;
};

}  // namespace audrel::macos
