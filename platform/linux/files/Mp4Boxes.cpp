#include "platform/linux/files/Mp4Boxes.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <string>
#include <utility>

namespace audrel::linuxos::mp4 {
namespace {

constexpr std::uint32_t trackId = 1;
constexpr std::uint32_t fixedPointOne = 0x10000;
constexpr std::uint64_t largest32 = std::numeric_limits<std::uint32_t>::max();

/// Writes version 0 with 32-bit times where they fit: more programs read that.
bool needs64Bit(std::uint64_t time) {
  return time > largest32;
}

void versionAndFlags(ByteWriter& out, bool version1, std::uint32_t flags) {
  out.big((version1 ? 1U << 24U : 0U) | flags);
}

void timeValue(ByteWriter& out, bool version1, std::uint64_t time) {
  if (version1) {
    out.big(time);
  } else {
    out.big(static_cast<std::uint32_t>(time));
  }
}

void unityMatrix(ByteWriter& out) {
  for (const std::uint32_t element : {fixedPointOne, 0U, 0U, 0U, fixedPointOne, 0U, 0U, 0U}) {
    out.big(element);
  }
  out.big(1U << 30U);
}

void movieHeader(ByteWriter& out, const Track& track, std::uint64_t duration) {
  const Box box(out, "mvhd");
  const bool version1 = needs64Bit(duration);
  versionAndFlags(out, version1, 0);
  timeValue(out, version1, 0);  // created: not told
  timeValue(out, version1, 0);  // modified
  out.big(track.sampleRate);
  timeValue(out, version1, duration);
  out.big(fixedPointOne);          // rate
  out.big(std::uint16_t{0x0100});  // volume
  out.zeros(10);
  unityMatrix(out);
  out.zeros(24);
  out.big(trackId + 1);  // next track
}

void trackHeader(ByteWriter& out, std::uint64_t duration) {
  const Box box(out, "tkhd");
  constexpr std::uint32_t enabledInMovieAndPreview = 7;
  const bool version1 = needs64Bit(duration);
  versionAndFlags(out, version1, enabledInMovieAndPreview);
  timeValue(out, version1, 0);
  timeValue(out, version1, 0);
  out.big(trackId);
  out.zeros(4);
  timeValue(out, version1, duration);
  out.zeros(8);
  out.zeros(4);                    // layer, alternate group
  out.big(std::uint16_t{0x0100});  // volume
  out.zeros(2);
  unityMatrix(out);
  out.zeros(8);  // width, height
}

/// Plays `duration` frames after the padding. 0 before fragments: all that there is.
void editList(ByteWriter& out, const Track& track, std::uint64_t duration) {
  const Box edits(out, "edts");
  const Box box(out, "elst");
  const bool version1 = needs64Bit(duration);
  versionAndFlags(out, version1, 0);
  out.big(std::uint32_t{1});
  timeValue(out, version1, duration);
  timeValue(out, version1, track.initialPadding);
  out.big(fixedPointOne);  // rate
}

void mediaHeader(ByteWriter& out, const Track& track, std::uint64_t duration) {
  const Box box(out, "mdhd");
  constexpr std::uint16_t languageUndetermined = 0x55C4;
  const bool version1 = needs64Bit(duration);
  versionAndFlags(out, version1, 0);
  timeValue(out, version1, 0);
  timeValue(out, version1, 0);
  out.big(track.sampleRate);
  timeValue(out, version1, duration);
  out.big(languageUndetermined);
  out.zeros(2);
}

void handler(ByteWriter& out) {
  const Box box(out, "hdlr");
  versionAndFlags(out, false, 0);
  out.zeros(4);
  out.text("soun");
  out.zeros(12);
  out.text("Sound");
  out.zeros(1);
}

/// The header of an MPEG-4 descriptor whose content has `size` bytes.
void descriptor(ByteWriter& out, std::uint8_t tag, std::size_t size) {
  out.big(tag);
  for (std::size_t shift = 21; shift > 0; shift -= 7) {
    out.big(static_cast<std::uint8_t>(0x80U | (size >> shift & 0x7FU)));
  }
  out.big(static_cast<std::uint8_t>(size & 0x7FU));
}

void elementaryStream(ByteWriter& out, const Track& track, std::uint32_t averageBitRate) {
  constexpr std::size_t headerSize = 5;
  constexpr std::size_t decoderFields = 13;
  constexpr std::uint8_t audioStream = 0x15;
  constexpr std::uint8_t mpeg4Audio = 0x40;
  const std::size_t configurationSize = track.configuration.size();
  const std::size_t decoderSize = decoderFields + headerSize + configurationSize;

  const Box box(out, "esds");
  versionAndFlags(out, false, 0);
  descriptor(out, 3, 3 + headerSize + decoderSize + headerSize + 1);
  out.big(std::uint16_t{0});  // stream id: the track says it
  out.big(std::uint8_t{0});
  descriptor(out, 4, decoderSize);
  out.big(mpeg4Audio);
  out.big(audioStream);
  out.zeros(3);  // decoder buffer
  out.big(std::max(track.bitRate, averageBitRate));
  out.big(averageBitRate);
  descriptor(out, 5, configurationSize);
  out.add(track.configuration);
  descriptor(out, 6, 1);
  out.big(std::uint8_t{2});
}

void sampleDescription(ByteWriter& out, const Track& track, std::uint32_t averageBitRate) {
  const Box box(out, "stsd");
  versionAndFlags(out, false, 0);
  out.big(std::uint32_t{1});
  const Box entry(out, "mp4a");
  out.zeros(6);
  out.big(std::uint16_t{1});  // data is in this file
  out.zeros(8);
  out.big(track.channels);
  out.big(std::uint16_t{16});  // sample size: always this
  out.zeros(4);
  // 16.16 bits; a rate beyond that stands in the time scale and the configuration alone.
  out.big(track.sampleRate <= 0xFFFF ? track.sampleRate << 16U : 0U);
  elementaryStream(out, track, averageBitRate);
}

void mediaInformationHead(ByteWriter& out) {
  {
    const Box box(out, "smhd");
    out.zeros(8);
  }
  const Box information(out, "dinf");
  const Box references(out, "dref");
  constexpr std::uint32_t inThisFile = 1;
  versionAndFlags(out, false, 0);
  out.big(std::uint32_t{1});
  const Box url(out, "url ");
  versionAndFlags(out, false, inThisFile);
}

/// Each packet lasts its full length but the last one, which ends with the recording: programs
/// that don't look at the edit list's duration then stop at the right frame too.
void timeToSample(ByteWriter& out, const Track& track, std::size_t packets,
                  std::uint64_t duration) {
  const Box box(out, "stts");
  versionAndFlags(out, false, 0);
  const std::uint64_t beforeLast = packets == 0 ? 0 : packets - 1;
  out.big((beforeLast > 0 ? 1U : 0U) + (packets > 0 ? 1U : 0U));
  if (beforeLast > 0) {
    out.big(static_cast<std::uint32_t>(beforeLast));
    out.big(track.framesPerPacket);
  }
  if (packets > 0) {
    out.big(std::uint32_t{1});
    out.big(static_cast<std::uint32_t>(duration - beforeLast * track.framesPerPacket));
  }
}

void sampleToChunk(ByteWriter& out, const PacketIndex& index) {
  const Box box(out, "stsc");
  versionAndFlags(out, false, 0);
  const std::size_t countPosition = out.size();
  out.big(std::uint32_t{0});
  std::uint32_t entries = 0;
  std::uint32_t chunk = 0;
  std::uint32_t previous = 0;
  for (const PacketIndex::Run& run : index.runs()) {
    ++chunk;
    if (run.packets != previous) {
      out.big(chunk);
      out.big(run.packets);
      out.big(std::uint32_t{1});  // sample description
      previous = run.packets;
      ++entries;
    }
  }
  out.patchBig32(countPosition, entries);
}

void sampleSizes(ByteWriter& out, const PacketIndex& index) {
  const Box box(out, "stsz");
  versionAndFlags(out, false, 0);
  out.big(std::uint32_t{0});  // each has its own size
  out.big(static_cast<std::uint32_t>(index.sizes().size()));
  for (const std::uint32_t size : index.sizes()) {
    out.big(size);
  }
}

void chunkOffsets(ByteWriter& out, const PacketIndex& index) {
  const bool large = !index.runs().empty() && index.runs().back().offset > largest32;
  const Box box(out, large ? "co64" : "stco");
  versionAndFlags(out, false, 0);
  out.big(static_cast<std::uint32_t>(index.runs().size()));
  for (const PacketIndex::Run& run : index.runs()) {
    timeValue(out, large, run.offset);
  }
}

std::uint32_t averageBitRate(const Track& track, const PacketIndex& index) {
  const double seconds = static_cast<double>(index.sizes().size()) * track.framesPerPacket /
                         static_cast<double>(track.sampleRate);
  return seconds > 0 ? static_cast<std::uint32_t>(static_cast<double>(index.bytes()) * 8 / seconds)
                     : track.bitRate;
}

/// `duration` frames without the padding; `mediaDuration` with it.
void trackBox(ByteWriter& out, const Track& track, const PacketIndex& index, std::uint64_t duration,
              std::uint64_t mediaDuration, bool withEdits) {
  const Box box(out, "trak");
  trackHeader(out, duration);
  if (withEdits) {
    editList(out, track, duration);
  }
  const Box media(out, "mdia");
  mediaHeader(out, track, mediaDuration);
  handler(out);
  const Box information(out, "minf");
  mediaInformationHead(out);
  const Box table(out, "stbl");
  sampleDescription(out, track, averageBitRate(track, index));
  timeToSample(out, track, index.sizes().size(), mediaDuration);
  sampleToChunk(out, index);
  sampleSizes(out, index);
  chunkOffsets(out, index);
}

std::string hexadecimal(std::uint64_t number, std::size_t digits) {
  std::array<char, 16> text{};
  const auto end = std::to_chars(text.begin(), text.end(), number, 16).ptr;
  const auto length = static_cast<std::size_t>(end - text.begin());
  return std::string(digits - length, '0').append(text.begin(), length);
}

/// The padding once more, as the tag that older encoders wrote: before fragments, FFmpeg's
/// demuxer (5.1) shifts times by the edit list but plays the padding, unless this tells it not to.
/// The length is unknown, so one that no recording reaches.
void gaplessTag(ByteWriter& out, const Track& track) {
  constexpr std::uint64_t unknownLength = 0x7FFFFFFFFFFF;
  constexpr std::uint32_t utf8Text = 1;
  std::string value = " 00000000 " + hexadecimal(track.initialPadding, 8) + " 00000000 " +
                      hexadecimal(unknownLength, 16);
  for (int unused = 0; unused < 8; ++unused) {
    value += " 00000000";
  }
  const Box userData(out, "udta");
  const Box metadata(out, "meta");
  versionAndFlags(out, false, 0);
  {
    const Box box(out, "hdlr");
    versionAndFlags(out, false, 0);
    out.zeros(4);
    out.text("mdirappl");
    out.zeros(9);
  }
  const Box list(out, "ilst");
  const Box tag(out, "----");
  for (const auto& [type, text] : {std::pair("mean", "com.apple.iTunes"), {"name", "iTunSMPB"}}) {
    const Box box(out, type);
    versionAndFlags(out, false, 0);
    out.text(text);
  }
  const Box data(out, "data");
  versionAndFlags(out, false, utf8Text);
  out.zeros(4);
  out.text(value);
}

void fileType(ByteWriter& out) {
  const Box box(out, "ftyp");
  out.text("M4A ");
  out.big(std::uint32_t{0x200});
  out.text("M4A mp42isomiso5");  // iso5: fragments whose offsets count from their moof
}

/// The track, no packets.
void fragmentedMovie(ByteWriter& out, const Track& track) {
  const Box box(out, "moov");
  movieHeader(out, track, 0);
  trackBox(out, track, PacketIndex(), 0, 0, true);
  gaplessTag(out, track);
  const Box extends(out, "mvex");
  const Box defaults(out, "trex");
  constexpr std::uint32_t decodesByItself = 0x02000000;
  versionAndFlags(out, false, 0);
  out.big(trackId);
  out.big(std::uint32_t{1});  // sample description
  out.big(track.framesPerPacket);
  out.big(std::uint32_t{0});  // size: told by each fragment
  out.big(decodesByItself);
}

/// Every packet of `index`. Decoded, `frames` frames follow the padding; 0 means that there is no
/// packet either.
void movie(ByteWriter& out, const Track& track, const PacketIndex& index, std::uint64_t frames) {
  constexpr std::size_t fixedBoxes = 1024;
  out.reserve(out.size() + fixedBoxes + track.configuration.size() + 4 * index.sizes().size() +
              20 * index.runs().size());
  const Box box(out, "moov");
  movieHeader(out, track, frames);
  trackBox(out, track, index, frames, frames == 0 ? 0 : track.initialPadding + frames, frames > 0);
}

}  // namespace

Box::Box(ByteWriter& out, std::string_view type) : out_(out), start_(out.size()) {
  out.big(std::uint32_t{0});
  out.text(type);
}

Box::~Box() {
  out_.patchBig32(start_, static_cast<std::uint32_t>(out_.size() - start_));
}

void writeBeginning(ByteWriter& out, const Track& track) {
  fileType(out);
  {
    const Box box(out, "free");
  }
  fragmentedMovie(out, track);
}

void writeFragmentHead(ByteWriter& out, std::uint32_t sequence, std::uint64_t time,
                       std::span<const std::uint16_t> packetSizes) {
  std::uint32_t dataSize = 0;
  {
    const Box box(out, "moof");
    {
      const Box header(out, "mfhd");
      versionAndFlags(out, false, 0);
      out.big(sequence);
    }
    const Box track(out, "traf");
    {
      const Box header(out, "tfhd");
      constexpr std::uint32_t offsetsCountFromMoof = 0x020000;
      versionAndFlags(out, false, offsetsCountFromMoof);
      out.big(trackId);
    }
    {
      const Box decodeTime(out, "tfdt");
      versionAndFlags(out, true, 0);
      out.big(time);
    }
    const Box run(out, "trun");
    constexpr std::uint32_t hasDataOffsetAndSizes = 0x201;
    versionAndFlags(out, false, hasDataOffsetAndSizes);
    out.big(static_cast<std::uint32_t>(packetSizes.size()));
    out.big(static_cast<std::uint32_t>(fragmentHeadSize(packetSizes.size())));
    for (const std::uint32_t size : packetSizes) {
      out.big(size);
      dataSize += size;
    }
  }
  out.big(dataSize + 8);
  out.text("mdat");
}

std::size_t fragmentHeadSize(std::size_t packets) {
  constexpr std::size_t moof = 8;
  constexpr std::size_t mfhd = 16;
  constexpr std::size_t traf = 8;
  constexpr std::size_t tfhd = 16;
  constexpr std::size_t tfdt = 20;
  constexpr std::size_t trun = 20;
  constexpr std::size_t mdat = 8;
  return moof + mfhd + traf + tfhd + tfdt + trun + 4 * packets + mdat;
}

std::uint64_t playableFrames(const Track& track, std::uint64_t packets) {
  const std::uint64_t decoded = packets * track.framesPerPacket;
  return decoded - std::min<std::uint64_t>(decoded, track.initialPadding);
}

void writeHiddenMovie(ByteWriter& out, const Track& track, PacketIndex& index,
                      std::uint64_t frames) {
  const std::uint64_t decoded = frames == 0 ? 0 : track.initialPadding + frames;
  index.limit((decoded + track.framesPerPacket - 1) / track.framesPerPacket);
  const Box hiding(out, "free");
  movie(out, track, index, frames);
}

void writeCommit(ByteWriter& out, std::uint64_t movie) {
  writeBoxHeader(out, "mdat", movie - commitOffset);
}

void writeBoxHeader(ByteWriter& out, std::string_view type, std::uint64_t size) {
  const bool large = size > largest32;
  out.big(large ? std::uint32_t{1} : static_cast<std::uint32_t>(size));
  out.text(type);
  if (large) {
    out.big(size);
  }
}

}  // namespace audrel::linuxos::mp4
