#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace audrel::linuxos {

/// Which computer this is, and since which start of it.
struct Machine {
  std::string id;    ///< the same through all starts; 32 hexadecimal digits
  std::string boot;  ///< another one after each start

  bool operator==(const Machine&) const = default;
};

/// Nothing where the system does not tell: then nobody can say what happened on this machine.
std::optional<Machine> thisMachine(const std::filesystem::path& idFile = "/etc/machine-id");

}  // namespace audrel::linuxos
