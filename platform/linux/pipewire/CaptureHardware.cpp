#include "platform/linux/pipewire/CaptureHardware.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "platform/Identity.h"
#include "platform/linux/pipewire/Playback.h"
#include "platform/linux/pipewire/ShownName.h"
#include "platform/linux/pipewire/SourceWatch.h"

namespace audrel::linuxos {

namespace {

CA::AudioStreamBasicDescription interleavedStereo(double rate) {
  constexpr std::uint32_t channels = 2;
  constexpr std::uint32_t bytesPerFrame = channels * sizeof(float);
  return {.mSampleRate = rate,
          .mFormatID = CA::kAudioFormatLinearPCM,
          .mFormatFlags = CA::kAudioFormatFlagIsFloat | CA::kAudioFormatFlagIsPacked,
          .mBytesPerPacket = bytesPerFrame,
          .mFramesPerPacket = 1,
          .mBytesPerFrame = bytesPerFrame,
          .mChannelsPerFrame = channels,
          .mBitsPerChannel = 32,
          .mReserved = 0};
}

template <typename Value>
const Value* entry(const CA::Description& description, const char* key) {
  const auto found = description.entries.find(key);
  return found == description.entries.end() ? nullptr : std::get_if<Value>(&found->second);
}

CA::OSStatus copyOut(const void* data, std::size_t size, std::uint32_t* ioDataSize, void* outData) {
  if (*ioDataSize < size) {
    return CA::kAudioHardwareBadPropertySizeError;
  }
  if (size > 0) {  // an empty list has no address to copy from
    std::memcpy(outData, data, size);
  }
  *ioDataSize = static_cast<std::uint32_t>(size);
  return CA::kAudioHardwareNoError;
}

}  // namespace

CaptureHardware::CaptureHardware(Connection& connection, CaptureTime& time, os::Log& log,
                                 NS::UUIDFactory& uuids)
    : connection_(connection),
      time_(time),
      lossLog_(log.makeLogger(identity::bundleIdentifier, "loss")),
      uuids_(uuids) {
  const LoopLock lock(connection_.loop());
  connection_.setObserver(this);
}

CaptureHardware::~CaptureHardware() {
  const LoopLock lock(connection_.loop());
  connection_.setObserver(nullptr);
  devices_.clear();
}

// Failures

CA::OSStatus CaptureHardware::fail(CA::OSStatus status, std::string diagnosis) {
  diagnosis_ = std::move(diagnosis);
  return status;
}

CA::OSStatus CaptureHardware::requireServer() {
  diagnosis_.clear();
  if (connection_.ensureConnected() && connection_.roundTrip()) {
    return CA::kAudioHardwareNoError;
  }
  return fail(CA::kAudioHardwareNotRunningError, connection_.failure());
}

std::optional<std::string> CaptureHardware::diagnosis() {
  const LoopLock lock(connection_.loop());
  return diagnosis_.empty() ? std::nullopt : std::optional(diagnosis_);
}

std::string CaptureHardware::whyNoServer() const {
  const LoopLock lock(connection_.loop());
  return connection_.isConnected() ? "" : connection_.failure();
}

std::uint64_t CaptureHardware::lostFrames() {
  const LoopLock lock(connection_.loop());
  return devices_.lostFrames();
}

std::optional<capture::Playback> CaptureHardware::playback(CA::AudioObjectID process) {
  const LoopLock lock(connection_.loop());
  if (processes_.find(process) == nullptr) {
    return std::nullopt;
  }
  const Graph& graph = connection_.graph();
  capture::Playback playback;
  for (const auto& [id, node] : graph.nodes) {
    if (!isPlayback(graph, id) || !isIdentified(graph, node) ||
        processes_.processOf(node, clientOf(graph, node)).id != process) {
      continue;
    }
    if (playback.title.empty() || (node.isRunning && !playback.isRunning)) {
      playback.title = shownName(property(node.properties, "media.name"));
    }
    playback.isRunning = playback.isRunning || node.isRunning;
  }
  return playback;
}

bool CaptureHardware::hasQuit(CA::AudioObjectID process) {
  const LoopLock lock(connection_.loop());
  const auto* known = processes_.find(process);
  return known != nullptr && isGone(known->owner, connection_.graph());
}

// Processes

void CaptureHardware::learnProcesses() {
  connection_.retainDetails();
  connection_.roundTrip();
  processes_.playing(connection_.graph());
  connection_.releaseDetails();
  forgetGoneProcesses();
}

void CaptureHardware::forgetGoneProcesses() {
  processes_.forgetGone(connection_.graph(), [this](CA::AudioObjectID process) {
    return std::ranges::any_of(taps_, [&](const auto& tap) {
      return std::ranges::count(tap.second.description.processes, process) > 0;
    });
  });
}

std::optional<NS::RunningApplication> CaptureHardware::runningApplication(pid_t processIdentifier) {
  const LoopLock lock(connection_.loop());
  const auto* process = processes_.findPid(processIdentifier);
  if (process == nullptr) {
    return std::nullopt;
  }
  return NS::RunningApplication{.localizedName = process->name};
}

CA::OSStatus CaptureHardware::checkTapped(const std::vector<CA::AudioObjectID>& processes) {
  if (processes.empty()) {
    return CA::kAudioHardwareNoError;
  }
  learnProcesses();
  for (const CA::AudioObjectID id : processes) {
    const auto* process = processes_.find(id);
    if (process == nullptr) {
      return fail(CA::kAudioHardwareBadObjectError,
                  "No application has the object id " + std::to_string(id) + ".");
    }
    if (!processes_.isAlive(*process, connection_.graph())) {
      return fail(CA::kAudioHardwareBadObjectError,
                  process->name + " has quit. Start it again and choose it again.");
    }
  }
  return CA::kAudioHardwareNoError;
}

// Taps

CA::OSStatus CaptureHardware::AudioHardwareCreateProcessTap(const CA::TapDescription& description,
                                                            CA::AudioObjectID* outTapID) {
  const LoopLock lock(connection_.loop());
  if (const auto status = requireServer(); status != CA::kAudioHardwareNoError) {
    return status;
  }
  if (const auto status = checkTapped(description.processes); status != CA::kAudioHardwareNoError) {
    return status;
  }
  *outTapID = nextID_++;
  taps_[*outTapID] = {.description = description,
                      .uid = uuids_.uuidString(),
                      .rate = static_cast<double>(rateOf(connection_.graph()))};
  return CA::kAudioHardwareNoError;
}

CA::OSStatus CaptureHardware::AudioHardwareDestroyProcessTap(CA::AudioObjectID tapID) {
  const LoopLock lock(connection_.loop());
  return taps_.erase(tapID) == 1 ? CA::kAudioHardwareNoError : CA::kAudioHardwareBadObjectError;
}

TappedPorts CaptureHardware::tappedPorts(const Tap& tap, std::uint32_t nodeId) {
  const Graph& graph = connection_.graph();
  const GraphNode& node = graph.nodes.at(nodeId);
  if (!isPlayback(graph, nodeId) || !isIdentified(graph, node)) {
    return TappedPorts::none;
  }
  const auto& listed = tap.description.processes;
  // Only where it matters: to find out whose a new stream is takes reading files.
  const bool isListed =
      !listed.empty() &&
      std::ranges::count(listed, processes_.processOf(node, clientOf(graph, node)).id) > 0;
  if (tap.description.kind == CA::TapDescription::Kind::stereoMixdownOfProcesses) {
    return isListed ? TappedPorts::all : TappedPorts::none;
  }
  return !isListed && countsForEverything(graph, nodeId) ? TappedPorts::heard : TappedPorts::none;
}

TapSource CaptureHardware::sourceOf(const Tap& tap) {
  std::vector<SourceWatch> watches;
  if (tap.description.kind == CA::TapDescription::Kind::stereoMixdownOfProcesses) {
    for (const CA::AudioObjectID process : tap.description.processes) {
      watches.emplace_back(processes_, process);
    }
  }
  return {.tappedPortsOf = [this, tap](std::uint32_t node) { return tappedPorts(tap, node); },
          .news =
              [this, watches]() mutable {
                std::optional<Notice> news;
                for (SourceWatch& watch : watches) {
                  news = news ? news : watch.look(connection_.graph());
                }
                return news;
              }};
}

// Aggregate devices

CA::OSStatus CaptureHardware::AudioHardwareCreateAggregateDevice(const CA::Description& description,
                                                                 CA::AudioObjectID* outDeviceID) {
  const LoopLock lock(connection_.loop());
  const auto* uid = entry<std::string>(description, CA::kAudioAggregateDeviceUIDKey);
  const auto* list =
      entry<std::vector<CA::Description>>(description, CA::kAudioAggregateDeviceTapListKey);
  if (uid == nullptr || uid->empty() || list == nullptr || list->size() != 1) {
    return CA::kAudioHardwareIllegalOperationError;
  }
  const auto* tapUID = entry<std::string>(list->front(), CA::kAudioSubTapUIDKey);
  const auto tap = std::ranges::find_if(taps_, [&](const auto& candidate) {
    return tapUID != nullptr && candidate.second.uid == *tapUID;
  });
  if (tap == taps_.end()) {
    return CA::kAudioHardwareBadObjectError;
  }
  if (!devices_.add(nextID_, *uid, tap->first)) {
    return CA::kAudioHardwareIllegalOperationError;
  }
  *outDeviceID = nextID_++;
  return CA::kAudioHardwareNoError;
}

CA::OSStatus CaptureHardware::AudioHardwareDestroyAggregateDevice(CA::AudioObjectID deviceID) {
  return telling([&] {
    return devices_.remove(deviceID) ? CA::kAudioHardwareNoError : CA::kAudioHardwareBadDeviceError;
  });
}

// IO procedures

CA::OSStatus CaptureHardware::AudioDeviceCreateIOProcID(CA::AudioObjectID device,
                                                        CA::AudioDeviceIOProc procedure,
                                                        void* clientData,
                                                        CA::AudioDeviceIOProcID* outIOProcID) {
  const LoopLock lock(connection_.loop());
  const CA::AudioDeviceIOProcID installed = devices_.install(device, procedure, clientData);
  if (installed == nullptr) {
    return CA::kAudioHardwareBadDeviceError;
  }
  *outIOProcID = installed;
  return CA::kAudioHardwareNoError;
}

CA::OSStatus CaptureHardware::AudioDeviceDestroyIOProcID(CA::AudioObjectID device,
                                                         CA::AudioDeviceIOProcID ioProcID) {
  return telling([&] {
    if (!devices_.tapOf(device)) {
      return CA::kAudioHardwareBadDeviceError;
    }
    return devices_.uninstall(device, ioProcID) ? CA::kAudioHardwareNoError
                                                : CA::kAudioHardwareIllegalOperationError;
  });
}

CA::OSStatus CaptureHardware::AudioDeviceStart(CA::AudioObjectID device,
                                               CA::AudioDeviceIOProcID ioProcID) {
  return telling([&] { return start(device, ioProcID); });
}

CA::OSStatus CaptureHardware::AudioDeviceStop(CA::AudioObjectID device,
                                              CA::AudioDeviceIOProcID ioProcID) {
  return telling([&] {
    CA::InstalledIOProc* installed = devices_.find(device, ioProcID);
    if (installed == nullptr) {
      return CA::kAudioHardwareBadDeviceError;
    }
    devices_.stop(*installed);
    return CA::kAudioHardwareNoError;
  });
}

CA::OSStatus CaptureHardware::start(CA::AudioObjectID device, CA::AudioDeviceIOProcID ioProcID) {
  CA::InstalledIOProc* installed = devices_.find(device, ioProcID);
  const auto tapID = devices_.tapOf(device);
  if (installed == nullptr || !tapID) {
    return CA::kAudioHardwareBadDeviceError;
  }
  const auto tap = taps_.find(*tapID);
  if (tap == taps_.end() || installed->running) {
    return CA::kAudioHardwareIllegalOperationError;
  }
  if (const auto status = requireServer(); status != CA::kAudioHardwareNoError) {
    return status;
  }
  auto failure = devices_.start(
      *installed, std::make_unique<TapDevice>(
                      connection_, time_, *lossLog_,
                      [this](const Notice& notice) { devices_.tell(notice); }, tap->second.rate,
                      sourceOf(tap->second), device, installed->procedure, installed->clientData));
  return failure ? fail(CA::kAudioHardwareUnspecifiedError, std::move(*failure))
                 : CA::kAudioHardwareNoError;
}

bool CaptureHardware::isRunning() const {
  const LoopLock lock(connection_.loop());
  return !devices_.running().empty();
}

void CaptureHardware::setNoticeTaker(NoticeTaker taker) {
  const LoopLock lock(connection_.loop());
  devices_.setNoticeTaker(std::move(taker));
}

void CaptureHardware::setRunObserver(std::function<void(std::size_t running)> observer) {
  runObserver_ = std::move(observer);
}

/// Makes a change under the lock, and tells the observer after it when others run now than before.
CA::OSStatus CaptureHardware::telling(const std::function<CA::OSStatus()>& change) const {
  std::size_t before = 0;
  std::size_t after = 0;
  CA::OSStatus status = CA::kAudioHardwareNoError;
  {
    const LoopLock lock(connection_.loop());
    before = devices_.running().size();
    status = change();
    after = devices_.running().size();
  }
  if (after != before && runObserver_) {
    runObserver_(after);
  }
  return status;
}

// Properties

CA::AudioObjectID CaptureHardware::objectOfSink(const GraphNode& sink) {
  const auto known = std::ranges::find_if(
      sinkNames_, [&](const auto& candidate) { return candidate.second == sink.name; });
  if (known != sinkNames_.end()) {
    return known->first;
  }
  sinkNames_[nextID_] = sink.name;
  return nextID_++;
}

CA::OSStatus CaptureHardware::systemData(std::uint32_t selector,
                                         std::vector<CA::AudioObjectID>* outObjects) {
  if (const auto status = requireServer(); status != CA::kAudioHardwareNoError) {
    return status;
  }
  switch (selector) {
    case CA::kAudioHardwarePropertyProcessObjectList:
      learnProcesses();
      for (const auto* process : processes_.playing(connection_.graph())) {
        outObjects->push_back(process->id);
      }
      return CA::kAudioHardwareNoError;
    case CA::kAudioHardwarePropertyDefaultOutputDevice: {
      const GraphNode* sink = defaultSink(connection_.graph());
      if (sink == nullptr) {
        diagnosis_ =
            "There is no output device: connect one, or check what \"wpctl status\" lists.";
      }
      outObjects->push_back(sink != nullptr ? objectOfSink(*sink) : CA::kAudioObjectUnknown);
      return CA::kAudioHardwareNoError;
    }
    default:
      return CA::kAudioHardwareUnknownPropertyError;
  }
}

CA::OSStatus CaptureHardware::AudioObjectGetPropertyDataSize(
    CA::AudioObjectID object, const CA::AudioObjectPropertyAddress& address,
    std::uint32_t /*qualifierDataSize*/, const void* /*qualifierData*/,
    std::uint32_t* outDataSize) {
  const LoopLock lock(connection_.loop());
  if (object != CA::kAudioObjectSystemObject) {
    return CA::kAudioHardwareBadObjectError;
  }
  std::vector<CA::AudioObjectID> objects;
  const auto status = systemData(address.mSelector, &objects);
  *outDataSize = static_cast<std::uint32_t>(objects.size() * sizeof(CA::AudioObjectID));
  return status;
}

CA::OSStatus CaptureHardware::AudioObjectGetPropertyData(
    CA::AudioObjectID object, const CA::AudioObjectPropertyAddress& address,
    std::uint32_t /*qualifierDataSize*/, const void* /*qualifierData*/, std::uint32_t* ioDataSize,
    void* outData) {
  const LoopLock lock(connection_.loop());
  if (object == CA::kAudioObjectSystemObject) {
    std::vector<CA::AudioObjectID> objects;
    if (const auto status = systemData(address.mSelector, &objects);
        status != CA::kAudioHardwareNoError) {
      return status;
    }
    // A list that has grown since its size was asked for gives what there is room for.
    objects.resize(std::min(objects.size(), *ioDataSize / sizeof(CA::AudioObjectID)));
    return copyOut(objects.data(), objects.size() * sizeof(CA::AudioObjectID), ioDataSize, outData);
  }
  if (const auto tap = taps_.find(object); tap != taps_.end()) {
    if (address.mSelector != CA::kAudioTapPropertyFormat) {
      return CA::kAudioHardwareUnknownPropertyError;
    }
    const auto format = interleavedStereo(tap->second.rate);
    return copyOut(&format, sizeof format, ioDataSize, outData);
  }
  if (const auto* process = processes_.find(object)) {
    if (address.mSelector != CA::kAudioProcessPropertyPID) {
      return CA::kAudioHardwareUnknownPropertyError;
    }
    return copyOut(&process->owner.pid, sizeof process->owner.pid, ioDataSize, outData);
  }
  return CA::kAudioHardwareBadObjectError;
}

CA::OSStatus CaptureHardware::AudioObjectGetPropertyData(
    CA::AudioObjectID object, const CA::AudioObjectPropertyAddress& address,
    std::uint32_t /*qualifierDataSize*/, const void* /*qualifierData*/,
    std::uint32_t* /*ioDataSize*/, std::string* outText) {
  const LoopLock lock(connection_.loop());
  const std::string* text = nullptr;
  std::uint32_t selector = 0;
  if (const auto tap = taps_.find(object); tap != taps_.end()) {
    text = &tap->second.uid;
    selector = CA::kAudioTapPropertyUID;
  } else if (const auto sink = sinkNames_.find(object); sink != sinkNames_.end()) {
    text = &sink->second;
    selector = CA::kAudioDevicePropertyDeviceUID;
  } else if (const auto* process = processes_.find(object)) {
    text = &process->bundleID;
    selector = CA::kAudioProcessPropertyBundleID;
  } else {
    return CA::kAudioHardwareBadObjectError;
  }
  if (address.mSelector != selector) {
    return CA::kAudioHardwareUnknownPropertyError;
  }
  *outText = *text;
  return CA::kAudioHardwareNoError;
}

// What the connection tells, on its thread

void CaptureHardware::graphChanged() {
  forgetGoneProcesses();
  for (TapDevice* device : devices_.running()) {
    device->graphChanged();
  }
}

void CaptureHardware::serverLost() {
  for (TapDevice* device : devices_.running()) {
    device->serverLost();
  }
}

}  // namespace audrel::linuxos
