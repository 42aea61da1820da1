#pragma once

#include <chrono>
#include <cstdint>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "engine/RecordingEngine.h"

/// The stories of docs/transcripts/engine-*.txt: what is asked of an engine, and what goes wrong
/// meanwhile. They are told on the scripted system of tests/fakes and, once more, on the executed
/// adapters of macOS.
namespace audrel::story {

/// What may be wrong with a system.
enum class Fault {
  noPermission,
  tapFails,
  tapYieldsNothing,
  tapUIDFails,
  tapFormatFails,
  tapFormatIsNone,
  outputDeviceFails,
  outputDeviceYieldsNothing,
  outputDeviceUIDFails,
  aggregateDeviceFails,
  aggregateDeviceYieldsNothing,
  fileFails,
  ioProcFails,
  ioProcYieldsNothing,
  deviceStartFails,
  writesFail,
  noMemory,
};

constexpr CA::OSStatus parameterError = -50;
constexpr CA::OSStatus badObject = 560947818;          // '!obj'
constexpr CA::OSStatus illegalOperation = 1852797029;  // 'nope'
constexpr const char* folderIsMissing = "The folder \"recordings\" doesn't exist.";
constexpr const char* diskIsFull = "The disk is full.";

/// What a system has now.
struct Inventory {
  std::vector<CA::AudioObjectID> taps;
  std::vector<CA::AudioObjectID> aggregateDevices;
  std::size_t ioProcs = 0;
  std::size_t openFiles = 0;
};

/// The system that a story happens on.
class Stage {
 public:
  virtual ~Stage() = default;

  virtual Platform platform() = 0;

  /// Nothing: all is well again.
  virtual void set(std::optional<Fault> fault) = 0;

  virtual void deliver(std::uint32_t frames) = 0;
  virtual void runQueue() = 0;
  virtual void letPass(std::chrono::milliseconds time) = 0;

  /// What the system was asked since this was last called.
  virtual std::vector<std::string> takeJournal() = 0;
  virtual Inventory inventory() const = 0;
};

/// Tells what is done to an engine, and what that leads to, as it happens.
class Teller {
 public:
  explicit Teller(Stage& stage);

  void chapter(const std::string& title);
  void set(std::optional<Fault> fault) { stage_.set(fault); }
  void start(const RecordingSource& source, RecordingFormat format);
  void stop();
  void deliver(std::uint32_t frames);
  void runQueue();
  void letPass(std::chrono::milliseconds time) { stage_.letPass(time); }
  void showWhatThereIs(const std::string& when);

  const std::string& text() const { return text_; }

 private:
  void tell(const std::string& what);

  Stage& stage_;
  std::shared_ptr<RecordingEngine> engine_;
  std::string text_;
};

struct Story {
  std::string name;  ///< of its file
  std::string title;
  void (*happens)(Teller&);
};

void PrintTo(const Story& story, std::ostream* stream);

const std::vector<Story>& all();

/// Tells `story` on `stage`. How that differs from docs/transcripts, where `prefix` stands before
/// the story's name; nothing when it does not.
std::optional<std::string> differenceFromTranscript(const Story& story, Stage& stage,
                                                    const std::string& prefix = "");

}  // namespace audrel::story
