#include "platform/linux/tray/MenuOpening.h"

#include <gtest/gtest.h>

namespace audrel::linuxos {
namespace {

using namespace std::chrono_literals;
using Notice = MenuOpening::Notice;

TEST(MenuOpening, everyNoticeOfOneKindIsAnOpening) {
  MenuOpening opening;
  EXPECT_TRUE(opening.begins(":1.1", Notice::aboutToShow, 10s));
  EXPECT_TRUE(opening.begins(":1.1", Notice::aboutToShow, 10s));
  EXPECT_TRUE(opening.begins(":1.2", Notice::opened, 20s));
  EXPECT_TRUE(opening.begins(":1.2", Notice::opened, 20s));
}

TEST(MenuOpening, theOtherNoticeBelongsToTheSameOpening) {
  MenuOpening opening;
  EXPECT_TRUE(opening.begins(":1.1", Notice::aboutToShow, 10s));
  EXPECT_FALSE(opening.begins(":1.1", Notice::opened, 10s + 999ms));
  EXPECT_TRUE(opening.begins(":1.1", Notice::opened, 11s));
  EXPECT_FALSE(opening.begins(":1.1", Notice::aboutToShow, 11s));
}

TEST(MenuOpening, threeNoticesAreTwoOpenings) {
  MenuOpening opening;
  EXPECT_TRUE(opening.begins(":1.1", Notice::aboutToShow, 10s));
  EXPECT_FALSE(opening.begins(":1.1", Notice::opened, 10s));
  EXPECT_TRUE(opening.begins(":1.1", Notice::aboutToShow, 10s));
  EXPECT_FALSE(opening.begins(":1.1", Notice::opened, 10s));
}

TEST(MenuOpening, aNoticeLongAgoHasNothingToDoWithThisOne) {
  MenuOpening opening;
  EXPECT_TRUE(opening.begins(":1.1", Notice::aboutToShow, 10s));
  EXPECT_TRUE(opening.begins(":1.1", Notice::opened, 11s));
}

TEST(MenuOpening, panelsOpenForThemselves) {
  MenuOpening opening;
  EXPECT_TRUE(opening.begins(":1.1", Notice::aboutToShow, 10s));
  EXPECT_TRUE(opening.begins(":1.2", Notice::opened, 10s));
}

}  // namespace
}  // namespace audrel::linuxos
