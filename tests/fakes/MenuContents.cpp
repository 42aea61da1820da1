#include "tests/fakes/MenuContents.h"

#include <ostream>
#include <tuple>

#include "tests/fakes/Journal.h"

namespace audrel::fakes {
namespace {

std::string shown(const RecordingSource& source) {
  const auto* process = source.asProcess();
  if (process == nullptr) {
    return "all system audio";
  }
  return "process " + std::to_string(process->id) + " " + inQuotes(process->name) + " " +
         (process->bundleID ? inQuotes(*process->bundleID) : "without bundle identifier");
}

}  // namespace

bool ItemContents::operator==(const ItemContents& other) const {
  const auto all = [](const ItemContents& item) {
    return std::tie(item.title, item.isSeparator, item.action, item.target, item.keyEquivalent,
                    item.isEnabled, item.isOn, item.representedObject, item.submenu);
  };
  return all(*this) == all(other);
}

bool operator==(const MenuContents& left, const MenuContents& right) {
  return left.autoenablesItems == right.autoenablesItems && left.delegate == right.delegate &&
         left.items == right.items;
}

std::string shown(const ItemContents& item) {
  if (item.isSeparator) {
    return "separator";
  }
  std::string text = inQuotes(item.title);
  text += item.keyEquivalent.empty() ? ", no key" : ", key " + inQuotes(item.keyEquivalent);
  text += item.action ? ", " + *item.action : ", no action";
  text += item.target == nullptr ? ", no target" : ", target";
  text += item.isEnabled ? ", enabled" : ", disabled";
  text += item.isOn ? ", on" : ", off";
  if (item.representedObject) {
    text += ", represents " + shown(*item.representedObject);
  }
  if (item.submenu) {
    text += ", submenu";
  }
  return text;
}

std::string shown(const MenuContents& menu, const std::string& indent) {
  std::string text = indent + "menu, automatic enabling " + (menu.autoenablesItems ? "on" : "off") +
                     (menu.delegate == nullptr ? ", no delegate\n" : ", delegate\n");
  for (const ItemContents& item : menu.items) {
    text += indent + "    " + shown(item) + "\n";
    if (item.submenu) {
      text += shown(*item.submenu, indent + "        ");
    }
  }
  return text;
}

void PrintTo(const MenuContents& menu, std::ostream* stream) {
  *stream << "\n" << shown(menu);
}

}  // namespace audrel::fakes
