#include "ui/MenuBuilder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>

#include "tests/fakes/DesktopWorld.h"
#include "tests/ui/ExpectedMenus.h"

namespace audrel {
namespace {

using fakes::MenuContents;
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

class MenuBuilderTest : public testing::Test {
 protected:
  /// The items that were appended to a menu that is otherwise left as it was.
  MenuContents idle(const MenuBuilder::State& state) {
    return filled(MenuBuilder::populateIdleMenu, state);
  }
  MenuContents recording(const MenuBuilder::State& state) {
    return filled(MenuBuilder::populateRecordingMenu, state);
  }

  MenuContents sources(const MenuBuilder::State& state) {
    return contents(*MenuBuilder::buildSourceSubmenu(world.appKit, state, target));
  }

  /// What `idle` and `recording` should give.
  static MenuContents untouched(const expected::Items& items) { return {true, nullptr, items}; }

  MenuContents idleWith(const MenuContents& sources, const MenuContents& formats,
                        bool canReveal) const {
    return untouched(expected::idleItems(*target, sources, formats, canReveal));
  }

  MenuContents nobodyToRecord() const {
    return expected::sourceSubmenu(*target, true, {expected::noAudibleApps()});
  }

  fakes::DesktopWorld world;
  std::shared_ptr<SomeTarget> target = std::make_shared<SomeTarget>();

 private:
  static MenuContents contents(const NS::Menu& menu) {
    return dynamic_cast<const fakes::FakeMenu&>(menu).contents();
  }

