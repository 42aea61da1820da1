#include "model/RecordingFormat.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <concepts>
#include <functional>
#include <string>

namespace audrel {
namespace {

using testing::ElementsAre;

static_assert(!std::totally_ordered<RecordingFormat>, "a format has no order");
static_assert(!std::is_convertible_v<std::string, RecordingFormat>, "a text may name no format");

TEST(RecordingFormat, allCasesAreM4aThenWav) {
  EXPECT_THAT(RecordingFormat::allCases(), ElementsAre(RecordingFormat::m4a, RecordingFormat::wav));
}

TEST(RecordingFormat, isMadeFromItsRawValueWhichIsTheFileExtension) {
  EXPECT_EQ(RecordingFormat::m4a.rawValue(), "m4a");
  EXPECT_EQ(RecordingFormat::wav.rawValue(), "wav");
  EXPECT_EQ(RecordingFormat::fromRawValue("m4a"), RecordingFormat::m4a);
  EXPECT_EQ(RecordingFormat::fromRawValue("wav"), RecordingFormat::wav);
  EXPECT_NE(RecordingFormat::m4a, RecordingFormat::wav);
}

TEST(RecordingFormat, noOtherTextYieldsAFormat) {
  using namespace std::string_view_literals;
  for (const auto text : {"WAV"sv, "M4A"sv, "Wav"sv, ""sv, "aac"sv, "wav "sv, ".wav"sv, "wa"sv,
                          "wav\0"sv, "m4\xC3\xA1"sv}) {
    EXPECT_EQ(RecordingFormat::fromRawValue(text), std::nullopt) << text;
  }
}

TEST(RecordingFormat, hashesLikeTheTextOfItsRawValue) {
  for (const RecordingFormat format : RecordingFormat::allCases()) {
    EXPECT_EQ(std::hash<RecordingFormat>{}(format),
              std::hash<std::string>{}(std::string(format.rawValue())));
  }
}

TEST(RecordingFormat, isEncodedAsItsRawValueAloneAndDecodesToTheSame) {
  EXPECT_EQ(RecordingFormat::m4a.encode(), "m4a");
  EXPECT_EQ(RecordingFormat::wav.encode(), "wav");
  for (const RecordingFormat format : RecordingFormat::allCases()) {
    EXPECT_EQ(RecordingFormat::decode(format.encode()), format);
  }
}

TEST(RecordingFormat, decodingATextThatNamesNoCaseFailsAndSaysSo) {
  try {
    RecordingFormat::decode("aac");
    FAIL() << "decoded";
  } catch (const InvalidRecordingFormat& error) {
    EXPECT_STREQ(error.what(),
                 "Cannot decode a recording format from the invalid raw value \"aac\".");
  }
  EXPECT_THROW(RecordingFormat::decode("WAV"), InvalidRecordingFormat);
  EXPECT_THROW(RecordingFormat::decode(""), InvalidRecordingFormat);
}

}  // namespace
}  // namespace audrel
