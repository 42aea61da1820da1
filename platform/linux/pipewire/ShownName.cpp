#include "platform/linux/pipewire/ShownName.h"

#include "platform/Printable.h"
#include "platform/Utf8.h"

namespace audrel::linuxos {

std::string shownName(std::string_view name) {
  constexpr int mostCharacters = 256;
  std::string_view rest = name;
  for (int count = 0; count < mostCharacters && !rest.empty(); ++count) {
    rest.remove_prefix(firstCharacter(rest).size);
  }
  name.remove_suffix(rest.size());
  return printable(name);
}

}  // namespace audrel::linuxos
