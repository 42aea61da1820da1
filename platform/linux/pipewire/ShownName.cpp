#include "platform/linux/pipewire/ShownName.h"

#include "platform/Utf8.h"

namespace audrel::linuxos {

std::string shownName(std::string_view name) {
  constexpr int mostCharacters = 256;
  std::string shown;
  for (int count = 0; count < mostCharacters && !name.empty(); ++count) {
    const auto [point, size] = firstCharacter(name);
    const bool mayBeShown = point && !isControl(*point) && !changesLayout(*point);
    shown.append(mayBeShown ? name.substr(0, size) : "\uFFFD");
    name.remove_prefix(size);
  }
  return shown;
}

}  // namespace audrel::linuxos
