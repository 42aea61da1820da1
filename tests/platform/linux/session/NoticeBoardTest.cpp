#include "platform/linux/session/NoticeBoard.h"

#include <gmock/gmock.h>

#include "tests/fakes/FakeApplication.h"
#include "tests/fakes/FakeDesktop.h"
#include "tests/platform/linux/session/harness/SessionTest.h"

namespace audrel::linuxos {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class NoticeBoardTest : public sessiontest::SessionTest {
 protected:
  static Notice savedNotice() {
    return {.matter = "recording",
            .summary = "Recording saved",
            .body = "song.wav, 00:05",
            .file = "/music/song.wav"};
  }

  fakes::Journal journal;
  fakes::FakeWorkspace workspace{journal};
  fakes::FakeUserDefaults userDefaults{journal};
  NoticeBoard board{notifier, workspace, userDefaults};
};

TEST_F(NoticeBoardTest, offersToShowTheFile) {
  auto service = notifications("['actions']");
  board.take(savedNotice());
  EXPECT_EQ(nextNotification(service),
            "Notify ('Audrel', 0, 'io.github.audrel.Audrel', 'Recording saved', "
            "'song.wav, 00:05', ['show-file', 'Show in Folder'], "
            "{'urgency': <byte 0x01>, 'desktop-entry': <'io.github.audrel.Audrel'>}, -1)");
  ASSERT_TRUE(support::runLoopUntil([this] { return !notifier.isBusy(); }));
  journal.clear();
  choose(service, 1, "show-file");
  EXPECT_THAT(journal.lines(), ElementsAre(HasSubstr("/music/song.wav")));
}

TEST_F(NoticeBoardTest, offersNothingWhileARecordingGoesOn) {
  auto service = notifications("['actions']");
  board.take({.matter = "disk", .summary = "a", .body = "b", .isLoss = true});
  EXPECT_EQ(nextNotification(service),
            "Notify ('Audrel', 0, 'io.github.audrel.Audrel', 'a', 'b', [], "
            "{'urgency': <byte 0x02>, 'desktop-entry': <'io.github.audrel.Audrel'>}, -1)");
}

TEST_F(NoticeBoardTest, tellsNoRecordingThatIsSavedToWhomDoesNotWantToKnow) {
  userDefaults.values["notifySaved"] = "no";
  auto service = notifications();
  board.take(savedNotice());
  EXPECT_THAT(service.furtherCalls(), IsEmpty());
  userDefaults.values["notifySaved"] = "yes";
  board.take(savedNotice());
  EXPECT_THAT(nextNotification(service), HasSubstr("'Recording saved'"));
}

TEST_F(NoticeBoardTest, tellsALossToEverybody) {
  userDefaults.values["notifySaved"] = "no";
  auto service = notifications();
  Notice loss = savedNotice();
  loss.isLoss = true;
  board.take(loss);
  EXPECT_THAT(nextNotification(service), HasSubstr("'Recording saved'"));
  Notice news = savedNotice();
  news.file.clear();
  board.take(news);
  EXPECT_THAT(nextNotification(service), HasSubstr("'Recording saved'"));
}

}  // namespace
}  // namespace audrel::linuxos
