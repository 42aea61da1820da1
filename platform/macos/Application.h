#pragma once

#include "platform/AppKit.h"

namespace audrel::macos {

class Application final : public NS::Application {
 public:
  Application();
  ~Application() override;
  Application(const Application&) = delete;
  Application& operator=(const Application&) = delete;

  void setActivationPolicy(NS::ActivationPolicy policy) override;
  void setDelegate(const std::weak_ptr<NS::ApplicationDelegate>& delegate) override;

  /// SIGTERM, SIGINT and SIGHUP end the application as `terminate` does.
  void run() override;

  /// Does not return: the process ends in it.
  void terminate() override;

 private:
  /// AppKit refers to its delegate weakly, so this is what keeps it.
  struct Delegate;
  std::unique_ptr<Delegate> delegate_;
};

}  // namespace audrel::macos