  template <typename Populate>
  MenuContents filled(Populate populate, const MenuBuilder::State& state) {
    const auto menu = world.appKit.makeMenu();
    populate(world.appKit, *menu, state, target);
    return contents(*menu);
  }
};

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

TEST_F(MenuBuilderTest, idleMenuOfAFirstRun) {
  EXPECT_EQ(idle({}), idleWith(nobodyToRecord(), expected::m4aIsOn(*target), false));
}

TEST_F(MenuBuilderTest, idleMenuWithEverythingToChooseFrom) {
  const MenuBuilder::State state{false, radio, RecordingFormat::wav, {music, radio, game}, 0, true};
  EXPECT_EQ(idle(state),
            idleWith(expected::sourceSubmenu(*target, false,
                                             {expected::process(*target, "Music", false, music),
                                              expected::process(*target, "Web Radio", true, radio),
                                              expected::process(*target, "game", false, game)}),
                     expected::wavIsOn(*target), true));
}

TEST_F(MenuBuilderTest, idleMenuIsTheSameWhateverTheElapsedTime) {
  EXPECT_EQ(idle({.elapsed = 3601}), idle({}));
}

TEST_F(MenuBuilderTest, recordingMenuOfAllSystemAudio) {
  EXPECT_EQ(recording({.isRecording = true, .lastRecordingAvailable = true}),
            untouched(expected::recordingItems(*target, "Recording from: All System Audio", true)));
}

TEST_F(MenuBuilderTest, recordingMenuOfAProcess) {
  const MenuBuilder::State state{true, music, RecordingFormat::wav, {music, radio}, 12, true};
  EXPECT_EQ(recording(state),
            untouched(expected::recordingItems(*target, "Recording from: Music", true)));
}

TEST_F(MenuBuilderTest, recordingMenuOffersNoSourceAndNoFormat) {
  const MenuBuilder::State all{true, music, RecordingFormat::wav, {music}, 12, true};
  const MenuBuilder::State least{true, music, RecordingFormat::m4a, {}, 0, true};
  EXPECT_EQ(recording(all), recording(least));
}

TEST_F(MenuBuilderTest, revealItemIsPresentButDisabledInBothMenusWithoutALastRecording) {
  const MenuBuilder::State state{.lastRecordingAvailable = false};
  EXPECT_EQ(idle(state), idleWith(nobodyToRecord(), expected::m4aIsOn(*target), false));
  EXPECT_EQ(recording(state), untouched(expected::recordingItems(
                                  *target, "Recording from: All System Audio", false)));
}

TEST_F(MenuBuilderTest, emptySnapshotYieldsNoAudibleApps) {
  EXPECT_EQ(sources({}), nobodyToRecord());
}

TEST_F(MenuBuilderTest, processesStandInTheOrderOfTheList) {
  EXPECT_EQ(sources({.processes = {game, radio, music}}),
            expected::sourceSubmenu(*target, true,
                                    {expected::process(*target, "game", false, game),
                                     expected::process(*target, "Web Radio", false, radio),
                                     expected::process(*target, "Music", false, music)}));
}

TEST_F(MenuBuilderTest, twoProcessesNamedAlikeBothCarryTheCheckmarkOfOne) {
  const auto first = RecordingSource::process(80, "Twin", "org.example.a");
  const auto second = RecordingSource::process(81, "Twin", "org.example.b");
  EXPECT_EQ(sources({.source = first, .processes = {first, second, music}}),
            expected::sourceSubmenu(*target, false,
                                    {expected::process(*target, "Twin", true, first),
                                     expected::process(*target, "Twin", true, second),
                                     expected::process(*target, "Music", false, music)}));
}

TEST_F(MenuBuilderTest, checkmarkGoesByNameAlsoWhenTheObjectIsAnother) {
  const auto cameBack = RecordingSource::process(99, "Music", std::nullopt);
  EXPECT_EQ(sources({.source = music, .processes = {cameBack}}),
            expected::sourceSubmenu(*target, false,
                                    {expected::process(*target, "Music", true, cameBack)}));
}

TEST_F(MenuBuilderTest, checkmarkGoesByTheWholeNameAndItsCase) {
  const auto lower = RecordingSource::process(90, "music", std::nullopt);
  const auto longer = RecordingSource::process(91, "Music ", std::nullopt);
  EXPECT_EQ(sources({.source = music, .processes = {lower, longer}}),
            expected::sourceSubmenu(*target, false,
                                    {expected::process(*target, "music", false, lower),
                                     expected::process(*target, "Music ", false, longer)}));
}

TEST_F(MenuBuilderTest, noItemIsMarkedWhenTheSelectedProcessHasLeftNotEvenAllSystemAudio) {
  EXPECT_EQ(sources({.source = music, .processes = {radio}}),
            expected::sourceSubmenu(*target, false,
                                    {expected::process(*target, "Web Radio", false, radio)}));
  EXPECT_EQ(sources({.source = music}),
            expected::sourceSubmenu(*target, false, {expected::noAudibleApps()}));
}

TEST_F(MenuBuilderTest, anAllSystemAudioElementOfTheListWouldBeTitledSoAndNotMarked) {
  EXPECT_EQ(
      sources({.processes = {everything}}),
      expected::sourceSubmenu(*target, true,
                              {expected::process(*target, "All System Audio", false, everything)}));
}

TEST_F(MenuBuilderTest, aProcessCalledAllSystemAudioMarksItselfAlone) {
  const auto impostor = RecordingSource::process(95, "All System Audio", std::nullopt);
  EXPECT_EQ(sources({.source = impostor, .processes = {impostor}}),
            expected::sourceSubmenu(
                *target, false, {expected::process(*target, "All System Audio", true, impostor)}));
}

TEST_F(MenuBuilderTest, titlesAreTheNamesUnchanged) {
  const std::string name = "Fünf_%s & \"Finder\"\n🎧";
  const auto odd = RecordingSource::process(96, name, std::nullopt);
  EXPECT_EQ(sources({.processes = {odd}}),
            expected::sourceSubmenu(*target, true, {expected::process(*target, name, false, odd)}));
  EXPECT_EQ(recording({.isRecording = true, .source = odd}),
            untouched(expected::recordingItems(*target, "Recording from: " + name, false)));
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
