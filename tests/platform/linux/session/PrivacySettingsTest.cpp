#include "platform/linux/session/PrivacySettings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace audrel::linuxos {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(PrivacySettings, areThoseOfTheDesktopNewestFirstAndWholeSettingsLast) {
  EXPECT_THAT(privacySettingsEntries("GNOME"),
              ElementsAre("gnome-privacy-panel.desktop", "gnome-microphone-panel.desktop",
                          "org.gnome.Settings.desktop"));
}

TEST(PrivacySettings, areThoseOfEachDesktopThatTheSessionNames) {
  EXPECT_THAT(privacySettingsEntries("Budgie:Unity7::XFCE"),
              ElementsAre("budgie-microphone-panel.desktop", "budgie-control-center.desktop",
                          "xfce-settings-manager.desktop"));
}

TEST(PrivacySettings, areNoneWhereTheDesktopIsNotKnown) {
  EXPECT_THAT(privacySettingsEntries(""), IsEmpty());
  EXPECT_THAT(privacySettingsEntries("sway"), IsEmpty());
  EXPECT_THAT(privacySettingsEntries("GNOMETRIX"), IsEmpty());
}

}  // namespace
}  // namespace audrel::linuxos
