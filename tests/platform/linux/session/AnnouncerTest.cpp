#include "platform/linux/session/Announcer.h"

#include <gmock/gmock.h>

#include <array>
#include <ctime>
#include <optional>
#include <string>
#include <vector>

#include "platform/Selectors.h"
#include "tests/platform/linux/session/harness/SessionTest.h"

namespace audrel::linuxos {
namespace {

using testing::AllOf;
using testing::AnyOf;
using testing::ContainsRegex;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

std::shared_ptr<MenuItem> sourceItem(const std::string& title, bool isChosen) {
  auto item = std::make_shared<MenuItem>(MenuItem::Kind::command, title,
                                         NS::Selector(selectors::selectProcess));
  item->setState(isChosen ? NS::ControlState::on : NS::ControlState::off);
  return item;
}

/// A program whose menu offers these sources.
class AnnouncerTest : public sessiontest::SessionTest {
 protected:
  RecordingMenu idleMenu(const std::string& chosen) const {
    RecordingMenu menu;
    for (const std::string& title : titles) {
      menu.sources.push_back(sourceItem(title, title == chosen));
    }
    return menu;
  }

  static RecordingMenu recordingMenu(const std::string& source) {
    return {.recorded = source, .sources = {}};
  }

  void startRecording() { announcer->setMenu(recordingMenu("Web Radio")); }
  void stopRecording() { announcer->setMenu(idleMenu("Web Radio")); }

  /// Summary, body and actions of the next notification, as it is sent.
  std::string nextTold() {
    const std::string call = nextNotification(service);
    support::runLoopUntil([this] { return !notifier.isBusy(); });
    const auto begin = call.find("Audrel', '");
    const auto end = call.find(", {");
    return begin == std::string::npos ? call : call.substr(begin + 9, end - begin - 9);
  }

  /// The user pushes a button of the notification with that number.
  void push(std::uint32_t number, const char* key) { choose(service, number, key); }

