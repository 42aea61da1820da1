#include "cli/Options.h"

#include <getopt.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstddef>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "cli/Numbers.h"

namespace audrel::cli {

const char* const helpText =
    R"(Usage: audrel-record [OPTION]... or audrel-record --repair FILE...
Records what this computer plays to an audio file, until Ctrl-C.

  -l, --list           list the applications that can be recorded, and exit
  -a, --app WHO        record one application: its name or a part of it,
                       bundle identifier, process id, or "#" and object id
  -f, --format FORMAT  m4a (AAC, 256 kbit/s; the default) or wav (16 bit)
  -o, --output FILE    record to FILE, which must not exist yet, or to a new
                       file in FILE if that is a folder (default: Downloads);
                       an ending .m4a or .wav sets the format
  -d, --duration TIME  stop after exactly TIME: 90, 0.5, 1:30, 1:02:03 or 1h2m
      --repair FILE... make recordings whole that were cut off, and exit
      --force          repair, too, where the file system has no locks
      --demo           use a private audio server that plays a melody
      --json           print the result, or the list, as JSON
  -q, --quiet          print nothing but errors and warnings
  -h, --help           print this help, and exit
  -V, --version        print the version, and exit

The long names may be shortened to what no other begins with.
Exit status: 0 done, 1 it failed, 2 wrong usage.
)";

namespace {

/// Those with a short name are its letter.
enum Flag : int {
  app = 'a',
  duration = 'd',
  format = 'f',
  help = 'h',
  list = 'l',
  output = 'o',
  quiet = 'q',
  version = 'V',
  demo = 256,
  force,
  json,
  repair
};

constexpr const char* shortOptions = ":a:d:f:hlo:qV";

constexpr std::array<option, 13> longOptions = {{
    {"app", required_argument, nullptr, Flag::app},
    {"demo", no_argument, nullptr, Flag::demo},
    {"duration", required_argument, nullptr, Flag::duration},
    {"force", no_argument, nullptr, Flag::force},
    {"format", required_argument, nullptr, Flag::format},
    {"help", no_argument, nullptr, Flag::help},
    {"json", no_argument, nullptr, Flag::json},
    {"list", no_argument, nullptr, Flag::list},
    {"output", required_argument, nullptr, Flag::output},
    {"quiet", no_argument, nullptr, Flag::quiet},
    {"repair", no_argument, nullptr, Flag::repair},
    {"version", no_argument, nullptr, Flag::version},
    {nullptr, 0, nullptr, 0},
}};

constexpr const char* seeHelp = " Try 'audrel-record --help'.";

std::string inQuotes(std::string_view word) {
  return std::string("'").append(word).append("'");
}

/// Gathers what the words say; throws `UsageError` at the first that is wrong.
class Parser {
 public:
  void take(int flag, const char* value) {
    switch (flag) {
      case Flag::app:
        options_.app = text("--app", value, "a name, bundle identifier, pid or \"#\" object id");
        recordingOption_ = "--app";
        break;
      case Flag::demo:
        options_.server = Options::Server::demo;
        break;
      case Flag::force:
        options_.locks = Options::Locks::ifOffered;
        break;
      case Flag::duration:
        takeDuration(value);
        break;
      case Flag::format:
        takeFormat(value);
        break;
      case Flag::help:
        options_.task = Options::Task::help;
        break;
      case Flag::json:
        options_.output = Options::Output::json;
        break;
      case Flag::list:
        take(Options::Task::list);
        break;
      case Flag::output:
        takeOutput(value);
        break;
      case Flag::quiet:
        options_.progress = Options::Progress::quiet;
        break;
      case Flag::repair:
        take(Options::Task::repair);
        break;
      case Flag::version:
        options_.task = Options::Task::version;
        break;
      default:
        break;
    }
  }

  /// A word that is neither an option nor its value.
  void takeOther(const char* word) {
    if (options_.task == Options::Task::record || options_.task == Options::Task::list) {
      throw UsageError{inQuotes(word) +
                       " is not expected: every argument is an option or its value." + seeHelp};
    }
    options_.repaired.emplace_back(word);
  }

  Options finish() {
    if (options_.task == Options::Task::repair) {
      checkRepair();
    } else if (options_.locks != Options::Locks::needed) {
      throw UsageError{"--force is for --repair alone: leave it out."};
    }
    if (options_.task == Options::Task::list && recordingOption_ != nullptr) {
      throw UsageError{std::string(recordingOption_) +
                       " is for recording and --list records nothing: leave one of them out."};
    }
    options_.format = chosenFormat();
    if (options_.file.has_value() && extensionOfFile().empty()) {
      options_.file->replace_extension(options_.format.rawValue());
    }
    return options_;
  }

 private:
  /// What is asked for first, unless that is help.
  void take(Options::Task task) {
    if (options_.task == Options::Task::record) {
      options_.task = task;
    } else if (options_.task != Options::Task::help && options_.task != task) {
      throw UsageError{"--list and --repair contradict each other: leave one of them out."};
    }
  }

  void checkRepair() const {
    const char* const other =
        options_.server == Options::Server::demo ? "--demo" : recordingOption_;
    if (other != nullptr) {
      throw UsageError{std::string(other) +
                       " is for recording and --repair records nothing: leave one of them out."};
    }
    if (options_.repaired.empty()) {
      throw UsageError{"--repair needs the names of the files to repair: write them behind it."};
    }
  }

