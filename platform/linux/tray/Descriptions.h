#pragma once

/// The interfaces that the status item offers on the session bus, in the bus's own description.
namespace audrel::linuxos {

extern const char* const statusNotifierItemXml;
extern const char* const dbusMenuXml;

inline constexpr const char* statusNotifierItemPath = "/StatusNotifierItem";
inline constexpr const char* dbusMenuPath = "/MenuBar";

}  // namespace audrel::linuxos
