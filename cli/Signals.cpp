#include "cli/Signals.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <system_error>

namespace audrel::cli {

namespace {

// A signal handler reaches nothing but globals. The flags say what happened; the bell, a pipe, only
// ends the wait, so nothing is lost when it is full.
std::atomic<bool> stopAsked = false;
std::atomic<bool> wakeAsked = false;
std::atomic<bool> resizeSeen = false;
std::atomic<bool> continueSeen = false;
std::atomic<int> bellEnd = -1;
static_assert(std::atomic<bool>::is_always_lock_free && std::atomic<int>::is_always_lock_free);

void ring() noexcept {
  const int errorBefore = errno;
  const char byte = 0;
  [[maybe_unused]] const auto written = write(bellEnd.load(), &byte, 1);
  errno = errorBefore;
}

void onStop(int /*signal*/) {
  stopAsked = true;
  ring();
}

void onResize(int /*signal*/) {
  resizeSeen = true;
  ring();
}

void onContinue(int signal) {
  continueSeen = true;
  onResize(signal);
}

void makeBell(std::array<int, 2>& ends) {
  if (pipe(ends.data()) != 0) {
    throw std::system_error(errno, std::generic_category(), "pipe");
  }
  for (const int end : ends) {
    fcntl(end, F_SETFD, FD_CLOEXEC);
    fcntl(end, F_SETFL, O_NONBLOCK);
  }
}

void emptyBell(int end) {
  std::array<char, 64> bytes;
  while (read(end, bytes.data(), bytes.size()) > 0) {
  }
}

std::optional<Signals::Event> pendingEvent() {
  if (stopAsked) {
    return Signals::Event::stop;
  }
  if (wakeAsked.exchange(false)) {
    return Signals::Event::woken;
  }
  if (resizeSeen.exchange(false)) {
    return Signals::Event::resized;
  }
  return std::nullopt;
}

}  // namespace

Signals::Signals() {
  makeBell(bell_);
  bellEnd = bell_[1];
  stopAsked = wakeAsked = resizeSeen = continueSeen = false;
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    handle(signal, onStop);
  }
  handle(SIGWINCH, onResize);
  handle(SIGCONT, onContinue);
  for (const int signal : {SIGPIPE, SIGXFSZ}) {
    handle(signal, SIG_IGN);
  }
}

Signals::~Signals() {
  for (const auto& [signal, action] : previous_) {
    sigaction(signal, &action, nullptr);
  }
  bellEnd = -1;
  for (const int end : bell_) {
    close(end);
  }
}

void Signals::handle(int signal, void (*handler)(int)) {
  struct sigaction before{};
  sigaction(signal, nullptr, &before);
  if (before.sa_handler == SIG_IGN) {
    return;
  }
  struct sigaction action{};
  action.sa_handler = handler;
  action.sa_flags = SA_RESTART;
  sigemptyset(&action.sa_mask);
  sigaction(signal, &action, nullptr);
  previous_.push_back({signal, before});
}

Signals::Event Signals::wait(std::optional<std::chrono::milliseconds> timeout) {
  using Clock = std::chrono::steady_clock;
  const auto end = Clock::now() + timeout.value_or(std::chrono::milliseconds::zero());
  for (;;) {
    emptyBell(bell_[0]);
    if (const auto event = pendingEvent(); event.has_value()) {
      return *event;
    }
    int milliseconds = -1;
    if (timeout.has_value()) {
      const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
      if (left <= std::chrono::milliseconds::zero()) {
        return Event::timeout;
      }
      milliseconds = static_cast<int>(left.count());
    }
    pollfd bell{.fd = bell_[0], .events = POLLIN, .revents = 0};
    poll(&bell, 1, milliseconds);
  }
}

bool Signals::wasStopped() const {
  return continueSeen;
}

void Signals::wake() noexcept {
  wakeAsked = true;
  ring();
}

}  // namespace audrel::cli
