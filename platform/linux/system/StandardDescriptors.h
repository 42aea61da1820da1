#pragma once

namespace audrel::linuxos {

/// Opens /dev/null for each of the three standard descriptors that is closed: else the first file
/// that is opened takes its number, and what is meant for the terminal goes into the recording.
/// Before anything else is opened.
void openStandardDescriptors();

}  // namespace audrel::linuxos
