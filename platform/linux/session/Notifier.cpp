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
    : bus_(bus), logger_(std::move(logger)) {}

void Notifier::notify(Notification notification) {
  if (!isToSend(notification)) {
    return;
  }
  ++onTheirWay_;
  notification.summary = madeValid(notification.summary);
  notification.body = madeValid(notification.body);
  bus_.call(method("GetCapabilities"), nullptr,
            [this, notification = std::move(notification)](const SessionBus::Answer& answer) {
              if (answer.values == nullptr) {
                done(notification, answer);
              } else {
                show(notification,
                     lists(answer, "body-markup") ? BodyFormat::markup : BodyFormat::plain);
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
  tagged.next = *tagged.onItsWay == notification ? std::nullopt : std::optional(notification);
  return false;
}

void Notifier::show(const Notification& notification, BodyFormat format) {
  constexpr gint32 desktopsOwnDuration = -1;
  const auto former = tagged_.find(notification.tag);
  const std::string body =
      format == BodyFormat::markup ? escapedForMarkup(notification.body) : notification.body;
  bus_.call(
      method("Notify"),
      g_variant_new("(susssas@a{sv}i)", "Audrel", former == tagged_.end() ? 0 : former->second.last,
                    identity::bundleIdentifier, notification.summary.c_str(), body.c_str(), nullptr,
                    hintsOf(notification), desktopsOwnDuration),
      [this, notification](const SessionBus::Answer& answer) { done(notification, answer); });
}

void Notifier::done(const Notification& notification, const SessionBus::Answer& answer) {
  --onTheirWay_;
  if (!answer.failure.empty()) {
    logger_->error(notification.summary + ": " + notification.body +
                   " (no notification could be shown: " + answer.failure + ")");
  }
  if (const auto tagged = tagged_.find(notification.tag); tagged != tagged_.end()) {
    tagged->second.last = answer.failure.empty() ? numberIn(answer) : tagged->second.last;
    tagged->second.onItsWay.reset();
    if (auto next = std::exchange(tagged->second.next, std::nullopt)) {
      notify(std::move(*next));
    }
  }
}

}  // namespace audrel::linuxos
