#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/Foundation.h"
#include "platform/Updater.h"
#include "tests/fakes/Journal.h"

/// The small interfaces of the desktop.
namespace audrel::fakes {

/// Its timers fire when the test says so.
class FakeRunLoop final : public NS::RunLoop {
 public:
  explicit FakeRunLoop(Journal& journal);

  /// Every timer fires once that was scheduled before and is still valid.
  void fire();

  /// Timers that were not invalidated.
  std::size_t scheduled() const;

  std::shared_ptr<NS::Timer> scheduleRepeatingTimer(double interval,
                                                    std::function<void()> block) override;

 private:
  class FakeTimer;

  Journal& journal_;
  std::shared_ptr<std::vector<std::shared_ptr<FakeTimer>>> timers_;
  int made_ = 0;
};

class FakeURLParser final : public NS::URLParser {
 public:
  explicit FakeURLParser(Journal& journal) : journal_(journal) {}

  bool parses = true;

  std::optional<NS::URL> urlWithString(const std::string& text) override;

 private:
  Journal& journal_;
};

class FakeUserDefaults final : public NS::UserDefaults {
 public:
  explicit FakeUserDefaults(Journal& journal) : journal_(journal) {}

  std::map<std::string, std::string> values;

  std::optional<std::string> stringForKey(const std::string& key) override;
  void setString(const std::string& value, const std::string& key) override;
  void removeObjectForKey(const std::string& key) override;

 private:
  Journal& journal_;
};

class FakeUpdateFramework final : public SPU::UpdateFramework {
 public:
  explicit FakeUpdateFramework(Journal& journal) : journal_(journal) {}

  std::unique_ptr<SPU::StandardUpdaterController> makeStandardUpdaterController(
      bool startingUpdater) override;

 private:
  Journal& journal_;
};

}  // namespace audrel::fakes
