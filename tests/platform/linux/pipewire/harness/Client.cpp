#include "tests/platform/linux/pipewire/harness/Client.h"

#include <mutex>
#include <string_view>

namespace audrel::pwtest {

namespace {

/// 1.x has no configuration of its own for real-time clients.
const char* configuration() {
  return std::string_view(pw_get_library_version()).starts_with("0.") ? "client-rt.conf"
                                                                      : "client.conf";
}

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
}

Client::~Client() {
  stop();
}

void Client::stop() {
  pw_thread_loop_stop(loop_.get());
}

}  // namespace audrel::pwtest
