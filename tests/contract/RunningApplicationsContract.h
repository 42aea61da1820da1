#pragma once

#include <gtest/gtest.h>

#include <optional>

#include "platform/AppKit.h"

/// What every platform tells of applications. An implementation is a type with
///   NS::RunningApplications& runningApplications();
namespace audrel::contract {

template <typename Implementation>
class RunningApplicationsContract : public testing::Test {
 protected:
  Implementation implementation;
};

TYPED_TEST_SUITE_P(RunningApplicationsContract);

TYPED_TEST_P(RunningApplicationsContract, noApplicationHasANumberThatIsNoProcess) {
  for (const pid_t none : {-1, 0}) {
    EXPECT_EQ(this->implementation.runningApplications().runningApplication(none), std::nullopt);
  }
}

REGISTER_TYPED_TEST_SUITE_P(RunningApplicationsContract, noApplicationHasANumberThatIsNoProcess);

}  // namespace audrel::contract
