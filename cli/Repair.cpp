#include "cli/Repair.h"

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

#include "cli/Commands.h"
#include "cli/Json.h"
#include "cli/Numbers.h"
#include "platform/Printable.h"

namespace audrel::cli {

namespace {

using capture::Repair;
using Outcome = Repair::Outcome;

bool isGood(const Repair& repair) {
  return repair.outcome == Outcome::repaired || repair.outcome == Outcome::whole;
}

std::string_view nameOf(Outcome outcome) {
  switch (outcome) {
    case Outcome::repaired:
      return "repaired";
    case Outcome::whole:
      return "whole";
    case Outcome::notOurs:
      return "notOurs";
    case Outcome::inUse:
      return "inUse";
    case Outcome::unreadable:
      break;
  }
  return "unreadable";
}

/// What became of a file, with the remedy where something is to be done.
std::string textOf(const Repair& repair) {
  switch (repair.outcome) {
    case Outcome::repaired:
      return "repaired (" + formatLength(repair.seconds) + ")";
    case Outcome::whole:
      return "whole already";
    case Outcome::notOurs:
      return "not ours: no recording of this program, or changed since";
    case Outcome::inUse:
      return repair.problem.empty()
                 ? "in use. Stop the recording first."
                 : "in use? " + printable(repair.problem) + " If none does, add --force.";
    case Outcome::unreadable:
      break;
  }
  return "unreadable. " + printable(repair.problem);
}

std::string jsonOf(const std::filesystem::path& file, const Repair& repair) {
  return jsonObject({
      {"file", jsonString(std::string_view(file.native()))},
      {"outcome", jsonString(nameOf(repair.outcome))},
      {"seconds", isGood(repair) ? jsonNumber(repair.seconds) : "null"},
      {"problem",
       jsonString(repair.problem.empty() ? std::nullopt : std::optional(repair.problem))},
  });
}

void tell(const std::filesystem::path& file, const Repair& repair, const Options& options,
          Console& console) {
  if (options.output == Options::Output::json) {
    console.result(jsonOf(file, repair));
    return;
  }
  const auto line = printable(file.native()) + ": " + textOf(repair);
  if (!isGood(repair)) {
    console.complain(line);
  } else if (options.progress == Options::Progress::shown) {
    console.result(line);
  }
}

}  // namespace

int repair(capture::FileRepair* repairs, const Options& options, Signals& signals,
           Console& console) {
  if (repairs == nullptr) {
    console.complain("Recordings cannot be repaired on this system.");
    return ExitStatus::failure;
  }
  const auto rule = options.locks == Options::Locks::needed ? capture::LockRule::needed
                                                            : capture::LockRule::ifOffered;
  int status = ExitStatus::success;
  for (const auto& file : options.repaired) {
    if (signals.wait(std::chrono::milliseconds::zero()) == Signals::Event::stop) {
      console.complain("Stopped before " + printable(file.native()) + ".");
      return ExitStatus::failure;
    }
    const auto repaired = repairs->repair(file, rule);
    tell(file, repaired, options, console);
    status = isGood(repaired) ? status : ExitStatus::failure;
  }
  return status;
}

}  // namespace audrel::cli
