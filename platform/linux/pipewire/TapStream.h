#pragma once

#include <pipewire/pipewire.h>

#include <atomic>
#include <functional>
#include <memory>
#include <string>

#include "platform/linux/pipewire/CaptureTime.h"
#include "platform/linux/pipewire/Connection.h"
#include "platform/linux/pipewire/GraphPosition.h"
#include "platform/linux/pipewire/LinkSet.h"
#include "platform/linux/pipewire/Timeline.h"

namespace audrel::linuxos {

/// Takes in what the tapped streams play, beside their way to the speakers, and feeds it to a
/// timeline on the connection's data thread. Made, used and destroyed on the connection's thread or
/// under its lock; when it is destroyed its data thread feeds no more.
class TapStream {
 public:
  /// `rate` in frames per second: a graph that runs at another is resampled.
  TapStream(Connection& connection, const CaptureTime& time, double rate,
            TappedPortsOf tappedPortsOf, Timeline& timeline);
  ~TapStream();
  TapStream(const TapStream&) = delete;
  TapStream& operator=(const TapStream&) = delete;

  /// Links what is to be tapped now and is not yet, and removes links that are not to be.
  void followGraph();

  /// Whether the server runs the stream.
  bool isReady() const;

  /// Whether the stream is of no use any more: it erred, or was taken away.
  bool hasEnded() const { return !failure_.empty(); }

  /// Whether it also gets everything that is played and to be tapped now.
  bool isLinked() const;

  /// Whether there is a stream to be tapped, playing or paused.
  bool hasSources() const { return !links_.isEmpty(); }

  /// Why the stream has ended; empty while it has not.
  const std::string& failure() const { return failure_; }

 private:
  void connect();
  void stateChanged(pw_stream_state state, const char* error);
  void process() noexcept;
  void feed(const pw_buffer& buffer) noexcept;
  bool hasPorts() const;

  static const pw_stream_events streamEvents;

  Connection& connection_;
  const CaptureTime& time_;
  double rate_;
  TappedPortsOf tappedPortsOf_;
  Timeline& timeline_;
  GraphPosition position_;
  std::atomic<bool> tapsSurround_ = false;
  bool isStreaming_ = false;
  std::string failure_;
  StreamHandle stream_;
  Hook streamHook_;
  LinkSet links_;
};

}  // namespace audrel::linuxos
