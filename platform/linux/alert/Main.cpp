// audrel-alert STYLE MESSAGE TEXT BUTTON...
//
// Shows one alert and answers by its exit status (see ExitStatus.h). The alert goes when standard
// input's other end does: the program that asked has no use for the answer any more.

#include <glib-unix.h>
#include <gtk/gtk.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <vector>

#include "platform/Identity.h"
#include "platform/linux/alert/AlertWindow.h"
#include "platform/linux/alert/ExitStatus.h"

namespace audrel::alerthelper {

namespace {

gboolean closeAlert(gint /*descriptor*/, GIOCondition /*hangup*/, gpointer dialog) noexcept {
  gtk_dialog_response(static_cast<GtkDialog*>(dialog), GTK_RESPONSE_DELETE_EVENT);
  return G_SOURCE_REMOVE;
}

int show(const AlertTexts& texts) {
  // Windows belong to the program's desktop entry by this name.
  g_set_prgname(identity::bundleIdentifier);
  // No arguments are for GTK: they are texts.
  if (gtk_init_check(nullptr, nullptr) == FALSE) {
    return noDisplay;
  }
  const DialogHandle dialog = makeAlertWindow(texts);
  g_unix_fd_add(STDIN_FILENO, G_IO_HUP, closeAlert, dialog.get());
  gtk_window_present(GTK_WINDOW(dialog.get()));
  const int response = gtk_dialog_run(GTK_DIALOG(dialog.get()));
  return response < 0 ? closed : firstButton + response;
}

int run(const std::vector<std::string>& arguments) {
  constexpr std::size_t before = 3;  // style, message, text
  if (arguments.size() <= before || arguments.size() > before + mostButtons ||
      iconOfStyle(arguments[0]) == nullptr) {
    std::fputs("usage: audrel-alert informational|warning|critical MESSAGE TEXT BUTTON...\n",
               stderr);
    return wrongArguments;
  }
  return show({.icon = iconOfStyle(arguments[0]),
               .message = arguments[1],
               .informative = arguments[2],
               .buttons = std::span(arguments).subspan(before)});
}

}  // namespace

}  // namespace audrel::alerthelper

int main(int argumentCount, char** arguments) {
  return audrel::alerthelper::run({arguments + 1, arguments + argumentCount});
}
