#include "engine/TapDescription.h"

namespace audrel {

CA::TapDescription tapDescription(const RecordingSource& source) {
  const RecordingSource::Process* process = source.asProcess();
  CA::TapDescription description =
      process != nullptr
          ? CA::TapDescription{CA::TapDescription::Kind::stereoMixdownOfProcesses,
                               {process->id},
                               {},
                               {}}
          : CA::TapDescription{
                CA::TapDescription::Kind::stereoGlobalTapButExcludeProcesses, {}, {}, {}};
  description.muteBehavior = CA::TapMuteBehavior::unmuted;
  description.name = tapName;
  return description;
}

}  // namespace audrel
