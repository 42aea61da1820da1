#pragma once

/// The permission to capture the screen and the system's audio.
namespace CG {

class CaptureAccess {
 public:
  virtual ~CaptureAccess() = default;

  /// `CGPreflightScreenCaptureAccess`: whether this process may capture. Never prompts.
  virtual bool preflightScreenCaptureAccess() = 0;

  /// `CGRequestScreenCaptureAccess`: asks the user where the system has a way to, and answers
  /// whether this process may capture.
  virtual bool requestScreenCaptureAccess() = 0;
};

}  // namespace CG
