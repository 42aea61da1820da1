#pragma once

#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "platform/linux/tray/Picture.h"

namespace audrel::linuxos {

/// A state of the program that its picture shows.
struct StateIcon {
  std::string_view suffix;       ///< of the icon's name
  std::string_view description;  ///< for who does not see it
  TintedSymbol picture;          ///< as the program draws it; a template where it has no tint
  std::string_view shape;        ///< the symbol that stands for it here: of each state another
};

/// Null for a picture of none of them.
const StateIcon* stateIconOf(const Picture& picture);

/// The picture with its state's shape in its colour; one of no state stays as it is.
Picture inShapeOfState(const Picture& picture);

/// The program's own icons in a tree of the hicolor theme, which panels find by name and recolour
/// where they are symbolic.
class IconTheme {
 public:
  /// `folder` is the one that holds `hicolor`; empty when there is none. Looks at the files once.
  explicit IconTheme(std::filesystem::path folder);

  /// Looks for `share/icons` in the program's own folder, as the build leaves it, then where the
  /// installed program has it (AUDREL_ICONS_FROM_PROGRAM, a path from that folder). Neither names a
  /// place of the machine that built it, so both trees may be moved.
  static IconTheme ofProgramIn(const std::filesystem::path& folder);

  /// The folder, for panels. Empty when there is none.
  const std::filesystem::path& folder() const { return folder_; }

  /// The name of the icon that shows `picture`; nothing when there is no such icon, or its file is
  /// not in the tree.
  std::optional<std::string> iconFor(const Picture& picture) const;

 private:
  std::filesystem::path folder_;
  std::set<std::string> names_;  ///< of the icons that are there
};

}  // namespace audrel::linuxos
