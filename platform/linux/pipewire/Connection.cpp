#include "platform/linux/pipewire/Connection.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <system_error>
#include <utility>

namespace audrel::linuxos {

namespace {

using namespace std::chrono_literals;

constexpr auto answerTimeout = 2s;
constexpr auto retryPeriod = 200ms;

// What a stream of ours may bring in one cycle. By default that is as much as a graph's largest
// cycle has, and of one whose rate is lower than the stream's the rest would be dropped.
constexpr const char* limitKey = "default.clock.quantum-limit";
constexpr const char* mostFrames = "65536";

/// 0.3 gives a client's data thread its real-time priority only under a configuration of its own,
/// which 1.x no longer ships since its usual one does the same.
const char* clientConfiguration() {
  return std::string_view(pw_get_library_version()).starts_with("0.") ? "client-rt.conf"
                                                                      : "client.conf";
}

std::string environment(const char* name) {
  const char* value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): nobody sets it
  return value != nullptr ? value : "";
}

std::string socketPath(const std::string& remote) {
  if (!remote.empty()) {
    return remote;
  }
  std::string name = environment("PIPEWIRE_REMOTE");
  if (name.empty()) {
    name = "pipewire-0";
  }
  if (name.starts_with('/')) {
    return name;
  }
  std::string folder = environment("PIPEWIRE_RUNTIME_DIR");
  if (folder.empty()) {
    folder = environment("XDG_RUNTIME_DIR");
  }
  return folder.empty() ? name : folder + "/" + name;
}

timespec timeOf(std::chrono::nanoseconds duration) {
  constexpr long second = 1'000'000'000;
  return {.tv_sec = duration.count() / second, .tv_nsec = duration.count() % second};
}

/// Whether this user may not use the socket. The library tells of the last place alone where it
/// looked for one, which may be another.
bool isForbidden(const std::string& remote) {
  return faccessat(AT_FDCWD, socketPath(remote).c_str(), R_OK | W_OK, AT_EACCESS) != 0 &&
         errno == EACCES;
}

bool isRefusal(int error) {
  return error == EACCES || error == EPERM;
}

/// Whether a server that goes on answers a call like this. Calls to what has just gone are races.
bool isAnswer(int error) {
  return isRefusal(error) || error == ENOENT;
}

/// Why there is no connection.
std::string noServerText(const std::string& remote, int error) {
  const std::string path = socketPath(remote);
  if (isRefusal(error)) {
    return "PipeWire refuses this user at " + path +
           ": run the program as the user of the desktop session.";
  }
  if (!path.starts_with('/')) {
    return std::string("PipeWire was not found because XDG_RUNTIME_DIR is not ") +
           (path.find('/') == std::string::npos ? "set" : "an absolute path") +
           ": run the program in the user's session, or set XDG_RUNTIME_DIR to the session's "
           "folder.";
  }
  return "PipeWire is not running: no server answers at " + path + " (" +
         std::generic_category().message(error) +
         "). Start it with \"systemctl --user start pipewire\".";
}

/// Why there is one no longer.
std::string lossText(const std::string& remote, int error) {
  if (isRefusal(error)) {
    return "PipeWire rejects this program at " + socketPath(remote) +
           ": allow it in the configuration of PipeWire or of its session manager.";
  }
  if (error == ETIMEDOUT) {
    return "PipeWire does not answer at " + socketPath(remote) +
           ". Restart it with \"systemctl --user restart pipewire\".";
  }
  return "PipeWire went away: the connection to " + socketPath(remote) + " broke (" +
         std::generic_category().message(error) +
         "). Start it with \"systemctl --user start pipewire\", and then again what you did.";
}

/// Throws `std::system_error` for what the system did not give, for lack of descriptors or memory.
void require(const void* given) {
  if (given == nullptr) {
    throw std::system_error(errno, std::generic_category(), "Audio cannot be recorded");
  }
}

std::string noContextText(const std::string& /*remote*/, int error) {
  if (error == ENOENT) {
    return std::string("PipeWire's configuration for clients, \"") + clientConfiguration() +
           "\", was not found: install the package pipewire-bin.";
  }
  return "PipeWire's library cannot be used: " + std::generic_category().message(error) + ".";
}

}  // namespace

