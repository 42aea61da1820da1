#include "tests/fakes/ScopedCommaLocale.h"

#include <array>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string_view>

#include "tests/support/TemporaryFolder.h"

namespace audrel::fakes {
namespace {

struct Comma : std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

bool printfWritesACommaNow() {
  std::array<char, 16> text{};
  std::snprintf(text.data(), text.size(), "%.1f", 0.5);
  return std::string_view(text.data()) == "0,5";
}

/// A machine without foreign locales can still compile one: C's library brings the compiler.
void useACompiledLocale() {
  const support::TemporaryFolder temporary;
  const std::string folder = temporary.path();
  std::ofstream(folder + "/source") << "comment_char %\n"
                                       "escape_char /\n"
                                       "LC_NUMERIC\n"
                                       "decimal_point \",\"\n"
                                       "thousands_sep \".\"\n"
                                       "grouping 3;3\n"
                                       "END LC_NUMERIC\n";
  // It complains, and answers 1, about the categories that are not wanted.
  const std::string compile =
      "localedef -c -i " + folder + "/source " + folder + "/comma >" + folder + "/log 2>&1";
  [[maybe_unused]] const int complaints = std::system(compile.c_str());
  setenv("LOCPATH", folder.c_str(), 1);
  std::setlocale(LC_NUMERIC, "comma");
  unsetenv("LOCPATH");
}

}  // namespace

ScopedCommaLocale::ScopedCommaLocale()
    : numericBefore_(std::setlocale(LC_NUMERIC, nullptr)),
      before_(std::locale::global(std::locale(std::locale::classic(), new Comma))) {
  std::setlocale(LC_NUMERIC, "de_DE.UTF-8");
  if (!printfWritesACommaNow()) {
    useACompiledLocale();
  }
  if (!printfWritesACommaNow()) {
    throw std::runtime_error("this machine has no locale with a decimal comma");
  }
}

ScopedCommaLocale::~ScopedCommaLocale() {
  std::locale::global(before_);
  std::setlocale(LC_NUMERIC, numericBefore_.c_str());
}

}  // namespace audrel::fakes
