#include "platform/linux/system/UUIDFactory.h"

#include <uuid/uuid.h>

#include <array>

namespace audrel::linuxos {

std::string UUIDFactory::uuidString() {
  uuid_t uuid;
  uuid_generate_random(uuid);
  std::array<char, UUID_STR_LEN> text{};
  uuid_unparse_upper(uuid, text.data());
  return text.data();
}

}  // namespace audrel::linuxos
