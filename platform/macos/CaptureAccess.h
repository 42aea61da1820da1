#pragma once

#include "platform/CoreGraphics.h"

namespace audrel::macos {

class CaptureAccess final : public CG::CaptureAccess {
 public:
  bool preflightScreenCaptureAccess() override;
  bool requestScreenCaptureAccess() override;
};

}  // namespace audrel::macos
