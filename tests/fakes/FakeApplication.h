#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/AppKit.h"
#include "tests/fakes/Journal.h"

namespace audrel::fakes {

/// Refers to its delegate weakly. Its event loop is what a test says.
class FakeApplication final : public NS::Application {
 public:
  explicit FakeApplication(Journal& journal) : journal_(journal) {}

  /// What happens between the launch and the end of the event loop.
  std::function<void()> whileRunning;

  void setActivationPolicy(NS::ActivationPolicy policy) override;
  void setDelegate(const std::weak_ptr<NS::ApplicationDelegate>& delegate) override;
  void run() override;
  void terminate() override;

 private:
  Journal& journal_;
  std::weak_ptr<NS::ApplicationDelegate> delegate_;
};

class FakeWorkspace final : public NS::Workspace {
 public:
  explicit FakeWorkspace(Journal& journal) : journal_(journal) {}

  bool opensURLs = true;

  bool openURL(const NS::URL& url) override;
  void activateFileViewerSelecting(const std::vector<std::filesystem::path>& files) override;

 private:
  Journal& journal_;
};

/// What an alert said. Outlives the alert.
struct AlertRecord {
  std::string messageText;
  std::string informativeText;
  NS::AlertStyle style = NS::AlertStyle::warning;
  std::vector<std::string> buttons;
  int timesRun = 0;
};

/// The user who answers alerts.
struct AlertUser {
  NS::ModalResponse answer = NS::alertFirstButtonReturn;

  /// What happens while an alert is up.
  std::function<void()> meanwhile;
};

class FakeAlert final : public NS::Alert {
 public:
  FakeAlert(Journal& journal, const AlertUser& user, std::shared_ptr<AlertRecord> record)
      : journal_(journal), user_(user), record_(std::move(record)) {}

  void setMessageText(const std::string& text) override;
  void setInformativeText(const std::string& text) override;
  void setAlertStyle(NS::AlertStyle style) override;
  void addButton(const std::string& title) override;
  NS::ModalResponse runModal() override;

 private:
  Journal& journal_;
  const AlertUser& user_;
  std::shared_ptr<AlertRecord> record_;
};

}  // namespace audrel::fakes
