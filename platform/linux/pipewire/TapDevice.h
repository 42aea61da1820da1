#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/CoreAudio.h"
#include "platform/Log.h"
#include "platform/linux/pipewire/CaptureTime.h"
#include "platform/linux/pipewire/Connection.h"
#include "platform/linux/pipewire/TapStream.h"
#include "platform/linux/pipewire/Timeline.h"
#include "platform/linux/system/Notice.h"

namespace audrel::linuxos {

/// What a device records.
struct TapSource {
  TappedPortsOf tappedPortsOf;
  /// What the user is to learn of it. Asked while it has no stream.
  std::function<std::optional<Notice>()> news;
};

/// The running part of an aggregate device: calls one IO procedure with what a tap captures, and
/// with counted silence while nothing is captured, for whatever reason. All but `lostFrames` under
/// the connection's lock.
class TapDevice {
 public:
  /// Losses and their ends are logged. The user is told of one that lasts a second, of its end, and
  /// of what becomes of the source.
  TapDevice(Connection& connection, CaptureTime& time, os::Logger& log, NoticeTaker tell,
            double rate, TapSource source, CA::AudioObjectID device,
            CA::AudioDeviceIOProc procedure, void* clientData);
  ~TapDevice();
  TapDevice(const TapDevice&) = delete;
  TapDevice& operator=(const TapDevice&) = delete;

  /// Waits until audio flows. Nothing on success, else why not; then no callback has come.
  std::optional<std::string> start();

  /// On return the procedure is not running and will not run again.
  void stop();

  /// Everything made on the connection goes now.
  void serverLost();
  void graphChanged();

  std::uint64_t lostFrames() const { return timeline_.lostFrames(); }
  double lostSeconds() const { return static_cast<double>(lostFrames()) / rate_; }

 private:
  enum class State {
    idle,
    starting,   ///< time has not begun
    streaming,  ///< the stream feeds
    silent,     ///< silence feeds; a stream may be on its way
  };
  struct Loss;
  static const Loss lossOfServer;
  static const Loss lossOfStream;
  static const Loss hang;

  bool isCapturing() const { return stream_ && stream_->isReady(); }
  std::string whyNotStarted() const;
  void feedFromStream();
  void lose(const Loss& loss);
  void makeStream();
  void tick();
  void watch();
  void takeOver();
  void tellOfLoss();
  void tellOfEnd();
  void tellOfSource();

  Connection& connection_;
  CaptureTime& time_;
  os::Logger& log_;
  NoticeTaker tell_;
  double rate_;
  TapSource source_;
  Timeline timeline_;
  std::unique_ptr<CaptureTime::Ticks> ticks_;  ///< once started
  State state_ = State::idle;
  const Loss* loss_ = nullptr;     ///< while silent
  std::uint64_t silentSince_ = 0;  ///< while silent, monotonic nanoseconds
  bool isTold_ = false;            ///< whether the user knows of the loss
  std::uint64_t heard_ = 0;        ///< of the timeline's cycles, when last looked at
  int quietTicks_ = 0;             ///< since then
  int readyTicks_ = 0;             ///< since the next stream runs
  std::uint64_t nextStream_ = 0;   ///< when one may be made again, monotonic nanoseconds
  std::unique_ptr<TapStream> stream_;
};

}  // namespace audrel::linuxos
