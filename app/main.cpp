#include <unistd.h>

#include <array>
#include <cstddef>
#include <exception>
#include <iostream>
#include <iterator>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "app/RunApplication.h"
#include "platform/Identity.h"
#include "platform/NativePlatform.h"

namespace audrel {

namespace {

constexpr int success = 0;
constexpr int failure = 1;
constexpr int usageError = 2;

constexpr const char* helpText =
    R"(Usage: audrel [OPTION]

Records what the computer plays, from an icon in the panel (the menu bar): its
menu starts and stops a recording, and chooses source and format. Recordings go
to the Downloads folder.

Runs until "Quit" in that menu, or until Ctrl-C; a recording that runs is
completed first.

  --demo       start a private audio server that plays a melody, and record that
  --help       show this help
  --version    show the version

To record from a terminal, see audrel-record.
)";

constexpr std::array<std::string_view, 3> options{"--demo", "--help", "--version"};

int complain(const std::string& text, int status) {
  std::cerr << "audrel: " << text << '\n';
  return status;
}

enum class Server { system, demo };

int runOnPlatform(Server server) {
  const auto native = NativePlatform::make();
  if (server == Server::demo) {
    if (const auto problem = native->startDemo()) {
      return complain(*problem, failure);
    }
  }
  const auto desktop = native->desktop();
  if (!desktop) {
    return complain("Audrel is already running; its icon is in the panel.", failure);
  }
  if (isatty(STDERR_FILENO) == 1) {
    std::cerr
        << "Audrel is running; its icon is in the panel (the menu bar). \"Quit Audrel\" in the "
           "icon's menu ends it, and so does Ctrl-C here.\n";
  }
  return runApplication(native->interfaces(), *desktop);
}

int run(const std::vector<std::string>& arguments) {
  const auto typed = NativePlatform::typedArguments(arguments, options);
  if (typed.empty()) {
    return runOnPlatform(Server::system);
  }
  if (typed.size() > 1) {
    return complain("It takes one option at most. Try audrel --help.", usageError);
  }
  const std::string& option = typed.front();
  if (option == "--demo") {
    return runOnPlatform(Server::demo);
  }
  if (option == "--help") {
    std::cout << helpText;
    return success;
  }
  if (option == "--version") {
    std::cout << "audrel " << identity::version << '\n';
    return success;
  }
  return complain("\"" + option + "\" is not known. Try audrel --help.", usageError);
}

}  // namespace

}  // namespace audrel

int main(int argumentCount, char** arguments) {
  try {
    const std::span<char*> words(arguments, static_cast<std::size_t>(argumentCount));
    const auto first = words.empty() ? words.begin() : std::next(words.begin());
    return audrel::run({first, words.end()});
  } catch (const std::exception& error) {
    return audrel::complain(std::string("The program failed: ") + error.what(), audrel::failure);
  }
}