const pw_core_events Connection::coreEvents = {
    .version = PW_VERSION_CORE_EVENTS,
    .info = [](void* self, const pw_core_info*) { static_cast<Connection*>(self)->greeted(); },
    .done =
        [](void* data, std::uint32_t id, int sequence) {
          auto* self = static_cast<Connection*>(data);
          if (id == PW_ID_CORE) {
            self->answeredSync_ = sequence;
            self->wake();
          }
        },
    // Errors of other objects do not end the connection.
    .error =
        [](void* self, std::uint32_t id, int, int result, const char*) {
          if (id == PW_ID_CORE) {
            static_cast<Connection*>(self)->failed(-result);
          }
        },
};

Connection::Connection() {
  initialisePipeWire();
  loop_.reset(pw_thread_loop_new("audrel-graph", nullptr));
  require(loop_.get());
  pw_loop* loop = pw_thread_loop_get_loop(loop_.get());
  changeEvent_ = pw_loop_add_event(
      loop,
      [](void* data, std::uint64_t) {
        auto* self = static_cast<Connection*>(data);
        self->wake();
        if (self->observer_ != nullptr && self->isConnected()) {
          self->observer_->graphChanged();
        }
      },
      this);
  lossEvent_ = pw_loop_add_event(
      loop, [](void* data, std::uint64_t) { static_cast<Connection*>(data)->dropLostServer(); },
      this);
  retryTimer_ = pw_loop_add_timer(
      loop, [](void* data, std::uint64_t) { static_cast<Connection*>(data)->retry(); }, this);
  waitTimer_ = pw_loop_add_timer(
      loop, [](void* data, std::uint64_t) { static_cast<Connection*>(data)->wake(); }, this);
  for (const spa_source* source : {changeEvent_, lossEvent_, retryTimer_, waitTimer_}) {
    require(source);
  }
  if (pw_thread_loop_start(loop_.get()) < 0) {
    require(nullptr);
  }
}

Connection::~Connection() {
  pw_thread_loop_stop(loop_.get());
  disconnect();
  pw_loop* loop = pw_thread_loop_get_loop(loop_.get());
  pw_loop_destroy_source(loop, changeEvent_);
  pw_loop_destroy_source(loop, lossEvent_);
  pw_loop_destroy_source(loop, retryTimer_);
  pw_loop_destroy_source(loop, waitTimer_);
}

void Connection::greeted() {
  isGreeted_ = true;
  // Since 1.x a context takes over what the server has for itself, just before this.
  const spa_dict_item limit{.key = limitKey, .value = mostFrames};
  const spa_dict properties{.flags = 0, .n_items = 1, .items = &limit};
  pw_context_update_properties(context_.get(), &properties);
}

/// What the core answers: to a program at the door, or to a call; anything else ends the
/// connection, since PipeWire closes its socket after it.
void Connection::failed(int error) {
  const bool isAtTheDoor = answeredSync_ == -1;
  if (isAtTheDoor && isRefusal(error)) {
    refusal_ = "it rejects this program";
  } else if (isAnswer(error)) {
    return;
  }
  lose(error);
}

std::string Connection::failure() const {
  return failureText_ == nullptr ? "" : failureText_(remote_, error_);
}

/// Notes why; it is put into words when somebody asks.
bool Connection::fail(FailureText text, int error) {
  failureText_ = text;
  error_ = error;
  return false;
}

std::optional<std::string> Connection::refusal() const {
  if (refusal_ != nullptr) {
    return refusal_;
  }
  if (isConnected() && graph().linkFactoryId == unknownGlobal) {
    return "it does not let this program link to streams";
  }
  return std::nullopt;
}

bool Connection::ensureConnected() {
  if (isLost_) {
    dropLostServer();
  }
  return core_ != nullptr || connect();
}

