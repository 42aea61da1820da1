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

TEST(RecorderError, tapCreationFailedNamesTheStatusAndAdvisesToRestart) {
  EXPECT_EQ(RecorderError::tapCreationFailed(-50).errorDescription(),
            "Could not create the audio tap (OSStatus -50). Try restarting Audrel.");
}

TEST(RecorderError, aggregateDeviceFailedNamesTheStatus) {
  EXPECT_EQ(RecorderError::aggregateDeviceFailed(42).errorDescription(),
            "Could not create the aggregate capture device (OSStatus 42).");
}

TEST(RecorderError, streamFormatUnavailableNamesTheStatusAlsoWhenItIsZero) {
  EXPECT_EQ(RecorderError::streamFormatUnavailable(0).errorDescription(),
            "Could not read the tap's stream format (OSStatus 0).");
}

TEST(RecorderError, ioProcInstallFailedNamesTheStatus) {
  EXPECT_EQ(RecorderError::ioProcInstallFailed(-1).errorDescription(),
            "Could not install the audio callback (OSStatus -1).");
}

TEST(RecorderError, theStatusIsDecimalOverItsWholeRange) {
  EXPECT_EQ(RecorderError::aggregateDeviceFailed(std::numeric_limits<CA::OSStatus>::min())
                .errorDescription(),
            "Could not create the aggregate capture device (OSStatus -2147483648).");
  EXPECT_EQ(
      RecorderError::aggregateDeviceFailed(CA::kAudioHardwareBadObjectError).errorDescription(),
      "Could not create the aggregate capture device (OSStatus 560947818).");
}

TEST(RecorderError, onlyTapCreationFailedAdvisesToRestart) {
  for (const RecorderError& error : everyCase()) {
    const bool advises = error.errorDescription()->find("restarting") != std::string::npos;
    EXPECT_EQ(advises, error == RecorderError::tapCreationFailed(1)) << *error.errorDescription();
  }
}

TEST(RecorderError, fileOpenFailedAppendsTheCarriedDescriptionAsItComes) {
  EXPECT_EQ(RecorderError::fileOpenFailed(diskFull).errorDescription(),
            "Could not create the output file: The disk is full");
}

TEST(RecorderError, fileWriteFailedAppendsTheCarriedDescriptionAsItComes) {
  EXPECT_EQ(RecorderError::fileWriteFailed(diskFull).errorDescription(),
            "Could not write audio to disk: The disk is full");
}

TEST(RecorderError, sourceProcessExitedBeginsWithTheNameAsCarried) {
  EXPECT_EQ(RecorderError::sourceProcessExited("Web Radio").errorDescription(),
            "Web Radio quit while recording. The partial recording has been saved.");
}

TEST(RecorderError, sourceProcessExitedWithAnEmptyNameKeepsTheLeadingBlank) {
  EXPECT_EQ(RecorderError::sourceProcessExited("").errorDescription(),
            " quit while recording. The partial recording has been saved.");
}

TEST(RecorderError, permissionDeniedNamesThePrivacySettingOnOneLine) {
  EXPECT_EQ(RecorderError::permissionDenied().errorDescription(),
            "Audrel needs permission to record system audio. Grant \"Screen & System Audio "
            "Recording\" in System Settings.");
}

TEST(RecorderError, alreadyRecordingSaysSo) {
  EXPECT_EQ(RecorderError::alreadyRecording().errorDescription(), "Audrel is already recording.");
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
