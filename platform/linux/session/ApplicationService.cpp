#include "platform/linux/session/ApplicationService.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

#include "platform/Identity.h"
#include "platform/linux/system/Environment.h"

namespace audrel::linuxos {

namespace {

using namespace std::chrono_literals;

constexpr auto claimTimeout = 3s;

/// The bus hands the activation over as soon as the name is there.
constexpr auto activationAfterStart = 10s;

// As the bus numbers them.
constexpr guint32 doNotQueue = 4;
constexpr guint32 someoneElseHasTheName = 3;

constexpr const char* interfaceXml = R"(
<node>
  <interface name="org.freedesktop.Application">
    <method name="Activate">
      <arg type="a{sv}" name="platform_data" direction="in"/>
    </method>
    <method name="Open">
      <arg type="as" name="uris" direction="in"/>
      <arg type="a{sv}" name="platform_data" direction="in"/>
    </method>
    <method name="ActivateAction">
      <arg type="s" name="action_name" direction="in"/>
      <arg type="av" name="parameter" direction="in"/>
      <arg type="a{sv}" name="platform_data" direction="in"/>
    </method>
  </interface>
</node>)";

constexpr SessionBus::Method requestNameMethod = {.service = "org.freedesktop.DBus",
                                                  .path = "/org/freedesktop/DBus",
                                                  .interface = "org.freedesktop.DBus",
                                                  .member = "RequestName"};

constexpr SessionBus::Method activateMethod = {.service = identity::bundleIdentifier,
                                               .path = ApplicationService::objectPath,
                                               .interface = "org.freedesktop.Application",
                                               .member = "Activate"};

struct Action {
  std::string_view name;
  void (ApplicationCommands::*command)();
};

constexpr Action actions[] = {
    {"start-recording", &ApplicationCommands::startRecording},
    {"stop-recording", &ApplicationCommands::stopRecording},
    {"toggle-recording", &ApplicationCommands::toggleRecording},
    {"quit", &ApplicationCommands::quit},
};

void onMethodCall(GDBusConnection* /*connection*/, const gchar* /*sender*/, const gchar* /*path*/,
                  const gchar* /*interface*/, const gchar* method, GVariant* arguments,
                  GDBusMethodInvocation* invocation, gpointer self) noexcept {
  auto* service = static_cast<ApplicationService*>(self);
  if (std::string_view(method) == "ActivateAction") {
    const char* name = nullptr;
    g_variant_get_child(arguments, 0, "&s", &name);
    if (!service->activateAction(name)) {
      g_dbus_method_invocation_return_error_literal(
          invocation, G_DBUS_ERROR, G_DBUS_ERROR_INVALID_ARGS, "There is no such action");
      return;
    }
  } else {
    service->activate();  // a recorder opens no files
  }
  g_dbus_method_invocation_return_value(invocation, nullptr);
}

/// Terminals that the bus has started hand its variable on: it counts at the start alone.
std::chrono::microseconds expectedActivation() {
  const bool isStartedByBus = environmentVariable("DBUS_STARTER_ADDRESS").has_value();
  return isStartedByBus ? LoopSource::now() + activationAfterStart : 0us;
}

constexpr GDBusInterfaceVTable table{onMethodCall, nullptr, nullptr, {}};

}  // namespace

ApplicationService::ApplicationService(Application& application, SessionBus& bus,
                                       Notifier& notifier, std::shared_ptr<os::Logger> logger)
    : application_(application),
      bus_(bus),
      notifier_(notifier),
      logger_(std::move(logger)),
      activationExpectedUntil_(expectedActivation()),
      perform_([this] { performNextCommand(); }, Reentry::allowed),
      listener_(
          bus,
          [this](GDBusConnection* connection) {
            if (claim_) {  // else the claim does it
              requestName(connection);
            }
          },
          [this] { object_.reset(); }) {}

// The name

