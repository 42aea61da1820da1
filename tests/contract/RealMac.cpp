#include "tests/contract/MacForTests.h"
#include "tests/contract/OwnDefaults.h"

namespace audrel::contract {

struct MacForTests::StandIn {};

MacForTests::MacForTests() = default;

MacForTests::~MacForTests() {
  removeOwnDefaults();
}

}  // namespace audrel::contract
