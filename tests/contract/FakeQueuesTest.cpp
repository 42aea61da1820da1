#include "tests/contract/EngineLifetimeContract.h"
#include "tests/contract/QueueContract.h"
#include "tests/fakes/Journal.h"
#include "tests/fakes/ManualQueue.h"
#include "tests/fakes/ThreadQueue.h"

namespace audrel::contract {
namespace {

class ManualQueues {
 public:
  dispatch::Dispatch& dispatch() { return dispatch_; }
  void letRun(dispatch::Queue& queue) { static_cast<fakes::ManualQueue&>(queue).runAll(); }

 private:
  /// Keeps no reference to its queues, unlike the one of the scripted world.
  class Dispatch final : public dispatch::Dispatch {
   public:
    std::shared_ptr<dispatch::Queue> makeQueue(const std::string& /*label*/,
                                               dispatch::QualityOfService /*qos*/) override {
      return std::make_shared<fakes::ManualQueue>(journal_);
    }

   private:
    fakes::Journal journal_;
  };

  Dispatch dispatch_;
};

class ThreadQueues {
 public:
  dispatch::Dispatch& dispatch() { return dispatch_; }
  void letRun(dispatch::Queue&) {}

 private:
  fakes::ThreadDispatch dispatch_;
};

using Fakes = testing::Types<ManualQueues, ThreadQueues>;
INSTANTIATE_TYPED_TEST_SUITE_P(Fakes, QueueContract, Fakes);
INSTANTIATE_TYPED_TEST_SUITE_P(Fakes, EngineLifetimeContract, Fakes);

}  // namespace
}  // namespace audrel::contract
