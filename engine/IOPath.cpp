// The way of the audio from the IO thread to the file.

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <span>
#include <utility>

#include "engine/RecordingEngine.h"

namespace audrel {
namespace {

/// Copies buffer by buffer, as far as both lists go. A source buffer that is larger than the first
/// one, by which the destination was sized, is cut to its destination.
void copyBuffers(std::span<const CA::AudioBuffer> sources,
                 std::span<const CA::AudioBuffer> destinations) noexcept {
  const std::size_t count = std::min(sources.size(), destinations.size());
  for (std::size_t i = 0; i < count; ++i) {
    const CA::AudioBuffer& source = sources[i];
    const CA::AudioBuffer& destination = destinations[i];
    if (source.mData != nullptr && destination.mData != nullptr) {
      std::memcpy(destination.mData, source.mData,
                  std::min(source.mDataByteSize, destination.mDataByteSize));
    }
  }
}

}  // namespace

CA::OSStatus ioProcCallback(CA::AudioObjectID /*device*/, const CA::AudioTimeStamp* /*now*/,
                            const CA::AudioBufferList* inputData,
                            const CA::AudioTimeStamp* /*inputTime*/,
                            CA::AudioBufferList* /*outputData*/,
                            const CA::AudioTimeStamp* /*outputTime*/, void* clientData) {
  if (clientData == nullptr) {
    return CA::kAudioHardwareNoError;
  }
  if (const auto engine = static_cast<RecordingEngine*>(clientData)->self_.lock()) {
    engine->handleIOProc(inputData);
  }
  return CA::kAudioHardwareNoError;
}

void RecordingEngine::handleIOProc(const CA::AudioBufferList* inputData) noexcept {
  if (!writerFormat_) {
    return;
  }
  const std::span input(inputData->mBuffers, inputData->mNumberBuffers);
  if (input.empty()) {
    return;
  }
  const std::uint32_t byteSize = input.front().mDataByteSize;
  const std::uint32_t frameSize = writerFormat_->streamDescription().mBytesPerFrame;
  if (frameSize == 0 || frameSize > byteSize) {
    return;
  }
  const std::uint32_t frameCount = byteSize / frameSize;

  auto buffer = audio_.makePCMBuffer(writerFormat_, frameCount);
  if (!buffer) {
    underrunCount_.increment();
    return;
  }
  buffer->setFrameLength(frameCount);
  const CA::AudioBufferList& output = *buffer->mutableAudioBufferList();
  copyBuffers(input, std::span(output.mBuffers, output.mNumberBuffers));

  // The file as it is now, so that a write that is already queued survives `stop`; the engine only
  // weakly, so that a queue that lags behind keeps no engine alive.
  dispatch::WorkItem& item = buffer->workItem;
  item.assign([weakEngine = self_, file = audioFile_, buffer = std::move(buffer)] {
    const auto engine = weakEngine.lock();
    if (!engine || !file) {
      return;
    }
    if (const auto error = file->write(*buffer)) {
      engine->log_->error("AVAudioFile.write failed: " + error->localizedDescription);
    }
  });
  writerQueue_->async(item);
}

}  // namespace audrel
