#include "platform/linux/system/Wording.h"

#include <algorithm>

namespace audrel::linuxos {

namespace {

constexpr Wording table[] = {
    // Desktops have file managers of many names.
    {"Reveal Last Recording in Finder", "Show Last Recording in File Manager"},
    {"Reveal Recording in Finder", "Show Recording in File Manager"},

    // Updates are the matter of the software center.
    {"Check for Updates…", "Check for Updates in Software Center…"},

    // The audio server decides, and each desktop calls its settings differently.
    {"Audrel needs permission to record system audio.\n"
     "Grant \"Screen & System Audio Recording\" in System Settings to continue.",
     "Audrel needs permission to record system audio.\n"
     "The audio server does not give it the streams of other programs. "
     "Allow audio capture in your desktop's settings to continue."},
    {"Audrel needs permission to record system audio. Grant \"Screen & System Audio "
     "Recording\" in System Settings.",
     "Audrel needs permission to record system audio. The audio server does not give it the "
     "streams of other programs."},
    {"Open System Settings", "Open Settings"},

    {"Records your Mac's audio output — no microphone, no virtual drivers.\n"
     "Built on Apple's Core Audio Tap API (macOS 14.2+).\n"
     "\n"
     "TCC permission: granted",
     "Records your computer's audio output — no microphone, no virtual drivers.\n"
     "Built on PipeWire.\n"
     "\n"
     "Permission to capture: granted"},
    {"Records your Mac's audio output — no microphone, no virtual drivers.\n"
     "Built on Apple's Core Audio Tap API (macOS 14.2+).\n"
     "\n"
     "TCC permission: not granted",
     "Records your computer's audio output — no microphone, no virtual drivers.\n"
     "Built on PipeWire.\n"
     "\n"
     "Permission to capture: not granted"},
};

}  // namespace

std::span<const Wording> wordings() {
  return table;
}

std::string desktopWording(std::string_view text) {
  const auto* const found = std::ranges::find(table, text, &Wording::program);
  return std::string(found == std::end(table) ? text : found->desktop);
}

}  // namespace audrel::linuxos
