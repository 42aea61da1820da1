#include "cli/Commands.h"
#include "cli/ProcessObjects.h"
#include "platform/Capture.h"
#include "platform/Printable.h"

namespace audrel::cli {

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

}  // namespace audrel::cli
