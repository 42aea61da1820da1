#include "tests/contract/OwnDefaults.h"

#include "platform/macos/Foundation.h"
#include "tests/macos/execution/MacTest.h"

namespace audrel::macos {
namespace {

using OwnDefaultsTest = MacTest;

TEST_F(OwnDefaultsTest, areGoneWhateverSetThem) {
  mac().processName = "contract_macos_test";
  mac().defaults = {{"of-a-framework", "1"}};
  UserDefaults().setString("wav", "of-a-test-that-crashed");
  contract::removeOwnDefaults();
  EXPECT_TRUE(mac().defaults.empty());
  EXPECT_EQ(journal().back(), "NSUserDefaults without the domain contract_macos_test");
}

}  // namespace
}  // namespace audrel::macos