ApplicationService::Claim ApplicationService::claim() {
  bus_.withConnection([this](GDBusConnection* connection, const std::string& /*failure*/) {
    if (connection == nullptr) {
      decide(Claim::first);
    } else if (!object_) {
      requestName(connection);
    }
  });
  LoopSource timeout([this] { giveUpWaiting(); });
  timeout.callAfter(claimTimeout);
  const MainContextHandle context = mainContext();
  while (!claim_ || (claim_ == Claim::runsAlready && notifier_.isBusy())) {
    g_main_context_iteration(context.get(), TRUE);
  }
  return *claim_;
}

void ApplicationService::decide(Claim claim) {
  claim_ = claim_.value_or(claim);
}

void ApplicationService::giveUpWaiting() {
  if (otherHasName_ && !claim_) {
    notifyRunning();  // it hangs, so it cannot say so itself
  }
  decide(otherHasName_ ? Claim::runsAlready : Claim::first);
}

void ApplicationService::requestName(GDBusConnection* connection) {
  // Whoever sees the name may call.
  object_.emplace(connection, objectPath, interfaceXml, table, this);
  bus_.call(requestNameMethod, g_variant_new("(su)", identity::bundleIdentifier, doNotQueue),
            [this](const SessionBus::Answer& answer) { nameAnswered(answer); });
}

void ApplicationService::nameAnswered(const SessionBus::Answer& answer) {
  guint32 result = 0;
  if (answer.values != nullptr &&
      g_variant_check_format_string(answer.values.get(), "(u)", FALSE)) {
    g_variant_get(answer.values.get(), "(u)", &result);
  }
  if (result != someoneElseHasTheName) {
    decide(Claim::first);
    return;
  }
  object_.reset();
  if (claim_) {
    logger_->info("Another Audrel was started while the session bus was away");
  } else {
    otherHasName_ = true;
    activateOther();
  }
}

void ApplicationService::activateOther() {
  bus_.call(activateMethod, g_variant_new("(a{sv})", nullptr),
            [this](const SessionBus::Answer& answer) {
              if (answer.values == nullptr) {
                giveUpWaiting();
              }
              decide(Claim::runsAlready);
            });
}

// What the desktop asks

void ApplicationService::activate() {
  if (application_.isModal()) {
    application_.presentAlert();
    return;
  }
  if (LoopSource::now() < std::exchange(activationExpectedUntil_, 0us)) {
    return;
  }
  if (const auto commands = commands_ ? commands_->lock() : nullptr) {
    commands->activate();
  } else {
    notifyRunning();
  }
}

void ApplicationService::notifyRunning() {
  notifier_.notify({.summary = "Audrel is already running",
                    .body = "Its icon in the panel has the menu. Where the panel shows none, the "
                            "launcher's entry for Audrel has its commands.",
                    .tag = "running"});
}

std::vector<std::string> ApplicationService::actionNames() {
  std::vector<std::string> names;
  for (const Action& action : actions) {
    names.emplace_back(action.name);
  }
  return names;
}

bool ApplicationService::activateAction(const std::string& name) {
  activationExpectedUntil_ = 0us;
  const auto* const action = std::ranges::find(actions, name, &Action::name);
  if (action == std::end(actions)) {
    return false;
  }
  waiting_.push_back(action->command);
  // Never from here: the caller may wait for its answer, and the command for an alert's.
  perform_.callSoon();
  return true;
}

void ApplicationService::setCommands(const std::weak_ptr<ApplicationCommands>& commands) {
  commands_ = commands;
  perform_.callSoon();
}

void ApplicationService::performNextCommand() {
  if (!commands_ || waiting_.empty()) {
    return;
  }
  const Command command = waiting_.front();
  waiting_.pop_front();
  if (!waiting_.empty()) {
    perform_.callSoon();  // also when this one waits in an alert: the next may be quit
  }
  const auto commands = commands_->lock();
  if (application_.isModal() && command != &ApplicationCommands::quit) {
    application_.presentAlert();
  } else if (commands != nullptr) {
    ((*commands).*command)();
  }
}

}  // namespace audrel::linuxos
