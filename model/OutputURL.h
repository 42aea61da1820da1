#pragma once

#include <filesystem>
#include <optional>

#include "model/RecordingFormat.h"
#include "model/RecordingSource.h"
#include "platform/Foundation.h"

namespace audrel {

/// The file that a recording of `source`, started at `date`, goes to:
/// "audio-<source>-<timestamp>.<extension>" in `folder` or else the Downloads folder, or with "-2",
/// "-3", ... before the extension, the first that names nothing yet.
///
/// The source is "SystemMix", or the process's sanitised name, or "Unknown" when nothing is left
/// of that. Without a Downloads folder, "Downloads" in the home folder; whether it exists is
/// neither checked nor changed. Never fails. Whoever creates the file must cope with one that
/// appeared in between.
std::filesystem::path makeOutputURL(NS::FileManager& fileManager, const RecordingSource& source,
                                    RecordingFormat format, NS::Date date,
                                    const std::optional<std::filesystem::path>& folder = {});

}  // namespace audrel
