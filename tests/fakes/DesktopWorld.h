#pragma once

#include "platform/Desktop.h"
#include "tests/fakes/FakeAppKit.h"
#include "tests/fakes/FakeDesktop.h"
#include "tests/fakes/World.h"

namespace audrel::fakes {

/// A `World` with a desktop, whose calls go into the same journal.
struct DesktopWorld : World {
  Desktop desktop() { return {appKit, runLoop, urlParser, userDefaults, updateFramework}; }

  FakeAppKit appKit{journal};
  FakeRunLoop runLoop{journal};
  FakeURLParser urlParser{journal};
  FakeUserDefaults userDefaults{journal};
  FakeUpdateFramework updateFramework{journal};
};

}  // namespace audrel::fakes
