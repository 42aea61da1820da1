// Power failures: what the disk may hold at each moment of a recording. What a flush covered is
// there. Of what was written since, each page is there or not, whatever came first, and the file's
// length is older or newer than its pages.

#include <gmock/gmock.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <functional>
#include <iostream>
#include <map>
#include <random>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tests/platform/linux/files/FakeDisk.h"
#include "tests/platform/linux/files/Recordings.h"
#include "tests/platform/linux/files/Tools.h"

namespace audrel::linuxos::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Bytes = std::vector<std::byte>;
using CallKind = FakeDisk::Call::Kind;

constexpr std::size_t pageSize = 4096;
constexpr unsigned seed = 20261122;

// A reader of our two layouts: how far a file plays what the finished one does

std::uint64_t number(std::span<const std::byte> bytes, std::size_t at, std::size_t size,
                     bool isBigEndian) {
  std::uint64_t value = 0;
  for (std::size_t i = 0; i < size; ++i) {
    const std::size_t index = isBigEndian ? i : size - 1 - i;
    value = value << 8U | std::to_integer<std::uint64_t>(bytes[at + index]);
  }
  return value;
}

std::string_view fourLetters(std::span<const std::byte> bytes, std::size_t at) {
  return {reinterpret_cast<const char*>(bytes.data()) + at, 4};
}

bool isSame(std::span<const std::byte> one, std::span<const std::byte> other, std::size_t from,
            std::size_t to) {
  return to <= one.size() && to <= other.size() &&
         std::memcmp(one.data() + from, other.data() + from, to - from) == 0;
}

struct Playable {
  std::size_t end = 0;        ///< in bytes; 0: nothing at all can be played
  std::uint64_t packets = 0;  ///< of an M4A that is not finished
  std::uint64_t size = 0;     ///< of a WAV's samples, in bytes

  bool isNothing() const { return packets == 0 && size == 0; }
};

Playable playableWav(std::span<const std::byte> file, std::span<const std::byte> finished) {
  std::size_t at = 12;
  while (at + 8 <= file.size() && at < 200) {
    const std::uint64_t size = number(file, at + 4, 4, false);
    if (fourLetters(file, at) == "data") {
      const bool isRight = isSame(file, finished, at + 8, at + 8 + size);
      return isRight ? Playable{.end = at + 8 + size, .size = size} : Playable();
    }
    at += 8 + size;
  }
  return {};
}

/// The size of the box at `at`, 0 where there is none of that type, or not all of it.
std::size_t boxAt(std::span<const std::byte> file, std::size_t at, std::string_view type) {
  if (at + 8 > file.size() || fourLetters(file, at + 4) != type) {
    return 0;
  }
  const std::uint64_t size = number(file, at, 4, true);
  return size >= 8 && size <= file.size() - at ? size : 0;
}

std::uint64_t packetsIn(std::span<const std::byte> fragmentHead) {
  const auto name = std::as_bytes(std::span("trun", 4));
  const auto found =
      std::search(fragmentHead.begin(), fragmentHead.end(), name.begin(), name.end());
  const auto at = static_cast<std::size_t>(found - fragmentHead.begin());
  return number(fragmentHead, at + 8, 4, true);
}

Playable playableM4a(std::span<const std::byte> file, std::span<const std::byte> finished) {
  std::size_t at = boxAt(file, 0, "ftyp");
  if (at == 0) {
    return {};
  }
  if (boxAt(file, at, "mdat") > 0) {  // a finished one is whole
    const bool isWhole = isSame(file, finished, 0, finished.size());
    return isWhole ? Playable{.end = finished.size(), .packets = UINT64_MAX} : Playable();
  }
  at += boxAt(file, at, "free");
  const std::size_t movie = boxAt(file, at, "moov");
  if (movie == 0) {
    return {};
  }
  Playable playable{.end = at + movie};
  for (;;) {
    const std::size_t head = boxAt(file, playable.end, "moof");
    const std::size_t media = head == 0 ? 0 : boxAt(file, playable.end + head, "mdat");
    const std::size_t end = playable.end + head + media;
    if (media == 0 || !isSame(file, finished, playable.end, end)) {
      return playable;
    }
    playable.packets += packetsIn(file.subspan(playable.end, head));
    playable.end = end;
  }
}

