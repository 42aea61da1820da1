#include "platform/linux/pipewire/TapDevice.h"

#include <cerrno>
#include <system_error>
#include <utility>

namespace audrel::linuxos {

namespace {

using namespace std::chrono_literals;

constexpr auto startTimeout = 3s;
// A stream that cannot be linked must not hold up the others.
constexpr auto linkTimeout = 500ms;

constexpr std::chrono::nanoseconds silencePeriod = 50ms;
constexpr int mostTicksToLink = linkTimeout / silencePeriod;
constexpr std::uint64_t streamInterval = 200'000'000;  // nanoseconds

// So long, besides a cycle, may a stream bring nothing. The ticks are counted: a program that stood
// still itself gets one on waking up, not all that it missed.
constexpr std::chrono::nanoseconds patience = 500ms;
constexpr std::chrono::nanoseconds watchPeriod = 125ms;

// A shorter silence is over before the user has read of it.
constexpr std::uint64_t silenceToTellOf = 1'000'000'000;  // nanoseconds

}  // namespace

struct TapDevice::Loss {
  const char* begins;
  const char* ends;
  const char* told;
};

const TapDevice::Loss TapDevice::lossOfServer{.begins = "Audio server lost",
                                              .ends = "Audio server found again",
                                              .told = "The audio server has gone."};
const TapDevice::Loss TapDevice::lossOfStream{.begins = "Capture stream lost",
                                              .ends = "Capture stream made again",
                                              .told = "The audio server gives nothing to record."};
const TapDevice::Loss TapDevice::hang{.begins = "Audio graph stands still",
                                      .ends = "Audio graph goes on",
                                      .told = "The audio server stands still."};

TapDevice::TapDevice(Connection& connection, CaptureTime& time, os::Logger& log, NoticeTaker tell,
                     double rate, TapSource source, CA::AudioObjectID device,
                     CA::AudioDeviceIOProc procedure, void* clientData)
    : connection_(connection),
      time_(time),
      log_(log),
      tell_(std::move(tell)),
      rate_(rate),
      source_(std::move(source)),
      timeline_(device, procedure, clientData, rate) {}

TapDevice::~TapDevice() {
  stop();
}

std::optional<std::string> TapDevice::start() {
  ticks_ = time_.makeTicks(pw_thread_loop_get_loop(connection_.loop()), [this] { tick(); });
  if (!ticks_) {
    return "The system gives no timer for the recording (" +
           std::generic_category().message(errno) + "): close other programs, or restart Audrel.";
  }
  connection_.retainDetails();
  connection_.retainConnection();
  state_ = State::starting;
  makeStream();
  const bool isAnswered = connection_.roundTrip() && connection_.roundTrip();
  if (isAnswered) {
    connection_.waitUntil([&] { return !stream_ || stream_->isReady() || stream_->hasEnded(); },
                          startTimeout);
  }
  if (!isCapturing()) {
    auto reason = whyNotStarted();
    stop();
    return reason;
  }
  connection_.waitUntil([&] { return !isCapturing() || stream_->isLinked(); }, linkTimeout);
  timeline_.start(time_.now());
  feedFromStream();
  if (!isCapturing()) {
    lose(lossOfStream);
  }
  return std::nullopt;
}

std::string TapDevice::whyNotStarted() const {
  if (!stream_ || !connection_.isConnected()) {
    return connection_.failure();
  }
  if (stream_->hasEnded()) {
    return "PipeWire refused the capture stream: " + stream_->failure() + ".";
  }
  return "PipeWire did not start the capture stream within " +
         std::to_string(startTimeout.count()) +
         " seconds: it may be overloaded, or have no device to run on.";
}

void TapDevice::stop() {
  if (state_ == State::idle) {
    return;
  }
  if (state_ != State::starting) {
    timeline_.finish(time_.now());
  }
  state_ = State::idle;
  ticks_->setPeriod(0ns);
  stream_.reset();
  connection_.releaseConnection();
  connection_.releaseDetails();
}

// The stream

void TapDevice::makeStream() {
  stream_ =
      std::make_unique<TapStream>(connection_, time_, rate_, source_.tappedPortsOf, timeline_);
  nextStream_ = time_.now() + streamInterval;
  heard_ = timeline_.cyclesHeard();
  readyTicks_ = 0;
}

void TapDevice::feedFromStream() {
  state_ = State::streaming;
  timeline_.feedFrom(Timeline::Feeder::stream);
  heard_ = timeline_.cyclesHeard();
  quietTicks_ = 0;
  ticks_->setPeriod(watchPeriod);
}

/// Every end that a stream comes to while time goes on. Not from within the stream's own events.
void TapDevice::lose(const Loss& loss) {
  if (state_ == State::streaming) {
    timeline_.feedFrom(Timeline::Feeder::silence);
    timeline_.feedSilenceUntil(time_.now());
    state_ = State::silent;
    silentSince_ = time_.now();
    ticks_->setPeriod(silencePeriod);
    log_.error(std::string(loss.begins) + " — recording silence until it is back");
  }
  loss_ = &loss;
  stream_.reset();
}

void TapDevice::serverLost() {
  lose(lossOfServer);
}

void TapDevice::graphChanged() {
  if (stream_ && stream_->hasEnded() && state_ != State::starting) {
    lose(lossOfStream);
  }
  if (stream_) {
    stream_->followGraph();
  }
  if (state_ == State::silent) {
    takeOver();
  }
}

// Time

void TapDevice::tick() {
  if (state_ == State::streaming) {
    watch();
    tellOfSource();
  } else {
    timeline_.feedSilenceUntil(time_.now());
    tellOfLoss();
    takeOver();
  }
}

void TapDevice::watch() {
  const std::uint64_t heard = timeline_.cyclesHeard();
  const bool isQuiet = heard == heard_ && !timeline_.isFed();
  quietTicks_ = isQuiet ? quietTicks_ + 1 : 0;
  heard_ = heard;
  if (quietTicks_ * watchPeriod >= patience + timeline_.cycleLength()) {
    lose(isCapturing() ? hang : lossOfStream);
    takeOver();
  }
}

/// Makes a stream where there is none, and has it feed once it brings cycles with everything in
/// them. The first one fills what is missing since the last silence.
void TapDevice::takeOver() {
  if (!stream_ && connection_.isConnected() && time_.now() >= nextStream_) {
    makeStream();
  }
  if (!isCapturing() || timeline_.cyclesHeard() == heard_) {
    return;
  }
  if (stream_->isLinked() || readyTicks_ > mostTicksToLink) {
    timeline_.feedSilenceUntil(time_.now());
    feedFromStream();
    log_.info(std::string(loss_->ends) + " — recording what it plays");
    tellOfEnd();
  }
  ++readyTicks_;
}

// The user

void TapDevice::tellOfLoss() {
  if (!isTold_ && time_.now() - silentSince_ >= silenceToTellOf) {
    isTold_ = true;
    tell_({.matter = "audio server",
           .summary = "Recording silence",
           .body = std::string(loss_->told) + " The recording goes on in silence until it is back.",
           .isLoss = true});
  }
}

void TapDevice::tellOfEnd() {
  if (std::exchange(isTold_, false)) {
    tell_({.matter = "audio server",
           .summary = "Recording sound again",
           .body = "The audio server is back."});
  }
}

void TapDevice::tellOfSource() {
  if (!stream_ || stream_->hasSources()) {
    return;
  }
  if (const auto news = source_.news()) {
    tell_(*news);
  }
}

}  // namespace audrel::linuxos
