#include "platform/linux/files/M4aFrameWriter.h"

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

#include "platform/linux/files/FileErrors.h"

namespace audrel::linuxos {

mp4::Track trackOf(const AacEncoder& encoder, const AacEncoder::Settings& settings) {
  mp4::Track track;
  track.sampleRate = settings.sampleRate;
  track.channels = static_cast<std::uint16_t>(settings.channels);
  track.bitRate = static_cast<std::uint32_t>(encoder.bitRate());
  track.framesPerPacket = static_cast<std::uint32_t>(encoder.framesPerPacket());
  track.initialPadding = static_cast<std::uint32_t>(encoder.initialPadding());
  const auto configuration = encoder.configuration();
  track.configuration.assign(configuration.begin(), configuration.end());
  return track;
}

M4aFrameWriter::M4aFrameWriter(M4aWriter writer, std::unique_ptr<AacEncoder> encoder,
                               std::uint32_t channels, std::uint32_t sampleRate,
                               std::filesystem::path path)
    : writer_(std::move(writer)),
      encoder_(std::move(encoder)),
      channels_(channels),
      sampleRate_(sampleRate),
      path_(std::move(path)),
      framesPerPacket_(encoder_->framesPerPacket()) {}

std::optional<NS::Error> M4aFrameWriter::append(const SampleConverter& converter,
                                                const CA::AudioBufferList& buffers,
                                                std::size_t frames) {
  Problems problems;
  for (std::size_t done = 0; done < frames;) {
    float** planes = encoder_->input();
    if (planes == nullptr) {
      problems.encoding = ENOMEM;
      break;
    }
    const std::size_t count = std::min(frames - done, framesPerPacket_ - framesInPacket_);
    converter.toPlanarFloat(buffers, done, count, std::span(planes, channels_), framesInPacket_);
    done += count;
    frames_ += count;
    framesInPacket_ += count;
    if (framesInPacket_ == framesPerPacket_) {
      encodePacket(problems);
    }
  }
  return error(problems);
}

FrameWriter::Ending M4aFrameWriter::finish() {
  Problems seenAtTheEnd;  // what is lost shows in the ending
  if (framesInPacket_ > 0 && encoder_->input() != nullptr) {
    encodePacket(seenAtTheEnd);
  }
  if (encoder_->sendEnd() == 0) {
    takePackets(seenAtTheEnd);
  }
  const M4aWriter::Ending ending = writer_.finish(frames_);
  const std::uint64_t lost = frames_ - ending.frames;
  const std::uint64_t missing = lost + ending.silenced;
  if (ending.code == 0 && lost == 0) {
    return {.problem = {}, .missing = missing, .silenced = ending.silenced};
  }
  const std::string index =
      ending.indexed ? "" : " The file plays, but has no index: some programs cannot seek in it.";
  return {.problem = finishingProblem(path_, ending.code, lost, sampleRate_) + index,
          .missing = missing,
          .silenced = ending.silenced,
          .why = ending.code != 0 ? reason(path_, ending.code) + index : ""};
}

void M4aFrameWriter::encodePacket(Problems& problems) {
  const int code = encoder_->send(framesInPacket_);
  framesInPacket_ = 0;
  if (code != 0) {
    problems.encoding = code;
  }
  takePackets(problems);
}

void M4aFrameWriter::takePackets(Problems& problems) {
  int code = 0;
  while (const auto packet = encoder_->nextPacket(&code)) {
    if (const auto failure = writer_.add(*packet)) {
      problems.writing = failure;
    }
  }
  if (code != 0) {
    problems.encoding = code;
  }
}

std::optional<NS::Error> M4aFrameWriter::error(const Problems& problems) const {
  if (problems.encoding != 0) {
    return plainError(problems.encoding, "The audio for \"" + path_.filename().string() +
                                             "\" could not be encoded (" +
                                             std::generic_category().message(problems.encoding) +
                                             "). A piece of it is lost.");
  }
  if (problems.writing) {
    return writeError(path_, *problems.writing);
  }
  return std::nullopt;
}

}  // namespace audrel::linuxos
