#include "platform/linux/tray/RecordingMenu.h"

#include <string_view>
#include <utility>

#include "platform/Selectors.h"

namespace audrel::linuxos {

namespace {

const NS::Selector selectAllSystemAudio(selectors::selectAllSystemAudio);
const NS::Selector selectProcess(selectors::selectProcess);

constexpr std::string_view captionBegins = "Recording from: ";

/// Nothing for an item that is no caption of a recording.
std::optional<std::string> recordedIn(const MenuItem& item) {
  const bool isCaption = !item.action() && item.title().starts_with(captionBegins);
  return isCaption ? std::optional(item.title().substr(captionBegins.size())) : std::nullopt;
}

}  // namespace

RecordingMenu recordingMenuOf(const MenuTree& tree) {
  RecordingMenu menu;
  tree.forEach([&](const MenuNode& node) {
    if (node.item == nullptr) {
      return;
    }
    const auto& action = node.item->action();
    if (action == selectAllSystemAudio || action == selectProcess) {
      menu.sources.push_back(node.item);
    } else if (auto recorded = recordedIn(*node.item)) {
      menu.recorded = std::move(recorded);
    }
  });
  return menu;
}

}  // namespace audrel::linuxos
