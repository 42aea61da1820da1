#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/Foundation.h"

/// What every platform's comparison of names keeps, whatever the user's language. An implementation
/// is a type with
///   NS::Collation& collation();
namespace audrel::contract {

template <typename Implementation>
class CollationContract : public testing::Test {
 protected:
  NS::ComparisonResult compare(const std::string& left, const std::string& right) {
    return implementation.collation().localizedCaseInsensitiveCompare(left, right);
  }

  Implementation implementation;

  const std::vector<std::string> names = {
      "",     "Music",  "music",  "MUSIC", "Firefox", "firefox beta", "Zoom", "a",   "B",
      "café", "Cafe",   "Éclair", "世界",  "1 Radio", "10 Radio",     "ß",    "ss",  "Z",
      "zoom", "Музыка", "音楽",   "_x",    "-",       "A B",          "AB",   "ab c"};
};

TYPED_TEST_SUITE_P(CollationContract);

TYPED_TEST_P(CollationContract, caseMakesNoDifference) {
  for (const char* other : {"music", "Music", "MUSIC", "mUSIC"}) {
    EXPECT_EQ(this->compare("Music", other), NS::ComparisonResult::orderedSame) << other;
  }
  EXPECT_EQ(this->compare("", ""), NS::ComparisonResult::orderedSame);
}

TYPED_TEST_P(CollationContract, namesStandInTheOrderOfTheAlphabetWhateverTheirCase) {
  using enum NS::ComparisonResult;
  EXPECT_EQ(this->compare("alpha", "Beta"), orderedAscending);
  EXPECT_EQ(this->compare("Alpha", "beta"), orderedAscending);
  EXPECT_EQ(this->compare("Beta", "alpha"), orderedDescending);
  EXPECT_EQ(this->compare("Radio", "Radio 2"), orderedAscending);
  EXPECT_EQ(this->compare("", "a"), orderedAscending);
}

TYPED_TEST_P(CollationContract, theOtherWayRoundIsTheReverseAndEveryTextTheSameAsItself) {
  for (const std::string& left : this->names) {
    for (const std::string& right : this->names) {
      EXPECT_EQ(static_cast<std::int64_t>(this->compare(left, right)),
                -static_cast<std::int64_t>(this->compare(right, left)))
          << left << ", " << right;
    }
  }
}

TYPED_TEST_P(CollationContract, namesCanBeSorted) {
  auto sorted = this->names;
  std::stable_sort(sorted.begin(), sorted.end(), [this](const auto& left, const auto& right) {
    return this->compare(left, right) == NS::ComparisonResult::orderedAscending;
  });
  for (std::size_t i = 0; i < sorted.size(); ++i) {
    for (std::size_t j = i; j < sorted.size(); ++j) {
      EXPECT_NE(this->compare(sorted[i], sorted[j]), NS::ComparisonResult::orderedDescending)
          << sorted[i] << ", " << sorted[j];
    }
  }
}

REGISTER_TYPED_TEST_SUITE_P(CollationContract, caseMakesNoDifference,
                            namesStandInTheOrderOfTheAlphabetWhateverTheirCase,
                            theOtherWayRoundIsTheReverseAndEveryTextTheSameAsItself,
                            namesCanBeSorted);

}  // namespace audrel::contract
