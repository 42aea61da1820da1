#include "platform/linux/session/Alert.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "platform/linux/alert/ExitStatus.h"
#include "platform/linux/session/AlertHelper.h"
#include "platform/linux/system/Wording.h"

namespace audrel::linuxos {

namespace {

constexpr std::string_view permitted = "Permission to capture: granted";

std::string nameOf(NS::AlertStyle style) {
  switch (style) {
    case NS::AlertStyle::warning:
      return "warning";
    case NS::AlertStyle::informational:
      return "informational";
    case NS::AlertStyle::critical:
      break;
  }
  return "critical";
}

}  // namespace

Alert::Alert(AlertParts parts) : parts_(std::move(parts)) {}

void Alert::setMessageText(const std::string& text) {
  message_ = desktopWording(text);
}

void Alert::setInformativeText(const std::string& text) {
  informative_ = desktopWording(text);
}

void Alert::setAlertStyle(NS::AlertStyle style) {
  style_ = style;
}

void Alert::addButton(const std::string& title) {
  buttons_.push_back(desktopWording(title));
}

NS::ModalResponse Alert::runModal() {
  if (buttons_.empty()) {
    buttons_.emplace_back("OK");
  }
  return NS::alertFirstButtonReturn + ask().value_or(safeButton());
}

/// The button that the user pressed; nothing when there was no such answer.
std::optional<int> Alert::ask() {
  if (parts_.application.isTerminating()) {
    return std::nullopt;
  }
  std::unique_ptr<AlertHelper> helper;
  ModalSession session(parts_.application, [&helper] {
    if (helper != nullptr) {
      helper->present();
    }
  });
  std::optional<int> exitStatus;
  std::string failure;
  helper = AlertHelper::start(
      parts_.helper, helperTexts(),
      [&](std::optional<int> status) {
        exitStatus = status;
        session.finish();
      },
      &failure);
  if (helper == nullptr) {
    return notShown(failure);
  }
  return session.wait() ? answerOf(exitStatus) : std::nullopt;
}

std::optional<int> Alert::answerOf(std::optional<int> exitStatus) {
  if (exitStatus == alerthelper::closed) {
    return std::nullopt;
  }
  if (exitStatus == alerthelper::noDisplay) {
    return notShown("there is no display");
  }
  const int button = exitStatus.value_or(0) - alerthelper::firstButton;
  if (button < 0 || button >= static_cast<int>(buttons_.size())) {
    return notShown("its helper failed");
  }
  return button;
}

std::optional<int> Alert::notShown(const std::string& reason) {
  parts_.logger->info("An alert becomes a notification: " + reason);
  parts_.notifier.notify({.summary = message_,
                          .body = text(),
                          .urgency = style_ == NS::AlertStyle::critical
                                         ? Notification::Urgency::critical
                                         : Notification::Urgency::normal});
  return std::nullopt;
}

std::string Alert::text() const {
  if (informative_.ends_with(permitted)) {
    const std::string problem = parts_.whyNoServer();
    return problem.empty() ? informative_
                           : informative_.substr(0, informative_.size() - permitted.size()) +
                                 "Permission to capture: not known\n\n" + problem;
  }
  const auto diagnosis = style_ == NS::AlertStyle::critical ? parts_.diagnostics.diagnosis()
                                                            : std::optional<std::string>();
  return diagnosis ? *diagnosis + "\n\n" + informative_ : informative_;
}

std::vector<std::string> Alert::helperTexts() const {
  std::vector<std::string> texts = {nameOf(style_), message_, text()};
  texts.insert(texts.end(), buttons_.begin(), buttons_.end());
  return texts;
}

int Alert::safeButton() const {
  for (const std::string_view title : {"Cancel", "OK"}) {
    const auto found = std::ranges::find(buttons_, title);
    if (found != buttons_.end()) {
      return static_cast<int>(found - buttons_.begin());
    }
  }
  return static_cast<int>(buttons_.size()) - 1;
}

}  // namespace audrel::linuxos
