// An audio server whose graph a `PacedDriver` drives: `audrel-test-server GROUP TIMESREALTIME`. Its
// configuration is the pipewire.conf that the environment leads to. It runs until it is killed.

#include <cstdlib>

#include "tests/platform/linux/pipewire/harness/PacedDriver.h"

int main(int count, char** arguments) {
  if (count != 3) {
    return EXIT_FAILURE;
  }
  pw_init(nullptr, nullptr);
  pw_main_loop* loop = pw_main_loop_new(nullptr);
  pw_context* context = pw_context_new(
      pw_main_loop_get_loop(loop),
      pw_properties_new(PW_KEY_CONFIG_NAME, "pipewire.conf", PW_KEY_CORE_DAEMON, "true", nullptr),
      0);
  if (context == nullptr) {
    return EXIT_FAILURE;
  }
  const audrel::pwtest::PacedDriver driver(context, arguments[1],
                                           std::strtod(arguments[2], nullptr));
  pw_main_loop_run(loop);
  return EXIT_SUCCESS;
}
