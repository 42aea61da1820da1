#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <set>
#include <string>

#include "platform/Foundation.h"

/// What every platform's UUIDs keep. An implementation is a type with
///   NS::UUIDFactory& uuids();
namespace audrel::contract {

template <typename Implementation>
class UUIDContract : public testing::Test {
 protected:
  Implementation implementation;
};

TYPED_TEST_SUITE_P(UUIDContract);

TYPED_TEST_P(UUIDContract, theTextIsUpperCaseHexadecimalWithHyphens) {
  const std::string text = this->implementation.uuids().uuidString();
  const std::string shape = "HHHHHHHH-HHHH-HHHH-HHHH-HHHHHHHHHHHH";
  ASSERT_EQ(text.size(), shape.size());
  for (std::size_t i = 0; i < shape.size(); ++i) {
    const std::string allowed = shape[i] == '-' ? "-" : "0123456789ABCDEF";
    EXPECT_NE(allowed.find(text[i]), std::string::npos) << text;
  }
}

TYPED_TEST_P(UUIDContract, noneComesTwice) {
  std::set<std::string> made;
  for (int i = 0; i < 1000; ++i) {
    EXPECT_TRUE(made.insert(this->implementation.uuids().uuidString()).second);
  }
}

REGISTER_TYPED_TEST_SUITE_P(UUIDContract, theTextIsUpperCaseHexadecimalWithHyphens, noneComesTwice);

}  // namespace audrel::contract
