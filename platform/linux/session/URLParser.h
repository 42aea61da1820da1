#pragma once

#include "platform/Foundation.h"

namespace audrel::linuxos {

/// Knows absolute URLs, which are all that the program has, as GLib reads RFC 3986.
class URLParser final : public NS::URLParser {
 public:
  std::optional<NS::URL> urlWithString(const std::string& text) override;
};

}  // namespace audrel::linuxos
