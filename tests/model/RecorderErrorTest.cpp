#include "model/RecorderError.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace audrel {
namespace {

const NS::Error diskFull{NS::POSIXErrorDomain, 28, "The disk is full"};

std::vector<RecorderError> everyCase() {
  return {RecorderError::tapCreationFailed(1),
          RecorderError::aggregateDeviceFailed(1),
          RecorderError::streamFormatUnavailable(1),
          RecorderError::ioProcInstallFailed(1),
          RecorderError::fileOpenFailed(diskFull),
          RecorderError::fileWriteFailed(diskFull),
          RecorderError::sourceProcessExited("Radio"),
          RecorderError::permissionDenied(),
          RecorderError::alreadyRecording()};
}

TEST(RecorderError, describesEachCaseWithWhatItCarries) {
  constexpr CA::OSStatus least = std::numeric_limits<CA::OSStatus>::min();
  const std::pair<RecorderError, std::string> descriptions[] = {
      {RecorderError::tapCreationFailed(-50),
       "Could not create the audio tap (OSStatus -50). Try restarting Audrel."},
      {RecorderError::aggregateDeviceFailed(42),
       "Could not create the aggregate capture device (OSStatus 42)."},
      {RecorderError::aggregateDeviceFailed(least),
       "Could not create the aggregate capture device (OSStatus -2147483648)."},
      {RecorderError::streamFormatUnavailable(0),
       "Could not read the tap's stream format (OSStatus 0)."},
      {RecorderError::ioProcInstallFailed(-1),
       "Could not install the audio callback (OSStatus -1)."},
      {RecorderError::fileOpenFailed(diskFull),
       "Could not create the output file: The disk is full"},
      {RecorderError::fileWriteFailed(diskFull), "Could not write audio to disk: The disk is full"},
      {RecorderError::sourceProcessExited("Web Radio"),
       "Web Radio quit while recording. The partial recording has been saved."},
      {RecorderError::sourceProcessExited(""),
       " quit while recording. The partial recording has been saved."},
      {RecorderError::permissionDenied(),
       "Audrel needs permission to record system audio. Grant \"Screen & System Audio Recording\" "
       "in System Settings."},
      {RecorderError::alreadyRecording(), "Audrel is already recording."},
  };
  for (const auto& [error, description] : descriptions) {
    EXPECT_EQ(error.errorDescription(), description);
  }
}

TEST(RecorderError, onlyTapCreationFailedAdvisesToRestart) {
  for (const RecorderError& error : everyCase()) {
    const bool advises = error.errorDescription()->find("restarting") != std::string::npos;
    EXPECT_EQ(advises, error == RecorderError::tapCreationFailed(1)) << *error.errorDescription();
  }
}

TEST(RecorderError, everyCaseHasADescriptionAndNothingElse) {
  ASSERT_EQ(everyCase().size(), 9U);
  for (const RecorderError& error : everyCase()) {
    EXPECT_TRUE(error.errorDescription().has_value());
    EXPECT_EQ(error.failureReason(), std::nullopt);
    EXPECT_EQ(error.recoverySuggestion(), std::nullopt);
    EXPECT_EQ(error.helpAnchor(), std::nullopt);
  }
}

TEST(RecorderError, casesAndPayloadsTellErrorsApart) {
  const auto errors = everyCase();
  for (std::size_t i = 0; i < errors.size(); ++i) {
    for (std::size_t j = 0; j < errors.size(); ++j) {
      EXPECT_EQ(errors[i] == errors[j], i == j) << i << " and " << j;
    }
  }
  EXPECT_NE(RecorderError::tapCreationFailed(1), RecorderError::tapCreationFailed(2));
}

}  // namespace
}  // namespace audrel
