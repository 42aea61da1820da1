#pragma once

#include "platform/AppKit.h"

namespace audrel::macos {

class Workspace final : public NS::Workspace {
 public:
  bool openURL(const NS::URL& url) override;
  void activateFileViewerSelecting(const std::vector<std::filesystem::path>& files) override;
};

class RunningApplications final : public NS::RunningApplications {
 public:
  std::optional<NS::RunningApplication> runningApplication(pid_t processIdentifier) override;
};

}  // namespace audrel::macos
