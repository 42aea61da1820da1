// The module of another version of the program.

#include "platform/linux/aac/AacFunctions.h"

namespace {

constexpr AudrelAacFunctions functions = {.interfaceNumber = audrelAacInterface + 1,
                                          .open = nullptr,
                                          .close = nullptr,
                                          .framesPerPacket = nullptr,
                                          .initialPadding = nullptr,
                                          .bitRate = nullptr,
                                          .configuration = nullptr,
                                          .input = nullptr,
                                          .send = nullptr,
                                          .sendEnd = nullptr,
                                          .nextPacket = nullptr};

}  // namespace

extern "C" const AudrelAacFunctions* audrelAacFunctions() {
  return &functions;
}
