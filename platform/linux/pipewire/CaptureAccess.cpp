#include "platform/linux/pipewire/CaptureAccess.h"

#include "platform/Identity.h"
#include "platform/linux/pipewire/Handles.h"

namespace audrel::linuxos {

CaptureAccess::CaptureAccess(Connection& connection, os::Log& log)
    : connection_(connection), logger_(log.makeLogger(identity::bundleIdentifier, "capture")) {}

bool CaptureAccess::preflightScreenCaptureAccess() {
  const auto refusal = askServer();
  if (refusal) {
    logger_->error("The audio server refuses to be captured — " + *refusal);
  }
  return !refusal;
}

std::optional<std::string> CaptureAccess::askServer() {
  const LoopLock lock(connection_.loop());
  if (connection_.ensureConnected()) {
    connection_.roundTrip();
  }
  return connection_.refusal();
}

bool CaptureAccess::requestScreenCaptureAccess() {
  return preflightScreenCaptureAccess();
}

}  // namespace audrel::linuxos
