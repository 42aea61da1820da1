#pragma once

#include <gtest/gtest.h>

#include <optional>

#include "platform/Diagnostics.h"

/// What every platform tells of capturing before anything was captured. An implementation is a type
/// with
///   capture::Diagnostics& diagnostics();
namespace audrel::contract {

template <typename Implementation>
class DiagnosticsContract : public testing::Test {
 protected:
  Implementation implementation;
};

TYPED_TEST_SUITE_P(DiagnosticsContract);

TYPED_TEST_P(DiagnosticsContract, thereIsNothingToSayBeforeAnythingFailed) {
  EXPECT_EQ(this->implementation.diagnostics().diagnosis(), std::nullopt);
}

TYPED_TEST_P(DiagnosticsContract, noFramesAreLostBeforeAnyDeviceRan) {
  EXPECT_EQ(this->implementation.diagnostics().lostFrames(), 0U);
}

REGISTER_TYPED_TEST_SUITE_P(DiagnosticsContract, thereIsNothingToSayBeforeAnythingFailed,
                            noFramesAreLostBeforeAnyDeviceRan);

}  // namespace audrel::contract
