#include "tests/contract/MacForTests.h"
#include "tests/macos/frameworks/FakeMac.h"

namespace audrel::contract {

struct MacForTests::StandIn {
  StandIn() { fakemac::mac().hasDisk = true; }

  fakemac::ScopedMac mac;
};

MacForTests::MacForTests() : standIn_(std::make_unique<StandIn>()) {}
MacForTests::~MacForTests() = default;

}  // namespace audrel::contract
