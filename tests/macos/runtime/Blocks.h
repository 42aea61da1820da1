#pragma once

#include "tests/macos/runtime/Metadata.h"

extern "C" {
void* _Block_copy(const void* block);
void _Block_release(const void* block);
}

namespace audrel::objcruntime {

bool isBlock(const Object* object);

}  // namespace audrel::objcruntime
