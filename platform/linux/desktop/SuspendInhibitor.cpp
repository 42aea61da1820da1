#include "platform/linux/desktop/SuspendInhibitor.h"

#include <fcntl.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <string>
#include <system_error>
#include <thread>
#include <utility>

namespace audrel::linuxos {

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::microseconds answerTimeout = 2s;

struct BusRelease {
  void operator()(sd_bus* bus) const { sd_bus_flush_close_unref(bus); }
};
struct MessageRelease {
  void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
using BusHandle = std::unique_ptr<sd_bus, BusRelease>;
using MessageHandle = std::unique_ptr<sd_bus_message, MessageRelease>;

class BusError {
 public:
  BusError() = default;
  ~BusError() { sd_bus_error_free(&error_); }
  BusError(const BusError&) = delete;
  BusError& operator=(const BusError&) = delete;

  sd_bus_error* get() { return &error_; }

  /// `result` is the negative error number of the call that failed.
  std::string text(int result) const {
    return error_.message != nullptr ? error_.message : std::generic_category().message(-result);
  }

 private:
  sd_bus_error error_{};
};

/// A descriptor of the block, which lasts until every copy is closed; else a negative error number.
int blockSleep(BusError& error) {
  sd_bus* opened = nullptr;
  int result = sd_bus_open_system(&opened);
  if (result < 0) {
    return result;
  }
  const BusHandle bus(opened);
  sd_bus_set_method_call_timeout(bus.get(), static_cast<std::uint64_t>(answerTimeout.count()));
  sd_bus_message* answered = nullptr;
  result = sd_bus_call_method(bus.get(), "org.freedesktop.login1", "/org/freedesktop/login1",
                              "org.freedesktop.login1.Manager", "Inhibit", error.get(), &answered,
                              "ssss", "sleep", "Audrel", "Recording audio", "block");
  if (result < 0) {
    return result;
  }
  const MessageHandle answer(answered);
  int descriptor = -1;
  result = sd_bus_message_read(answer.get(), "h", &descriptor);
  if (result < 0) {
    return result;
  }
  // The answer's own goes with it.
  const int copy = fcntl(descriptor, F_DUPFD_CLOEXEC, 0);
  return copy < 0 ? -errno : copy;
}

}  // namespace

/// One block and the thread that asks for it.
class SuspendInhibitor::Inhibition {
 public:
  /// Throws std::system_error when there can be no thread.
  explicit Inhibition(SuspendInhibitor& owner) : thread_([this, &owner] { ask(owner); }) {}

  ~Inhibition() {
    thread_.join();
    if (descriptor_ >= 0) {
      close(descriptor_);
    }
  }
  Inhibition(const Inhibition&) = delete;
  Inhibition& operator=(const Inhibition&) = delete;

 private:
  void ask(SuspendInhibitor& owner) {
    BusError error;
    descriptor_ = blockSleep(error);
    if (descriptor_ < 0) {
      owner.tellOnce(error.text(descriptor_));
    }
  }

  int descriptor_ = -1;
  std::thread thread_;  // last: it writes to the other
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
  inhibition_.reset();
}

void SuspendInhibitor::tellOnce(const std::string& reason) {
  if (!std::exchange(isTold_, true)) {
    logger_->info("The machine may suspend while it records: " + reason);
  }
}

}  // namespace audrel::linuxos
