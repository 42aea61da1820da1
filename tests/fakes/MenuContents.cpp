#include "tests/fakes/MenuContents.h"

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

void forEachItem(const MenuContents& menu, const std::function<void(const ItemContents&)>& take) {
  for (const ItemContents& item : menu.items) {
    take(item);
    if (item.submenu) {
      forEachItem(*item.submenu, take);
    }
  }
}

std::vector<std::string> markedIn(const MenuContents& menu) {
  std::vector<std::string> titles;
  forEachItem(menu, [&](const ItemContents& item) {
    if (item.isOn) {
      titles.push_back(item.title);
    }
  });
  return titles;
}

std::vector<std::string> applicationsIn(const MenuContents& menu) {
  std::vector<std::string> titles;
  forEachItem(menu, [&](const ItemContents& item) {
    if (item.action == "selectProcess:") {
      titles.push_back(item.title);
    }
  });
  return titles;
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

std::string outlineOf(const MenuContents& menu, const std::string& prefix) {
  std::string outline;
  for (const ItemContents& item : menu.items) {
    outline += prefix + (item.isSeparator ? "-" : item.title) + (item.isOn ? " *" : "") +
               (item.isEnabled ? "\n" : " (off)\n");
    if (item.submenu) {
      outline += outlineOf(*item.submenu, prefix + "> ");
    }
  }
  return outline;
}

}  // namespace audrel::fakes
