#include "tests/fakes/FakeDesktop.h"

#include <utility>

namespace audrel::fakes {
namespace {

class FakeUpdaterController final : public SPU::StandardUpdaterController {
 public:
  explicit FakeUpdaterController(Journal& journal) : journal_(journal) {}

  void checkForUpdates() override { journal_.add("updaterController.checkForUpdates()"); }

 private:
  Journal& journal_;
};

}  // namespace

/// Once invalid, the run loop lets go of it and of its block.
class FakeRunLoop::FakeTimer final : public NS::Timer {
 public:
  using Timers = std::vector<std::shared_ptr<FakeTimer>>;

  FakeTimer(Journal& journal, int number, std::function<void()> block, std::weak_ptr<Timers> timers)
      : journal_(journal), number_(number), block_(std::move(block)), timers_(std::move(timers)) {}

  std::string name() const { return "timer " + std::to_string(number_); }

  void fire() {
    if (!block_) {
      return;
    }
    journal_.add(name() + " fires");
    const auto block = block_;
    block();
  }

  void invalidate() override {
    journal_.add(name() + ".invalidate()");
    block_ = nullptr;
    if (const auto timers = timers_.lock()) {
      std::erase_if(*timers, [this](const auto& timer) { return timer.get() == this; });
    }
  }

 private:
  Journal& journal_;
  int number_;
  std::function<void()> block_;
  std::weak_ptr<Timers> timers_;
};

FakeRunLoop::FakeRunLoop(Journal& journal)
    : journal_(journal), timers_(std::make_shared<FakeTimer::Timers>()) {}

void FakeRunLoop::fire() {
  const auto due = *timers_;
  for (const auto& timer : due) {
    timer->fire();
  }
}

std::size_t FakeRunLoop::scheduled() const {
  return timers_->size();
}

std::shared_ptr<NS::Timer> FakeRunLoop::scheduleRepeatingTimer(double interval,
                                                               std::function<void()> block) {
  auto timer = std::make_shared<FakeTimer>(journal_, ++made_, std::move(block), timers_);
  journal_.add("scheduleRepeatingTimer(" + shortNumber(interval) + " s) -> " + timer->name());
  timers_->push_back(timer);
  return timer;
}

std::optional<NS::URL> FakeURLParser::urlWithString(const std::string& text) {
  journal_.add("urlWithString(" + inQuotes(text) + ") -> " + (parses ? "URL" : "nil"));
  return parses ? std::optional(NS::URL{text}) : std::nullopt;
}

std::optional<std::string> FakeUserDefaults::stringForKey(const std::string& key) {
  const auto found = values.find(key);
  const bool exists = found != values.end();
  journal_.add("stringForKey(" + inQuotes(key) + ") -> " +
               (exists ? inQuotes(found->second) : "nil"));
  return exists ? std::optional(found->second) : std::nullopt;
}

void FakeUserDefaults::setString(const std::string& value, const std::string& key) {
  journal_.add("setString(" + inQuotes(value) + ", " + inQuotes(key) + ")");
  values[key] = value;
}

void FakeUserDefaults::removeObjectForKey(const std::string& key) {
  journal_.add("removeObjectForKey(" + inQuotes(key) + ")");
  values.erase(key);
}

std::unique_ptr<SPU::StandardUpdaterController> FakeUpdateFramework::makeStandardUpdaterController(
    bool startingUpdater) {
  journal_.add(std::string("SPUStandardUpdaterController(startingUpdater ") +
               (startingUpdater ? "true" : "false") + ")");
  return std::make_unique<FakeUpdaterController>(journal_);
}

}  // namespace audrel::fakes