  std::vector<std::string> titles{"All System Audio", "Web Radio"};
  std::vector<std::string> done;
  sessiontest::TestService service = notifications("['actions']");
  std::optional<Announcer> announcer{
      std::in_place, notifier,
      Announcer::Controls{.startRecording = [this] { done.emplace_back("start"); },
                          .stopRecording = [this] { done.emplace_back("stop"); },
                          .refreshSources =
                              [this] {
                                done.emplace_back("refresh");
                                announcer->setMenu(idleMenu("All System Audio"));
                              },
                          .chooseSource =
                              [this](const auto& source) {
                                done.push_back("choose " + source->title());
                                announcer->setMenu(idleMenu(source->title()));
                              }}};
};

constexpr const char* idle =
    "'Audrel is running', 'Ready to record All System Audio. Its entry in the launcher starts and "
    "stops recordings.', ['start', 'Start Recording', 'choose', 'Choose Source…']";

TEST_F(AnnouncerTest, tellsOnceThatTheProgramRunsWhereNoPanelShowsIt) {
  announcer->setMenu(idleMenu("All System Audio"));
  EXPECT_THAT(service.furtherCalls(), IsEmpty()) << "a panel may come";
  announcer->setPanel(false);
  EXPECT_EQ(nextTold(), idle);
  announcer->setPanel(false);
  EXPECT_THAT(service.furtherCalls(), IsEmpty());
}

TEST_F(AnnouncerTest, tellsNothingUnaskedWhereAPanelShowsIt) {
  announcer->setMenu(idleMenu("All System Audio"));
  announcer->setPanel(true);
  startRecording();
  stopRecording();
  EXPECT_THAT(service.furtherCalls(), IsEmpty());
}

TEST_F(AnnouncerTest, tellsThatItRecordsAndTakesThatAwayWhenItHasStopped) {
  announcer->setPanel(false);
  nextTold();
  startRecording();
  EXPECT_THAT(nextTold(), AllOf(StartsWith("'Audrel is recording', 'Web Radio, since "),
                                ContainsRegex("since [0-2][0-9]:[0-5][0-9]\\. Its entry in the "
                                              "launcher starts and stops recordings\\.', "
                                              "\\['stop', 'Stop Recording'\\]$")));
  push(2, "stop");
  EXPECT_THAT(done, ElementsAre("stop"));
  stopRecording();
  EXPECT_THAT(service.furtherCalls(), ElementsAre("CloseNotification (2,)"));
}

TEST_F(AnnouncerTest, tellsOfARecordingThatBeganBeforeItWasKnownThatNoPanelComes) {
  startRecording();
  EXPECT_THAT(service.furtherCalls(), IsEmpty());
  announcer->setPanel(false);
  EXPECT_THAT(nextTold(), StartsWith("'Audrel is recording', 'Web Radio, since "));
}

TEST_F(AnnouncerTest, tellsOfARecordingOnceThePanelHasGone) {
  announcer->setPanel(false);
  nextTold();  // the user knows that it runs
  announcer->setPanel(true);
  EXPECT_THAT(service.furtherCalls(), SizeIs(1));
  startRecording();
  announcer->setPanel(false);
  EXPECT_THAT(nextTold(), StartsWith("'Audrel is recording', 'Web Radio, since "));
}

TEST_F(AnnouncerTest, takesAwayThatItCanStartWhenItRecords) {
  announcer->setPanel(true);
  announcer->tell();
  nextTold();
  startRecording();
  EXPECT_THAT(service.furtherCalls(), ElementsAre("CloseNotification (1,)"));
}

TEST_F(AnnouncerTest, takesAwayWhatItIsReadyToRecordWhenAnotherSourceIsChosen) {
  announcer->setPanel(true);
  announcer->setMenu(idleMenu("All System Audio"));
  announcer->tell();
  nextTold();
  announcer->setMenu(idleMenu("All System Audio"));
  EXPECT_THAT(service.furtherCalls(), IsEmpty());
  announcer->setMenu(idleMenu("Web Radio"));
  EXPECT_THAT(service.furtherCalls(), ElementsAre("CloseNotification (1,)"));
}

TEST_F(AnnouncerTest, takesAwayThatThePanelHasTheMenuWhenThePanelHasGone) {
  announcer->setPanel(true);
  announcer->tell();
  nextTold();
  announcer->setPanel(false);
  EXPECT_THAT(service.furtherCalls(), ElementsAre("CloseNotification (1,)"));
}

TEST_F(AnnouncerTest, keepsWhatItToldBeforeItWasKnownThatNoPanelComes) {
  announcer->tell();
  EXPECT_THAT(nextTold(), HasSubstr("Its entry in the launcher"));
  announcer->setPanel(false);
  EXPECT_THAT(service.furtherCalls(), IsEmpty());
}

/// The time of day in the zone of the environment.
std::string timeOfDay() {
  tzset();
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  std::array<char, 6> text{};
  std::strftime(text.data(), text.size(), "%H:%M", &local);
  return text.data();
}

TEST_F(AnnouncerTest, tellsAtWhatTimeOfDayTheRecordingBegan) {
  for (const char* zone : {"AAA-1:30", "BBB-13:30"}) {  // a morning and an afternoon
    std::string earliest;
    std::string latest;
    {
      const fakes::ScopedVariable there("TZ", zone);
      earliest = timeOfDay();
      startRecording();
      latest = timeOfDay();
    }
    announcer->tell();  // the traveller has gone on
    EXPECT_THAT(nextTold(),
                AnyOf(HasSubstr("since " + earliest + ". "), HasSubstr("since " + latest + ". ")));
    stopRecording();
    EXPECT_THAT(service.furtherCalls(), SizeIs(1));
  }
}

TEST_F(AnnouncerTest, tellsNoMoreOnceThereIsAPanel) {
  announcer->setPanel(false);
  nextTold();
  announcer->setPanel(true);
  startRecording();
  EXPECT_THAT(service.furtherCalls(), ElementsAre("CloseNotification (1,)"));
  announcer->setPanel(true);
  stopRecording();
  announcer->setPanel(false);
  EXPECT_THAT(service.furtherCalls(), IsEmpty()) << "the user knows that it runs";
}

TEST_F(AnnouncerTest, keepsTheNameOfWhatIsRecordedWhateverIsChosenForTheNext) {
  startRecording();
  announcer->setMenu(recordingMenu("Game"));
  announcer->tell();
  EXPECT_THAT(nextTold(), StartsWith("'Audrel is recording', 'Web Radio, since "));
}

TEST_F(AnnouncerTest, tellsWhoAsksWhereTheMenuIs) {
  announcer->setPanel(true);
  announcer->setMenu(idleMenu("Web Radio"));
  announcer->tell();
  EXPECT_EQ(nextTold(),
            "'Audrel is running', 'Ready to record Web Radio. Its icon in the panel has the "
            "menu.', ['start', 'Start Recording', 'choose', 'Choose Source…']");
  push(1, "start");
  EXPECT_THAT(done, ElementsAre("start"));
}

TEST_F(AnnouncerTest, namesNoSourceThatHasGone) {
  announcer->setMenu(idleMenu("Game"));
  announcer->tell();
  EXPECT_THAT(nextTold(), StartsWith("'Audrel is running', 'Its entry in the launcher starts"));
}

TEST_F(AnnouncerTest, letsTheUserChooseWhatIsRecorded) {
  announcer->setMenu(idleMenu("All System Audio"));
  announcer->tell();
  EXPECT_EQ(nextTold(), idle);
  push(1, "choose");
  EXPECT_EQ(nextTold(),
            "'What is to be recorded?', 'Chosen: All System Audio.', "
            "['source-0', 'All System Audio', 'source-1', 'Web Radio']");
  push(2, "source-1");
  EXPECT_EQ(service.nextCall(), "CloseNotification (2,)");
  EXPECT_THAT(nextTold(), StartsWith("'Audrel is running', 'Ready to record Web Radio. "));
  EXPECT_THAT(done, ElementsAre("refresh", "choose Web Radio"));
}

TEST_F(AnnouncerTest, namesNoChosenSourceWhereThatHasGone) {
  titles = {"Web Radio"};
  announcer->setMenu(idleMenu("Game"));
  announcer->tell();
  nextTold();
  push(1, "choose");
  EXPECT_EQ(nextTold(), "'What is to be recorded?', '', ['source-0', 'Web Radio']");
}

TEST_F(AnnouncerTest, offersThreeButtonsAtMost) {
  titles = {"All System Audio", "A", "B", "C", "D"};
  announcer->setMenu(idleMenu("All System Audio"));
  announcer->tell();
  nextTold();
  push(1, "choose");
  EXPECT_THAT(nextTold(),
              HasSubstr("['source-0', 'All System Audio', 'source-1', 'A', 'more', 'More…']"));
  push(2, "more");
  EXPECT_THAT(nextTold(), HasSubstr("['source-2', 'B', 'source-3', 'C', 'more', 'More…']"));
  push(3, "more");
  EXPECT_THAT(nextTold(), HasSubstr("['source-4', 'D', 'more', 'More…']"));
  push(4, "more");
  EXPECT_THAT(nextTold(), HasSubstr("['source-0', 'All System Audio', 'source-1', 'A',"));
}

TEST_F(AnnouncerTest, offersWhatIsLeftOfTheSourcesFromTheBeginning) {
  titles = {"All System Audio", "A", "B", "C", "D"};
  announcer->setMenu(idleMenu("All System Audio"));
  announcer->tell();
  nextTold();
  push(1, "choose");
  nextTold();
  titles = {"All System Audio", "A"};
  announcer->setMenu(idleMenu("All System Audio"));
  push(2, "more");
  EXPECT_THAT(nextTold(), HasSubstr("['source-0', 'All System Audio', 'source-1', 'A']"));
}

TEST_F(AnnouncerTest, offersNoSourcesWhereTheMenuHasNone) {
  announcer->setMenu(idleMenu("All System Audio"));
  announcer->tell();
  nextTold();
  titles.clear();  // as during a recording
  push(1, "choose");
  EXPECT_EQ(service.nextCall(), "CloseNotification (1,)");
  EXPECT_THAT(nextTold(), StartsWith("'Audrel is running', "));
}

TEST_F(AnnouncerTest, takesItsNotificationAwayWhenTheProgramEnds) {
  announcer->tell();
  nextTold();
  announcer.reset();
  EXPECT_THAT(service.furtherCalls(), ElementsAre("CloseNotification (1,)"));
}

}  // namespace
}  // namespace audrel::linuxos
