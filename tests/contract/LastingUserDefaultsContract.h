#pragma once

#include <gtest/gtest.h>

#include <optional>

#include "tests/contract/UserDefaultsContract.h"

/// What user defaults keep that are stored. An implementation is one of `UserDefaultsContract`,
/// with
///   void forgetUserDefaults();   // the object, so that the next is a new one
namespace audrel::contract {

template <typename Implementation>
class LastingUserDefaultsContract : public UserDefaultsContract<Implementation> {};

TYPED_TEST_SUITE_P(LastingUserDefaultsContract);

TYPED_TEST_P(LastingUserDefaultsContract, whatWasSetOutlivesTheObject) {
  this->defaults().setString("wav", this->key);
  this->implementation.forgetUserDefaults();
  EXPECT_EQ(this->defaults().stringForKey(this->key), "wav");
}

TYPED_TEST_P(LastingUserDefaultsContract, whatWasRemovedStaysAway) {
  this->defaults().setString("wav", this->key);
  this->defaults().removeObjectForKey(this->key);
  this->implementation.forgetUserDefaults();
  EXPECT_EQ(this->defaults().stringForKey(this->key), std::nullopt);
}

REGISTER_TYPED_TEST_SUITE_P(LastingUserDefaultsContract, whatWasSetOutlivesTheObject,
                            whatWasRemovedStaysAway);

}  // namespace audrel::contract
