#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <optional>
#include <set>
#include <string>

#include "platform/AppKit.h"
#include "platform/Diagnostics.h"
#include "platform/Foundation.h"

/// What every platform keeps in its smallest interfaces. An implementation is a type with
///   NS::URLParser& urlParser();
///   NS::UUIDFactory& uuids();
///   NS::RunningApplications& runningApplications();
namespace audrel::contract {

template <typename Implementation>
class SystemContract : public testing::Test {
 protected:
  Implementation implementation;
};

TYPED_TEST_SUITE_P(SystemContract);

// Which texts are no URL, each system says for itself.
TYPED_TEST_P(SystemContract, theTextOfAURLStaysAsItIs) {
  for (const char* text :
       {"x-apple.systempreferences:com.apple.preference.security?Privacy_ScreenCapture",
        "https://example.org/a%20b?c=d#e", "https://example.org"}) {
    EXPECT_EQ(this->implementation.urlParser().urlWithString(text), NS::URL{text}) << text;
  }
}

TYPED_TEST_P(SystemContract, aUUIDIsUpperCaseHexadecimalWithHyphens) {
  const std::string text = this->implementation.uuids().uuidString();
  const std::string shape = "HHHHHHHH-HHHH-HHHH-HHHH-HHHHHHHHHHHH";
  ASSERT_EQ(text.size(), shape.size());
  for (std::size_t i = 0; i < shape.size(); ++i) {
    const std::string allowed = shape[i] == '-' ? "-" : "0123456789ABCDEF";
    EXPECT_NE(allowed.find(text[i]), std::string::npos) << text;
  }
}

TYPED_TEST_P(SystemContract, noUUIDComesTwice) {
  std::set<std::string> made;
  for (int i = 0; i < 1000; ++i) {
    EXPECT_TRUE(made.insert(this->implementation.uuids().uuidString()).second);
  }
}

TYPED_TEST_P(SystemContract, noApplicationHasANumberThatIsNoProcess) {
  for (const pid_t none : {-1, 0}) {
    EXPECT_EQ(this->implementation.runningApplications().runningApplication(none), std::nullopt);
  }
}

REGISTER_TYPED_TEST_SUITE_P(SystemContract, theTextOfAURLStaysAsItIs,
                            aUUIDIsUpperCaseHexadecimalWithHyphens, noUUIDComesTwice,
                            noApplicationHasANumberThatIsNoProcess);

/// What a system tells by itself. An implementation is a type with
///   NS::Clock& clock();
///   capture::Diagnostics& diagnostics();   // before anything was captured
template <typename Implementation>
class RealSystemContract : public SystemContract<Implementation> {};

TYPED_TEST_SUITE_P(RealSystemContract);

// A system that sets its clock within these microseconds would have to be very unlucky.
TYPED_TEST_P(RealSystemContract, itsClockTellsTheTimeOfDay) {
  const NS::Date before = std::chrono::system_clock::now();
  const NS::Date now = this->implementation.clock().now();
  EXPECT_LE(before, now);
  EXPECT_LE(now, std::chrono::system_clock::now());
}

TYPED_TEST_P(RealSystemContract, thereIsNothingToSayBeforeAnythingFailedAndNothingLost) {
  EXPECT_EQ(this->implementation.diagnostics().diagnosis(), std::nullopt);
  EXPECT_EQ(this->implementation.diagnostics().lostFrames(), 0U);
}

REGISTER_TYPED_TEST_SUITE_P(RealSystemContract, itsClockTellsTheTimeOfDay,
                            thereIsNothingToSayBeforeAnythingFailedAndNothingLost);

}  // namespace audrel::contract
