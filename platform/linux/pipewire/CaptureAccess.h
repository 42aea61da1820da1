#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/CoreGraphics.h"
#include "platform/Log.h"
#include "platform/linux/pipewire/Connection.h"

namespace audrel::linuxos {

/// Refused where a PipeWire server is there that does not give this process the streams: for its
/// user, by the server's list of programs, for lack of a permission that the session manager has
/// not given (a sandbox), or without the means to link to streams. Granted otherwise: when there is
/// no server, starting a recording fails with that reason.
///
/// A request asks nobody. PipeWire and its session manager decide by their configuration, and no
/// portal has a question for the audio of other programs: that for screen casts gives pictures
/// alone, and that for devices is there for microphones and cameras, to be asked by audio servers.
class CaptureAccess final : public CG::CaptureAccess {
 public:
  CaptureAccess(Connection& connection, os::Log& log);

  /// Asks the server, which takes a millisecond, and two seconds when it does not answer.
  /// A refusal is logged with its reason. On the thread that uses the hardware layer.
  bool preflightScreenCaptureAccess() override;
  bool requestScreenCaptureAccess() override;

 private:
  std::optional<std::string> askServer();

  Connection& connection_;
  std::shared_ptr<os::Logger> logger_;
};

}  // namespace audrel::linuxos
