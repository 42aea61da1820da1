#include "tests/platform/linux/tray/harness/Panel.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "tests/platform/linux/tray/harness/PrivateBus.h"

namespace audrel::traytest {

namespace {

constexpr const char* watcher = "org.kde.StatusNotifierWatcher";
constexpr const char* watcherPath = "/StatusNotifierWatcher";
constexpr const char* watcherXml = R"xml(
<node>
  <interface name="org.kde.StatusNotifierWatcher">
    <method name="RegisterStatusNotifierItem"><arg type="s" direction="in"/></method>
    <method name="RegisterStatusNotifierHost"><arg type="s" direction="in"/></method>
    <property name="RegisteredStatusNotifierItems" type="as" access="read"/>
    <property name="IsStatusNotifierHostRegistered" type="b" access="read"/>
    <property name="ProtocolVersion" type="i" access="read"/>
    <signal name="StatusNotifierItemRegistered"><arg type="s"/></signal>
    <signal name="StatusNotifierHostRegistered"/>
  </interface>
</node>)xml";

std::string textOf(GVariant* value) {
  char* text = g_variant_print(value, TRUE);
  std::string result = text;
  g_free(text);
  return result;
}

/// Floating, or null for no arguments.
GVariant* parsed(const std::string& text) {
  if (text.empty()) {
    return nullptr;
  }
  return g_variant_new_parsed(text.c_str());
}

Variant part(const Variant& whole, gsize index) {
  return Variant(g_variant_get_child_value(whole.get(), index));
}

std::map<std::string, std::string> textsOf(GVariant* dictionary) {
  std::map<std::string, std::string> result;
  GVariantIter entries;
  g_variant_iter_init(&entries, dictionary);
  const char* name = nullptr;
  GVariant* value = nullptr;
  while (g_variant_iter_loop(&entries, "{&sv}", &name, &value) == TRUE) {
    result[name] = textOf(value);
  }
  return result;
}

/// `node` is an `(ia{sv}av)`.
ItemInMenu itemOf(const Variant& node) {
  ItemInMenu item;
  g_variant_get_child(node.get(), 0, "i", &item.id);
  item.properties = textsOf(part(node, 1).get());
  const Variant children = part(node, 2);
  for (gsize i = 0; i < g_variant_n_children(children.get()); ++i) {
    item.children.push_back(itemOf(Variant(g_variant_get_variant(part(children, i).get()))));
  }
  return item;
}

void appendText(const ItemInMenu& item, const std::string& indent, std::string& text) {
  for (const ItemInMenu& child : item.children) {
    auto others = child.properties;
    text += indent;
    if (const auto label = others.extract("label")) {
      text += label.mapped();
    }
    for (const auto& [name, value] : others) {
      text += " " + name + "=" + value;
    }
    text += "\n";
    appendText(child, indent + "  ", text);
  }
}

std::optional<int> find(const ItemInMenu& item, const std::string& quotedLabel) {
  for (const ItemInMenu& child : item.children) {
    const auto label = child.properties.find("label");
    if (label != child.properties.end() && label->second == quotedLabel) {
      return child.id;
    }
    if (const auto id = find(child, quotedLabel)) {
      return id;
    }
  }
  return std::nullopt;
}

}  // namespace

Panel::Panel(const std::string& busAddress) : connection_(connectTo(busAddress)) {}

Panel::~Panel() {
  stopWatcher();
  if (itemSignals_ != 0) {
    g_dbus_connection_signal_unsubscribe(connection_, itemSignals_);
  }
  g_dbus_connection_close_sync(connection_, nullptr, nullptr);
  g_object_unref(connection_);
  support::drainLoop();
}

void Panel::startWatcher(bool hasHost, int registrationErrors) {
  hasHost_ = hasHost;
  registrationErrors_ = registrationErrors;
  static constexpr GDBusInterfaceVTable table{onWatcherCall, onWatcherProperty, nullptr, {}};
  GDBusNodeInfo* node = g_dbus_node_info_new_for_xml(watcherXml, nullptr);
  watcherObject_ = g_dbus_connection_register_object(connection_, watcherPath, node->interfaces[0],
                                                     &table, this, nullptr, nullptr);
  g_dbus_node_info_unref(node);
  watcherName_ = g_bus_own_name_on_connection(connection_, watcher, G_BUS_NAME_OWNER_FLAGS_NONE,
                                              nullptr, nullptr, nullptr, nullptr);
}

void Panel::stopWatcher() {
  if (watcherName_ != 0) {
    g_bus_unown_name(std::exchange(watcherName_, 0));
    g_dbus_connection_unregister_object(connection_, std::exchange(watcherObject_, 0));
    g_dbus_connection_flush_sync(connection_, nullptr, nullptr);
  }
}

void Panel::addHost() {
  hasHost_ = true;
  emitFromWatcher("StatusNotifierHostRegistered", "");
}

bool Panel::findItem() {
  if (!runUntil([this] { return !registrations_.empty(); })) {
    return false;
  }
  item_ = registrations_.back();
  if (itemSignals_ != 0) {
    g_dbus_connection_signal_unsubscribe(connection_, itemSignals_);
  }
  itemSignals_ = g_dbus_connection_signal_subscribe(connection_, item_.c_str(), nullptr, nullptr,
                                                    nullptr, nullptr, G_DBUS_SIGNAL_FLAGS_NONE,
                                                    onSignal, this, nullptr);
  takeSignals();  // the bus knows of the subscription once the item has answered
  return true;
}

