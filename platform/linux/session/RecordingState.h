#pragma once

#include <functional>
#include <optional>

#include "platform/linux/bus/ExportedObject.h"
#include "platform/linux/bus/SessionBus.h"

namespace audrel::linuxos {

/// Whether the program records, for whoever is on the session bus: the property "Recording" of the
/// interface io.github.audrel.Audrel, at the application's path. Main thread.
class RecordingState {
 public:
  /// `bus` must outlive it.
  RecordingState(SessionBus& bus, std::function<bool()> isRecording);
  RecordingState(const RecordingState&) = delete;
  RecordingState& operator=(const RecordingState&) = delete;

  /// Tells that it has changed.
  void changed() const;

 private:
  static GVariant* onGetProperty(GDBusConnection* connection, const char* sender, const char* path,
                                 const char* interface, const char* property, GError** error,
                                 gpointer self) noexcept;
  static const GDBusInterfaceVTable table;

  std::function<bool()> isRecording_;
  std::optional<ExportedObject> object_;
  SessionBus::Listener listener_;
};

}  // namespace audrel::linuxos
