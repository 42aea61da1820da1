#include "tests/macos/frameworks/FakeMac.h"

#include <algorithm>
#include <memory>

namespace audrel::fakemac {
namespace {

std::unique_ptr<Mac>& current() {
  static std::unique_ptr<Mac> mac;
  return mac;
}

}  // namespace

Mac::~Mac() {
  takeJournal();
}

void Mac::note(const std::string& line) {
  auto noted = std::make_unique<Line>(line, last_.load(std::memory_order_relaxed));
  while (!last_.compare_exchange_weak(noted->previous, noted.get(), std::memory_order_release,
                                      std::memory_order_relaxed)) {
  }
  noted.release();
}

std::vector<std::string> Mac::takeJournal() {
  std::vector<std::string> lines;
  std::unique_ptr<Line> line(last_.exchange(nullptr, std::memory_order_acquire));
  while (line) {
    lines.push_back(std::move(line->text));
    line.reset(line->previous);
  }
  std::reverse(lines.begin(), lines.end());
  return lines;
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
