#pragma once

#include <optional>
#include <string>
#include <variant>

#include "platform/CoreAudio.h"
#include "platform/Foundation.h"

namespace audrel {

/// Why a recording could not be started, with the sentence that the user is shown. The one error
/// type of the program: a value, thrown as such.
///
/// Nothing raises `fileWriteFailed` and `sourceProcessExited`: a failed write is logged, and a
/// source that quits ends no recording. Both stay, with their texts.
class RecorderError {
 public:
  static RecorderError tapCreationFailed(CA::OSStatus status);
  static RecorderError aggregateDeviceFailed(CA::OSStatus status);
  static RecorderError streamFormatUnavailable(CA::OSStatus status);
  static RecorderError ioProcInstallFailed(CA::OSStatus status);
  static RecorderError fileOpenFailed(NS::Error error);
  static RecorderError fileWriteFailed(NS::Error error);
  static RecorderError sourceProcessExited(std::string name);
  static RecorderError permissionDenied();
  static RecorderError alreadyRecording();

  /// Never nothing.
  std::optional<std::string> errorDescription() const;

  /// Always nothing: the description says it all.
  std::optional<std::string> failureReason() const { return std::nullopt; }
  std::optional<std::string> recoverySuggestion() const { return std::nullopt; }
  std::optional<std::string> helpAnchor() const { return std::nullopt; }

  bool operator==(const RecorderError&) const = default;

 private:
  /// A step of the hardware layer, by the result of its call.
  template <int step>
  struct Status {
    CA::OSStatus status;
    bool operator==(const Status&) const = default;
  };
  using TapCreationFailed = Status<0>;
  using AggregateDeviceFailed = Status<1>;
  using StreamFormatUnavailable = Status<2>;
  using IOProcInstallFailed = Status<3>;
  struct FileOpenFailed {
    NS::Error error;
    bool operator==(const FileOpenFailed&) const = default;
  };
  struct FileWriteFailed {
    NS::Error error;
    bool operator==(const FileWriteFailed&) const = default;
  };
  struct SourceProcessExited {
    std::string name;
    bool operator==(const SourceProcessExited&) const = default;
  };
  struct PermissionDenied {
    bool operator==(const PermissionDenied&) const = default;
  };
  struct AlreadyRecording {
    bool operator==(const AlreadyRecording&) const = default;
  };
  using Value = std::variant<TapCreationFailed, AggregateDeviceFailed, StreamFormatUnavailable,
                             IOProcInstallFailed, FileOpenFailed, FileWriteFailed,
                             SourceProcessExited, PermissionDenied, AlreadyRecording>;
  struct Describe;

  explicit RecorderError(Value value);

  Value value_;
};

}  // namespace audrel
