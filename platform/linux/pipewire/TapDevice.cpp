#include "platform/linux/pipewire/TapDevice.h"

#include <chrono>

namespace audrel::linuxos {

namespace {

using namespace std::chrono_literals;

constexpr auto startTimeout = 3s;
// A stream that cannot be linked must not hold up the others.
constexpr auto linkTimeout = 500ms;
constexpr long silencePeriod = 50'000'000;  // nanoseconds

/// The clock that PipeWire stamps its cycles with.
std::uint64_t monotonicNow() {
  return static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch() /
                                    std::chrono::nanoseconds(1));
}

}  // namespace

TapDevice::TapDevice(Connection& connection, double rate, TapStream::IsTapped isTapped,
                     CA::AudioObjectID device, CA::AudioDeviceIOProc procedure, void* clientData)
    : connection_(connection),
      rate_(rate),
      isTapped_(std::move(isTapped)),
      timeline_(device, procedure, clientData, rate),
      silenceTimer_(pw_loop_add_timer(
          pw_thread_loop_get_loop(connection.loop()),
          [](void* self, std::uint64_t) {
            static_cast<TapDevice*>(self)->timeline_.feedSilenceUntil(monotonicNow());
          },
          this)) {}

TapDevice::~TapDevice() {
  stop();
  pw_loop_destroy_source(pw_thread_loop_get_loop(connection_.loop()), silenceTimer_);
}

std::optional<std::string> TapDevice::start() {
  connection_.retainDetails();
  connection_.retainConnection();
  isRunning_ = true;
  makeStream();
  const bool isAnswered = connection_.roundTrip() && connection_.roundTrip();
  const bool isReady =
      isAnswered &&
      connection_.waitUntil([&] { return stream_->isReady() || !stream_->failure().empty(); },
                            startTimeout);
  if (!isReady || !stream_ || !stream_->isReady()) {
    std::string reason = "PipeWire did not start the capture stream within " +
                         std::to_string(startTimeout.count()) +
                         " seconds: it may be overloaded, or have no device to run on.";
    if (stream_ && !stream_->failure().empty()) {
      reason = "PipeWire refused the capture stream: " + stream_->failure() + ".";
    }
    stop();
    return reason;
  }
  connection_.waitUntil([&] { return stream_->isLinked(); }, linkTimeout);
  timeline_.start(monotonicNow());
  timeline_.feedFrom(Timeline::Feeder::stream);
  return std::nullopt;
}

void TapDevice::stop() {
  if (!isRunning_) {
    return;
  }
  isRunning_ = false;
  if (isSilent_) {
    timeline_.feedSilenceUntil(monotonicNow());
  }
  timeline_.feedFrom(Timeline::Feeder::nobody);
  setSilenceTimer(false);
  stream_.reset();
  connection_.releaseConnection();
  connection_.releaseDetails();
}

void TapDevice::makeStream() {
  stream_ = std::make_unique<TapStream>(connection_, rate_, isTapped_, timeline_);
}

void TapDevice::serverLost() {
  if (!stream_) {
    return;
  }
  const bool wasFeeding = isRunning_ && !isSilent_;
  if (wasFeeding) {
    timeline_.feedFrom(Timeline::Feeder::nobody);
  }
  stream_.reset();
  if (wasFeeding) {
    timeline_.feedFrom(Timeline::Feeder::silence);
    setSilenceTimer(true);
  }
}

void TapDevice::serverFound() {
  if (isRunning_ && !stream_) {
    makeStream();
  }
}

void TapDevice::graphChanged() {
  if (!stream_) {
    return;
  }
  stream_->followGraph();
  takeOver();
}

/// The first cycle of the new stream fills what is missing since the last silence.
void TapDevice::takeOver() {
  if (isSilent_ && stream_->isReady()) {
    setSilenceTimer(false);
    timeline_.feedSilenceUntil(monotonicNow());
    timeline_.feedFrom(Timeline::Feeder::stream);
  }
}

void TapDevice::setSilenceTimer(bool isOn) {
  isSilent_ = isOn;
  timespec period{0, isOn ? silencePeriod : 0};
  pw_loop_update_timer(pw_thread_loop_get_loop(connection_.loop()), silenceTimer_, &period, &period,
                       false);
}

}  // namespace audrel::linuxos
