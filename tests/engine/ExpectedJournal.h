#pragma once

#include <string>
#include <vector>

#include "model/RecordingFormat.h"
#include "model/RecordingSource.h"

/// The lines that a start and a stop leave in the journal, as the frameworks' callers would expect
/// them: written out here a second time, from no code of the engine's.
namespace audrel::expected {

using Lines = std::vector<std::string>;

/// What a successful first start does, up to and with a step.
enum class Step {
  preflight,
  createTap,
  tapUID,
  tapFormat,
  makeFormat,
  logTapFormat,
  makeUUID,
  defaultOutputDevice,
  deviceUID,
  createAggregateDevice,
  openFile,
  createIOProc,
  deviceStart,
  now,
  logStarted,
};

Lines startUpTo(Step last, const RecordingSource& source = RecordingSource::allSystemAudio(),
                RecordingFormat format = RecordingFormat::wav);

/// A start whose step `failing` yields `result` instead, and what follows then. All system audio
/// as WAV.
Lines startFailing(Step failing, const std::string& result, const Lines& afterwards = {});

/// A log line of the engine.
std::string info(const std::string& line);
std::string error(const std::string& line);

Lines operator+(Lines first, const Lines& second);

}  // namespace audrel::expected
