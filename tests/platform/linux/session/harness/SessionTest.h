#pragma once

#include <gtest/gtest.h>

#include <cstdint>
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
            {{"GetCapabilities", "(" + capabilities + ",)"},
             {"Notify", "count"},
             {"CloseNotification", "()"}}};
  }

  /// The next notification of that service, as it is called.
  static std::string nextNotification(TestService& service) {
    if (service.nextCall() != "GetCapabilities ()") {
      return "no question for capabilities";
    }
    return service.nextCall().value_or("none");
  }

  /// A signal of that service's about one of its notifications, once the program has taken it.
  void emit(TestService& service, const char* signal, GVariant* arguments) {
    service.emitSignal("/org/freedesktop/Notifications", "org.freedesktop.Notifications", signal,
                       arguments);
    // Its answer comes after the signal.
    bool isAnswered = false;
    bus.call({"org.freedesktop.Notifications", "/", "org.freedesktop.DBus.Peer", "Ping"}, nullptr,
             [&](const linuxos::SessionBus::Answer&) { isAnswered = true; });
    support::runLoopUntil([&] { return isAnswered; });
  }

  /// The user pushes a button.
  void choose(TestService& service, std::uint32_t number, const char* key) {
    emit(service, "ActionInvoked", g_variant_new("(us)", number, key));
  }

  traytest::PrivateBus privateBus;
  fakes::ScopedVariable address{"DBUS_SESSION_BUS_ADDRESS", privateBus.address().c_str()};
  std::shared_ptr<support::KeptLogger> log = std::make_shared<support::KeptLogger>();
  linuxos::SessionBus bus;
  linuxos::Notifier notifier{bus, log};
};

}  // namespace audrel::sessiontest
