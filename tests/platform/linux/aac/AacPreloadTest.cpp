// In a process of its own, which has not loaded the module.

#include "platform/linux/aac/AacPreload.h"

#include <gtest/gtest.h>

#include "tests/platform/linux/files/Recordings.h"
#include "tests/support/KeptLog.h"
#include "tests/support/TemporaryFolder.h"

namespace audrel::linuxos {
namespace {

TEST(AacPreload, isOverWhenItGoesAndLetsAnM4ABeOpenedMeanwhile) {
  const support::TemporaryFolder folder;
  support::KeptLog log;
  AudioFramework framework(log);
  {
    AacPreload preload;
    preload.begin();
    preload.begin();
    EXPECT_NE(test::openFile(framework, folder.path() / "a.m4a", test::m4aSettings(test::noise(1))),
              nullptr);
  }
  EXPECT_TRUE(log.lines().empty());
}

}  // namespace
}  // namespace audrel::linuxos