// What the disk may hold

/// Between two flushes: what may have reached the disk.
class Unsafe {
 public:
  explicit Unsafe(Bytes safe = {}) : now_(std::move(safe)), safe_(now_) {
    lengths_ = {now_.size()};
  }

  void apply(const FakeDisk::Call& call) {
    const std::size_t end = call.offset + call.bytes.size();
    now_.resize(std::max(now_.size(), end));
    std::ranges::copy(call.bytes, now_.begin() + static_cast<std::ptrdiff_t>(call.offset));
    lengths_.insert(now_.size());
    for (std::size_t page = call.offset / pageSize; page * pageSize < end; ++page) {
      auto& versions = pages_[page];
      if (versions.empty()) {
        versions.push_back(pageOf(safe_, page));
      }
      versions.push_back(pageOf(now_, page));
    }
  }

  const Bytes& now() const { return now_; }

  /// Shows `look` all states, or, of more than those of twelve pages, that many of them, until it
  /// has seen enough.
  template <typename Look>
  void forEachState(std::size_t most, std::mt19937& random, Look look) const {
    constexpr std::size_t ofTwelvePages = 1U << 12U;
    Bytes state;  // one for all: they are many, and large
    std::size_t states = lengths_.size();
    for (const auto& [page, versions] : pages_) {
      states = std::min(states * versions.size(), std::size_t{1} << 40U);
    }
    if (states <= ofTwelvePages * lengths_.size()) {
      for (std::size_t which = 0; which < states; ++which) {
        std::size_t rest = which;
        const auto next = [&rest](std::size_t choices) {
          const std::size_t choice = rest % choices;
          rest /= choices;
          return choice;
        };
        compose(next, state);
        if (look(state)) {
          return;
        }
      }
      return;
    }
    const auto any = [&random](std::size_t choices) { return random() % choices; };
    for (std::size_t i = 0; i < most; ++i) {
      compose(any, state);
      if (look(state)) {
        return;
      }
    }
  }

 private:
  static Bytes pageOf(const Bytes& contents, std::size_t page) {
    Bytes bytes(pageSize);
    const std::size_t begin = std::min(page * pageSize, contents.size());
    const std::size_t count = std::min(pageSize, contents.size() - begin);
    std::copy_n(contents.begin() + static_cast<std::ptrdiff_t>(begin), count, bytes.begin());
    return bytes;
  }

  /// `choose` picks one of so many.
  template <typename Choose>
  void compose(Choose choose, Bytes& state) const {
    state = safe_;
    const auto length = std::next(lengths_.begin(), static_cast<int>(choose(lengths_.size())));
    state.resize(*length);
    for (const auto& [page, versions] : pages_) {
      const Bytes& version = versions[choose(versions.size())];
      const std::size_t begin = std::min(page * pageSize, state.size());
      const std::size_t count = std::min(pageSize, state.size() - begin);
      std::copy_n(version.begin(), count, state.begin() + static_cast<std::ptrdiff_t>(begin));
    }
  }

  Bytes now_;
  Bytes safe_;
  std::map<std::size_t, std::vector<Bytes>> pages_;
  std::set<std::size_t> lengths_;
};

enum class Kind { m4a, wav };

struct Case {
  const char* name;
  Kind kind;
  std::uint32_t sampleRate;
  std::uint32_t channels;
  std::int64_t bitRate;
};

class PowerFailures : public FileTest, public testing::WithParamInterface<Case> {
 protected:
  void record() {
    AudioFramework framework(log_, disk_->creator());
    const auto settings = GetParam().kind == Kind::m4a ? m4aSettings(audio_, GetParam().bitRate)
                                                       : wavSettings(audio_);
    auto file = openFile(framework, "/music/recording", settings);
    EXPECT_THAT(deliver(framework, *file, audio_,
                        [this](std::size_t frames) { disk_->delivered = frames; }),
                IsEmpty());
  }

