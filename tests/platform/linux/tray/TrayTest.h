#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "tests/fakes/ScopedVariable.h"
#include "tests/platform/linux/tray/TrayProgram.h"
#include "tests/platform/linux/tray/harness/Panel.h"
#include "tests/platform/linux/tray/harness/PrivateBus.h"

namespace audrel::traytest {

/// A program with a status item and a panel that knows it, on a bus of their own.
class TrayTest : public testing::Test {
 protected:
  void SetUp() override {
    panel.startWatcher();
    ASSERT_TRUE(panel.findItem());
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
  fakes::ScopedVariable address{"DBUS_SESSION_BUS_ADDRESS", bus.address().c_str()};
  Panel panel{bus.address()};
  std::shared_ptr<TrayProgram> program = TrayProgram::start();
};

}  // namespace audrel::traytest
