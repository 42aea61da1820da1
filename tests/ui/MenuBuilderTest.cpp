#include "ui/MenuBuilder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>

#include "tests/fakes/DesktopWorld.h"

namespace audrel {
namespace {

using fakes::MenuContents;
using testing::ElementsAre;
using testing::IsEmpty;

static_assert(!std::is_default_constructible_v<MenuBuilder>, "a namespace has no instances");
static_assert(!std::is_default_constructible_v<MenuBuilder::Action>, "a table has no instances");

const auto everything = RecordingSource::allSystemAudio();
const auto music = RecordingSource::process(70, "Music", "org.example.music");
const auto radio = RecordingSource::process(71, "Web Radio", "org.example.radio");
const auto game = RecordingSource::process(72, "game", std::nullopt);

struct SomeTarget final : NS::Target {
  void perform(const NS::Selector& /*selector*/,
               const std::shared_ptr<NS::MenuItem>& /*sender*/) override {}
};

/// What docs/transcripts/app-menus.txt does not show: item by item, the menus stand there.
class MenuBuilderTest : public testing::Test {
 protected:
  MenuContents idle(const MenuBuilder::State& state) {
    return filled(MenuBuilder::populateIdleMenu, state);
  }
  MenuContents recording(const MenuBuilder::State& state) {
    return filled(MenuBuilder::populateRecordingMenu, state);
  }

  fakes::DesktopWorld world;
  std::shared_ptr<SomeTarget> target = std::make_shared<SomeTarget>();

 private:
  template <typename Populate>
  MenuContents filled(Populate populate, const MenuBuilder::State& state) {
    const auto menu = world.appKit.makeMenu();
    populate(world.appKit, *menu, state, target);
    return dynamic_cast<const fakes::FakeMenu&>(*menu).contents();
  }
};

constexpr const char* m4a = "M4A (AAC 256 kbps)";

TEST(MenuBuilderState, hasItsFieldsInOrder) {
  const auto [isRecording, source, format, processes, elapsed, lastRecordingAvailable] =
      MenuBuilder::State{true, music, RecordingFormat::wav, {radio, game}, 7.5, true};
  static_assert(std::is_same_v<decltype(elapsed), const double>);
  EXPECT_TRUE(isRecording);
  EXPECT_EQ(source, music);
  EXPECT_EQ(format, RecordingFormat::wav);
  EXPECT_EQ(processes, (std::vector{radio, game}));
  EXPECT_EQ(elapsed, 7.5);
  EXPECT_TRUE(lastRecordingAvailable);
}

TEST_F(MenuBuilderTest, changesNothingOfTheMenuButItsItems) {
  EXPECT_TRUE(idle({}).autoenablesItems);
  EXPECT_EQ(idle({}).delegate, nullptr);
  EXPECT_TRUE(recording({}).autoenablesItems);
  EXPECT_EQ(recording({}).delegate, nullptr);
}

TEST_F(MenuBuilderTest, everyActionGoesToTheTarget) {
  for (const MenuContents& menu : {idle({.processes = {music}}), recording({})}) {
    fakes::forEachItem(menu, [this](const fakes::ItemContents& item) {
      EXPECT_EQ(item.target, item.action ? target.get() : nullptr) << item.title;
    });
  }
}

TEST_F(MenuBuilderTest, idleMenuIsTheSameWhateverTheElapsedTime) {
  EXPECT_EQ(shown(idle({.elapsed = 3601})), shown(idle({})));
}

TEST_F(MenuBuilderTest, recordingMenuOffersNoSourceAndNoFormat) {
  const MenuBuilder::State all{true, music, RecordingFormat::wav, {music}, 12, true};
  const MenuBuilder::State least{true, music, RecordingFormat::m4a, {}, 0, true};
  EXPECT_EQ(shown(recording(all)), shown(recording(least)));
}

TEST_F(MenuBuilderTest, processesStandInTheOrderOfTheList) {
  EXPECT_THAT(applicationsIn(idle({.processes = {game, radio, music}})),
              ElementsAre("game", "Web Radio", "Music"));
}

TEST_F(MenuBuilderTest, twoProcessesNamedAlikeBothCarryTheCheckmarkOfOne) {
  const auto first = RecordingSource::process(80, "Twin", "org.example.a");
  const auto second = RecordingSource::process(81, "Twin", "org.example.b");
  EXPECT_THAT(markedIn(idle({.source = first, .processes = {first, second, music}})),
              ElementsAre("Twin", "Twin", m4a));
}

TEST_F(MenuBuilderTest, checkmarkGoesByNameAlsoWhenTheObjectIsAnother) {
  const auto cameBack = RecordingSource::process(99, "Music", std::nullopt);
  EXPECT_THAT(markedIn(idle({.source = music, .processes = {cameBack}})),
              ElementsAre("Music", m4a));
}

TEST_F(MenuBuilderTest, checkmarkGoesByTheWholeNameAndItsCase) {
  const auto lower = RecordingSource::process(90, "music", std::nullopt);
  const auto longer = RecordingSource::process(91, "Music ", std::nullopt);
  EXPECT_THAT(markedIn(idle({.source = music, .processes = {lower, longer}})), ElementsAre(m4a));
}

TEST_F(MenuBuilderTest, noItemIsMarkedWhenTheSelectedProcessHasLeftNotEvenAllSystemAudio) {
  EXPECT_THAT(markedIn(idle({.source = music, .processes = {radio}})), ElementsAre(m4a));
  EXPECT_THAT(markedIn(idle({.source = music})), ElementsAre(m4a));
}

TEST_F(MenuBuilderTest, anAllSystemAudioElementOfTheListWouldBeTitledSoAndNotMarked) {
  const auto menu = idle({.processes = {everything}});
  EXPECT_THAT(applicationsIn(menu), ElementsAre("All System Audio"));
  EXPECT_THAT(markedIn(menu), ElementsAre("All System Audio", m4a));
}

TEST_F(MenuBuilderTest, aProcessCalledAllSystemAudioMarksItselfAlone) {
  const auto impostor = RecordingSource::process(95, "All System Audio", std::nullopt);
  const auto menu = idle({.source = impostor, .processes = {impostor}});
  fakes::forEachItem(menu, [&](const fakes::ItemContents& item) {
    if (item.title == "All System Audio") {
      EXPECT_EQ(item.isOn, item.representedObject == impostor);
    }
  });
  EXPECT_THAT(markedIn(menu), ElementsAre("All System Audio", m4a));
}

TEST_F(MenuBuilderTest, titlesAreTheNamesUnchanged) {
  const std::string name = "Fünf_%s & \"Finder\"\n🎧";
  const auto odd = RecordingSource::process(96, name, std::nullopt);
  EXPECT_THAT(applicationsIn(idle({.processes = {odd}})), ElementsAre(name));
  EXPECT_EQ(recording({.source = odd}).items.front().title, "Recording from: " + name);
}

TEST_F(MenuBuilderTest, itemsReferToTheTargetWeakly) {
  const auto menu = world.appKit.makeMenu();
  MenuBuilder::populateIdleMenu(world.appKit, *menu, {.processes = {music}}, target);
  EXPECT_EQ(target.use_count(), 1);
}

TEST_F(MenuBuilderTest, changesNoItemThatIsInAMenu) {
  idle({.source = music, .processes = {music, radio}});
  recording({.isRecording = true});
  EXPECT_THAT(world.journal.lines("item "), IsEmpty());
}

}  // namespace
}  // namespace audrel