  Playable playable(std::span<const std::byte> file) const {
    return GetParam().kind == Kind::m4a ? playableM4a(file, disk_->contents)
                                        : playableWav(file, disk_->contents);
  }

  std::uint64_t framesOf(const Playable& playable) const {
    if (GetParam().kind == Kind::wav) {
      return playable.size / 2 / audio_.channels;
    }
    const std::uint64_t padded = std::min<std::uint64_t>(playable.packets, 1U << 20U) * 1024;
    return std::min<std::uint64_t>(audio_.frames(), padded - std::min<std::uint64_t>(padded, 1024));
  }

  std::size_t flushes() const {
    return static_cast<std::size_t>(std::ranges::count(disk_->allCalls, CallKind::sync,
                                                       [](const auto& call) { return call.kind; }));
  }

  using Lies = std::function<bool(std::size_t flush)>;
  using Look = std::function<void(const Bytes& state, std::uint64_t promised)>;

  /// Lets the power fail at each moment, on a disk that forgets the flushes that `lies` names (they
  /// are numbered from 1): when it first left a file that does not play what the flushes before it
  /// were to cover. `look` is shown some of the states, and the frames that were promised.
  std::string findBroken(const Lies& lies, const Look& look = {}) const {
    std::string broken;
    std::mt19937 random(seed);
    Unsafe unsafe;
    Playable promised;
    std::size_t flush = 0;
    const auto fail = [&] {
      std::size_t states = 0;
      unsafe.forEachState(10'000 / std::max<std::size_t>(1, flushes()), random,
                          [&](const Bytes& state) {
                            if (playable(state).end < promised.end) {
                              broken = "after flush " + std::to_string(flush);
                            } else if (look && ++states % 400 == 1) {
                              look(state, framesOf(promised));
                            }
                            return !broken.empty();
                          });
    };
    for (const FakeDisk::Call& call : disk_->allCalls) {
      if (call.kind == CallKind::write) {
        unsafe.apply(call);
      } else if (call.kind == CallKind::sync) {
        fail();
        if (!broken.empty()) {
          return broken;
        }
        EXPECT_GE(framesOf(promised) + 3UL * audio_.sampleRate, call.delivered);
        ++flush;
        promised = playable(unsafe.now());
        if (!lies(flush)) {
          unsafe = Unsafe(unsafe.now());
        }
      }
    }
    fail();
    EXPECT_EQ(promised.end, disk_->contents.size()) << "when finishing is over all is safe";
    return broken;
  }

  const Audio audio_ =
      noise(GetParam().sampleRate * 4UL + 777, GetParam().sampleRate, GetParam().channels);
  const std::shared_ptr<FakeDisk> disk_ = std::make_shared<FakeDisk>();
};

