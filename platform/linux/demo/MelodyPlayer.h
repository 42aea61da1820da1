#pragma once

#include <pipewire/pipewire.h>

#include <memory>
#include <string>

#include "platform/linux/demo/Melody.h"
#include "platform/linux/pipewire/Connection.h"
#include "platform/linux/pipewire/LinkSet.h"

namespace audrel::linuxos {

/// Plays the melody to the default sink of a server that has no session manager, so that it makes
/// its links itself.
class MelodyPlayer : private Connection::Observer {
 public:
  /// Null when it does not play within three seconds.
  static std::unique_ptr<MelodyPlayer> start(const std::string& socketPath);
  ~MelodyPlayer() override;
  MelodyPlayer(const MelodyPlayer&) = delete;
  MelodyPlayer& operator=(const MelodyPlayer&) = delete;

 private:
  explicit MelodyPlayer(const std::string& socketPath);
  bool play();
  void graphChanged() override;
  void serverLost() override;
  void process() noexcept;

  static const pw_stream_events streamEvents;

  Connection connection_;
  Melody melody_;
  StreamHandle stream_;
  Hook streamHook_;
  std::unique_ptr<LinkSet> links_;
};

}  // namespace audrel::linuxos
