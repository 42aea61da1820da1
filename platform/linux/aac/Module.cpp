// The module: all of the program that is linked to FFmpeg's libraries.

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <iterator>
#include <memory>
#include <span>
#include <string>

#include "platform/linux/aac/AacFunctions.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/channel_layout.h>
#include <libavutil/opt.h>
}

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

std::int64_t nearestBitRate(std::uint32_t sampleRate, std::uint32_t channels,
                            std::int64_t bitRate) {
  const std::int64_t maximum = maximumBitsPerPacketAndChannel * channels * sampleRate / 1024;
  return std::clamp(bitRate, std::min(maximum, minimumBitRatePerChannel * channels), maximum);
}

int errnoOf(int avError) {
  // The library's own error numbers, which are no errno values, are far below those.
  constexpr int lowestErrno = -4096;
  if (avError >= 0) {
    return 0;
  }
  return avError > lowestErrno ? AVUNERROR(avError) : EINVAL;
}

struct Free {
  void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
  void operator()(AVFrame* frame) const { av_frame_free(&frame); }
  void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};

}  // namespace

struct AudrelAacEncoder {
  std::unique_ptr<AVCodecContext, Free> context;
  std::unique_ptr<AVFrame, Free> frame;
  std::unique_ptr<AVPacket, Free> packet;
};

namespace {

/// Null and `problem` set when AAC has no such rate or number of channels.
std::unique_ptr<AudrelAacEncoder> open(std::uint32_t sampleRate, std::uint32_t channels,
                                       std::int64_t bitRate, std::string* problem) {
  const AVCodec* codec = avcodec_find_encoder_by_name("aac");
  if (codec == nullptr) {
    *problem =
        "FFmpeg was built without its AAC encoder. Install the distribution's libavcodec, or "
        "record WAV.";
    return nullptr;
  }
  if (!hasRate(*codec, sampleRate)) {
    *problem =
        "M4A has no sample rate of " + std::to_string(sampleRate) + " Hz. Record WAV instead.";
    return nullptr;
  }
  const std::uint64_t layout = channelLayout(channels);
  if (layout == 0) {
    *problem = "M4A cannot hold " + std::to_string(channels) + " channels. Record WAV instead.";
    return nullptr;
  }
  auto encoder = std::make_unique<AudrelAacEncoder>();
  encoder->context.reset(avcodec_alloc_context3(codec));
  encoder->frame.reset(av_frame_alloc());
  encoder->packet.reset(av_packet_alloc());
  if (!encoder->context || !encoder->frame || !encoder->packet) {
    throw std::bad_alloc();
  }
  AVCodecContext& context = *encoder->context;
  context.log_level_offset = unprintedLogLevels;
  context.thread_count = 1;
  context.sample_fmt = AV_SAMPLE_FMT_FLTP;
  context.sample_rate = static_cast<int>(sampleRate);
  context.bit_rate = nearestBitRate(sampleRate, channels, bitRate);
  context.flags |= AV_CODEC_FLAG_GLOBAL_HEADER;  // configuration once, not in each packet
  av_channel_layout_from_mask(&context.ch_layout, layout);
  // Means for lower bit rates: at 256 kbit/s in stereo it is better without them, and cheaper by a
  // third. A library that no longer knows these options keeps its defaults.
  av_opt_set(context.priv_data, "aac_is", "0", 0);   // intensity stereo
  av_opt_set(context.priv_data, "aac_pns", "0", 0);  // noise in the place of noise-like bands
  if (const int result = avcodec_open2(&context, codec, nullptr); result < 0) {
    std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
    av_strerror(result, text.data(), text.size());
    *problem = std::string("The AAC encoder could not be started (") + text.data() +
               "). Record WAV instead.";
    return nullptr;
  }
  return encoder;
}

float** input(AudrelAacEncoder* encoder) {
  const AVCodecContext& context = *encoder->context;
  AVFrame& frame = *encoder->frame;
  frame.nb_samples = context.frame_size;  // a frame of the full size is what is allocated
  if (frame.buf[0] == nullptr) {
    frame.format = AV_SAMPLE_FMT_FLTP;
    frame.sample_rate = context.sample_rate;
    if (av_channel_layout_copy(&frame.ch_layout, &context.ch_layout) < 0 ||
        av_frame_get_buffer(&frame, 0) < 0) {
      return nullptr;
    }
  } else if (av_frame_make_writable(&frame) < 0) {
    return nullptr;
  }
  return reinterpret_cast<float**>(frame.extended_data);
}

constexpr AudrelAacFunctions functions = {
    .interfaceNumber = audrelAacInterface,
    .open = [](std::uint32_t sampleRate, std::uint32_t channels, std::int64_t bitRate,
               char* problem, std::size_t problemSize) -> AudrelAacEncoder* {
      try {
        std::string reason;
        auto encoder = open(sampleRate, channels, bitRate, &reason);
        std::snprintf(problem, problemSize, "%s", reason.c_str());
        return encoder.release();
      } catch (const std::bad_alloc&) {
        std::snprintf(problem, problemSize, "%s",
                      "There is no memory for the AAC encoder. Close some programs and try again.");
        return nullptr;
      }
    },
    .close = [](AudrelAacEncoder* encoder) { delete encoder; },
    .framesPerPacket =
        [](const AudrelAacEncoder* encoder) {
          return static_cast<std::size_t>(encoder->context->frame_size);
        },
    .initialPadding =
        [](const AudrelAacEncoder* encoder) {
          return static_cast<std::size_t>(encoder->context->initial_padding);
        },
    .bitRate = [](const AudrelAacEncoder* encoder) { return encoder->context->bit_rate; },
    .configuration = [](const AudrelAacEncoder* encoder, std::size_t* size) -> const std::uint8_t* {
      *size = static_cast<std::size_t>(encoder->context->extradata_size);
      return encoder->context->extradata;
    },
    .input = input,
    .send =
        [](AudrelAacEncoder* encoder, std::size_t frames) {
          encoder->frame->nb_samples = static_cast<int>(frames);
          return errnoOf(avcodec_send_frame(encoder->context.get(), encoder->frame.get()));
        },
    .sendEnd =
        [](AudrelAacEncoder* encoder) {
          return errnoOf(avcodec_send_frame(encoder->context.get(), nullptr));
        },
    .nextPacket = [](AudrelAacEncoder* encoder, std::size_t* size,
                     int* code) -> const std::uint8_t* {
      const int result = avcodec_receive_packet(encoder->context.get(), encoder->packet.get());
      if (result < 0) {
        *code = result == AVERROR(EAGAIN) || result == AVERROR_EOF ? 0 : errnoOf(result);
        return nullptr;
      }
      *size = static_cast<std::size_t>(encoder->packet->size);
      return encoder->packet->data;
    },
};

}  // namespace

extern "C" [[gnu::visibility("default")]] const AudrelAacFunctions* audrelAacFunctions() {
  return &functions;
}
