#include "tests/fakes/FakeApplication.h"

#include <cstdint>
#include <stdexcept>

namespace audrel::fakes {
namespace {

/// On one line of the journal.
std::string onOneLine(const std::string& text) {
  std::string line;
  for (const char letter : text) {
    line += letter == '\n' ? std::string("\\n") : std::string(1, letter);
  }
  return inQuotes(line);
}

}  // namespace

void FakeApplication::setActivationPolicy(NS::ActivationPolicy policy) {
  journal_.add("application.setActivationPolicy(" +
               std::to_string(static_cast<std::int64_t>(policy)) + ")");
}

void FakeApplication::setDelegate(const std::weak_ptr<NS::ApplicationDelegate>& delegate) {
  delegate_ = delegate;
  journal_.add(std::string("application.delegate = ") + (delegate.expired() ? "nil" : "delegate"));
}

void FakeApplication::run() {
  journal_.add("application.run() begins");
  const auto delegate = delegate_.lock();
  if (!delegate) {
    throw std::runtime_error("the application has no delegate");
  }
  delegate->applicationDidFinishLaunching();
  if (whileRunning) {
    whileRunning();
  }
  journal_.add("application.run() ends");
}

void FakeApplication::terminate() {
  journal_.add("application.terminate()");
  if (const auto delegate = delegate_.lock()) {
    delegate->applicationWillTerminate();
  }
}

bool FakeWorkspace::openURL(const NS::URL& url) {
  journal_.add("workspace.openURL(" + inQuotes(url.absoluteString) + ") -> " +
               (opensURLs ? "true" : "false"));
  return opensURLs;
}

void FakeWorkspace::activateFileViewerSelecting(const std::vector<std::filesystem::path>& files) {
  std::string line = "workspace.activateFileViewerSelecting(";
  const char* separator = "";
  for (const auto& file : files) {
    line += separator + inQuotes(file.string());
    separator = ", ";
  }
  journal_.add(line + ")");
}

void FakeAlert::setMessageText(const std::string& text) {
  record_->messageText = text;
  journal_.add("alert.messageText = " + onOneLine(text));
}

void FakeAlert::setInformativeText(const std::string& text) {
  record_->informativeText = text;
  journal_.add("alert.informativeText = " + onOneLine(text));
}

void FakeAlert::setAlertStyle(NS::AlertStyle style) {
  record_->style = style;
  journal_.add("alert.alertStyle = " + std::to_string(static_cast<std::uint64_t>(style)));
}

void FakeAlert::addButton(const std::string& title) {
  record_->buttons.push_back(title);
  journal_.add("alert.addButton(" + inQuotes(title) + ")");
}

NS::ModalResponse FakeAlert::runModal() {
  ++record_->timesRun;
  journal_.add("alert.runModal() begins");
  if (user_.meanwhile) {
    user_.meanwhile();
  }
  journal_.add("alert.runModal() -> " + std::to_string(user_.answer));
  return user_.answer;
}

}  // namespace audrel::fakes
