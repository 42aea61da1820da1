#pragma once

#include "platform/Platform.h"
#include "tests/fakes/FakeAudio.h"
#include "tests/fakes/FakeHardware.h"
#include "tests/fakes/FakeSystem.h"
#include "tests/fakes/Journal.h"
#include "tests/fakes/ManualQueue.h"

namespace audrel::fakes {

/// A whole operating system for a test: every interface of `platform/`, told what to answer by the
/// fields of the fakes, and one journal of all that was asked of them. It must outlive what is
/// made on it.
struct World {
  World() = default;
  World(const World&) = delete;
  World& operator=(const World&) = delete;

  Platform platform();

  /// With queues of another make.
  Platform platformWith(dispatch::Dispatch& queues);

  Journal journal;
  FakeHardware hardware{journal};
  FakeAudio audio{journal};
  FakeCaptureAccess captureAccess{journal};
  FakeClock clock{journal};
  FakeCollation collation;
  FakeFileManager fileManager{journal};
  FakeRunningApplications runningApplications{journal};
  FakeUUIDs uuids{journal};
  ManualDispatch dispatch{journal};
  FakeLog log{journal};
  FakeDiagnostics diagnostics;
};

}  // namespace audrel::fakes
