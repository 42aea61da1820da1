#pragma once

#include <gtest/gtest.h>

#include <chrono>

#include "platform/Foundation.h"

/// What every platform's clock keeps. An implementation is a type with
///   NS::Clock& clock();
namespace audrel::contract {

template <typename Implementation>
class ClockContract : public testing::Test {
 protected:
  Implementation implementation;
};

TYPED_TEST_SUITE_P(ClockContract);

// A system that sets its clock within these microseconds would have to be very unlucky.
TYPED_TEST_P(ClockContract, itTellsTheTimeOfDay) {
  const NS::Date before = std::chrono::system_clock::now();
  const NS::Date now = this->implementation.clock().now();
  EXPECT_LE(before, now);
  EXPECT_LE(now, std::chrono::system_clock::now());
}

REGISTER_TYPED_TEST_SUITE_P(ClockContract, itTellsTheTimeOfDay);

}  // namespace audrel::contract
