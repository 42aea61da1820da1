#include "model/RecorderError.h"

#include <utility>

namespace audrel {
namespace {

std::string withStatus(const char* before, CA::OSStatus status, const char* after) {
  return before + std::to_string(status) + after;
}

}  // namespace

struct RecorderError::Describe {
  std::string operator()(const TapCreationFailed& failure) const {
    return withStatus("Could not create the audio tap (OSStatus ", failure.status,
                      "). Try restarting Audrel.");
  }
  std::string operator()(const AggregateDeviceFailed& failure) const {
    return withStatus("Could not create the aggregate capture device (OSStatus ", failure.status,
                      ").");
  }
  std::string operator()(const StreamFormatUnavailable& failure) const {
    return withStatus("Could not read the tap's stream format (OSStatus ", failure.status, ").");
  }
  std::string operator()(const IOProcInstallFailed& failure) const {
    return withStatus("Could not install the audio callback (OSStatus ", failure.status, ").");
  }
  std::string operator()(const FileOpenFailed& failure) const {
    return "Could not create the output file: " + failure.error.localizedDescription;
  }
  std::string operator()(const FileWriteFailed& failure) const {
    return "Could not write audio to disk: " + failure.error.localizedDescription;
  }
  std::string operator()(const SourceProcessExited& exit) const {
    return exit.name + " quit while recording. The partial recording has been saved.";
  }
  std::string operator()(const PermissionDenied&) const {
    return "Audrel needs permission to record system audio. Grant \"Screen & System Audio "
           "Recording\" in System Settings.";
  }
  std::string operator()(const AlreadyRecording&) const { return "Audrel is already recording."; }
};

RecorderError::RecorderError(Value value) : value_(std::move(value)) {}

RecorderError RecorderError::tapCreationFailed(CA::OSStatus status) {
  return RecorderError(TapCreationFailed{status});
}

RecorderError RecorderError::aggregateDeviceFailed(CA::OSStatus status) {
  return RecorderError(AggregateDeviceFailed{status});
}

RecorderError RecorderError::streamFormatUnavailable(CA::OSStatus status) {
  return RecorderError(StreamFormatUnavailable{status});
}

RecorderError RecorderError::ioProcInstallFailed(CA::OSStatus status) {
  return RecorderError(IOProcInstallFailed{status});
}

RecorderError RecorderError::fileOpenFailed(NS::Error error) {
  return RecorderError(FileOpenFailed{std::move(error)});
}

RecorderError RecorderError::fileWriteFailed(NS::Error error) {
  return RecorderError(FileWriteFailed{std::move(error)});
}

RecorderError RecorderError::sourceProcessExited(std::string name) {
  return RecorderError(SourceProcessExited{std::move(name)});
}

RecorderError RecorderError::permissionDenied() {
  return RecorderError(PermissionDenied{});
}

RecorderError RecorderError::alreadyRecording() {
  return RecorderError(AlreadyRecording{});
}

std::optional<std::string> RecorderError::errorDescription() const {
  return std::visit(Describe{}, value_);
}

}  // namespace audrel
