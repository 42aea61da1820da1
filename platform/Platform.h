#pragma once

#include <memory>

namespace CA {
class AudioHardware;
}
namespace AV {
class AudioFramework;
}
namespace CG {
class CaptureAccess;
}
namespace NS {
class Clock;
class Collation;
class FileManager;
class RunningApplications;
class UUIDFactory;
}  // namespace NS
namespace dispatch {
class Dispatch;
}
namespace os {
class Log;
}
namespace capture {
class Diagnostics;
}  // namespace capture

/// Everything that the program asks of the operating system. Made once by the process entry and
/// handed down; whoever keeps a reference must not outlive it.
struct Platform {
  CA::AudioHardware& audioHardware;
  AV::AudioFramework& audioFramework;
  CG::CaptureAccess& captureAccess;
  NS::Clock& clock;
  NS::Collation& collation;
  NS::FileManager& fileManager;
  NS::RunningApplications& runningApplications;
  NS::UUIDFactory& uuids;
  dispatch::Dispatch& dispatch;
  os::Log& log;
  capture::Diagnostics& diagnostics;
};
