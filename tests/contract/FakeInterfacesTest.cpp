#include "tests/contract/AudioBufferContract.h"
#include "tests/contract/AudioFormatContract.h"
#include "tests/contract/CollationContract.h"
#include "tests/contract/LogContract.h"
#include "tests/contract/SystemContract.h"
#include "tests/contract/TimerContract.h"
#include "tests/contract/UserDefaultsContract.h"
#include "tests/fakes/FakeDesktop.h"
#include "tests/fakes/World.h"

namespace audrel::contract {
namespace {

/// What the fakes do by themselves. Not here is what they are told to answer: the files that there
/// are, whether one opens, the time, what was lost; and their defaults live as long as the object.
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(RealSystemContract);
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(LastingUserDefaultsContract);

class FakeInterfaces {
 public:
  AV::AudioFramework& audioFramework() { return world_.audio; }
  NS::Collation& collation() { return world_.collation; }
  os::Log& log() { return world_.log; }
  NS::RunLoop& runLoop() { return runLoop_; }
  void letRunLoopRun() { runLoop_.fire(); }
  NS::RunningApplications& runningApplications() { return world_.runningApplications; }
  NS::URLParser& urlParser() { return urlParser_; }
  NS::UUIDFactory& uuids() { return world_.uuids; }
  NS::UserDefaults& userDefaults() { return userDefaults_; }

 private:
  fakes::World world_;
  fakes::FakeRunLoop runLoop_{world_.journal};
  fakes::FakeURLParser urlParser_{world_.journal};
  fakes::FakeUserDefaults userDefaults_{world_.journal};
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fakes, AudioBufferContract, FakeInterfaces);
INSTANTIATE_TYPED_TEST_SUITE_P(Fakes, AudioFormatContract, FakeInterfaces);
INSTANTIATE_TYPED_TEST_SUITE_P(Fakes, CollationContract, FakeInterfaces);
INSTANTIATE_TYPED_TEST_SUITE_P(Fakes, LogContract, FakeInterfaces);
INSTANTIATE_TYPED_TEST_SUITE_P(Fakes, SystemContract, FakeInterfaces);
INSTANTIATE_TYPED_TEST_SUITE_P(Fakes, TimerContract, FakeInterfaces);
INSTANTIATE_TYPED_TEST_SUITE_P(Fakes, UserDefaultsContract, FakeInterfaces);

}  // namespace
}  // namespace audrel::contract
