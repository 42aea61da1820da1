#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <vector>

#include "platform/AVFAudio.h"
#include "tests/fakes/FakeAudio.h"
#include "tests/fakes/FakeHardware.h"

namespace audrel::cli {

/// A buffer of interleaved float stereo at 48 kHz that holds `samples`, two a frame.
inline std::unique_ptr<AV::PCMBuffer> floatBuffer(fakes::FakeAudio& audio,
                                                  const std::vector<float>& samples) {
  const auto format = audio.makeFormat(fakes::FakeHardware::floatStereo());
  const auto frames = static_cast<std::uint32_t>(samples.size() / 2);
  auto buffer = audio.makePCMBuffer(format, frames);
  buffer->setFrameLength(frames);
  auto* const data = static_cast<float*>(buffer->mutableAudioBufferList()->mBuffers[0].mData);
  std::copy(samples.begin(), samples.end(), data);
  return buffer;
}

}  // namespace audrel::cli
