#pragma once

#include <optional>
#include <string>

namespace audrel::linuxos {

/// Where the session's bus listens, as the conventions have it. Nothing when this session has no
/// bus: GLib would then start one of its own, which no panel listens to.
std::optional<std::string> sessionBusAddress();

}  // namespace audrel::linuxos
