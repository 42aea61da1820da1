#pragma once

#include <gtest/gtest.h>

#include "platform/Foundation.h"

/// What every platform's URLs keep. An implementation is a type with
///   NS::URLParser& urlParser();
/// Which texts are no URL, each system says for itself.
namespace audrel::contract {

template <typename Implementation>
class URLContract : public testing::Test {
 protected:
  Implementation implementation;
};

TYPED_TEST_SUITE_P(URLContract);

TYPED_TEST_P(URLContract, theTextOfAURLStaysAsItIs) {
  for (const char* text :
       {"x-apple.systempreferences:com.apple.preference.security?Privacy_ScreenCapture",
        "https://example.org/a%20b?c=d#e", "https://example.org"}) {
    EXPECT_EQ(this->implementation.urlParser().urlWithString(text), NS::URL{text}) << text;
  }
}

REGISTER_TYPED_TEST_SUITE_P(URLContract, theTextOfAURLStaysAsItIs);

}  // namespace audrel::contract
