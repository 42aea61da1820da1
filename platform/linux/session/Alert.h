#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/AppKit.h"
#include "platform/Diagnostics.h"
#include "platform/Log.h"
#include "platform/linux/session/Notifier.h"
#include "platform/linux/tray/Application.h"

namespace audrel::linuxos {

/// What alerts are shown with. The references must outlive them.
struct AlertParts {
  Application& application;
  capture::Diagnostics& diagnostics;
  std::function<std::string()> whyNoServer;  ///< empty while there is an audio server
  Notifier& notifier;

  /// The program that shows the window; `alertHelperProgram()`.
  std::filesystem::path helper;
  std::shared_ptr<os::Logger> logger;
};

/// An alert in a window of the helper's, in the desktop's own words. A critical one tells of a
/// recording that failed, and says first why the system refused. That capturing is permitted, which
/// is so where nobody refuses it, is said only where there is an audio server.
///
/// Escape, closing the window and the end of the application answer with the button that changes
/// nothing: "Cancel", else "OK", else the last one. So does, at once, an alert that cannot be shown
/// for lack of a display: its text becomes a notification. Main thread.
class Alert final : public NS::Alert {
 public:
  explicit Alert(AlertParts parts);

  void setMessageText(const std::string& text) override;
  void setInformativeText(const std::string& text) override;
  void setAlertStyle(NS::AlertStyle style) override;
  void addButton(const std::string& title) override;

  /// The application's events go on meanwhile.
  NS::ModalResponse runModal() override;

 private:
  std::optional<int> ask();
  std::optional<int> answerOf(std::optional<int> exitStatus);
  std::optional<int> notShown(const std::string& reason);
  std::string text() const;
  std::vector<std::string> helperTexts() const;
  int safeButton() const;

  AlertParts parts_;
  NS::AlertStyle style_ = NS::AlertStyle::warning;
  std::string message_;
  std::string informative_;
  std::vector<std::string> buttons_;
};

}  // namespace audrel::linuxos
