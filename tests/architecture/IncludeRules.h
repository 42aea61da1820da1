#pragma once

#include <string>
#include <vector>

/// Who may know whom.
///
///   room                 may include, besides itself
///   model                platform/*.h
///   engine, discovery,
///   ui                   model, platform/*.h
///   app, cli             model, engine, discovery, ui, app, platform/*.h;
///                        their main.cpp alone platform/NativePlatform.h
///   platform/*.h         nothing
///   platform/<system>    platform/*.h
///   tests, bench         everything
///
/// From `model` to `cli` all is portable: no macro that tells one system from another. `model`,
/// `engine`, `discovery` and `ui` include nothing foreign but the standard library (and `pid_t`).
namespace audrel::architecture {

struct Source {
  std::string path;  ///< from the repository's root, with "/"
  std::string text;
};

/// What is against the rules, a sentence each that begins with path and line number.
std::vector<std::string> violations(const Source& source);

}  // namespace audrel::architecture
