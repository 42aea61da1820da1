#pragma once

#include <locale>
#include <string>

namespace audrel::fakes {

/// A user who writes "48.000,5", for a scope: C's and C++'s global locales have a decimal comma and
/// group digits by points. Throws when the machine cannot be made to; so a test in its scope knows
/// that locale-dependent output would show.
class ScopedCommaLocale {
 public:
  ScopedCommaLocale();
  ScopedCommaLocale(const ScopedCommaLocale&) = delete;
  ScopedCommaLocale& operator=(const ScopedCommaLocale&) = delete;
  ~ScopedCommaLocale();

 private:
  std::string numericBefore_;
  std::locale before_;
};

}  // namespace audrel::fakes
