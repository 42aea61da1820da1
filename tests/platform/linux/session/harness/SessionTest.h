#pragma once

#include <gtest/gtest.h>

#include <memory>

#include "platform/linux/bus/SessionBus.h"
#include "platform/linux/session/Notifier.h"
#include "tests/fakes/ScopedVariable.h"
#include "tests/platform/linux/session/harness/TestService.h"
#include "tests/platform/linux/tray/harness/PrivateBus.h"
#include "tests/support/KeptLog.h"
#include "tests/support/MainLoop.h"

namespace audrel::sessiontest {

/// A session bus for one test, and what the program has on it.
class SessionTest : public testing::Test {
 protected:
  /// A notification service whose capabilities are a list in GVariant's text form.
  TestService notifications(const std::string& capabilities = "@as []") const {
    return {privateBus.address(),
            "org.freedesktop.Notifications",
            {"/org/freedesktop/Notifications"},
            {{"GetCapabilities", "(" + capabilities + ",)"}, {"Notify", "(uint32 1,)"}}};
  }

  /// The next notification of that service, as it is called.
  static std::string nextNotification(TestService& service) {
    if (service.nextCall() != "GetCapabilities ()") {
      return "no question for capabilities";
    }
    return service.nextCall().value_or("none");
  }

  traytest::PrivateBus privateBus;
  fakes::ScopedVariable address{"DBUS_SESSION_BUS_ADDRESS", privateBus.address().c_str()};
  std::shared_ptr<support::KeptLogger> log = std::make_shared<support::KeptLogger>();
  linuxos::SessionBus bus;
  linuxos::Notifier notifier{bus, log};
};

}  // namespace audrel::sessiontest
