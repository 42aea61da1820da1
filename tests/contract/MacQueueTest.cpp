#include "platform/macos/Dispatch.h"
#include "tests/contract/EngineLifetimeContract.h"
#include "tests/contract/MacForTests.h"
#include "tests/contract/QueueContract.h"

namespace audrel::contract {
namespace {

class MacQueues {
 public:
  dispatch::Dispatch& dispatch() { return dispatch_; }
  void letRun(dispatch::Queue&) {}

 private:
  MacForTests mac_;
  macos::Dispatch dispatch_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Mac, QueueContract, MacQueues);
INSTANTIATE_TYPED_TEST_SUITE_P(Mac, EngineLifetimeContract, MacQueues);

}  // namespace
}  // namespace audrel::contract
