#include "platform/linux/system/Collation.h"

#include <unicode/coll.h>
#include <unicode/locid.h>
#include <unicode/stringpiece.h>

#include <utility>

#include "platform/linux/system/Environment.h"

namespace audrel::linuxos {

namespace {

icu::Locale icuLocale(const std::string& posixName) {
  const auto language = posixName.substr(0, posixName.find('.'));
  if (language.empty() || language == "C" || language == "POSIX") {
    return icu::Locale::getRoot();
  }
  return icu::Locale::createCanonical(posixName.c_str());
}

NS::ComparisonResult result(int order) {
  if (order < 0) {
    return NS::ComparisonResult::orderedAscending;
  }
  return order > 0 ? NS::ComparisonResult::orderedDescending : NS::ComparisonResult::orderedSame;
}

}  // namespace

class Collation::Collator {
 public:
  explicit Collator(const std::string& posixName) {
    UErrorCode status = U_ZERO_ERROR;
    icu_.reset(icu::Collator::createInstance(icuLocale(posixName), status));
    if (U_FAILURE(status)) {
      icu_.reset();
      return;
    }
    icu_->setStrength(icu::Collator::SECONDARY);
  }

  /// By bytes when ICU's data is not installed.
  int compare(std::string_view left, std::string_view right) const {
    if (icu_ == nullptr) {
      return left.compare(right);
    }
    UErrorCode status = U_ZERO_ERROR;
    return icu_->compareUTF8(icu::StringPiece(left.data(), static_cast<int>(left.size())),
                             icu::StringPiece(right.data(), static_cast<int>(right.size())),
                             status);
  }

 private:
  std::unique_ptr<icu::Collator> icu_;
};

Collation::Collation(std::string locale) : locale_(std::move(locale)) {}

Collation::~Collation() = default;

NS::ComparisonResult Collation::localizedCaseInsensitiveCompare(std::string_view left,
                                                                std::string_view right) {
  if (collator_ == nullptr) {
    collator_ = std::make_unique<Collator>(locale_);
  }
  return result(collator_->compare(left, right));
}

std::string userCollationLocale() {
  for (const char* name : {"LC_ALL", "LC_COLLATE", "LANG"}) {
    if (const auto value = environmentVariable(name); value.has_value()) {
      return *value;
    }
  }
  return "C";
}

}  // namespace audrel::linuxos
