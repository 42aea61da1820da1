#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/tray/MenuTree.h"

namespace audrel::linuxos {

/// What the program's menu says and offers of recording.
struct RecordingMenu {
  /// What is recorded, by the menu's caption; nothing while nothing is.
  std::optional<std::string> recorded;

  /// What can be chosen to be recorded, in the menu's order; none during a recording.
  std::vector<std::shared_ptr<MenuItem>> sources;
};

RecordingMenu recordingMenuOf(const MenuTree& tree);

}  // namespace audrel::linuxos
