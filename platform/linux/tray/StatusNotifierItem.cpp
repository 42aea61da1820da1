#include "platform/linux/tray/StatusNotifierItem.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <string_view>
#include <utility>

#include "platform/Identity.h"
#include "platform/linux/tray/Descriptions.h"

namespace audrel::linuxos {

namespace {

constexpr const char* labelName = "XAyatanaLabel";
constexpr const char* guideName = "XAyatanaLabelGuide";

GVariant* text(const std::string& value) {
  return g_variant_new_string(value.c_str());
}

GVariant* pixmapArray(const std::vector<Pixmap>& pixmaps) {
  GVariantBuilder builder;
  g_variant_builder_init(&builder, reinterpret_cast<const GVariantType*>("a(iiay)"));
  for (const Pixmap& pixmap : pixmaps) {
    g_variant_builder_add(
        &builder, "(ii@ay)", pixmap.side, pixmap.side,
        g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, pixmap.argb.data(), pixmap.argb.size(), 1));
  }
  return g_variant_builder_end(&builder);
}

/// Some panels show nothing but the tool tip's title.
GVariant* toolTip(const StatusItemLook& look) {
  return g_variant_new("(s@a(iiay)ss)", "", pixmapArray({}), look.title.c_str(), "");
}

/// As wide as the label will be while its digits change.
std::string labelGuide(const std::string& label) {
  std::string guide = label;
  std::ranges::replace_if(guide, [](char c) { return c >= '0' && c <= '9'; }, '0');
  return guide;
}

/// Null for a label that is empty: some panels hide an item whose label is there without text.
GVariant* optionalText(const std::string& value) {
  return value.empty() ? nullptr : text(value);
}

struct Property {
  std::string_view name;
  GVariant* (*value)(const StatusItemLook& look);  ///< null for one that is not there now
};

constexpr auto emptyText = [](const StatusItemLook&) { return text(""); };
constexpr auto noPixmaps = [](const StatusItemLook&) { return pixmapArray({}); };

constexpr std::array properties = {
    Property{"Category", [](const StatusItemLook&) { return text("ApplicationStatus"); }},
    Property{"Id", [](const StatusItemLook&) { return text(identity::bundleIdentifier); }},
    Property{"Title", [](const StatusItemLook& look) { return text(look.title); }},
    Property{"Status", [](const StatusItemLook&) { return text("Active"); }},
    Property{"WindowId", [](const StatusItemLook&) { return g_variant_new_int32(0); }},
    Property{"IconThemePath", [](const StatusItemLook& look) { return text(look.iconThemePath); }},
    Property{"IconName", [](const StatusItemLook& look) { return text(look.iconName); }},
    Property{"IconPixmap", [](const StatusItemLook& look) { return pixmapArray(look.pixmaps); }},
    Property{"IconAccessibleDesc",
             [](const StatusItemLook& look) { return text(look.iconDescription); }},
    Property{"OverlayIconName", emptyText},
    Property{"OverlayIconPixmap", noPixmaps},
    Property{"AttentionIconName", emptyText},
    Property{"AttentionIconPixmap", noPixmaps},
    Property{"AttentionMovieName", emptyText},
    Property{"ToolTip", toolTip},
    Property{"ItemIsMenu", [](const StatusItemLook&) { return g_variant_new_boolean(TRUE); }},
    Property{"Menu", [](const StatusItemLook&) { return g_variant_new_object_path(dbusMenuPath); }},
    Property{labelName, [](const StatusItemLook& look) { return optionalText(look.label); }},
    Property{guideName,
             [](const StatusItemLook& look) { return optionalText(labelGuide(look.label)); }},
    Property{"XAyatanaOrderingIndex",
             [](const StatusItemLook&) { return g_variant_new_uint32(0); }},
};

GVariant* propertyOf(const StatusItemLook& look, std::string_view name) {
  const auto* property = std::ranges::find(properties, name, &Property::name);
  return property == properties.end() ? nullptr : property->value(look);
}

GVariant* onGetProperty(GDBusConnection* /*connection*/, const char* /*sender*/,
                        const char* /*path*/, const char* /*interface*/, const char* name,
                        GError** error, gpointer look) noexcept {
  GVariant* value = propertyOf(*static_cast<const StatusItemLook*>(look), name);
  if (value == nullptr) {
    g_set_error_literal(error, G_DBUS_ERROR, G_DBUS_ERROR_UNKNOWN_PROPERTY, "There is no label");
  }
  return value;
}

constexpr GDBusInterfaceVTable table{nullptr, onGetProperty, nullptr, {}};

}  // namespace

StatusNotifierItem::StatusNotifierItem(GDBusConnection* connection, StatusItemLook look)
    : look_(std::move(look)),
      object_(connection, statusNotifierItemPath, statusNotifierItemXml, table, &look_) {}

void StatusNotifierItem::show(StatusItemLook look) {
  const StatusItemLook old = std::exchange(look_, std::move(look));
  if (old.iconName != look_.iconName || old.iconThemePath != look_.iconThemePath ||
      old.pixmaps != look_.pixmaps) {
    object_.emit("NewIcon", nullptr);
  }
  if (old.label != look_.label) {
    tellLabel();
  }
  if (old.title != look_.title) {
    object_.emit("NewTitle", nullptr);
    object_.emit("NewToolTip", nullptr);
  }
}

void StatusNotifierItem::tellLabel() const {
  object_.emit("XAyatanaNewLabel",
               g_variant_new("(ss)", look_.label.c_str(), labelGuide(look_.label).c_str()));
  // Panels with a cache of properties read the label from there.
  GVariantBuilder changed;
  GVariantBuilder invalidated;
  g_variant_builder_init(&changed, G_VARIANT_TYPE_VARDICT);
  g_variant_builder_init(&invalidated, G_VARIANT_TYPE_STRING_ARRAY);
  for (const char* name : {labelName, guideName}) {
    if (GVariant* value = propertyOf(look_, name)) {
      g_variant_builder_add(&changed, "{sv}", name, value);
    } else {
      g_variant_builder_add(&invalidated, "s", name);
    }
  }
  object_.emitPropertiesChanged(g_variant_builder_end(&changed),
                                g_variant_builder_end(&invalidated));
}

}  // namespace audrel::linuxos
