#include "tests/macos/frameworks/FakeMac.h"

#include <memory>
#include <utility>

namespace audrel::fakemac {
namespace {

std::unique_ptr<Mac>& current() {
  static std::unique_ptr<Mac> mac;
  return mac;
}

}  // namespace

void Mac::note(const std::string& line) {
  const std::lock_guard lock(mutex_);
  journal_.push_back(line);
}

void Mac::noteDetail(const std::string& line) {
  if (tellsAll) {
    note(line);
  }
}

std::vector<std::string> Mac::takeJournal() {
  const std::lock_guard lock(mutex_);
  return std::exchange(journal_, {});
}

std::int32_t Mac::statusOf(const std::string& call) const {
  const auto found = failing.find(call);
  return found == failing.end() ? 0 : found->second;
}

Mac& mac() {
  return *current();
}

ScopedMac::ScopedMac() {
  current() = std::make_unique<Mac>();
}

ScopedMac::~ScopedMac() {
  waitForQueues();
  current().reset();
}

}  // namespace audrel::fakemac
