// An audio server whose graph a driver of ours drives: `audrel-test-server GROUP TIMESREALTIME`,
// where 0 times is stepped: see SteppedDriver. Its configuration is the pipewire.conf that the
// environment leads to. It runs until it is killed.

#include <cstdlib>
#include <optional>

#include "tests/platform/linux/pipewire/harness/PacedDriver.h"
#include "tests/platform/linux/pipewire/harness/SteppedDriver.h"

int main(int count, char** arguments) {
  using namespace audrel::pwtest;
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
  const double timesRealTime = std::strtod(arguments[2], nullptr);
  std::optional<PacedDriver> paced;
  std::optional<SteppedDriver> stepped;
  if (timesRealTime > 0) {
    paced.emplace(context, arguments[1], timesRealTime);
  } else {
    stepped.emplace(loop, context, arguments[1]);
  }
  pw_main_loop_run(loop);
  return EXIT_SUCCESS;
}
