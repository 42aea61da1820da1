#include "cli/Commands.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <variant>

#include "cli/MeteredAudioFramework.h"
#include "cli/OwnPlatform.h"
#include "cli/ProcessObjects.h"
#include "cli/RecordingMeter.h"
#include "cli/Report.h"
#include "cli/SourceChooser.h"
#include "cli/StatusLine.h"
#include "engine/RecordingEngine.h"
#include "model/OutputURL.h"
#include "model/RecorderError.h"
#include "platform/Diagnostics.h"
#include "platform/Printable.h"

namespace audrel::cli {

namespace {

using std::filesystem::path;

/// Often enough for the eye, and well within once a second; where there is no eye, for warnings.
constexpr std::chrono::milliseconds redrawInterval{250};
constexpr std::chrono::milliseconds warnInterval{1000};

std::optional<RecordingSource> chosenSource(const Platform& platform, const Options& options,
                                            Console& console) {
  if (!options.app.has_value()) {
    return RecordingSource::allSystemAudio();
  }
  const auto choice = chooseProcess(platform, *options.app);
  if (const auto* chosen = std::get_if<Recordable>(&choice)) {
    const auto& [id, name, bundleID] = chosen->process;
    return RecordingSource::process(id, name, bundleID);
  }
  const auto& [complaint, candidates] = std::get<NoSource>(choice);
  complainWithDiagnosis(console, platform, complaint);
  if (!candidates.empty()) {
    console.complainFurther(tableOf(candidates, console.errorWidth()));
  }
  return std::nullopt;
}

path chosenFile(const Platform& platform, const Options& options, const RecordingSource& source) {
  return options.file.has_value() ? *options.file
                                  : makeOutputURL(platform.fileManager, source, options.format,
                                                  platform.clock.now(), options.folder);
}

std::uintmax_t sizeOf(const path& file) {
  std::error_code error;
  const auto size = std::filesystem::file_size(file, error);
  return error ? 0 : size;
}

std::string startLine(const RecordingSource& source, const path& file, const Console& console) {
  const auto* process = source.asProcess();
  return "Recording " + (process == nullptr ? "all system audio" : printable(process->name)) +
         " to " + printable(file.native()) + (console.isTerminal() ? " (Ctrl-C stops)" : "");
}

/// One recording, from a started engine to a closed file.
class Recording {
 public:
  Recording(const Platform& platform, Signals& signals, Console& console, path file,
            std::optional<std::chrono::microseconds> duration)
      : platform_(platform),
        signals_(signals),
        console_(console),
        file_(std::move(file)),
        duration_(duration),
        framework_(platform.audioFramework, meter_, limit(signals, duration)),
        engine_(RecordingEngine::make(withOwn(platform, framework_))) {}

  /// Throws `RecorderError`.
  void start(const RecordingSource& source, RecordingFormat format) {
    engine_->start(source, format, file_);
    console_.progress(startLine(source, file_, console_));
  }

  /// Whether it could not start because somebody else has just taken the file's name.
  bool wasNameTaken() const { return framework_.wasNameTaken(); }

  /// Draws the status line, and warns, until it is time to stop.
  void follow() {
    const auto interval = console_.showsStatus() ? redrawInterval : warnInterval;
    auto event = Signals::Event::timeout;
    while (event != Signals::Event::stop && event != Signals::Event::woken) {
      drawStatus();
      event = signals_.wait(interval);
      warn();
    }
  }

  Report stop() {
    // From another thread, while this one does nothing else.
    platform_.diagnostics.setSlowSavingObserver(
        [this](const std::string& text) { console_.complain(printable(text)); });
    engine_->stop();
    platform_.diagnostics.setSlowSavingObserver({});
    const auto audio = meter_.total();
    return {.file = file_,
            .audio = audio,
            .loss = platform_.diagnostics.fileLoss().value_or(capture::FileLoss{
                .missing = audio.failedFrames, .silenced = 0, .why = audio.firstFailure}),
            .underruns = engine_->underrunCount(),
            .lostFrames = platform_.diagnostics.lostFrames(),
            .wasStopped = signals_.wasStopped(),
            .fileSize = sizeOf(file_)};
  }

