#include "tests/fakes/FakeAudio.h"

#include <algorithm>
#include <cassert>
#include <utility>
#include <variant>

#include "tests/fakes/InputCycle.h"

namespace audrel::fakes {
namespace {

struct ShowSetting {
  std::string operator()(std::uint32_t value) const { return "u32 " + std::to_string(value); }
  std::string operator()(double value) const { return "double " + shortNumber(value); }
  std::string operator()(std::int64_t value) const { return "integer " + std::to_string(value); }
  std::string operator()(bool value) const { return value ? "Boolean true" : "Boolean false"; }
};

std::string shown(const AV::Settings& settings) {
  std::string text = "{";
  const char* separator = "";
  for (const auto& [key, value] : settings) {
    text += separator + key + ": " + std::visit(ShowSetting{}, value);
    separator = ", ";
  }
  return text + "}";
}

std::string frames(std::uint32_t count) {
  return std::to_string(count) + (count == 1 ? " frame" : " frames");
}

}  // namespace

bool FakeFormat::isInterleaved() const {
  return (description_.mFormatFlags & CA::kAudioFormatFlagIsNonInterleaved) == 0;
}

AV::AudioCommonFormat FakeFormat::commonFormat() const {
  using enum AV::AudioCommonFormat;
  const bool isFloat = (description_.mFormatFlags & CA::kAudioFormatFlagIsFloat) != 0;
  switch (description_.mBitsPerChannel) {
    case 16:
      return isFloat ? otherFormat : pcmFormatInt16;
    case 32:
      return isFloat ? pcmFormatFloat32 : pcmFormatInt32;
    case 64:
      return isFloat ? pcmFormatFloat64 : otherFormat;
    default:
      return otherFormat;
  }
}

class FakeAudio::Buffer final : public AV::PCMBuffer {
 public:
  Buffer(const FakeAudio& audio, std::shared_ptr<const AV::AudioFormat> format,
         std::uint32_t frameCapacity)
      : format_(std::move(format)),
        frameSize_(format_->streamDescription().mBytesPerFrame),
        frameCapacity_(frameCapacity) {
    const bool isInterleaved = format_->isInterleaved();
    const std::uint32_t count = isInterleaved ? 1 : format_->channelCount();
    std::vector<CA::AudioBuffer> buffers;
    for (std::uint32_t i = 0; i < count; ++i) {
      auto& bytes = data_.emplace_back(std::size_t{frameCapacity} * frameSize_);
      const bool hasData = !audio.buffersWithoutData.contains(i);
      buffers.push_back(
          {isInterleaved ? format_->channelCount() : 1, 0, hasData ? bytes.data() : nullptr});
    }
    list_ = makeBufferList(storage_, buffers);
  }

  const AV::AudioFormat& format() const override { return *format_; }
  std::uint32_t frameCapacity() const override { return frameCapacity_; }
  std::uint32_t frameLength() const override { return frameLength_; }
  CA::AudioBufferList* mutableAudioBufferList() override { return list_; }

  void setFrameLength(std::uint32_t length) override {
    assert(length <= frameCapacity_);
    frameLength_ = length;
    CA::AudioBuffer* const buffers = list_->mBuffers;
    for (std::uint32_t i = 0; i < list_->mNumberBuffers; ++i) {
      buffers[i].mDataByteSize = length * frameSize_;
    }
  }

  /// The first `frameLength()` frames of every buffer.
  WrittenBuffer contents() const {
    WrittenBuffer written{frameLength_, data_};
    for (auto& bytes : written.buffers) {
      bytes.resize(std::size_t{frameLength_} * frameSize_);
    }
    return written;
  }

 private:
  std::shared_ptr<const AV::AudioFormat> format_;
  std::uint32_t frameSize_;
  std::uint32_t frameCapacity_;
  std::uint32_t frameLength_ = 0;
  std::vector<std::vector<std::byte>> data_;
  std::vector<std::max_align_t> storage_;
  CA::AudioBufferList* list_;
};

class FakeAudio::File final : public AV::AudioFile {
 public:
  File(FakeAudio& audio, std::shared_ptr<FileRecord> record)
      : audio_(audio), record_(std::move(record)) {}
  File(const File&) = delete;
  File& operator=(const File&) = delete;

  ~File() override {
    record_->isOpen = false;
    audio_.journal_.add("file closed: " + record_->url.filename().string());
    if (audio_.whenClosed) {
      audio_.whenClosed();
    }
  }

  std::optional<NS::Error> write(AV::PCMBuffer& buffer) override {
    if (audio_.whenWriting) {
      audio_.whenWriting();
    }
    if (audio_.writeError) {
      audio_.journal_.add("file.write(" + frames(buffer.frameLength()) + ") -> error " +
                          inQuotes(audio_.writeError->localizedDescription));
      return audio_.writeError;
    }
    audio_.journal_.add("file.write(" + frames(buffer.frameLength()) + ") -> ok");
    record_->writes.push_back(dynamic_cast<Buffer&>(buffer).contents());
    return std::nullopt;
  }

 private:
  FakeAudio& audio_;
  std::shared_ptr<FileRecord> record_;
};

std::shared_ptr<const AV::AudioFormat> FakeAudio::makeFormat(
    const CA::AudioStreamBasicDescription& description) {
  const bool isFormat = !makesNoFormat && description.mFormatID == CA::kAudioFormatLinearPCM;
  journal_.add(std::string("AVAudioFormat(streamDescription) -> ") +
               (isFormat ? "format" : "nothing"));
  return isFormat ? std::make_shared<FakeFormat>(description) : nullptr;
}

std::unique_ptr<AV::PCMBuffer> FakeAudio::makePCMBuffer(
    const std::shared_ptr<const AV::AudioFormat>& format, std::uint32_t frameCapacity) noexcept {
  journal_.add("AVAudioPCMBuffer(" + frames(frameCapacity) + ") -> " +
               (hasNoMemory ? "nothing" : "buffer"));
  if (whenBufferIsMade) {
    whenBufferIsMade();
  }
  return hasNoMemory ? nullptr : std::make_unique<Buffer>(*this, format, frameCapacity);
}

std::shared_ptr<AV::AudioFile> FakeAudio::openForWriting(const std::filesystem::path& url,
                                                         const AV::Settings& settings,
                                                         AV::AudioCommonFormat commonFormat,
                                                         bool interleaved, NS::Error* error) {
  const std::string call = "AVAudioFile(forWriting " + inQuotes(url.string()) + ", settings " +
                           shown(settings) + ", commonFormat " +
                           std::to_string(static_cast<std::uint64_t>(commonFormat)) +
                           ", interleaved " + (interleaved ? "true" : "false") + ") -> ";
  if (openError) {
    *error = *openError;
    journal_.add(call + "error " + inQuotes(error->localizedDescription));
    return nullptr;
  }
  journal_.add(call + "file");
  files.push_back(
      std::make_shared<FileRecord>(FileRecord{url, settings, commonFormat, interleaved, {}, true}));
  return std::make_shared<File>(*this, files.back());
}

}  // namespace audrel::fakes
