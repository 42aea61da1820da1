#include "platform/linux/session/URLParser.h"

#include <glib.h>

namespace audrel::linuxos {

std::optional<NS::URL> URLParser::urlWithString(const std::string& text) {
  const bool isURL = g_uri_is_valid(text.c_str(), G_URI_FLAGS_NONE, nullptr) == TRUE;
  return isURL ? std::optional(NS::URL{text}) : std::nullopt;
}

}  // namespace audrel::linuxos
