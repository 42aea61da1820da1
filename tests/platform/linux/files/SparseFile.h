#pragma once

#include <filesystem>
#include <memory>

#include "platform/linux/files/RawFile.h"

namespace audrel::linuxos::test {

/// A real file in which runs of zeros become holes, so that a large one takes little time and
/// space. Throws when it cannot be created.
std::unique_ptr<RawFile> createSparse(const std::filesystem::path& path);

}  // namespace audrel::linuxos::test
