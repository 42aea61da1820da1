#pragma once

/// Who the program is, on every platform and for good.
namespace identity {

/// Bundle and application identifier; also the log's subsystem.
inline constexpr const char* bundleIdentifier = "io.github.audrel.Audrel";
inline constexpr const char* version = "1.0.0";

}  // namespace identity