  static std::string text(const char* name, const char* value, const char* wanted) {
    if (*value == '\0') {
      throw UsageError{std::string(name) + " got an empty word: give it " + wanted + "."};
    }
    return value;
  }

  void takeOutput(const char* value) {
    const std::filesystem::path output = text("--output", value, "the name of a file or folder");
    recordingOption_ = "--output";
    if (output == "-") {
      throw UsageError{
          "'-' is no file to record to, and standard output takes no recording: give --output the "
          "name of a file or folder."};
    }
    std::error_code error;
    const bool isFolder = !output.has_filename() || std::filesystem::is_directory(output, error);
    options_.folder = isFolder ? std::optional(output) : std::nullopt;
    options_.file = isFolder ? std::nullopt : std::optional(output);
  }

  void takeDuration(const char* value) {
    options_.duration = parseDuration(value);
    recordingOption_ = "--duration";
    if (!options_.duration.has_value()) {
      throw UsageError{inQuotes(value) +
                       " is no length of time for --duration: write seconds (90 or 0.5), 1:30, "
                       "1:02:03 or 1h2m, more than zero and at most a year."};
    }
  }

  void takeFormat(const char* value) {
    format_ = RecordingFormat::fromRawValue(value);
    recordingOption_ = "--format";
    if (!format_.has_value()) {
      throw UsageError{inQuotes(value) + " is no format: write --format m4a or --format wav."};
    }
  }

  RecordingFormat chosenFormat() const {
    const auto extension = extensionOfFile();
    const auto implied = RecordingFormat::fromRawValue(extension);
    if (implied.has_value() && format_.has_value() && implied != format_) {
      throw UsageError{"--output " + inQuotes(options_.file->native()) + " and --format " +
                       std::string(format_->rawValue()) +
                       " contradict each other: change one of them, or leave --format out."};
    }
    if (format_.has_value()) {
      return *format_;
    }
    if (!implied.has_value() && !extension.empty()) {
      throw UsageError{"--output " + inQuotes(options_.file->native()) +
                       " tells no format that can be recorded: end the name in .m4a or .wav, or "
                       "add --format m4a or --format wav."};
    }
    return implied.value_or(RecordingFormat::m4a);
  }

  /// In lower case and without its dot; empty when there is none.
  std::string extensionOfFile() const {
    if (!options_.file.has_value()) {
      return {};
    }
    auto extension = options_.file->extension().string();
    std::ranges::transform(extension, extension.begin(), [](unsigned char letter) {
      return static_cast<char>(std::tolower(letter));
    });
    return extension.empty() ? extension : extension.substr(1);
  }

  Options options_;
  std::optional<RecordingFormat> format_;
  const char* recordingOption_ = nullptr;  ///< the last that only recording takes
};

/// Every option that `word` is short for, as "--demo or --duration"; empty when it is for none.
std::string candidatesFor(std::string_view word) {
  const auto typed = word.substr(0, word.find('='));
  std::string candidates;
  for (const auto& [name, argument, flag, value] : longOptions) {
    const auto option = name == nullptr ? std::string() : std::string("--") + name;
    if (option.starts_with(typed)) {
      candidates.append(candidates.empty() ? "" : " or ").append(option);
    }
  }
  return candidates;
}

/// What `getopt_long` stumbled over: `optopt` tells a known option from an unknown one. For a value
/// that an option does not take, C libraries differ in what they return.
UsageError misusedOption(int flag, std::string_view word) {
  const auto known = std::ranges::find(longOptions, optopt, &option::val);
  if (optopt != 0 && known != longOptions.end() && known->has_arg == no_argument) {
    return {std::string("--") + known->name + " takes no value: leave out what follows the \"=\"."};
  }
  const auto name =
      word.starts_with("--") ? std::string(word) : std::string("-") + static_cast<char>(optopt);
  if (flag == ':') {
    return {inQuotes(name) + " needs a value." + seeHelp};
  }
  if (const auto candidates = candidatesFor(name); !candidates.empty()) {
    return {inQuotes(name) + " may be " + candidates + ": write one of them."};
  }
  return {inQuotes(name) + " is no option." + seeHelp};
}

Options parse(std::vector<char*> arguments) {
  const auto count = static_cast<int>(arguments.size());
  arguments.push_back(nullptr);
  opterr = 0;
  optind = 0;  // also forgets where an earlier command line was left, in all C libraries
  Parser parser;
  for (;;) {
    // Unsafe only beside another thread that parses options, and there is none.
    const int flag =
        getopt_long(count, arguments.data(), shortOptions,  // NOLINT(concurrency-mt-unsafe)
                    longOptions.data(), nullptr);
    if (flag == -1) {
      break;
    }
    const char* const word = arguments[static_cast<std::size_t>(std::max(optind - 1, 0))];
    if (flag == ':' || flag == '?') {
      throw misusedOption(flag, word);
    }
    parser.take(flag, optarg);
  }
  for (const char* const word : std::span(arguments)
                                    .first(static_cast<std::size_t>(count))
                                    .subspan(static_cast<std::size_t>(optind))) {
    parser.takeOther(word);
  }
  return parser.finish();
}

}  // namespace

std::variant<Options, UsageError> parseOptions(std::span<char*> arguments) {
  try {
    return parse({arguments.begin(), arguments.end()});
  } catch (UsageError& error) {
    return std::move(error);
  }
}

}  // namespace audrel::cli