bool Connection::connect() {
  refusal_ = nullptr;
  if (!context_) {
    context_.reset(pw_context_new(
        pw_thread_loop_get_loop(loop_.get()),
        pw_properties_new(PW_KEY_CONFIG_NAME, clientConfiguration(), limitKey, mostFrames, nullptr),
        0));
  }
  if (!context_) {
    return fail(noContextText, errno);
  }
  pw_properties* properties = pw_properties_new(PW_KEY_APP_NAME, "Audrel", nullptr);
  if (!remote_.empty()) {
    pw_properties_set(properties, PW_KEY_REMOTE_NAME, remote_.c_str());
  }
  core_ = pw_context_connect(context_.get(), properties, 0);
  if (core_ == nullptr) {
    const int reason = errno;
    const int error = isForbidden(remote_) ? EACCES : reason;
    refusal_ = isRefusal(error) ? "it is another user's" : nullptr;
    return fail(noServerText, error);
  }
  isGreeted_ = false;
  answeredSync_ = -1;
  pw_core_add_listener(core_, coreHook_.get(), &coreEvents, this);
  mirror_ = std::make_unique<GraphMirror>(core_, [this] { noteChange(); });
  mirror_->followDetails(detailUsers_ > 0);
  // Its answer says that the server has let this program in, whoever has it connect.
  pw_core_sync(core_, PW_ID_CORE, 0);
  updateRetryTimer();
  return true;
}

void Connection::disconnect() {
  mirror_.reset();
  coreHook_.remove();
  if (core_ != nullptr) {
    pw_core_disconnect(core_);
    core_ = nullptr;
  }
}

void Connection::noteChange() {
  pw_loop_signal_event(pw_thread_loop_get_loop(loop_.get()), changeEvent_);
}

/// Notices the loss. What was made on the connection goes later, since it may be in use up the
/// stack.
void Connection::lose(int error) {
  if (!isConnected()) {
    return;
  }
  isLost_ = true;
  ++losses_;
  fail(lossText, error);
  wake();
  pw_loop_signal_event(pw_thread_loop_get_loop(loop_.get()), lossEvent_);
}

void Connection::dropLostServer() {
  if (!isLost_) {
    return;
  }
  if (observer_ != nullptr) {
    observer_->serverLost();
  }
  disconnect();
  isLost_ = false;
  updateRetryTimer();
}

void Connection::retainConnection() {
  ++connectionUsers_;
  updateRetryTimer();
}

void Connection::releaseConnection() {
  --connectionUsers_;
  updateRetryTimer();
}

void Connection::updateRetryTimer() {
  const bool isNeeded = connectionUsers_ > 0 && core_ == nullptr;
  timespec period = timeOf(isNeeded ? retryPeriod : 0ms);
  pw_loop_update_timer(pw_thread_loop_get_loop(loop_.get()), retryTimer_, &period, &period, false);
}

void Connection::retry() {
  if (core_ == nullptr) {
    connect();
  }
}

void Connection::retainDetails() {
  if (++detailUsers_ == 1 && mirror_) {
    mirror_->followDetails(true);
  }
}

void Connection::releaseDetails() {
  if (--detailUsers_ == 0 && mirror_) {
    mirror_->followDetails(false);
  }
}

bool Connection::roundTrip() {
  if (!isConnected()) {
    return false;
  }
  const unsigned losses = losses_;
  const int asked = pw_core_sync(core_, PW_ID_CORE, 0);
  if (waitUntil([&] { return answeredSync_ == asked; }, answerTimeout)) {
    return true;
  }
  if (losses_ == losses) {
    if (isGreeted_ && answeredSync_ == -1) {
      refusal_ = "it waits for a permission that its session manager has not given";
    }
    lose(ETIMEDOUT);
  }
  return false;
}

// The thread loop's own timeouts follow the time of day, which may be set while somebody waits.
bool Connection::waitUntil(const std::function<bool()>& condition,
                           std::chrono::milliseconds timeout) {
  if (!isConnected()) {
    return false;
  }
  const unsigned losses = losses_;
  const auto deadline = std::chrono::steady_clock::now() + timeout;
  timespec remaining = timeOf(timeout);
  pw_loop_update_timer(pw_thread_loop_get_loop(loop_.get()), waitTimer_, &remaining, nullptr,
                       false);
  bool holds = condition();
  while (!holds && losses_ == losses && std::chrono::steady_clock::now() < deadline) {
    pw_thread_loop_wait(loop_.get());
    holds = losses_ == losses && condition();
  }
  return holds;
}

}  // namespace audrel::linuxos
