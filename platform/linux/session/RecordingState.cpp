#include "platform/linux/session/RecordingState.h"

#include <utility>

#include "platform/linux/session/ApplicationService.h"

namespace audrel::linuxos {

namespace {

constexpr const char* propertyName = "Recording";

constexpr const char* interfaceXml = R"(
<node>
  <interface name="io.github.audrel.Audrel">
    <property name="Recording" type="b" access="read"/>
  </interface>
</node>)";

}  // namespace

const GDBusInterfaceVTable RecordingState::table{nullptr, onGetProperty, nullptr, {}};

RecordingState::RecordingState(SessionBus& bus, std::function<bool()> isRecording)
    : isRecording_(std::move(isRecording)),
      listener_(
          bus,
          [this](GDBusConnection* connection) {
            object_.emplace(connection, ApplicationService::objectPath, interfaceXml, table, this);
          },
          [this] { object_.reset(); }) {}

GVariant* RecordingState::onGetProperty(GDBusConnection* /*connection*/, const char* /*sender*/,
                                        const char* /*path*/, const char* /*interface*/,
                                        const char* /*property*/, GError** /*error*/,
                                        gpointer self) noexcept {
  return g_variant_new_boolean(static_cast<RecordingState*>(self)->isRecording_() ? TRUE : FALSE);
}

void RecordingState::changed() const {
  if (!object_) {
    return;
  }
  GVariantBuilder changed;
  g_variant_builder_init(&changed, G_VARIANT_TYPE_VARDICT);
  g_variant_builder_add(&changed, "{sv}", propertyName,
                        g_variant_new_boolean(isRecording_() ? TRUE : FALSE));
  object_->emitPropertiesChanged(g_variant_builder_end(&changed), g_variant_new_strv(nullptr, 0));
}

}  // namespace audrel::linuxos
