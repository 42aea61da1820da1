#pragma once

// Neither AudioHardwareTapping.h nor CATapDescription.h: the real one leaves them out too.
#include <CoreAudio/AudioHardware.h>
