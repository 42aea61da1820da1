#include "platform/linux/session/SuspendInhibitor.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <string>
#include <system_error>
#include <thread>
#include <utility>

#include "platform/linux/system/Releaser.h"

namespace audrel::linuxos {

namespace {

using namespace std::chrono_literals;

using Clock = std::chrono::steady_clock;

/// For connecting, authentication and the call together.
constexpr auto answerTimeout = 2s;

// Closed without a flush, which waits.
using BusHandle = std::unique_ptr<sd_bus, Releaser<sd_bus_close_unref>>;

/// A descriptor that is closed with it.
class Descriptor {
 public:
  explicit Descriptor(int descriptor = -1) : descriptor_(descriptor) {}
  ~Descriptor() {
    if (descriptor_ >= 0) {
      close(descriptor_);
    }
  }
  Descriptor(Descriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
  }

  int get() const { return descriptor_; }

 private:
  int descriptor_;
};

/// What became of the question for a block.
struct Answer {
  Descriptor block;     ///< the block lasts until it is closed
  std::string refusal;  ///< why there is none
  bool isThere = false;

  void fail(int result) {
    refusal = std::generic_category().message(-result);
    isThere = true;
  }
};

int takeAnswer(sd_bus_message* message, void* data, sd_bus_error* /*error*/) {
  auto* answer = static_cast<Answer*>(data);
  const sd_bus_error* error = sd_bus_message_get_error(message);
  int descriptor = -1;
  if (error != nullptr) {
    answer->refusal = error->message != nullptr ? error->message : error->name;
  } else if (const int result = sd_bus_message_read(message, "h", &descriptor); result < 0) {
    answer->fail(result);
  } else {
    // The message's own goes with it.
    answer->block = Descriptor(fcntl(descriptor, F_DUPFD_CLOEXEC, 0));
    if (answer->block.get() < 0) {
      answer->fail(-errno);
    }
  }
  answer->isThere = true;
  return 0;
}

std::chrono::nanoseconds untilBusWantsTime(sd_bus* bus) {
  std::uint64_t microseconds = UINT64_MAX;
  if (sd_bus_get_timeout(bus, &microseconds) < 0 || microseconds == UINT64_MAX) {
    return std::chrono::nanoseconds::max();
  }
  return std::chrono::microseconds(microseconds) - Clock::now().time_since_epoch();
}

/// Until the bus has something to do: 0, or a negative error number when it is not to be waited
/// for.
int waitForBus(sd_bus* bus, int cancel, Clock::time_point deadline) {
  const int events = sd_bus_get_events(bus);
  const auto left = deadline - Clock::now();
  if (events < 0 || left <= 0ns) {
    return events < 0 ? events : -ETIMEDOUT;
  }
  std::array<pollfd, 2> waited = {{
      {.fd = sd_bus_get_fd(bus), .events = static_cast<short>(events), .revents = 0},
      {.fd = cancel, .events = POLLIN, .revents = 0},
  }};
  const auto wait = std::chrono::ceil<std::chrono::milliseconds>(
      std::clamp<std::chrono::nanoseconds>(untilBusWantsTime(bus), 0ns, left));
  if (poll(waited.data(), waited.size(), static_cast<int>(wait.count())) < 0 && errno != EINTR) {
    return -errno;
  }
  return waited[1].revents != 0 ? -ECANCELED : 0;
}

/// Asks the login manager, until it answers, or the deadline, or until `cancel` can be read.
Answer askForBlock(int cancel) {
  const auto deadline = Clock::now() + answerTimeout;
  Answer answer;
  sd_bus* opened = nullptr;
  int result = sd_bus_open_system(&opened);
  const BusHandle bus(opened);
  if (result >= 0) {
    result = sd_bus_call_method_async(bus.get(), nullptr, "org.freedesktop.login1",
                                      "/org/freedesktop/login1", "org.freedesktop.login1.Manager",
                                      "Inhibit", takeAnswer, &answer, "ssss", "sleep", "Audrel",
                                      "Recording audio", "block");
  }
  while (result >= 0 && !answer.isThere) {
    result = sd_bus_process(bus.get(), nullptr);
    if (result == 0) {
      result = waitForBus(bus.get(), cancel, deadline);
    }
  }
  if (!answer.isThere && result < 0 && result != -ECANCELED) {
    answer.fail(result);
  }
  return answer;
}

int makeEvent() {
  const int event = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  if (event < 0) {
    throw std::system_error(errno, std::generic_category());
  }
  return event;
}

}  // namespace

/// One block, and the thread that asks for it and holds it.
class SuspendInhibitor::Inhibition {
 public:
  /// Throws std::system_error when the system gives no more threads or descriptors.
  explicit Inhibition(SuspendInhibitor& owner)
      : end_(makeEvent()), thread_([this, &owner] { hold(owner); }) {}

  ~Inhibition() {
    end();
    thread_.join();
  }
  Inhibition(const Inhibition&) = delete;
  Inhibition& operator=(const Inhibition&) = delete;

  /// Does not wait until the thread has ended.
  void end() const { eventfd_write(end_.get(), 1); }

 private:
  void hold(SuspendInhibitor& owner) const {
    const Answer answer = askForBlock(end_.get());
    if (!answer.refusal.empty()) {
      owner.tellOnce(answer.refusal);
      return;
    }
    pollfd end{.fd = end_.get(), .events = POLLIN, .revents = 0};
    while (poll(&end, 1, -1) < 0 && errno == EINTR) {
    }
  }

  Descriptor end_;
  std::thread thread_;  // last: it reads the other
};

SuspendInhibitor::SuspendInhibitor(std::shared_ptr<os::Logger> logger)
    : logger_(std::move(logger)) {}

SuspendInhibitor::~SuspendInhibitor() {
  release();
}

void SuspendInhibitor::hold() {
  if (inhibition_ != nullptr) {
    return;
  }
  try {
    inhibition_ = std::make_unique<Inhibition>(*this);
  } catch (const std::system_error& error) {
    tellOnce(error.what());
  }
}

void SuspendInhibitor::release() {
  if (inhibition_ != nullptr) {
    inhibition_->end();
    ending_ = std::move(inhibition_);
  }
}

void SuspendInhibitor::tellOnce(const std::string& reason) {
  if (!isTold_.exchange(true)) {
    logger_->info("The machine may suspend while it records: " + reason);
  }
}

}  // namespace audrel::linuxos
