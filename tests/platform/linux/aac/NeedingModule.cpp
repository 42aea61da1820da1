// A module whose library is nowhere to be found.

#include "platform/linux/aac/AacFunctions.h"

extern "C" int libraryFunction();

extern "C" const AudrelAacFunctions* audrelAacFunctions() {
  libraryFunction();
  return nullptr;
}
