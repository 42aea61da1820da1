#include <locale.h>
#include <unistd.h>

#include <cstddef>
#include <exception>
#include <span>
#include <string>
#include <variant>

#include "cli/Commands.h"
#include "cli/Console.h"
#include "cli/Options.h"
#include "cli/Repair.h"
#include "cli/Signals.h"
#include "platform/Identity.h"
#include "platform/NativePlatform.h"
#include "platform/Printable.h"

namespace audrel::cli {

namespace {

int runOnPlatform(const Options& options, Console& console) {
  Signals signals;
  const auto native = NativePlatform::make();
  if (options.task == Options::Task::repair) {
    return repair(native->fileRepair(), options, signals, console);
  }
  if (options.server == Options::Server::demo) {
    if (const auto problem = native->startDemo(); problem.has_value()) {
      console.complain(printable(*problem));
      return ExitStatus::failure;
    }
  }
  native->keepOffStandardError({"engine", "discovery", "file", "loss"});
  const auto platform = native->interfaces();
  return options.task == Options::Task::list ? list(platform, options, console)
                                             : record(platform, options, signals, console);
}

int run(const Options& options, Console& console) {
  switch (options.task) {
    case Options::Task::help:
      console.print(helpText);
      return ExitStatus::success;
    case Options::Task::version:
      console.result(std::string("audrel-record ") + identity::version);
      return ExitStatus::success;
    case Options::Task::list:
    case Options::Task::record:
    case Options::Task::repair:
      break;
  }
  return runOnPlatform(options, console);
}

int run(std::span<char*> arguments) {
  const auto parsed = parseOptions(arguments);
  const auto* const options = std::get_if<Options>(&parsed);
  Console console(STDOUT_FILENO, STDERR_FILENO,
                  options == nullptr ? Options::Progress::shown : options->progress);
  if (options == nullptr) {
    console.complain(printable(std::get<UsageError>(parsed).text));
    return ExitStatus::usage;
  }
  const int status = run(*options, console);
  return console.hasLostResults() ? ExitStatus::failure : status;
}

}  // namespace

}  // namespace audrel::cli

int main(int argumentCount, char** arguments) {
  using audrel::cli::ExitStatus;
  // Names are UTF-8 whatever the user's locale, and their width on a terminal depends on it. The
  // first thing that happens here: there is no other thread yet.
  setlocale(LC_CTYPE, "C.UTF-8");  // NOLINT(concurrency-mt-unsafe)
  try {
    return audrel::cli::run({arguments, static_cast<std::size_t>(argumentCount)});
  } catch (const std::exception& error) {
    audrel::cli::Console(STDOUT_FILENO, STDERR_FILENO, audrel::cli::Options::Progress::shown)
        .complain(std::string("The program failed: ") + error.what());
    return ExitStatus::failure;
  }
}