Panel::Reply Panel::request(const std::string& program, const std::string& path,
                            const std::string& interface, const std::string& method,
                            const std::string& arguments) {
  GAsyncResult* result = nullptr;
  g_dbus_connection_call(
      connection_, program.c_str(), path.c_str(), interface.c_str(), method.c_str(),
      parsed(arguments), nullptr, G_DBUS_CALL_FLAGS_NONE, 10'000, nullptr,
      [](GObject*, GAsyncResult* come, gpointer place) {
        g_object_ref(come);
        *static_cast<GAsyncResult**>(place) = come;
      },
      &result);
  // The bus library answers a call for certain, at the latest when its time is up.
  while (result == nullptr) {
    g_main_context_iteration(nullptr, TRUE);
  }
  GError* error = nullptr;
  Reply reply;
  reply.value.reset(g_dbus_connection_call_finish(connection_, result, &error));
  g_object_unref(result);
  if (error != nullptr) {
    char* name = g_dbus_error_get_remote_error(error);
    reply.error = name == nullptr ? error->message : name;
    g_free(name);
    g_error_free(error);
  }
  return reply;
}

Answer Panel::call(const std::string& path, const std::string& interface, const std::string& method,
                   const std::string& arguments) {
  return callTo(item_, path, interface, method, arguments);
}

Answer Panel::callTo(const std::string& program, const std::string& path,
                     const std::string& interface, const std::string& method,
                     const std::string& arguments) {
  const auto reply = request(program, path, interface, method, arguments);
  return {reply.value == nullptr ? "" : textOf(reply.value.get()), reply.error};
}

Answer Panel::callMenu(const std::string& method, const std::string& arguments) {
  return call("/MenuBar", "com.canonical.dbusmenu", method, arguments);
}

void Panel::send(const std::string& program, const std::string& path, const std::string& interface,
                 const std::string& method, const std::string& arguments) {
  g_dbus_connection_call(connection_, program.c_str(), path.c_str(), interface.c_str(),
                         method.c_str(), parsed(arguments), nullptr, G_DBUS_CALL_FLAGS_NONE, -1,
                         nullptr, nullptr, nullptr);
}

std::map<std::string, std::string> Panel::properties(const std::string& path,
                                                     const std::string& interface) {
  const auto reply =
      request(item_, path, "org.freedesktop.DBus.Properties", "GetAll", "('" + interface + "',)");
  return reply.value == nullptr ? std::map<std::string, std::string>()
                                : textsOf(part(reply.value, 0).get());
}

std::optional<std::string> Panel::itemProperty(const std::string& name) {
  const auto all = properties("/StatusNotifierItem", "org.kde.StatusNotifierItem");
  const auto found = all.find(name);
  return found == all.end() ? std::nullopt : std::optional(found->second);
}

ItemInMenu Panel::layout() {
  const auto reply =
      request(item_, "/MenuBar", "com.canonical.dbusmenu", "GetLayout", "(0, -1, @as [])");
  return reply.value == nullptr ? ItemInMenu() : itemOf(part(reply.value, 1));
}

std::string Panel::menuText() {
  std::string text;
  appendText(layout(), "", text);
  return text;
}

std::optional<int> Panel::idOf(const std::string& label) {
  return find(layout(), "'" + label + "'");
}

std::vector<std::string> Panel::takeSignals() {
  // What a program of this process has still to send, then what was sent before an answer.
  support::drainLoop();
  call("/", "org.freedesktop.DBus.Peer", "Ping", "");
  return std::exchange(signals_, {});
}

void Panel::registerItem(GDBusMethodInvocation* invocation, const std::string& name) {
  if (registrationErrors_ > 0) {
    --registrationErrors_;
    g_dbus_method_invocation_return_dbus_error(invocation, "org.freedesktop.DBus.Error.Failed",
                                               "not ready");
    return;
  }
  registrations_.push_back(name);
  g_dbus_method_invocation_return_value(invocation, nullptr);
  emitFromWatcher("StatusNotifierItemRegistered", name);
}

void Panel::emitFromWatcher(const char* signal, const std::string& argument) {
  g_dbus_connection_emit_signal(connection_, nullptr, watcherPath, watcher, signal,
                                argument.empty() ? nullptr : g_variant_new("(s)", argument.c_str()),
                                nullptr);
}

void Panel::onWatcherCall(GDBusConnection* /*connection*/, const char* /*sender*/,
                          const char* /*path*/, const char* /*interface*/, const char* method,
                          GVariant* arguments, GDBusMethodInvocation* invocation, gpointer self) {
  if (std::string_view(method) == "RegisterStatusNotifierItem") {
    const char* name = nullptr;
    g_variant_get(arguments, "(&s)", &name);
    static_cast<Panel*>(self)->registerItem(invocation, name);
  } else {
    g_dbus_method_invocation_return_value(invocation, nullptr);
  }
}

GVariant* Panel::onWatcherProperty(GDBusConnection* /*connection*/, const char* /*sender*/,
                                   const char* /*path*/, const char* /*interface*/,
                                   const char* property, GError** /*error*/, gpointer self) {
  const std::string_view name = property;
  if (name == "IsStatusNotifierHostRegistered") {
    return g_variant_new_boolean(static_cast<Panel*>(self)->hasHost_ ? TRUE : FALSE);
  }
  return name == "ProtocolVersion" ? g_variant_new_int32(0) : g_variant_new_strv(nullptr, 0);
}

void Panel::onSignal(GDBusConnection* /*connection*/, const char* /*sender*/, const char* /*path*/,
                     const char* /*interface*/, const char* signal, GVariant* arguments,
                     gpointer self) {
  static_cast<Panel*>(self)->signals_.push_back(std::string(signal) + textOf(arguments));
}

}  // namespace audrel::traytest
