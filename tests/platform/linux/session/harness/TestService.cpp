#include "tests/platform/linux/session/harness/TestService.h"

#include <gio/gunixfdlist.h>
#include <glib-unix.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <stdexcept>
#include <utility>

#include "tests/platform/linux/tray/harness/PrivateBus.h"
#include "tests/support/MainLoop.h"

// GLib is not built with the thread sanitizer, which so cannot see what its threads hand each
// other.
extern "C" const char* __tsan_default_suppressions() {
  return "race:libglib-2.0.so\nrace:libgio-2.0.so\nrace:libgobject-2.0.so\n";
}

namespace audrel::sessiontest {

using namespace std::chrono_literals;

TestService::TestService(const std::string& busAddress, const std::string& name,
                         const std::vector<std::string>& paths, Answers answers)
    : paths_(paths), answers_(std::move(answers)), connection_(traytest::connectTo(busAddress)) {
  {
    const std::scoped_lock lock(mutex_);  // that thread's messages come after what stands here
    filter_ = g_dbus_connection_add_filter(connection_, onMessage, this, nullptr);
  }
  GVariant* owned = g_dbus_connection_call_sync(
      connection_, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
      "RequestName", g_variant_new("(su)", name.c_str(), 0U), nullptr, G_DBUS_CALL_FLAGS_NONE, -1,
      nullptr, nullptr);
  if (owned == nullptr) {
    throw std::runtime_error("The bus gives nobody the name " + name);
  }
  g_variant_unref(owned);
}

TestService::~TestService() {
  g_dbus_connection_remove_filter(connection_, filter_);
  g_dbus_connection_close_sync(connection_, nullptr, nullptr);
  g_object_unref(connection_);
  std::ranges::for_each(givenOut_, close);
}

GDBusMessage* TestService::onMessage(GDBusConnection* connection, GDBusMessage* message,
                                     gboolean incoming, gpointer self) {
  auto* service = static_cast<TestService*>(self);
  const std::scoped_lock lock(service->mutex_);
  const bool isCall = incoming == TRUE &&
                      g_dbus_message_get_message_type(message) == G_DBUS_MESSAGE_TYPE_METHOD_CALL &&
                      std::ranges::count(service->paths_, g_dbus_message_get_path(message)) > 0;
  if (!isCall) {
    return message;
  }
  GVariant* body = g_dbus_message_get_body(message);
  gchar* arguments = body == nullptr ? g_strdup("()") : g_variant_print(body, FALSE);
  service->calls_.push_back(std::string(g_dbus_message_get_member(message)) + " " + arguments);
  g_free(arguments);
  const std::string answer = service->answerFor(message);
  if (answer != "-") {
    GDBusMessage* reply = service->replyTo(message, answer);
    g_dbus_connection_send_message(connection, reply, G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr,
                                   nullptr);
    g_object_unref(reply);
  }
  g_object_unref(message);
  return nullptr;
}

std::string TestService::answerFor(GDBusMessage* call) const {
  const std::string member = g_dbus_message_get_member(call);
  const char* interface = g_dbus_message_get_interface(call);
  for (const std::string& name : {std::string(interface) + "." + member, member}) {
    if (const auto found = answers_.find(name); found != answers_.end()) {
      return found->second;
    }
  }
  return "!org.freedesktop.DBus.Error.UnknownMethod";
}

GDBusMessage* TestService::replyTo(GDBusMessage* call, const std::string& answer) {
  if (answer == "fd") {
    return answerWithDescriptor(call);
  }
  if (answer.starts_with('!')) {
    return g_dbus_message_new_method_error_literal(call, answer.c_str() + 1, "refused by the test");
  }
  GDBusMessage* reply = g_dbus_message_new_method_reply(call);
  g_dbus_message_set_body(reply, answer == "count" ? g_variant_new("(u)", ++count_)
                                                   : g_variant_new_parsed(answer.c_str()));
  return reply;
}

GDBusMessage* TestService::answerWithDescriptor(GDBusMessage* call) {
  std::array<int, 2> ends{};
  if (g_unix_open_pipe(ends.data(), FD_CLOEXEC, nullptr) == FALSE) {
    std::abort();
  }
  givenOut_.push_back(ends[0]);
  GUnixFDList* descriptors = g_unix_fd_list_new_from_array(&ends[1], 1);
  GDBusMessage* reply = g_dbus_message_new_method_reply(call);
  g_dbus_message_set_unix_fd_list(reply, descriptors);
  g_dbus_message_set_body(reply, g_variant_new("(h)", 0));
  g_object_unref(descriptors);
  return reply;
}

std::optional<std::string> TestService::takeCall() {
  const std::scoped_lock lock(mutex_);
  for (std::size_t i = 0; i < givenOut_.size(); ++i) {
    pollfd end{.fd = givenOut_[i], .events = 0, .revents = 0};
    if (poll(&end, 1, 0) > 0) {
      close(end.fd);
      givenOut_.erase(givenOut_.begin() + static_cast<std::ptrdiff_t>(i));
      calls_.emplace_back("released");
      break;
    }
  }
  if (calls_.empty()) {
    return std::nullopt;
  }
  std::string call = std::move(calls_.front());
  calls_.pop_front();
  return call;
}

std::optional<std::string> TestService::nextCall(std::chrono::milliseconds timeout) {
  std::optional<std::string> call;
  support::runLoopUntil(
      [&] {
        call = takeCall();
        return call.has_value();
      },
      timeout);
  return call;
}

std::vector<std::string> TestService::furtherCalls() {
  std::vector<std::string> calls;
  while (auto call = nextCall(100ms)) {
    calls.push_back(std::move(*call));
  }
  return calls;
}

void TestService::emitSignal(const std::string& path, const std::string& interface,
                             const std::string& signal, GVariant* arguments) {
  g_dbus_connection_emit_signal(connection_, nullptr, path.c_str(), interface.c_str(),
                                signal.c_str(), arguments, nullptr);
}

}  // namespace audrel::sessiontest
