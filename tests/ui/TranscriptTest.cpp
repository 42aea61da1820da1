// Writes down both menus and the status item in every state, and compares them with
// docs/transcripts.

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/fakes/DesktopWorld.h"
#include "tests/fakes/Transcript.h"
#include "ui/MenuBuilder.h"
#include "ui/StatusItemController.h"

namespace audrel {
namespace {

const auto music = RecordingSource::process(70, "Music", "org.example.music");
const auto radio = RecordingSource::process(71, "Web Radio", "org.example.radio");
const auto otherRadio = RecordingSource::process(72, "Web Radio", std::nullopt);

struct SomeTarget final : NS::Target {
  void perform(const NS::Selector& /*selector*/,
               const std::shared_ptr<NS::MenuItem>& /*sender*/) override {}
};

struct Situation {
  std::string title;
  MenuBuilder::State state;
};

std::vector<Situation> situations() {
  const auto m4a = RecordingFormat::m4a;
  const auto wav = RecordingFormat::wav;
  const auto everything = RecordingSource::allSystemAudio();
  return {
      {"Idle: nothing was recorded yet, no application can be recorded",
       {false, everything, m4a, {}, 0, false}},
      {"Idle: applications can be recorded, there is a last recording",
       {false, everything, m4a, {music, radio}, 0, true}},
      {"Idle: an application and WAV are chosen", {false, radio, wav, {music, radio}, 0, true}},
      {"Idle: the chosen application has a namesake",
       {false, radio, m4a, {music, radio, otherRadio}, 0, true}},
      {"Idle: the chosen application is gone", {false, radio, m4a, {music}, 0, true}},
      {"Idle: the chosen application is gone, and every other too",
       {false, radio, wav, {}, 0, false}},
      {"Recording all system audio", {true, everything, m4a, {music}, 65, true}},
      {"Recording an application", {true, radio, wav, {music}, 65, true}},
      {"Recording, and the file cannot be revealed", {true, everything, m4a, {}, 65, false}},
      {"Recording an application, and the file cannot be revealed",
       {true, radio, m4a, {}, 65, false}},
  };
}

std::string menuTranscript() {
  fakes::DesktopWorld world;
  const auto target = std::make_shared<SomeTarget>();
  std::string text = "The menus, item by item.\n";
  for (const auto& [title, state] : situations()) {
    const auto menu = world.appKit.makeMenu();
    menu->setAutoenablesItems(false);
    if (state.isRecording) {
      MenuBuilder::populateRecordingMenu(world.appKit, *menu, state, target);
    } else {
      MenuBuilder::populateIdleMenu(world.appKit, *menu, state, target);
    }
    text +=
        "\n" + title + "\n" + shown(dynamic_cast<const fakes::FakeMenu&>(*menu).contents(), "    ");
  }
  return text;
}

std::string statusItemTranscript() {
  using State = StatusItemController::State;
  fakes::DesktopWorld world;
  StatusItemController controller(world.appKit);
  const auto& button = world.appKit.statusItem().fakeButton();
  std::string text = "The status item. First the calls that make it, then what it shows.\n\n" +
                     world.journal.text();
  const auto show = [&](const std::string& title, const State& state) {
    controller.apply(state);
    text += "\n" + title + "\n    title " + fakes::inQuotes(button.title()) + "\n    image " +
            button.image() + "\n";
  };
  show("idle", State::idle());
  for (const bool warning : {false, true}) {
    for (const double elapsed : {0.0, 5.0, 59.9, 65.0, 3599.99, 3600.0, 3661.0, 36000.0, -5.0}) {
      show("recording for " + fakes::shortNumber(elapsed) + " s" +
               (warning ? ", the warning was given" : ""),
           State::recording(elapsed, warning));
    }
  }
  show("idle again", State::idle());
  return text;
}

TEST(MenuTranscript, isTheOneInTheTree) {
  const auto difference = fakes::differenceFromTranscript("app-menus", menuTranscript());
  EXPECT_EQ(difference, std::nullopt) << *difference;
}

TEST(StatusItemTranscript, isTheOneInTheTree) {
  const auto difference =
      fakes::differenceFromTranscript("app-status-item", statusItemTranscript());
  EXPECT_EQ(difference, std::nullopt) << *difference;
}

}  // namespace
}  // namespace audrel
