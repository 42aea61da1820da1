#include "model/Preferences.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <string>

#include "tests/fakes/FakeDesktop.h"
#include "tests/fakes/FakeSystem.h"

namespace audrel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Values = std::map<std::string, std::string>;

class PreferencesTest : public testing::Test {
 protected:
  const std::filesystem::path file = "/home/listener/My Recordings/audio 1.m4a";

  fakes::Journal journal;
  fakes::FakeUserDefaults defaults{journal};
  fakes::FakeFileManager fileManager{journal};
  Preferences preferences{defaults, fileManager};
};

TEST_F(PreferencesTest, formatIsTheStoredOneAndM4AWhenNothingIsStored) {
  EXPECT_THAT(journal.lines(), IsEmpty());
  EXPECT_EQ(preferences.format(), RecordingFormat::m4a);
  EXPECT_THAT(journal.lines(), ElementsAre("stringForKey(\"format\") -> nil"));
  defaults.values = {{"format", "wav"}};
  EXPECT_EQ(preferences.format(), RecordingFormat::wav);
  defaults.values = {{"format", "m4a"}};
  EXPECT_EQ(preferences.format(), RecordingFormat::m4a);
}

TEST_F(PreferencesTest, formatThatNamesNoneIsM4AAndIsNotCorrectedInTheStore) {
  for (const char* text : {"WAV", "M4A", "", "aac", "wav "}) {
    defaults.values = {{"format", text}};
    EXPECT_EQ(preferences.format(), RecordingFormat::m4a) << text;
    EXPECT_EQ(defaults.values, (Values{{"format", text}}));
  }
}

TEST_F(PreferencesTest, formatIsStoredAsItsRawValue) {
  preferences.setFormat(RecordingFormat::wav);
  EXPECT_EQ(defaults.values, (Values{{"format", "wav"}}));
  preferences.setFormat(RecordingFormat::m4a);
  EXPECT_EQ(defaults.values, (Values{{"format", "m4a"}}));
}

TEST_F(PreferencesTest, lastRecordingIsNothingWhenNoneIsStoredAndNoFileIsAskedFor) {
  EXPECT_EQ(preferences.lastRecordingURL(), std::nullopt);
  EXPECT_THAT(journal.lines(), ElementsAre("stringForKey(\"lastRecordingPath\") -> nil"));
}

TEST_F(PreferencesTest, lastRecordingIsStoredAsAPlainPathAndReadBackWhileItsFileExists) {
  preferences.setLastRecordingURL(file);
  EXPECT_EQ(defaults.values,
            (Values{{"lastRecordingPath", "/home/listener/My Recordings/audio 1.m4a"}}));
  fileManager.existing = {file};
  EXPECT_EQ(preferences.lastRecordingURL(), file);
}

TEST_F(PreferencesTest, lastRecordingWhoseFileIsGoneIsNothingWhileTheKeyKeepsThePath) {
  preferences.setLastRecordingURL(file);
  EXPECT_EQ(preferences.lastRecordingURL(), std::nullopt);
  EXPECT_EQ(defaults.values, (Values{{"lastRecordingPath", file.string()}}));
}

TEST_F(PreferencesTest, lastRecordingThatIsALinkToNowhereIsNothing) {
  preferences.setLastRecordingURL(file);
  fileManager.danglingLinks = {file};
  EXPECT_EQ(preferences.lastRecordingURL(), std::nullopt);
}

TEST_F(PreferencesTest, absentLastRecordingRemovesTheKey) {
  preferences.setLastRecordingURL(file);
  preferences.setLastRecordingURL(std::nullopt);
  EXPECT_THAT(defaults.values, IsEmpty());
}

TEST_F(PreferencesTest, hintIsStoredUnderTwoKeysAndWithoutABundleIdentifierRemovesItsKey) {
  preferences.setLastSourceHint(Preferences::SourceHint{"org.example.radio", "Web Radio"});
  EXPECT_EQ(defaults.values,
            (Values{{"sourceBundleID", "org.example.radio"}, {"sourceName", "Web Radio"}}));
  preferences.setLastSourceHint(Preferences::SourceHint{std::nullopt, "game"});
  EXPECT_EQ(defaults.values, (Values{{"sourceName", "game"}}));
}

TEST_F(PreferencesTest, absentHintRemovesBothKeysAndNoOther) {
  defaults.values = {{"sourceBundleID", "a"}, {"sourceName", "b"}, {"format", "wav"}};
  preferences.setLastSourceHint(std::nullopt);
  EXPECT_EQ(defaults.values, (Values{{"format", "wav"}}));
}

TEST_F(PreferencesTest, nothingIsCached) {
  defaults.values = {{"format", "wav"}, {"lastRecordingPath", "/a"}};
  fileManager.existing = {"/a", "/b"};
  EXPECT_EQ(preferences.format(), RecordingFormat::wav);
  EXPECT_EQ(preferences.lastRecordingURL(), "/a");
  defaults.values = {{"lastRecordingPath", "/b"}};
  EXPECT_EQ(preferences.format(), RecordingFormat::m4a);
  EXPECT_EQ(preferences.lastRecordingURL(), "/b");
}

template <typename Store>
concept HasAHintToRead = requires(const Store& store) { store.lastSourceHint(); };

static_assert(!HasAHintToRead<Preferences>, "the hint is written and never read");

}  // namespace
}  // namespace audrel
