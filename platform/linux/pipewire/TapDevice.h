#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/CoreAudio.h"
#include "platform/Log.h"
#include "platform/linux/pipewire/Connection.h"
#include "platform/linux/pipewire/TapStream.h"
#include "platform/linux/pipewire/Timeline.h"

namespace audrel::linuxos {

/// The running part of an aggregate device: calls one IO procedure with what a tap captures, and
/// with silence while the server is away. All but `lostFrames` under the connection's lock.
class TapDevice {
 public:
  TapDevice(Connection& connection, double rate, TapStream::IsTapped isTapped,
            CA::AudioObjectID device, CA::AudioDeviceIOProc procedure, void* clientData);
  ~TapDevice();
  TapDevice(const TapDevice&) = delete;
  TapDevice& operator=(const TapDevice&) = delete;

  /// Waits until audio flows. Nothing on success, else why not; then no callback has come.
  std::optional<std::string> start();

  /// On return the procedure is not running and will not run again.
  void stop();

  /// The server went away: silence takes over. On the connection's thread or under its lock.
  void serverLost();
  void serverFound();
  void graphChanged();

  std::uint64_t lostFrames() const { return timeline_.lostFrames(); }

 private:
  void makeStream();
  void takeOver();
  void setSilenceTimer(bool isOn);

  Connection& connection_;
  double rate_;
  TapStream::IsTapped isTapped_;
  Timeline timeline_;
  spa_source* silenceTimer_;
  bool isRunning_ = false;
  bool isSilent_ = false;
  std::unique_ptr<TapStream> stream_;
};

}  // namespace audrel::linuxos
