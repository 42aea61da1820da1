#include "tests/platform/linux/tray/harness/PrivateBus.h"

#include <chrono>
#include <csignal>
#include <fstream>
#include <stdexcept>
#include <system_error>

namespace audrel::traytest {

using namespace std::chrono_literals;

GDBusConnection* connectTo(const std::string& busAddress) {
  constexpr int flags = G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                        G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION;
  GDBusConnection* connection = g_dbus_connection_new_for_address_sync(
      busAddress.c_str(), static_cast<GDBusConnectionFlags>(flags), nullptr, nullptr, nullptr);
  if (connection == nullptr) {
    throw std::runtime_error("Nobody answers at " + busAddress);
  }
  return connection;
}

PrivateBus::PrivateBus(const std::filesystem::path& services) {
  const std::string serviceFolder =
      services.empty() ? "" : "<servicedir>" + services.string() + "</servicedir>";
  std::ofstream(folder_.path() / "bus.conf")
      << "<busconfig><type>session</type><keep_umask/><listen>" << address() << "</listen>"
      << serviceFolder
      << "<policy context='default'><allow send_destination='*' eavesdrop='true'/>"
         "<allow eavesdrop='true'/><allow own='*'/></policy></busconfig>\n";
  restart();
}

void PrivateBus::crash() {
  daemon_->end(SIGKILL);
  daemon_.reset();
  std::error_code error;
  std::filesystem::remove(socket(), error);
}

void PrivateBus::hang() {
  daemon_->signal(SIGSTOP);
}

void PrivateBus::restart() {
  daemon_ = support::ChildProcess::start(
      {.arguments = {"dbus-daemon", "--nofork", "--nopidfile", "--nosyslog", "--print-address=1",
                     "--config-file=" + (folder_.path() / "bus.conf").string()},
       .environment = {},
       .showsErrors = false});
  // It tells its address once it listens.
  if (daemon_ == nullptr || !daemon_->readLine(10s)) {
    throw std::runtime_error("There is no dbus-daemon, or it does not start");
  }
}

}  // namespace audrel::traytest
