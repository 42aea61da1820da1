#include "platform/linux/tray/MenuVariants.h"

namespace audrel::linuxos {

namespace {

/// An underscore marks the next letter as the item's key; two of them are one to see.
std::string labelOf(const std::string& title) {
  std::string label;
  for (const char letter : title) {
    label.append(letter == '_' ? 2 : 1, letter);
  }
  return label;
}

/// Collects the properties that were asked for.
class Properties {
 public:
  explicit Properties(const PropertyNames& names) : names_(names) {
    g_variant_builder_init(&builder_, G_VARIANT_TYPE_VARDICT);
  }

  void put(const char* name, GVariant* value) {
    const VariantHandle owned(g_variant_ref_sink(value));
    if (names_.empty() || names_.contains(name)) {
      g_variant_builder_add(&builder_, "{sv}", name, value);
    }
  }

  GVariant* end() { return g_variant_builder_end(&builder_); }

 private:
  const PropertyNames& names_;
  GVariantBuilder builder_{};
};

void putItem(Properties& properties, const MenuItem& item, bool isEnabled) {
  properties.put("label", g_variant_new_string(labelOf(item.title()).c_str()));
  if (!isEnabled) {
    properties.put("enabled", g_variant_new_boolean(FALSE));
  }
  if (item.state()) {
    properties.put("toggle-type", g_variant_new_string("checkmark"));
    properties.put("toggle-state", g_variant_new_int32(item.state() == NS::ControlState::on));
  }
}

}  // namespace

GVariant* menuProperties(const MenuNode& node, const PropertyNames& names) {
  Properties properties(names);
  if (node.item != nullptr && node.item->isSeparator()) {
    properties.put("type", g_variant_new_string("separator"));
    return properties.end();
  }
  if (node.item != nullptr) {
    putItem(properties, *node.item, node.isEnabled);
  }
  if (node.item == nullptr || node.item->submenu() != nullptr) {
    properties.put("children-display", g_variant_new_string("submenu"));
  }
  return properties.end();
}

GVariant* menuLayout(const MenuNode& node, std::int32_t depth, const PropertyNames& names) {
  GVariantBuilder children;
  g_variant_builder_init(&children, reinterpret_cast<const GVariantType*>("av"));
  if (depth != 0) {
    for (const MenuNode& child : node.children) {
      g_variant_builder_add(&children, "v",
                            menuLayout(child, depth < 0 ? depth : depth - 1, names));
    }
  }
  return g_variant_new("(i@a{sv}av)", node.id, menuProperties(node, names), &children);
}

VariantHandle menuProperty(const MenuNode& node, const std::string& name) {
  const VariantHandle all(g_variant_ref_sink(menuProperties(node, {})));
  if (VariantHandle value(g_variant_lookup_value(all.get(), name.c_str(), nullptr)); value) {
    return value;
  }
  if (name == "type") {
    return VariantHandle(g_variant_ref_sink(g_variant_new_string("standard")));
  }
  if (name == "label") {
    return VariantHandle(g_variant_ref_sink(g_variant_new_string("")));
  }
  const bool isTrue = name == "enabled" || name == "visible";
  return VariantHandle(isTrue ? g_variant_ref_sink(g_variant_new_boolean(TRUE)) : nullptr);
}

}  // namespace audrel::linuxos
