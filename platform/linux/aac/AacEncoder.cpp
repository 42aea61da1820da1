#include "platform/linux/aac/AacEncoder.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <iterator>
#include <utility>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/channel_layout.h>
}

namespace audrel::linuxos {
namespace {

constexpr std::int64_t maximumBitsPerPacketAndChannel = 6144;  // ISO/IEC 14496-3, 4.5.3.1
constexpr std::int64_t minimumBitRatePerChannel = 8000;

/// Shifts the encoder's messages beyond every level that libavutil prints: it writes statistics to
/// standard error even when all went well.
constexpr int unprintedLogLevels = 2 * AV_LOG_TRACE;

/// The layouts of AAC's channel configurations, by number of channels.
std::uint64_t channelLayout(std::uint32_t channels) {
  constexpr std::array<std::uint64_t, 9> layouts = {0,
                                                    AV_CH_LAYOUT_MONO,
                                                    AV_CH_LAYOUT_STEREO,
                                                    AV_CH_LAYOUT_SURROUND,
                                                    AV_CH_LAYOUT_4POINT0,
                                                    AV_CH_LAYOUT_5POINT0_BACK,
                                                    AV_CH_LAYOUT_5POINT1_BACK,
                                                    0,
                                                    AV_CH_LAYOUT_7POINT1};
  return channels < layouts.size() ? layouts.at(channels) : 0;
}

/// The sample rates that the encoder takes; newer libraries have a call for what was a field.
std::span<const int> supportedRates(const AVCodec& codec) {
#if LIBAVCODEC_VERSION_INT >= AV_VERSION_INT(61, 13, 100)
  const void* rates = nullptr;
  int count = 0;
  avcodec_get_supported_config(nullptr, &codec, AV_CODEC_CONFIG_SAMPLE_RATE, 0, &rates, &count);
  return {static_cast<const int*>(rates), static_cast<std::size_t>(count)};
#else
  const int* const rates = codec.supported_samplerates;
  return {rates, std::ranges::find(rates, std::unreachable_sentinel, 0)};
#endif
}

bool hasRate(const AVCodec& codec, std::uint32_t rate) {
  return std::ranges::any_of(supportedRates(codec), [rate](int supported) {
    return static_cast<std::uint32_t>(supported) == rate;
  });
}

std::int64_t nearestBitRate(const AacEncoder::Settings& settings) {
  const std::int64_t maximum =
      maximumBitsPerPacketAndChannel * settings.channels * settings.sampleRate / 1024;
  return std::clamp(settings.bitRate,
                    std::min(maximum, minimumBitRatePerChannel * settings.channels), maximum);
}

int errnoOf(int avError) {
  // The library's own error numbers, which are no errno values, are far below those.
  constexpr int lowestErrno = -4096;
  if (avError >= 0) {
    return 0;
  }
  return avError > lowestErrno ? AVUNERROR(avError) : EINVAL;
}

}  // namespace

void AacEncoder::Free::operator()(AVCodecContext* context) const {
  avcodec_free_context(&context);
}
void AacEncoder::Free::operator()(AVFrame* frame) const {
  av_frame_free(&frame);
}
void AacEncoder::Free::operator()(AVPacket* packet) const {
  av_packet_free(&packet);
}

std::unique_ptr<AacEncoder> AacEncoder::open(const Settings& settings, std::string* problem) {
  const AVCodec* codec = avcodec_find_encoder_by_name("aac");
  if (codec == nullptr) {
    *problem =
        "FFmpeg was built without its AAC encoder. Install the distribution's libavcodec, or "
        "record WAV.";
    return nullptr;
  }
  if (!hasRate(*codec, settings.sampleRate)) {
    *problem = "M4A has no sample rate of " + std::to_string(settings.sampleRate) +
               " Hz. Record WAV instead.";
    return nullptr;
  }
  const std::uint64_t layout = channelLayout(settings.channels);
  if (layout == 0) {
    *problem =
        "M4A cannot hold " + std::to_string(settings.channels) + " channels. Record WAV instead.";
    return nullptr;
  }
  auto encoder = std::unique_ptr<AacEncoder>(new AacEncoder);
  encoder->context_.reset(avcodec_alloc_context3(codec));
  encoder->frame_.reset(av_frame_alloc());
  encoder->packet_.reset(av_packet_alloc());
  if (!encoder->context_ || !encoder->frame_ || !encoder->packet_) {
    *problem = "There is no memory for the AAC encoder. Close some programs and try again.";
    return nullptr;
  }
  AVCodecContext& context = *encoder->context_;
  context.log_level_offset = unprintedLogLevels;
  context.thread_count = 1;
  context.sample_fmt = AV_SAMPLE_FMT_FLTP;
  context.sample_rate = static_cast<int>(settings.sampleRate);
  context.bit_rate = nearestBitRate(settings);
  context.flags |= AV_CODEC_FLAG_GLOBAL_HEADER;  // configuration once, not in each packet
  av_channel_layout_from_mask(&context.ch_layout, layout);
  if (const int result = avcodec_open2(&context, codec, nullptr); result < 0) {
    std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
    av_strerror(result, text.data(), text.size());
    *problem = std::string("The AAC encoder could not be started (") + text.data() +
               "). Record WAV instead.";
    return nullptr;
  }
  return encoder;
}

std::vector<std::byte> AacEncoder::silentPacket(const Settings& settings) {
  std::string problem;
  const auto encoder = open(settings, &problem);
  std::vector<std::byte> packet;
  for (int i = 0; encoder && i < 4; ++i) {  // the first packets carry the encoder's start
    float** planes = encoder->input();
    if (planes == nullptr) {
      return {};
    }
    for (std::uint32_t channel = 0; channel < settings.channels; ++channel) {
      std::fill_n(planes[channel], encoder->framesPerPacket(), 0.0F);
    }
    if (encoder->send(encoder->framesPerPacket()) != 0) {
      return {};
    }
    int code = 0;
    while (const auto bytes = encoder->nextPacket(&code)) {
      packet.assign(bytes->begin(), bytes->end());
    }
  }
  return packet;
}

std::size_t AacEncoder::framesPerPacket() const {
  return static_cast<std::size_t>(context_->frame_size);
}

std::size_t AacEncoder::initialPadding() const {
  return static_cast<std::size_t>(context_->initial_padding);
}

std::int64_t AacEncoder::bitRate() const {
  return context_->bit_rate;
}

std::span<const std::byte> AacEncoder::configuration() const {
  return std::as_bytes(
      std::span(context_->extradata, static_cast<std::size_t>(context_->extradata_size)));
}

float** AacEncoder::input() {
  AVFrame& frame = *frame_;
  frame.nb_samples = context_->frame_size;  // a frame of the full size is what is allocated
  if (frame.buf[0] == nullptr) {
    frame.format = AV_SAMPLE_FMT_FLTP;
    frame.sample_rate = context_->sample_rate;
    if (av_channel_layout_copy(&frame.ch_layout, &context_->ch_layout) < 0 ||
        av_frame_get_buffer(&frame, 0) < 0) {
      return nullptr;
    }
  } else if (av_frame_make_writable(&frame) < 0) {
    return nullptr;
  }
  return reinterpret_cast<float**>(frame.extended_data);
}

int AacEncoder::send(std::size_t frames) {
  frame_->nb_samples = static_cast<int>(frames);
  return errnoOf(avcodec_send_frame(context_.get(), frame_.get()));
}

int AacEncoder::sendEnd() {
  return errnoOf(avcodec_send_frame(context_.get(), nullptr));
}

std::optional<std::span<const std::byte>> AacEncoder::nextPacket(int* code) {
  const int result = avcodec_receive_packet(context_.get(), packet_.get());
  if (result < 0) {
    *code = result == AVERROR(EAGAIN) || result == AVERROR_EOF ? 0 : errnoOf(result);
    return std::nullopt;
  }
  return std::as_bytes(std::span(packet_->data, static_cast<std::size_t>(packet_->size)));
}

}  // namespace audrel::linuxos
