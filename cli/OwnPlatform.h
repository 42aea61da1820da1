#pragma once

#include "platform/Platform.h"

namespace audrel::cli {

/// `platform` with another audio framework.
Platform withOwn(const Platform& platform, AV::AudioFramework& framework);

}  // namespace audrel::cli
