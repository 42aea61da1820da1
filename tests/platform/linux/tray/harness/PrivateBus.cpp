#include "tests/platform/linux/tray/harness/PrivateBus.h"

#include <chrono>
#include <csignal>
#include <fstream>
#include <system_error>

namespace audrel::traytest {

namespace {

using namespace std::chrono_literals;

}  // namespace

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
  isListening_ = false;
  std::error_code error;
  std::filesystem::remove(socket(), error);
}

void PrivateBus::restart() {
  daemon_ = support::ChildProcess::start(
      {.arguments = {"dbus-daemon", "--nofork", "--nopidfile", "--nosyslog", "--print-address=1",
                     "--config-file=" + (folder_.path() / "bus.conf").string()},
       .environment = {},
       .showsErrors = false});
  // It tells its address once it listens.
  isListening_ = daemon_ != nullptr && daemon_->readLine(10s).has_value();
}

}  // namespace audrel::traytest
