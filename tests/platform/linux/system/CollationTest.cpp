#include "platform/linux/system/Collation.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>
#include <string>
#include <vector>

namespace audrel::linuxos {
namespace {

using NS::ComparisonResult;

std::vector<std::string> sorted(const std::string& locale, std::vector<std::string> names) {
  Collation collation(locale);
  std::ranges::stable_sort(names, [&](const std::string& a, const std::string& b) {
    return collation.localizedCaseInsensitiveCompare(a, b) == ComparisonResult::orderedAscending;
  });
  return names;
}

class CollationInEveryLocale : public testing::TestWithParam<const char*> {};

TEST_P(CollationInEveryLocale, upperAndLowerCaseAreTheSame) {
  Collation collation(GetParam());
  EXPECT_EQ(collation.localizedCaseInsensitiveCompare("Music", "music"),
            ComparisonResult::orderedSame);
  EXPECT_EQ(collation.localizedCaseInsensitiveCompare("ÉCOUTE", "écoute"),
            ComparisonResult::orderedSame);
}

TEST_P(CollationInEveryLocale, accentsDistinguishButStayBesideTheirLetter) {
  EXPECT_EQ(sorted(GetParam(), {"Zeta", "Éclair", "Fox", "eclair", "Delta"}),
            (std::vector<std::string>{"Delta", "eclair", "Éclair", "Fox", "Zeta"}));
}

INSTANTIATE_TEST_SUITE_P(Locales, CollationInEveryLocale,
                         testing::Values("C", "", "POSIX", "C.UTF-8", "en_US.UTF-8", "fr_FR",
                                         "no_such_language"));

TEST(Collation, followsTheLanguage) {
  // Swedish has Ö as its last letter, German sorts it as an O.
  EXPECT_EQ(sorted("sv_SE.UTF-8", {"Ödla", "Zebra"}), (std::vector<std::string>{"Zebra", "Ödla"}));
  EXPECT_EQ(sorted("de_DE.UTF-8", {"Zebra", "Ödla"}), (std::vector<std::string>{"Ödla", "Zebra"}));
}

TEST(Collation, takesTextThatIsNotUtf8) {
  Collation collation("C");
  EXPECT_EQ(collation.localizedCaseInsensitiveCompare("a\xFF", "b"),
            ComparisonResult::orderedAscending);
  EXPECT_EQ(collation.localizedCaseInsensitiveCompare("", ""), ComparisonResult::orderedSame);
}

TEST(UserCollationLocale, isTheFirstVariableThatIsSet) {
  setenv("LANG", "de_DE.UTF-8", 1);
  unsetenv("LC_COLLATE");
  unsetenv("LC_ALL");
  EXPECT_EQ(userCollationLocale(), "de_DE.UTF-8");
  setenv("LC_COLLATE", "sv_SE.UTF-8", 1);
  EXPECT_EQ(userCollationLocale(), "sv_SE.UTF-8");
  setenv("LC_ALL", "C", 1);
  EXPECT_EQ(userCollationLocale(), "C");
  setenv("LC_ALL", "", 1);
  EXPECT_EQ(userCollationLocale(), "sv_SE.UTF-8");
  unsetenv("LC_COLLATE");
  unsetenv("LC_ALL");
  unsetenv("LANG");
  EXPECT_EQ(userCollationLocale(), "C");
}

}  // namespace
}  // namespace audrel::linuxos
