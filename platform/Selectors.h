#pragma once

/// The messages that the menu's commands send, in the order of the commands' table. The target
/// knows them by these names, on macOS as methods of its own.
namespace audrel::selectors {

inline constexpr char toggleRecording[] = "toggleRecording:";
inline constexpr char selectAllSystemAudio[] = "selectAllSystemAudio:";
inline constexpr char selectProcess[] = "selectProcess:";
inline constexpr char refreshProcessList[] = "refreshProcessList:";
inline constexpr char selectFormatM4A[] = "selectFormatM4A:";
inline constexpr char selectFormatWAV[] = "selectFormatWAV:";
inline constexpr char revealLastRecording[] = "revealLastRecording:";
inline constexpr char checkForUpdates[] = "checkForUpdates:";
inline constexpr char showAbout[] = "showAbout:";
inline constexpr char quit[] = "quit:";

}  // namespace audrel::selectors
