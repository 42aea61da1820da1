#include "platform/linux/tray/DBusMenu.h"

#include <array>
#include <cstddef>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/linux/tray/Descriptions.h"
#include "platform/linux/tray/MenuVariants.h"

namespace audrel::linuxos {

namespace {

struct Call {
  MenuPresenter& presenter;
  std::string panel;    ///< who calls
  GVariant* arguments;  ///< a tuple; the bus library has checked its type
};

VariantHandle argument(const Call& call, gsize index) {
  return VariantHandle(g_variant_get_child_value(call.arguments, index));
}

std::int32_t intArgument(const Call& call, gsize index) {
  return g_variant_get_int32(argument(call, index).get());
}

std::string stringArgument(const Call& call, gsize index) {
  return g_variant_get_string(argument(call, index).get(), nullptr);
}

/// What one call may name. No menu has as many items or properties.
constexpr std::size_t mostInACall = 10'000;

/// The names of properties; nothing when they are too many.
std::optional<PropertyNames> namesArgument(const Call& call, gsize index) {
  const VariantHandle names = argument(call, index);
  PropertyNames result;
  for (gsize i = 0; i < g_variant_n_children(names.get()) && result.size() <= mostInACall; ++i) {
    const VariantHandle name(g_variant_get_child_value(names.get(), i));
    result.insert(g_variant_get_string(name.get(), nullptr));
  }
  return result.size() <= mostInACall ? std::optional(std::move(result)) : std::nullopt;
}

/// In the caller's order and each once: to serve one can take the program a while. Nothing when
/// they are too many.
std::optional<std::vector<std::int32_t>> idsArgument(const Call& call, gsize index) {
  const VariantHandle ids = argument(call, index);
  gsize count = 0;
  const auto* first =
      static_cast<const gint32*>(g_variant_get_fixed_array(ids.get(), &count, sizeof(gint32)));
  std::set<std::int32_t> seen;
  std::vector<std::int32_t> result;
  for (const gint32 id : std::span(first, count)) {
    if (seen.insert(id).second) {
      result.push_back(id);
    }
    if (result.size() > mostInACall) {
      return std::nullopt;
    }
  }
  return result;
}

GVariant* idArray(const std::vector<std::int32_t>& ids) {
  return g_variant_new_fixed_array(G_VARIANT_TYPE_INT32, ids.data(), ids.size(),
                                   sizeof(std::int32_t));
}

/// False for an unknown item.
bool handleEvent(const Call& call, std::int32_t id, const std::string& kind) {
  if (kind == "clicked") {
    return call.presenter.click(id);
  }
  if (kind == "opened" && id == MenuTree::rootId) {
    call.presenter.opens(call.panel, MenuOpening::Notice::opened);
  }
  return call.presenter.known(id) != nullptr;
}

/// Whether the panel has to read the menu again. Submenus come with their root.
bool handleAboutToShow(const Call& call, std::int32_t id) {
  return id == MenuTree::rootId &&
         call.presenter.opens(call.panel, MenuOpening::Notice::aboutToShow);
}

// The methods: each gives its results as a tuple, floating, or null for an unknown item or property
// and for a call that names too many.

GVariant* getLayout(const Call& call) {
  const MenuNode* parent = call.presenter.tree().find(intArgument(call, 0));
  const auto names = namesArgument(call, 2);
  if (parent == nullptr || !names) {
    return nullptr;
  }
  return g_variant_new("(u@(ia{sv}av))", call.presenter.revision(),
                       menuLayout(*parent, intArgument(call, 1), *names));
}

GVariant* getGroupProperties(const Call& call) {
  const auto ids = idsArgument(call, 0);
  const auto names = namesArgument(call, 1);
  if (!ids || !names) {
    return nullptr;
  }
  GVariantBuilder result;
  g_variant_builder_init(&result, reinterpret_cast<const GVariantType*>("a(ia{sv})"));
  const auto add = [&](const MenuNode& node) {
    g_variant_builder_add(&result, "(i@a{sv})", node.id, menuProperties(node, *names));
  };
  for (const std::int32_t id : *ids) {
    if (const MenuNode* node = call.presenter.known(id)) {
      add(*node);
    }
  }
  if (ids->empty()) {
    call.presenter.tree().forEach(add);
  }
  return g_variant_new("(a(ia{sv}))", &result);
}

GVariant* getProperty(const Call& call) {
  const MenuNode* node = call.presenter.known(intArgument(call, 0));
  const VariantHandle value =
      node == nullptr ? nullptr : menuProperty(*node, stringArgument(call, 1));
  return value == nullptr ? nullptr : g_variant_new("(v)", value.get());
}

GVariant* event(const Call& call) {
  const bool isKnown = handleEvent(call, intArgument(call, 0), stringArgument(call, 1));
  return isKnown ? g_variant_new_tuple(nullptr, 0) : nullptr;
}

GVariant* eventGroup(const Call& call) {
  const VariantHandle events = argument(call, 0);
  const gsize count = g_variant_n_children(events.get());
  if (count > mostInACall) {
    return nullptr;
  }
  std::set<std::pair<std::int32_t, std::string>> served;
  std::vector<std::int32_t> unknown;
  for (gsize i = 0; i < count; ++i) {
    const VariantHandle item(g_variant_get_child_value(events.get(), i));
    const Call part{call.presenter, call.panel, item.get()};
    const std::int32_t id = intArgument(part, 0);
    const std::string kind = stringArgument(part, 1);
    if (served.emplace(id, kind).second && !handleEvent(part, id, kind)) {
      unknown.push_back(id);
    }
  }
  return g_variant_new("(@ai)", idArray(unknown));
}

GVariant* aboutToShow(const Call& call) {
  return g_variant_new("(b)", handleAboutToShow(call, intArgument(call, 0)) ? TRUE : FALSE);
}

GVariant* aboutToShowGroup(const Call& call) {
  const auto ids = idsArgument(call, 0);
  if (!ids) {
    return nullptr;
  }
  std::vector<std::int32_t> updated;
  std::vector<std::int32_t> unknown;
  for (const std::int32_t id : *ids) {
    if (call.presenter.known(id) == nullptr) {
      unknown.push_back(id);
    } else if (handleAboutToShow(call, id)) {
      updated.push_back(id);
    }
  }
  return g_variant_new("(@ai@ai)", idArray(updated), idArray(unknown));
}

struct Method {
  std::string_view name;
  GVariant* (*perform)(const Call& call);
};

constexpr std::array methods = {
    Method{"GetLayout", getLayout},
    Method{"GetGroupProperties", getGroupProperties},
    Method{"GetProperty", getProperty},
    Method{"Event", event},
    Method{"EventGroup", eventGroup},
    Method{"AboutToShow", aboutToShow},
    Method{"AboutToShowGroup", aboutToShowGroup},
};

/// A panel that reads level by level (Plasma) reads a submenu once it is shown, and places it by
/// its size until then: empty, so that it comes up beyond the display's edge. Told that the
/// submenus have changed, it reads them ahead. One that read everything again would be told no
/// second time.
void tellOfSubmenus(GDBusConnection* connection, const char* interface, const Call& call) {
  if (intArgument(call, 0) != MenuTree::rootId || intArgument(call, 1) != 1) {
    return;
  }
  for (const std::int32_t id : call.presenter.takeSubmenus()) {
    g_dbus_connection_emit_signal(connection, nullptr, dbusMenuPath, interface, "LayoutUpdated",
                                  g_variant_new("(ui)", call.presenter.revision(), id), nullptr);
  }
}

void onMethodCall(GDBusConnection* connection, const char* sender, const char* /*path*/,
                  const char* interface, const char* name, GVariant* arguments,
                  GDBusMethodInvocation* invocation, gpointer data) noexcept {
  // Its owner may drop it while the program is told that the menu opens.
  const auto presenter = static_cast<MenuPresenter*>(data)->weak_from_this().lock();
  const Call call{*presenter, sender == nullptr ? "" : sender, arguments};
  for (const Method& method : methods) {
    if (method.name != name) {
      continue;
    }
    if (GVariant* results = method.perform(call)) {
      g_dbus_method_invocation_return_value(invocation, results);
      if (method.perform == getLayout) {
        tellOfSubmenus(connection, interface, call);
      }
    } else {
      g_dbus_method_invocation_return_error_literal(
          invocation, G_DBUS_ERROR, G_DBUS_ERROR_INVALID_ARGS,
          "No such menu item or property, or too many of them");
    }
    return;
  }
}

GVariant* onGetProperty(GDBusConnection* /*connection*/, const char* /*sender*/,
                        const char* /*path*/, const char* /*interface*/, const char* property,
                        GError** /*error*/, gpointer /*data*/) noexcept {
  const std::string_view name = property;
  if (name == "Version") {
    return g_variant_new_uint32(3);
  }
  if (name == "IconThemePath") {
    return g_variant_new_strv(nullptr, 0);
  }
  return g_variant_new_string(name == "TextDirection" ? "ltr" : "normal");
}

constexpr GDBusInterfaceVTable table{onMethodCall, onGetProperty, nullptr, {}};

}  // namespace

DBusMenu::DBusMenu(GDBusConnection* connection, std::shared_ptr<MenuPresenter> presenter)
    : presenter_(std::move(presenter)),
      object_(connection, dbusMenuPath, dbusMenuXml, table, presenter_.get()) {
  presenter_->setObserver([this] {
    object_.emit("LayoutUpdated", g_variant_new("(ui)", presenter_->revision(), MenuTree::rootId));
  });
}

DBusMenu::~DBusMenu() {
  presenter_->setObserver({});
}

}  // namespace audrel::linuxos
