#pragma once

// os_availability. One platform alone: API_AVAILABLE(macos(14.2)).
#define AUDREL_AVAILABLE_macos(...) macos, introduced = __VA_ARGS__
#define AUDREL_AVAILABLE(...) __attribute__((availability(__VA_ARGS__)))
#define API_AVAILABLE(platform) AUDREL_AVAILABLE(AUDREL_AVAILABLE_##platform)
