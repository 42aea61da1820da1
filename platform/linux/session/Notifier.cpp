#include "platform/linux/session/Notifier.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "platform/Identity.h"

namespace audrel::linuxos {

namespace {

constexpr SessionBus::Method method(const char* member) {
  return {.service = "org.freedesktop.Notifications",
          .path = "/org/freedesktop/Notifications",
          .interface = "org.freedesktop.Notifications",
          .member = member};
}

/// Whether the answer's one list of texts has `text`.
bool lists(const SessionBus::Answer& answer, std::string_view text) {
  if (answer.values == nullptr ||
      g_variant_is_of_type(answer.values.get(), G_VARIANT_TYPE("(as)")) == FALSE) {
    return false;
  }
  const VariantHandle list(g_variant_get_child_value(answer.values.get(), 0));
  bool found = false;
  for (gsize i = 0; i < g_variant_n_children(list.get()); ++i) {
    const VariantHandle item(g_variant_get_child_value(list.get(), i));
    found = found || g_variant_get_string(item.get(), nullptr) == text;
  }
  return found;
}

/// 0 when the answer is none.
std::uint32_t numberIn(const SessionBus::Answer& answer) {
  guint32 number = 0;
  if (g_variant_is_of_type(answer.values.get(), G_VARIANT_TYPE("(u)")) == TRUE) {
    g_variant_get(answer.values.get(), "(u)", &number);
  }
  return number;
}

std::string escapedForMarkup(const std::string& text) {
  return StringHandle(g_markup_escape_text(text.c_str(), -1)).get();
}

/// The bus takes nothing but UTF-8.
std::string madeValid(const std::string& text) {
  return StringHandle(g_utf8_make_valid(text.c_str(), -1)).get();
}

GVariant* actionsOf(const Notification::Actions& shown) {
  GVariantBuilder actions;
  g_variant_builder_init(&actions, G_VARIANT_TYPE_STRING_ARRAY);
  for (const Notification::Action& action : shown) {
    g_variant_builder_add(&actions, "s", action.key.c_str());
    g_variant_builder_add(&actions, "s", action.label.c_str());
  }
  return g_variant_builder_end(&actions);
}

GVariant* hintsOf(const Notification& notification) {
  GVariantBuilder hints;
  g_variant_builder_init(&hints, G_VARIANT_TYPE_VARDICT);
  g_variant_builder_add(&hints, "{sv}", "urgency",
                        g_variant_new_byte(static_cast<guchar>(notification.urgency)));
  g_variant_builder_add(&hints, "{sv}", "desktop-entry",
                        g_variant_new_string(identity::bundleIdentifier));
  return g_variant_builder_end(&hints);
}

}  // namespace

Notifier::Notifier(SessionBus& bus, std::shared_ptr<os::Logger> logger)
    : bus_(bus),
      logger_(std::move(logger)),
      listener_(
          bus,
          [this](GDBusConnection* connection) {
            signals_.emplace(connection,
                             NotificationSignals::Events{
                                 .actionInvoked = [this](std::uint32_t number,
                                                         const auto& key) { perform(number, key); },
                                 .closed =
                                     [this](std::uint32_t number) {
                                       if (Tagged* tagged = find(number)) {
                                         forget(*tagged);
                                       }
                                     },
                                 .forgotten = [this] { forgetAll(); }});
          },
          [this] {
            signals_.reset();
            forgetAll();
          }) {}

void Notifier::notify(Notification notification) {
  if (!isToSend(notification)) {
    return;
  }
  ++onTheirWay_;
  notification.summary = madeValid(notification.summary);
  notification.body = madeValid(notification.body);
  for (Notification::Action& action : notification.actions) {
    action.label = madeValid(action.label);
  }
  bus_.call(method("GetCapabilities"), nullptr,
            [this, notification = std::move(notification)](const SessionBus::Answer& answer) {
              if (answer.values == nullptr) {
                done(notification, answer);
              } else {
                show(notification, answer);
              }
            });
}

/// Whether it is, now; else the tag has noted it.
bool Notifier::isToSend(const Notification& notification) {
  if (notification.tag.empty()) {
    return true;
  }
  Tagged& tagged = tagged_[notification.tag];
  if (!tagged.onItsWay) {
    tagged.onItsWay = notification;
    return true;
  }
  tagged.isWithdrawn = false;
  tagged.next = *tagged.onItsWay == notification ? std::nullopt : std::optional(notification);
  return false;
}

void Notifier::show(const Notification& notification, const SessionBus::Answer& capabilities) {
  constexpr gint32 desktopsOwnDuration = -1;
  const auto former = tagged_.find(notification.tag);
  const std::string body =
      lists(capabilities, "body-markup") ? escapedForMarkup(notification.body) : notification.body;
  GVariant* actions =
      actionsOf(lists(capabilities, "actions") ? notification.actions : Notification::Actions());
  bus_.call(method("Notify"),
            g_variant_new("(susss@as@a{sv}i)", "Audrel",
                          former == tagged_.end() ? 0 : former->second.last,
                          identity::bundleIdentifier, notification.summary.c_str(), body.c_str(),
                          actions, hintsOf(notification), desktopsOwnDuration),
            [this, notification](const SessionBus::Answer& answer) { done(notification, answer); });
}

void Notifier::done(const Notification& notification, const SessionBus::Answer& answer) {
  --onTheirWay_;
  if (!answer.failure.empty()) {
    logger_->error(notification.summary + ": " + notification.body +
                   " (no notification could be shown: " + answer.failure + ")");
  }
  const auto found = tagged_.find(notification.tag);
  if (found == tagged_.end()) {
    return;
  }
  Tagged& tagged = found->second;
  tagged.onItsWay.reset();
  if (answer.failure.empty()) {
    tagged.last = numberIn(answer);
    tagged.actions = notification.actions;
  }
  if (std::exchange(tagged.isWithdrawn, false)) {
    close(tagged);
  }
  if (auto next = std::exchange(tagged.next, std::nullopt)) {
    notify(std::move(*next));
  }
}

void Notifier::withdraw(const std::string& tag) {
  const auto found = tagged_.find(tag);
  if (found == tagged_.end()) {
    return;
  }
  Tagged& tagged = found->second;
  tagged.isWithdrawn = tagged.onItsWay.has_value();
  tagged.next.reset();
  close(tagged);
}

void Notifier::close(Tagged& tagged) {
  if (tagged.last != 0) {
    // It may be gone already, which is a failure of the call.
    bus_.call(method("CloseNotification"), g_variant_new("(u)", tagged.last),
              [](const SessionBus::Answer&) {});
    forget(tagged);
  }
}

// What the desktop tells

void Notifier::perform(std::uint32_t number, const std::string& key) {
  const Tagged* tagged = find(number);
  if (tagged == nullptr) {
    return;
  }
  const auto action = std::ranges::find(tagged->actions, key, &Notification::Action::key);
  if (action != tagged->actions.end()) {
    const auto perform = action->perform;  // which may put another notification in its place
    perform();
  }
}

/// Null for another program's.
Notifier::Tagged* Notifier::find(std::uint32_t number) {
  const auto found = std::ranges::find_if(tagged_, [number](const auto& tagged) {
    return number != 0 && tagged.second.last == number;
  });
  return found == tagged_.end() ? nullptr : &found->second;
}

void Notifier::forget(Tagged& tagged) {
  tagged.last = 0;
  tagged.actions.clear();
}

void Notifier::forgetAll() {
  for (auto& [tag, tagged] : tagged_) {
    forget(tagged);
  }
}

}  // namespace audrel::linuxos
