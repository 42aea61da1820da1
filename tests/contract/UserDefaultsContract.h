#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "platform/Foundation.h"

/// What every platform's user defaults keep. An implementation is a type with
///   NS::UserDefaults& userDefaults();
/// It may have the defaults of whoever runs the tests: only these keys are touched, and removed.
namespace audrel::contract {

template <typename Implementation>
class UserDefaultsContract : public testing::Test {
 protected:
  UserDefaultsContract() { removeAll(); }
  ~UserDefaultsContract() override { removeAll(); }

  NS::UserDefaults& defaults() { return implementation.userDefaults(); }

  void removeAll() {
    defaults().removeObjectForKey(key);
    defaults().removeObjectForKey(otherKey);
  }

  Implementation implementation;
  const std::string key = "audrel-contract-test";
  const std::string otherKey = "audrel-contract-test-2";
};

TYPED_TEST_SUITE_P(UserDefaultsContract);

TYPED_TEST_P(UserDefaultsContract, aTextReadsBackAsItWasSet) {
  for (const char* text : {"wav", "", " two  spaces ", "\"quoted\" \\ back\\slash", "a\nb\tc",
                           "/Users/ann/Grüße, 世界 \U0001F3A7.m4a", "[group]", "key=value; #no"}) {
    this->defaults().setString(text, this->key);
    EXPECT_EQ(this->defaults().stringForKey(this->key), text);
  }
}

TYPED_TEST_P(UserDefaultsContract, aKeyThatWasRemovedOrNeverSetHasNothing) {
  EXPECT_EQ(this->defaults().stringForKey(this->key), std::nullopt);
  this->defaults().setString("wav", this->key);
  this->defaults().removeObjectForKey(this->key);
  EXPECT_EQ(this->defaults().stringForKey(this->key), std::nullopt);
  this->defaults().removeObjectForKey(this->key);
  EXPECT_EQ(this->defaults().stringForKey(this->key), std::nullopt);
}

TYPED_TEST_P(UserDefaultsContract, keysLeaveEachOtherAlone) {
  this->defaults().setString("one", this->key);
  this->defaults().setString("two", this->otherKey);
  EXPECT_EQ(this->defaults().stringForKey(this->key), "one");
  this->defaults().removeObjectForKey(this->key);
  EXPECT_EQ(this->defaults().stringForKey(this->otherKey), "two");
}

REGISTER_TYPED_TEST_SUITE_P(UserDefaultsContract, aTextReadsBackAsItWasSet,
                            aKeyThatWasRemovedOrNeverSetHasNothing, keysLeaveEachOtherAlone);

/// What defaults keep that are stored. An implementation has also
///   void forgetUserDefaults();   // the object, so that the next is a new one
template <typename Implementation>
class LastingUserDefaultsContract : public UserDefaultsContract<Implementation> {};

TYPED_TEST_SUITE_P(LastingUserDefaultsContract);

TYPED_TEST_P(LastingUserDefaultsContract, whatWasSetOutlivesTheObjectAndWhatWasRemovedStaysAway) {
  this->defaults().setString("wav", this->key);
  this->defaults().setString("m4a", this->otherKey);
  this->defaults().removeObjectForKey(this->otherKey);
  this->implementation.forgetUserDefaults();
  EXPECT_EQ(this->defaults().stringForKey(this->key), "wav");
  EXPECT_EQ(this->defaults().stringForKey(this->otherKey), std::nullopt);
}

REGISTER_TYPED_TEST_SUITE_P(LastingUserDefaultsContract,
                            whatWasSetOutlivesTheObjectAndWhatWasRemovedStaysAway);

}  // namespace audrel::contract
