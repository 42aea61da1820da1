#include "model/RecordingFormat.h"

#include <concepts>

namespace audrel {

static_assert(!std::totally_ordered<RecordingFormat>);

std::optional<RecordingFormat> RecordingFormat::fromRawValue(std::string_view rawValue) {
  for (const RecordingFormat format : allCases()) {
    if (format.rawValue() == rawValue) {
      return format;
    }
  }
  return std::nullopt;
}

std::string RecordingFormat::encode() const {
  return std::string(rawValue());
}

RecordingFormat RecordingFormat::decode(std::string_view text) {
  if (const auto format = fromRawValue(text)) {
    return *format;
  }
  throw InvalidRecordingFormat(text);
}

InvalidRecordingFormat::InvalidRecordingFormat(std::string_view text)
    : std::runtime_error("Cannot decode a recording format from the invalid raw value \"" +
                         std::string(text) + "\".") {}

}  // namespace audrel