INSTANTIATE_TEST_SUITE_P(Files, PowerFailures,
                         testing::Values(Case{"m4a", Kind::m4a, 48000, 2, 256'000},
                                         Case{"small_m4a", Kind::m4a, 48000, 1, 64'000},
                                         Case{"wav", Kind::wav, 48000, 2, 0},
                                         Case{"small_wav", Kind::wav, 8000, 1, 0}),
                         [](const auto& parameter) { return parameter.param.name; });

TEST_P(PowerFailures, costNothingThatAFlushCovered) {
  record();
  std::cout << "seed " << seed << '\n';
  EXPECT_EQ(findBroken([](std::size_t) { return false; }), "");
}

TEST_P(PowerFailures, leaveWhatOtherProgramsPlay) {
  record();
  const auto path = folder_ / "left";
  std::size_t played = 0;
  findBroken([](std::size_t) { return false; },
             [&](const Bytes& state, std::uint64_t promised) {
               if (promised == 0) {
                 return;
               }
               ++played;
               std::ofstream(path, std::ios::binary)
                   .write(reinterpret_cast<const char*>(state.data()),
                          static_cast<std::streamsize>(state.size()));
               if (GetParam().kind == Kind::wav) {
                 auto samples = readWav(path).samples;
                 ASSERT_GE(samples.size(), promised * audio_.channels);
                 auto expected = asSixteenBit(audio_.samples);
                 expected.resize(promised * audio_.channels);
                 samples.resize(expected.size());
                 EXPECT_EQ(samples, expected);
               } else {
                 auto decoded = decodeTorn(path);
                 ASSERT_GE(decoded.size(), promised * audio_.channels);
                 decoded.resize(promised * audio_.channels);
                 EXPECT_LT(errorRatio(audio_, decoded), 0.15);
               }
             });
  EXPECT_GE(played, 4U);
}

TEST_P(PowerFailures, costMoreOnADiskThatForgetsAnyOfItsFlushes) {
  record();
  EXPECT_NE(findBroken([](std::size_t) { return true; }), "");
  for (std::size_t number = 1; number <= flushes(); ++number) {
    EXPECT_NE(findBroken([=](std::size_t flush) { return flush == number; }), "")
        << "flush " << number << " of " << flushes();
  }
}

/// What was done to the file, one line a call.
std::vector<std::string> story(const FakeDisk& disk) {
  std::vector<std::string> lines;
  std::uint64_t end = 0;
  for (const FakeDisk::Call& call : disk.allCalls) {
    switch (call.kind) {
      case CallKind::write:
        lines.push_back(call.offset < end    ? "write in place"
                        : call.offset == end ? "append"
                                             : "leave a gap");
        end = std::max<std::uint64_t>(end, call.offset + call.bytes.size());
        break;
      case CallKind::truncate:
        lines.emplace_back("cut off");
        break;
      case CallKind::sync:
        lines.emplace_back("flush");
        break;
      case CallKind::syncFolder:
        lines.emplace_back("flush the folder");
        break;
      case CallKind::close:
        lines.emplace_back("close");
        break;
    }
  }
  return lines;
}

class OrderOfCalls : public FileTest {
 protected:
  /// Of a recording of that many frames.
  std::vector<std::string> storyOf(std::size_t frames,
                                   AV::Settings (*settings)(const Audio& audio)) {
    const Audio audio = noise(frames);
    const auto disk = std::make_shared<FakeDisk>();
    AudioFramework framework(log_, disk->creator());
    {
      const auto file = openFile(framework, "/music/recording", settings(audio));
      EXPECT_EQ(story(*disk), std::vector<std::string>{"append"}) << "a start flushes nothing";
      deliver(framework, *file, audio);
    }
    return story(*disk);
  }
};

AV::Settings usualM4a(const Audio& audio) {
  return m4aSettings(audio);
}

TEST_F(OrderOfCalls, ofAWavIsBlockFlushHeader) {
  EXPECT_THAT(storyOf(60'000, wavSettings),
              ElementsAre("append",                                                 // the header
                          "append", "flush", "flush the folder", "write in place",  // half a second
                          "append", "flush", "write in place",                      // another
                          "append", "flush", "write in place", "flush", "close"));  // the rest
}

TEST_F(OrderOfCalls, ofAnM4aIsThreeFragmentsAndAFlushAndAtTheEndIndexFlushEightBytesFlush) {
  EXPECT_THAT(storyOf(150'000, usualM4a),
              ElementsAre("append",                                         // the beginning
                          "append", "append", "flush", "flush the folder",  // two fragments
                          "append", "append", "append", "flush",            // three
                          "append", "append", "flush",                      // the rest
                          "append", "flush",                                // the index
                          "write in place", "flush", "close"));
}

TEST_F(OrderOfCalls, ofARecordingThatIsOverAtOnceLacksNothing) {
  EXPECT_THAT(storyOf(100, wavSettings),
              ElementsAre("append", "append", "flush", "flush the folder", "write in place",
                          "flush", "close"));
  EXPECT_THAT(storyOf(100, usualM4a),
              ElementsAre("append", "append", "flush", "append", "flush", "write in place", "flush",
                          "flush the folder", "close"));
}

}  // namespace
}  // namespace audrel::linuxos::test
