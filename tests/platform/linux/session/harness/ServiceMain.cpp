// A program on a bus: NAME PATH [MEMBER=ANSWER]...
//
// Owns NAME on the session bus and answers every call to PATH. Writes "ready" when it can be
// called, then a line for each call: the member and its arguments. ANSWER is a tuple in GVariant's
// text form, "!" and the name of an error, "-" for no answer at all, or "fd" for a descriptor, of
// which "released" is written once every copy is closed. Other members do not exist. Ends with its
// standard input.

#include <gio/gio.h>
#include <gio/gunixfdlist.h>
#include <glib-unix.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>

namespace {

struct Service {
  std::string path;
  std::map<std::string, std::string> answers;
};

void tell(const std::string& line) {
  // From two threads: one call a line.
  std::fputs((line + "\n").c_str(), stdout);
  std::fflush(stdout);
}

gboolean released(gint descriptor, GIOCondition /*condition*/, gpointer /*data*/) {
  tell("released");
  close(descriptor);
  return G_SOURCE_REMOVE;
}

GDBusMessage* answerWithDescriptor(GDBusMessage* call) {
  std::array<int, 2> ends{};
  if (g_unix_open_pipe(ends.data(), FD_CLOEXEC, nullptr) == FALSE) {
    std::abort();
  }
  g_unix_fd_add(ends[0], G_IO_HUP, released, nullptr);
  GUnixFDList* descriptors = g_unix_fd_list_new_from_array(&ends[1], 1);
  GDBusMessage* reply = g_dbus_message_new_method_reply(call);
  g_dbus_message_set_unix_fd_list(reply, descriptors);
  g_dbus_message_set_body(reply, g_variant_new("(h)", 0));
  g_object_unref(descriptors);
  return reply;
}

GDBusMessage* answerTo(GDBusMessage* call, const std::string& answer) {
  if (answer == "fd") {
    return answerWithDescriptor(call);
  }
  if (answer.starts_with('!')) {
    return g_dbus_message_new_method_error_literal(call, answer.c_str() + 1, "refused by the test");
  }
  GDBusMessage* reply = g_dbus_message_new_method_reply(call);
  GVariant* body = g_variant_parse(nullptr, answer.c_str(), nullptr, nullptr, nullptr);
  if (body == nullptr) {
    std::abort();
  }
  g_dbus_message_set_body(reply, body);
  g_variant_unref(body);
  return reply;
}

GDBusMessage* handle(GDBusConnection* connection, GDBusMessage* message, gboolean incoming,
                     gpointer data) {
  const auto* service = static_cast<const Service*>(data);
  if (incoming == FALSE ||
      g_dbus_message_get_message_type(message) != G_DBUS_MESSAGE_TYPE_METHOD_CALL ||
      service->path != g_dbus_message_get_path(message)) {
    return message;
  }
  const std::string member = g_dbus_message_get_member(message);
  GVariant* body = g_dbus_message_get_body(message);
  gchar* arguments = body == nullptr ? g_strdup("()") : g_variant_print(body, FALSE);
  tell(member + " " + arguments);
  g_free(arguments);
  const auto answer = service->answers.find(member);
  const std::string text = answer == service->answers.end()
                               ? "!org.freedesktop.DBus.Error.UnknownMethod"
                               : answer->second;
  if (text != "-") {
    GDBusMessage* reply = answerTo(message, text);
    g_dbus_connection_send_message(connection, reply, G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr,
                                   nullptr);
    g_object_unref(reply);
  }
  g_object_unref(message);
  return nullptr;
}

void ready(GDBusConnection* /*connection*/, const gchar* /*name*/, gpointer /*data*/) {
  tell("ready");
}

gboolean quit(gint /*descriptor*/, GIOCondition /*condition*/, gpointer loop) {
  g_main_loop_quit(static_cast<GMainLoop*>(loop));
  return G_SOURCE_REMOVE;
}

}  // namespace

int main(int argumentCount, char** arguments) {
  if (argumentCount < 3) {
    return EXIT_FAILURE;
  }
  Service service{.path = arguments[2], .answers = {}};
  for (int i = 3; i < argumentCount; ++i) {
    const std::string text = arguments[i];
    service.answers[text.substr(0, text.find('='))] = text.substr(text.find('=') + 1);
  }
  GDBusConnection* connection = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
  if (connection == nullptr) {
    return EXIT_FAILURE;
  }
  g_dbus_connection_add_filter(connection, handle, &service, nullptr);
  g_bus_own_name_on_connection(connection, arguments[1], G_BUS_NAME_OWNER_FLAGS_NONE, ready,
                               nullptr, nullptr, nullptr);
  GMainLoop* loop = g_main_loop_new(nullptr, FALSE);
  g_unix_fd_add(STDIN_FILENO, G_IO_HUP, quit, loop);
  g_main_loop_run(loop);
  g_main_loop_unref(loop);
  // Before what the filter refers to.
  g_dbus_connection_close_sync(connection, nullptr, nullptr);
  g_object_unref(connection);
  return EXIT_SUCCESS;
}
