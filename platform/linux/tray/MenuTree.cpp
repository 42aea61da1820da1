#include "platform/linux/tray/MenuTree.h"

#include <limits>

namespace audrel::linuxos {

namespace {

std::int32_t take(std::int32_t& nextId) {
  const std::int32_t id = nextId;
  nextId = id == std::numeric_limits<std::int32_t>::max() ? MenuTree::rootId + 1 : id + 1;
  return id;
}

std::vector<MenuNode> nodesOf(const Menu& menu, std::int32_t& nextId,
                              const std::function<bool(const MenuItem&)>& isHonoured) {
  std::vector<MenuNode> nodes;
  for (const auto& item : menu.items()) {
    MenuNode node{.id = take(nextId),
                  .item = item,
                  .isEnabled = item->isEnabled(menu.autoenablesItems()) && isHonoured(*item),
                  .children = {}};
    if (item->submenu() != nullptr) {
      node.children = nodesOf(*item->submenu(), nextId, isHonoured);
    }
    nodes.push_back(std::move(node));
  }
  return nodes;
}

void walk(const MenuNode& node, const std::function<void(const MenuNode&)>& visit) {
  visit(node);
  for (const MenuNode& child : node.children) {
    walk(child, visit);
  }
}

}  // namespace

MenuTree::MenuTree(const Menu& menu, std::int32_t& nextId,
                   const std::function<bool(const MenuItem&)>& isHonoured) {
  root_.children = nodesOf(menu, nextId, isHonoured);
}

const MenuNode* MenuTree::find(std::int32_t id) const {
  const MenuNode* found = nullptr;
  forEach([&found, id](const MenuNode& node) { found = node.id == id ? &node : found; });
  return found;
}

bool MenuTree::stillOffers(const MenuItem& item) const {
  bool isOffered = false;
  bool hasAction = false;
  forEach([&](const MenuNode& node) {
    if (node.item == nullptr || node.item->action() != item.action()) {
      return;
    }
    hasAction = true;
    isOffered = isOffered || (node.isEnabled && node.item->title() == item.title());
  });
  return isOffered || !hasAction;
}

void MenuTree::forEach(const std::function<void(const MenuNode&)>& visit) const {
  walk(root_, visit);
}

}  // namespace audrel::linuxos
