// audrel-alert
//
// Shows one alert and answers by its exit status (see ExitStatus.h). Standard input has a line with
// the number of the bytes that follow, and these: the style ("informational", "warning" or
// "critical"), the message, the text and the buttons, each with a NUL behind it. Each further byte
// brings the alert to the front. It goes when the input's other end does: the program that asked
// has no use for the answer any more.

#include <glib-unix.h>
#include <gtk/gtk.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Identity.h"
#include "platform/linux/alert/AlertWindow.h"
#include "platform/linux/alert/ExitStatus.h"

namespace audrel::alerthelper {

namespace {

/// The next byte; nothing at the end.
std::optional<char> readByte() {
  char byte = 0;
  ssize_t count = 0;
  do {
    count = read(STDIN_FILENO, &byte, 1);
  } while (count < 0 && errno == EINTR);
  return count == 1 ? std::optional(byte) : std::nullopt;
}

gboolean inputCame(gint /*descriptor*/, GIOCondition /*condition*/, gpointer dialog) noexcept {
  if (readByte()) {
    gtk_window_present(static_cast<GtkWindow*>(dialog));
    return G_SOURCE_CONTINUE;
  }
  gtk_dialog_response(static_cast<GtkDialog*>(dialog), GTK_RESPONSE_DELETE_EVENT);
  return G_SOURCE_REMOVE;
}

int show(const AlertTexts& texts) {
  // Windows belong to the program's desktop entry by this name.
  g_set_prgname(identity::bundleIdentifier);
  if (gtk_init_check(nullptr, nullptr) == FALSE) {
    return noDisplay;
  }
  const DialogHandle dialog = makeAlertWindow(texts);
  g_unix_fd_add(STDIN_FILENO, static_cast<GIOCondition>(G_IO_IN | G_IO_HUP), inputCame,
                dialog.get());
  gtk_window_present(GTK_WINDOW(dialog.get()));
  const int response = gtk_dialog_run(GTK_DIALOG(dialog.get()));
  return response < 0 ? closed : firstButton + response;
}

/// Whatever has arrived before the end.
std::string readUpTo(std::size_t size, std::optional<char> last) {
  std::string text;
  while (text.size() < size) {
    const auto byte = readByte();
    if (!byte || byte == last) {
      break;
    }
    text.push_back(*byte);
  }
  return text;
}

std::vector<std::string> readTexts() {
  constexpr std::size_t mostDigits = 6;
  const std::string digits = readUpTo(mostDigits + 1, '\n');
  std::size_t size = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), size);
  const std::string all = readUpTo(size, std::nullopt);
  std::vector<std::string> texts;
  for (std::string_view rest = all; rest.find('\0') != std::string_view::npos;) {
    texts.emplace_back(rest.substr(0, rest.find('\0')));
    rest.remove_prefix(texts.back().size() + 1);
  }
  return texts;
}

int run(const std::vector<std::string>& texts) {
  constexpr std::size_t before = 3;  // style, message, text
  if (texts.size() <= before || texts.size() > before + mostButtons ||
      iconOfStyle(texts[0]) == nullptr) {
    std::fputs("audrel-alert shows the alerts of audrel, which starts it\n", stderr);
    return wrongInput;
  }
  return show({.icon = iconOfStyle(texts[0]),
               .message = texts[1],
               .informative = texts[2],
               .buttons = std::span(texts).subspan(before)});
}

}  // namespace

}  // namespace audrel::alerthelper

int main() {
  return audrel::alerthelper::run(audrel::alerthelper::readTexts());
}
