#pragma once

// os_availability. One platform alone: API_AVAILABLE(macos(14.2)).
#define AUDREL_AVAILABLE_macos(...) macos, introduced = __VA_ARGS__
#define AUDREL_AVAILABLE(...) __attribute__((availability(__VA_ARGS__)))
#define API_AVAILABLE(platform) AUDREL_AVAILABLE(AUDREL_AVAILABLE_##platform)

// API_DEPRECATED("Why.", macos(10.0, 14.0)): since when it is there, and deprecated.
#define AUDREL_DEPRECATED_macos(first, last) macos, introduced = first, deprecated = last
#define AUDREL_DEPRECATED(why, ...) __attribute__((availability(__VA_ARGS__, message = why)))
#define API_DEPRECATED(why, platform) AUDREL_DEPRECATED(why, AUDREL_DEPRECATED_##platform)