 private:
  static std::optional<MeteredAudioFramework::Limit> limit(
      Signals& signals, std::optional<std::chrono::microseconds> duration) {
    if (!duration.has_value()) {
      return std::nullopt;
    }
    return MeteredAudioFramework::Limit{*duration, [&signals] { signals.wake(); }};
  }

  void warn() {
    if (const auto failure = meter_.takeNewFailure(); failure.has_value()) {
      console_.complain(printable(*failure));
    }
    while (const auto notice = platform_.diagnostics.nextNotice()) {
      console_.complain(printable(*notice));
    }
  }

  void drawStatus() {
    if (!console_.showsStatus()) {
      return;
    }
    const auto elapsed = platform_.clock.now() - engine_->startDate().value_or(NS::Date());
    const RecordingStatus status = {.elapsed = std::chrono::floor<std::chrono::seconds>(elapsed),
                                    .total = total(),
                                    .notice = notice(),
                                    .peak = meter_.takeRecentPeak(),
                                    .fileSize = sizeOf(file_)};
    console_.status(statusLine(status, console_.statusWidth()));
  }

  std::optional<std::chrono::seconds> total() const {
    return duration_.has_value()
               ? std::optional(std::chrono::ceil<std::chrono::seconds>(*duration_))
               : std::nullopt;
  }

  /// The worst that there is to see.
  std::string_view notice() const {
    if (meter_.isFailing()) {
      return "WRITING FAILS";
    }
    const auto* process = engine_->source().asProcess();
    if (process != nullptr && platform_.diagnostics.hasQuit(process->id)) {
      return "the application has quit";
    }
    return meter_.hasClipped() ? "CLIPPED" : "";
  }

  const Platform& platform_;
  Signals& signals_;
  Console& console_;
  const path file_;
  const std::optional<std::chrono::microseconds> duration_;
  RecordingMeter meter_;
  MeteredAudioFramework framework_;
  const std::shared_ptr<RecordingEngine> engine_;
};

int tell(const Report& report, const Options& options, Console& console) {
  if (options.output == Options::Output::json) {
    console.result(jsonOf(report));
  } else if (options.progress == Options::Progress::shown) {
    console.result(textOf(report));
  }
  for (const auto& warning : warningsOf(report)) {
    console.complain(warning);
  }
  return report.loss.isNothing() && report.loss.why.empty() ? ExitStatus::success
                                                            : ExitStatus::failure;
}

}  // namespace

int list(const Platform& platform, const Options& options, Console& console) {
  const auto processes = listedProcesses(platform);
  if (processes.empty()) {
    if (const auto diagnosis = platform.diagnostics.diagnosis(); diagnosis.has_value()) {
      console.complain(printable(*diagnosis));
      return ExitStatus::failure;
    }
  }
  if (options.output == Options::Output::json) {
    console.result(jsonOf(processes));
  } else if (processes.empty()) {
    console.progress("No application has an audio stream open.");
  } else {
    console.print(tableOf(processes, console.outputWidth()));
  }
  return ExitStatus::success;
}

void complainWithDiagnosis(Console& console, const Platform& platform, const std::string& text) {
  if (const auto diagnosis = platform.diagnostics.diagnosis(); diagnosis.has_value()) {
    console.complain(printable(*diagnosis));
  }
  console.complain(text);
}

int record(const Platform& platform, const Options& options, Signals& signals, Console& console) {
  const auto source = chosenSource(platform, options, console);
  if (!source.has_value()) {
    return ExitStatus::failure;
  }
  for (auto file = chosenFile(platform, options, *source);;) {
    Recording recording(platform, signals, console, file, options.duration);
    try {
      recording.start(*source, options.format);
    } catch (const RecorderError& error) {
      const auto next = chosenFile(platform, options, *source);
      if (recording.wasNameTaken() && next != file) {
        file = next;
        continue;
      }
      complainWithDiagnosis(console, platform, printable(error.errorDescription().value_or("")));
      return ExitStatus::failure;
    }
    recording.follow();
    return tell(recording.stop(), options, console);
  }
}

}  // namespace audrel::cli
