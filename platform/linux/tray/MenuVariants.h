#pragma once

#include <cstdint>
#include <set>
#include <string>

#include "platform/linux/loop/GLibHandles.h"
#include "platform/linux/tray/MenuTree.h"

/// Menu nodes as `com.canonical.dbusmenu` sends them.
namespace audrel::linuxos {

/// The properties that a panel asks for; empty for all.
using PropertyNames = std::set<std::string>;

/// `a{sv}`, floating: what differs from the protocol's defaults.
GVariant* menuProperties(const MenuNode& node, const PropertyNames& names);

/// `(ia{sv}av)`, floating: the node and `depth` levels below it; all of them for -1.
GVariant* menuLayout(const MenuNode& node, std::int32_t depth, const PropertyNames& names);

/// The value of one property, or its default. Null when there is neither.
VariantHandle menuProperty(const MenuNode& node, const std::string& name);

}  // namespace audrel::linuxos
