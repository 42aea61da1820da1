#include "tests/platform/linux/pipewire/harness/Client.h"

#include <cstdint>
#include <mutex>
#include <string_view>

namespace audrel::pwtest {

namespace {

/// 1.x has no configuration of its own for real-time clients.
const char* configuration() {
  return std::string_view(pw_get_library_version()).starts_with("0.") ? "client-rt.conf"
                                                                      : "client.conf";
}

/// How long an answer may take, in nanoseconds.
constexpr std::int64_t patience = 10'000'000'000;

}  // namespace

Client::Client(const std::string& socketPath,
               const std::map<std::string, std::string>& properties) {
  static std::once_flag once;
  std::call_once(once, [] { pw_init(nullptr, nullptr); });
  loop_.reset(pw_thread_loop_new("test-client", nullptr));
  context_.reset(pw_context_new(pw_thread_loop_get_loop(loop_.get()),
                                pw_properties_new(PW_KEY_CONFIG_NAME, configuration(), nullptr),
                                0));
  pw_thread_loop_start(loop_.get());
  const Locked lock(loop_);
  pw_properties* own = pw_properties_new(nullptr, nullptr);
  if (!socketPath.empty()) {
    pw_properties_set(own, PW_KEY_REMOTE_NAME, socketPath.c_str());
  }
  for (const auto& [key, value] : properties) {
    pw_properties_set(own, key.c_str(), value.c_str());
  }
  core_.reset(pw_context_connect(context_.get(), own, 0));
  if (core_) {
    static constexpr pw_core_events events = {
        .version = PW_VERSION_CORE_EVENTS,
        .done =
            [](void* data, std::uint32_t, int sequence) {
              auto* self = static_cast<Client*>(data);
              self->answered_ = sequence;
              pw_thread_loop_signal(self->loop_.get(), false);
            },
    };
    pw_core_add_listener(core_.get(), &hook_, &events, this);
  }
}

Client::~Client() {
  stop();
}

void Client::roundTrip() {
  const Locked lock(loop_);
  const int asked = pw_core_sync(core_.get(), PW_ID_CORE, 0);
  timespec deadline{};
  pw_thread_loop_get_time(loop_.get(), &deadline, patience);
  while (answered_ != asked && pw_thread_loop_timed_wait_full(loop_.get(), &deadline) == 0) {
  }
}

void Client::stop() {
  pw_thread_loop_stop(loop_.get());
}

}  // namespace audrel::pwtest
