#pragma once

#include "platform/CoreGraphics.h"

namespace audrel::linuxos {

/// Always granted: a PipeWire that a program may connect to lets it capture, and when there is none
/// starting a recording fails with that reason.
class CaptureAccess final : public CG::CaptureAccess {
 public:
  bool preflightScreenCaptureAccess() override;
  bool requestScreenCaptureAccess() override;
};

}  // namespace audrel::linuxos
