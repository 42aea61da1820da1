#pragma once

#include <memory>

namespace audrel::contract {

/// The Mac under the adapters: that which the tests run on, or what tests/macos has for one.
class MacForTests {
 public:
  MacForTests();
  ~MacForTests();
  MacForTests(const MacForTests&) = delete;
  MacForTests& operator=(const MacForTests&) = delete;

 private:
  struct StandIn;

  std::unique_ptr<StandIn> standIn_;
};

}  // namespace audrel::contract
