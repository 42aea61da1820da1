#include "model/RecordingSource.h"

#include <gtest/gtest.h>

#include <concepts>
#include <functional>
#include <optional>
#include <type_traits>

namespace audrel {
namespace {

static_assert(!std::totally_ordered<RecordingSource>, "a source has no order");
static_assert(!std::is_default_constructible_v<std::hash<RecordingSource>>, "nor a hash");
static_assert(!std::is_default_constructible_v<RecordingSource>, "a source is always chosen");

const auto radio = RecordingSource::process(7, "Radio", std::nullopt);

TEST(RecordingSource, processesAreEqualWhenIdNameAndBundleIdentifierAre) {
  const auto identified = RecordingSource::process(7, "Radio", "x");
  EXPECT_EQ(radio, radio);
  EXPECT_EQ(radio, RecordingSource::process(7, "Radio", std::nullopt));
  EXPECT_EQ(identified, RecordingSource::process(7, "Radio", "x"));
  EXPECT_NE(radio, RecordingSource::process(8, "Radio", std::nullopt));
  EXPECT_NE(radio, RecordingSource::process(7, "radio", std::nullopt));
  EXPECT_NE(identified, RecordingSource::process(7, "Radio", "X"));
}

TEST(RecordingSource, aBundleIdentifierOnOneSideOnlyMakesProcessesUnequal) {
  EXPECT_NE(radio, RecordingSource::process(7, "Radio", "x"));
  EXPECT_NE(radio, RecordingSource::process(7, "Radio", ""));
  EXPECT_NE(RecordingSource::process(7, "Radio", "x"), radio);
}

TEST(RecordingSource, allSystemAudioEqualsItselfAndNoProcess) {
  EXPECT_EQ(RecordingSource::allSystemAudio(), RecordingSource::allSystemAudio());
  EXPECT_NE(RecordingSource::allSystemAudio(), radio);
  EXPECT_NE(RecordingSource::allSystemAudio(), RecordingSource::process(0, "", std::nullopt));
  EXPECT_EQ(RecordingSource::allSystemAudio().asProcess(), nullptr);
}

TEST(RecordingSource, aProcessKeepsWhatItWasMadeOf) {
  const auto source = RecordingSource::process(4'294'967'295, "Näme", "org.example.x");
  ASSERT_NE(source.asProcess(), nullptr);
  EXPECT_EQ(source.asProcess()->id, 4'294'967'295);
  EXPECT_EQ(source.asProcess()->name, "Näme");
  EXPECT_EQ(source.asProcess()->bundleID, "org.example.x");
}

}  // namespace
}  // namespace audrel
