#pragma once

#include <filesystem>
#include <functional>
#include <string>

namespace audrel::linuxos {

/// What the user is to learn of a running recording without having asked.
struct Notice {
  /// A notice takes the place of the one before it on the same matter.
  std::string matter;
  std::string summary;
  std::string body;     ///< what it means, with the remedy
  bool isLoss = false;  ///< stays until the user has seen it

  /// The recording that has ended, for the user to look at; empty while it goes on.
  std::filesystem::path file = {};

  bool operator==(const Notice&) const = default;
};

/// Any thread but the IO thread, under any lock: it takes note and returns.
using NoticeTaker = std::function<void(const Notice&)>;

/// How long a piece of a recording is, rounded up: "21 ms", and from a second on "1.3 s".
std::string lengthText(double seconds);

/// How long a recording is, as the panel shows it: "05:07", and from an hour on "1:00:00".
std::string clockText(double seconds);

}  // namespace audrel::linuxos
