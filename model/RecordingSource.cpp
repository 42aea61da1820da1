#include "model/RecordingSource.h"

#include <concepts>
#include <functional>
#include <type_traits>
#include <utility>

namespace audrel {

static_assert(std::equality_comparable<RecordingSource>);
static_assert(!std::totally_ordered<RecordingSource>);
static_assert(!std::is_default_constructible_v<std::hash<RecordingSource>>);

RecordingSource::RecordingSource(Value value) : value_(std::move(value)) {}

RecordingSource RecordingSource::process(CA::AudioObjectID id, std::string name,
                                         std::optional<std::string> bundleID) {
  return RecordingSource(Process{id, std::move(name), std::move(bundleID)});
}

RecordingSource RecordingSource::allSystemAudio() {
  return RecordingSource(AllSystemAudio{});
}

}  // namespace audrel
