// A recorder of its own process, to be killed: `audrel-test-recorder SOCKET PID` taps that process,
// writes "recording" when it has captured a tenth of a second, and goes on until its standard input
// ends.

#include <cstdlib>
#include <iostream>
#include <string>

#include "tests/platform/linux/pipewire/harness/Recorder.h"

int main(int count, char** arguments) {
  if (count != 3) {
    return EXIT_FAILURE;
  }
  audrel::pwtest::Recorder recorder(arguments[1]);
  const auto process = recorder.waitForProcess(std::stoi(arguments[2]));
  if (process == 0 || recorder.startProcess(process) != 0 || !recorder.waitForMore(4800)) {
    return EXIT_FAILURE;
  }
  std::cout << "recording\n" << std::flush;
  std::string line;
  std::getline(std::cin, line);
  return EXIT_SUCCESS;
}
