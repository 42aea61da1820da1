#include "platform/linux/system/Dispatch.h"
#include "tests/contract/EngineLifetimeContract.h"
#include "tests/contract/QueueContract.h"

namespace audrel::contract {
namespace {

class LinuxQueues {
 public:
  dispatch::Dispatch& dispatch() { return dispatch_; }
  void letRun(dispatch::Queue&) {}

 private:
  linuxos::Dispatch dispatch_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Linux, QueueContract, LinuxQueues);
INSTANTIATE_TYPED_TEST_SUITE_P(Linux, EngineLifetimeContract, LinuxQueues);

}  // namespace
}  // namespace audrel::contract
