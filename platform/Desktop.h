#pragma once

namespace NS {
class AppKit;
class RunLoop;
class URLParser;
class UserDefaults;
}  // namespace NS
namespace SPU {
class UpdateFramework;
}

/// What the menu-bar program asks of the operating system besides `Platform`. The command line has
/// no part in it, and its process touches no desktop service.
struct Desktop {
  NS::AppKit& appKit;
  NS::RunLoop& runLoop;
  NS::URLParser& urlParser;
  NS::UserDefaults& userDefaults;
  SPU::UpdateFramework& updateFramework;
};
