#include "platform/linux/pipewire/CaptureAccess.h"

#include <pipewire/pipewire.h>

#include <cerrno>
#include <ctime>
#include <string_view>

#include "platform/Identity.h"
#include "platform/linux/pipewire/Handles.h"

namespace audrel::linuxos {

namespace {

using MainLoopHandle = std::unique_ptr<pw_main_loop, Releaser<pw_main_loop_destroy>>;
using CoreHandle = std::unique_ptr<pw_core, Releaser<pw_core_disconnect>>;

constexpr timespec answerTimeout{.tv_sec = 2, .tv_nsec = 0};

bool isRefusal(int error) {
  return error == EACCES || error == EPERM;
}

/// What a server tells a client that has just come.
struct Reception {
  pw_main_loop* loop;
  int asked = -1;
  bool isGreeted = false;
  bool isAnswered = false;
  bool isRejected = false;
  bool isBroken = false;  ///< nothing more will come
  bool canLink = false;

  void end() const { pw_main_loop_quit(loop); }

  std::optional<std::string> refusal() const {
    if (isRejected) {
      return "it rejects this program";
    }
    if (isGreeted && !isAnswered && !isBroken) {
      return "it waits for a permission that its session manager has not given";
    }
    if (isAnswered && !canLink) {
      return "it does not let this program link to streams";
    }
    return std::nullopt;
  }
};

const pw_core_events coreEvents = {
    .version = PW_VERSION_CORE_EVENTS,
    .info = [](void* data,
               const pw_core_info*) { static_cast<Reception*>(data)->isGreeted = true; },
    .done =
        [](void* data, std::uint32_t id, int sequence) {
          auto* reception = static_cast<Reception*>(data);
          if (id == PW_ID_CORE && sequence == reception->asked) {
            reception->isAnswered = true;
            reception->end();
          }
        },
    .error =
        [](void* data, std::uint32_t id, int, int result, const char*) {
          auto* reception = static_cast<Reception*>(data);
          if (id == PW_ID_CORE) {
            reception->isRejected = isRefusal(-result);
            reception->isBroken = true;
            reception->end();
          }
        },
};

const pw_registry_events registryEvents = {
    .version = PW_VERSION_REGISTRY_EVENTS,
    .global =
        [](void* data, std::uint32_t, std::uint32_t, const char*, std::uint32_t,
           const spa_dict* properties) {
          const char* made = properties == nullptr
                                 ? nullptr
                                 : spa_dict_lookup(properties, PW_KEY_FACTORY_TYPE_NAME);
          if (made != nullptr && std::string_view(made) == PW_TYPE_INTERFACE_Link) {
            static_cast<Reception*>(data)->canLink = true;
          }
        },
};

void endReception(void* data, std::uint64_t /*expirations*/) {
  static_cast<Reception*>(data)->end();
}

/// Runs the loop until the server has answered, or has had its time.
Reception receive(pw_main_loop* mainLoop, pw_core* core) {
  Reception reception{.loop = mainLoop};
  const ProxyHandle registry(
      reinterpret_cast<pw_proxy*>(pw_core_get_registry(core, PW_VERSION_REGISTRY, 0)));
  Hook coreHook;
  Hook registryHook;
  pw_core_add_listener(core, coreHook.get(), &coreEvents, &reception);
  pw_registry_add_listener(reinterpret_cast<pw_registry*>(registry.get()), registryHook.get(),
                           &registryEvents, &reception);
  reception.asked = pw_core_sync(core, PW_ID_CORE, 0);
  pw_loop* loop = pw_main_loop_get_loop(mainLoop);
  timespec timeout = answerTimeout;
  spa_source* timer = pw_loop_add_timer(loop, endReception, &reception);
  if (timer == nullptr) {
    return reception;
  }
  pw_loop_update_timer(loop, timer, &timeout, nullptr, false);
  pw_main_loop_run(mainLoop);
  pw_loop_destroy_source(loop, timer);
  return reception;
}

}  // namespace

std::optional<std::string> captureRefusal(const std::string& remote) {
  initialisePipeWire();
  const MainLoopHandle mainLoop(pw_main_loop_new(nullptr));
  if (!mainLoop) {
    return std::nullopt;
  }
  const ContextHandle context(pw_context_new(pw_main_loop_get_loop(mainLoop.get()), nullptr, 0));
  if (!context) {
    return std::nullopt;  // the library lacks its configuration: a start says so
  }
  pw_properties* properties = pw_properties_new(PW_KEY_APP_NAME, "Audrel", nullptr);
  if (!remote.empty()) {
    pw_properties_set(properties, PW_KEY_REMOTE_NAME, remote.c_str());
  }
  const CoreHandle core(pw_context_connect(context.get(), properties, 0));
  if (core != nullptr) {
    return receive(mainLoop.get(), core.get()).refusal();
  }
  return isRefusal(errno) ? std::optional<std::string>("it is another user's") : std::nullopt;
}

CaptureAccess::CaptureAccess(os::Log& log)
    : logger_(log.makeLogger(identity::bundleIdentifier, "capture")) {}

bool CaptureAccess::preflightScreenCaptureAccess() {
  const auto refusal = captureRefusal(remote_);
  if (refusal) {
    logger_->error("The audio server refuses to be captured — " + *refusal);
  }
  return !refusal;
}

bool CaptureAccess::requestScreenCaptureAccess() {
  return preflightScreenCaptureAccess();
}

}  // namespace audrel::linuxos
