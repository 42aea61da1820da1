#pragma once

#include <gtest/gtest.h>

#include <csignal>
#include <string>

#include "tests/platform/linux/tray/harness/Panel.h"
#include "tests/platform/linux/tray/harness/PrivateBus.h"
#include "tests/platform/linux/tray/harness/TrayProgram.h"

namespace audrel::traytest {

/// A program with a status item and a panel that knows it, on a bus of their own.
class TrayTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(bus.isRunning());
    panel.startWatcher();
    ASSERT_TRUE(program.waitFor("launched"));
    ASSERT_TRUE(panel.findItem());
    ASSERT_TRUE(program.settle());
    program.takeJournal();
  }

  /// A program that goes on has to end as it should: the sanitizers have their say there.
  void TearDown() override {
    if (program.isRunning()) {
      kill(program.process().pid(), SIGTERM);
      EXPECT_TRUE(program.waitFor("ended"));
      EXPECT_EQ(program.process().waitForEnd(), 0);
    }
  }

  int idOf(const std::string& label) {
    const auto id = panel.idOf(label);
    EXPECT_TRUE(id.has_value()) << label;
    return id.value_or(-1);
  }

  Answer sendEvent(int id, const std::string& kind) {
    return panel.callMenu("Event", "(" + std::to_string(id) + ", '" + kind + "', <0>, uint32 7)");
  }

  Answer click(const std::string& label) { return sendEvent(idOf(label), "clicked"); }

  PrivateBus bus;
  Panel panel{bus.address()};
  TrayProgram program{bus.address()};
};

}  // namespace audrel::traytest
