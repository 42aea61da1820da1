#include "tests/contract/MacForTests.h"

namespace audrel::contract {

struct MacForTests::StandIn {};

MacForTests::MacForTests() = default;
MacForTests::~MacForTests() = default;

}  // namespace audrel::contract
