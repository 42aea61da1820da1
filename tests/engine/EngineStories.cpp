#include "tests/engine/EngineStories.h"

#include <ostream>

#include "model/RecorderError.h"
#include "tests/engine/RecordingEngineInspector.h"
#include "tests/fakes/Transcript.h"

namespace audrel::story {
namespace {

using Inspector = RecordingEngineInspector;

std::string called(const RecordingSource& source) {
  const auto* process = source.asProcess();
  return process == nullptr ? "all system audio"
                            : "process " + std::to_string(process->id) + " " + process->name;
}

std::string listed(const std::vector<CA::AudioObjectID>& objects) {
  std::string text;
  for (const CA::AudioObjectID object : objects) {
    text += " " + std::to_string(object);
  }
  return text.empty() ? " none" : text;
}

std::string yes(bool value) {
  return value ? "yes" : "no";
}

}  // namespace

Teller::Teller(Stage& stage) : stage_(stage), engine_(RecordingEngine::make(stage.platform())) {
  tell("making the engine");
}

void Teller::chapter(const std::string& title) {
  text_ += "\n== " + title + "\n";
}

void Teller::start(const RecordingSource& source, RecordingFormat format) {
  const std::string url = "/recordings/new." + std::string(format.rawValue());
  std::string result = "started";
  try {
    engine_->start(source, format, url);
  } catch (const RecorderError& error) {
    result = "threw: " + *error.errorDescription();
  }
  tell("start(" + called(source) + ", " + std::string(format.rawValue()) + ", " + url + ")");
  text_ += "  => " + result + "\n";
}

void Teller::stop() {
  const auto url = engine_->stop();
  tell("stop()");
  text_ += "  => " + (url ? url->string() : "nothing") + "\n";
}

void Teller::deliver(std::uint32_t frames) {
  stage_.deliver(frames);
  tell("the device delivers " + std::to_string(frames) + " frames");
}

void Teller::runQueue() {
  stage_.runQueue();
  tell("the writer queue runs");
}

void Teller::showWhatThereIs(const std::string& when) {
  const Inventory system = stage_.inventory();
  text_ += "\n" + when + "\n    recording: " + yes(engine_->isRecording()) +
           ", source: " + called(engine_->source()) +
           ", underruns: " + std::to_string(engine_->underrunCount()) +
           "\n    the engine keeps tap: " + std::to_string(Inspector::tapID(*engine_)) +
           ", aggregate device: " + std::to_string(Inspector::aggregateDeviceID(*engine_)) +
           ", writer format: " + yes(Inspector::writerFormat(*engine_) != nullptr) +
           ", stream description: " + yes(Inspector::tapStreamDescription(*engine_).has_value()) +
           "\n    the system has taps:" + listed(system.taps) +
           ", aggregate devices:" + listed(system.aggregateDevices) +
           ", IO procedures: " + std::to_string(system.ioProcs) +
           ", open files: " + std::to_string(system.openFiles) + "\n";
}

void Teller::tell(const std::string& what) {
  text_ += "\n" + what + "\n";
  for (const std::string& line : stage_.takeJournal()) {
    text_ += "    " + line + "\n";
  }
}

namespace {

constexpr auto everything = RecordingSource::allSystemAudio;

RecordingSource radio() {
  return RecordingSource::process(70, "Web Radio", "org.example.radio");
}

void record(Teller& engine, const RecordingSource& source, RecordingFormat format) {
  engine.start(source, format);
  engine.deliver(512);
  engine.runQueue();
  engine.deliver(512);
  engine.deliver(256);
  engine.letPass(std::chrono::milliseconds(1250));
  engine.stop();
}

void recordThrough(Fault fault, Teller& engine) {
  engine.start(everything(), RecordingFormat::wav);
  engine.set(fault);
  engine.deliver(512);
  engine.deliver(512);
  engine.runQueue();
  engine.set(std::nullopt);
  engine.deliver(512);
  engine.stop();
}

struct FailingStart {
  Fault fault;
  const char* title;
};

constexpr FailingStart failingStarts[] = {
    {Fault::tapFails, "The tap cannot be created."},
    {Fault::tapYieldsNothing, "Creating the tap succeeds, but yields none."},
    {Fault::tapUIDFails, "The tap's UID cannot be read."},
    {Fault::tapFormatFails, "The tap's format cannot be read."},
    {Fault::tapFormatIsNone, "The tap's format is none that the audio framework knows."},
    {Fault::outputDeviceFails, "The default output device cannot be read."},
    {Fault::outputDeviceYieldsNothing, "There is no default output device."},
    {Fault::outputDeviceUIDFails, "The default output device's UID cannot be read."},
    {Fault::aggregateDeviceFails, "The aggregate device cannot be created."},
    {Fault::aggregateDeviceYieldsNothing,
     "Creating the aggregate device succeeds, but yields none."},
    {Fault::fileFails, "The output file cannot be created."},
    {Fault::ioProcFails, "The IO procedure cannot be installed."},
    {Fault::ioProcYieldsNothing, "Installing the IO procedure succeeds, but yields none."},
    {Fault::deviceStartFails, "The device does not start."},
};

void failToStart(Teller& engine) {
  for (const auto& [fault, title] : failingStarts) {
    engine.chapter(title);
    engine.set(fault);
    engine.start(radio(), RecordingFormat::wav);
    engine.stop();
    engine.showWhatThereIs("left behind");
    engine.set(std::nullopt);
  }
  engine.chapter("All is well again.");
  engine.start(everything(), RecordingFormat::wav);
  engine.stop();
}

}  // namespace

void PrintTo(const Story& story, std::ostream* stream) {
  *stream << story.name;
}

const std::vector<Story>& all() {
  static const std::vector<Story> stories = {
      {"engine-records-everything-as-m4a", "All system audio is recorded as M4A.",
       [](Teller& engine) { record(engine, everything(), RecordingFormat::m4a); }},
      {"engine-records-everything-as-wav", "All system audio is recorded as WAV.",
       [](Teller& engine) { record(engine, everything(), RecordingFormat::wav); }},
      {"engine-records-a-process-as-m4a", "One process is recorded as M4A.",
       [](Teller& engine) { record(engine, radio(), RecordingFormat::m4a); }},
      {"engine-records-a-process-as-wav", "One process is recorded as WAV.",
       [](Teller& engine) { record(engine, radio(), RecordingFormat::wav); }},
      {"engine-writes-fail", "A full disk: the recording goes on, and a later write succeeds.",
       [](Teller& engine) { recordThrough(Fault::writesFail, engine); }},
      {"engine-underruns", "No memory for two cycles: they are dropped and counted.",
       [](Teller& engine) { recordThrough(Fault::noMemory, engine); }},
      {"engine-refuses", "What the engine refuses, and a stop that has nothing to do.",
       [](Teller& engine) {
         engine.stop();
         engine.set(Fault::noPermission);
         engine.start(radio(), RecordingFormat::wav);
         engine.showWhatThereIs("left behind");
         engine.set(std::nullopt);
         engine.start(radio(), RecordingFormat::wav);
         engine.start(everything(), RecordingFormat::m4a);
         engine.deliver(512);
         engine.stop();
       }},
      {"engine-start-fails",
       "Every way in which a start fails, one after the other on one engine, and then one that "
       "succeeds.",
       failToStart},
  };
  return stories;
}

std::optional<std::string> differenceFromTranscript(const Story& story, Stage& stage,
                                                    const std::string& prefix) {
  Teller engine(stage);
  story.happens(engine);
  engine.showWhatThereIs("at the end");
  return fakes::differenceFromTranscript(prefix + story.name, story.title + "\n" + engine.text());
}

}  // namespace audrel::story
