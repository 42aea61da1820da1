#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/Foundation.h"

namespace audrel::linuxos {

/// Compares by ICU's collation rules for a locale, up to letters and accents: "a" and "A" are the
/// same, "e" and "é" are not. The C library's own comparison tells upper from lower case, and in
/// the locale "C", where many programs run, it puts every accented letter behind z; ICU has an
/// order for all languages.
///
/// One thread at a time.
class Collation final : public NS::Collation {
 public:
  /// `locale` as POSIX names it ("de_DE.UTF-8"); "C" and unknown ones get the order for all
  /// languages. ICU's tables are loaded by the first comparison.
  explicit Collation(std::string locale);
  ~Collation() override;

  NS::ComparisonResult localizedCaseInsensitiveCompare(std::string_view left,
                                                       std::string_view right) override;

 private:
  class Collator;

  const std::string locale_;
  std::unique_ptr<Collator> collator_;
};

/// The locale that the environment asks for: LC_ALL, LC_COLLATE or LANG, the first that is set.
std::string userCollationLocale();

}  // namespace audrel::linuxos
