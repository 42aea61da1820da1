#include "tests/ui/ExpectedMenus.h"

namespace audrel::expected {
namespace {

using fakes::ItemContents;
using fakes::MenuContents;

ItemContents separator() {
  ItemContents item;
  item.isSeparator = true;
  return item;
}

ItemContents text(const std::string& title) {
  ItemContents item;
  item.title = title;
  return item;
}

ItemContents command(const NS::Target& target, const std::string& title, const std::string& action,
                     const std::string& key = "") {
  ItemContents item = text(title);
  item.action = action;
  item.target = &target;
  item.keyEquivalent = key;
  return item;
}

ItemContents enabled(ItemContents item, bool isEnabled) {
  item.isEnabled = isEnabled;
  return item;
}

ItemContents on(ItemContents item, bool isOn) {
  item.isOn = isOn;
  return item;
}

ItemContents with(ItemContents item, const MenuContents& submenu) {
  item.submenu = submenu;
  return item;
}

MenuContents formatSubmenu(const NS::Target& target, bool isM4A, bool isWAV) {
  return menu({on(command(target, "M4A (AAC 256 kbps)", "selectFormatM4A:"), isM4A),
               on(command(target, "WAV (48 kHz / 16-bit)", "selectFormatWAV:"), isWAV)});
}

}  // namespace

MenuContents menu(const Items& items, const NS::MenuDelegate* delegate) {
  return {false, delegate, items};
}

Items idleItems(const NS::Target& target, const MenuContents& sources, const MenuContents& formats,
                bool canReveal) {
  return {
      command(target, "Start Recording", "toggleRecording:", "r"),
      separator(),
      with(text("Record from"), sources),
      with(text("Format"), formats),
      separator(),
      enabled(command(target, "Reveal Last Recording in Finder", "revealLastRecording:"),
              canReveal),
      separator(),
      command(target, "About Audrel\xE2\x80\xA6", "showAbout:"),
      command(target, "Check for Updates\xE2\x80\xA6", "checkForUpdates:"),
      command(target, "Quit Audrel", "quit:", "q"),
  };
}

Items recordingItems(const NS::Target& target, const std::string& caption, bool canReveal) {
  return {
      enabled(text(caption), false),
      separator(),
      command(target, "Stop Recording", "toggleRecording:", "r"),
      separator(),
      enabled(command(target, "Reveal Recording in Finder", "revealLastRecording:"), canReveal),
      separator(),
      command(target, "Quit Audrel", "quit:", "q"),
  };
}

MenuContents sourceSubmenu(const NS::Target& target, bool isAllOn, const Items& processes) {
  Items items{on(command(target, "All System Audio", "selectAllSystemAudio:"), isAllOn),
              separator()};
  items.insert(items.end(), processes.begin(), processes.end());
  items.push_back(separator());
  items.push_back(command(target, "Refresh List", "refreshProcessList:"));
  return menu(items);
}

ItemContents process(const NS::Target& target, const std::string& title, bool isOn,
                     const RecordingSource& source) {
  ItemContents item = on(command(target, title, "selectProcess:"), isOn);
  item.representedObject = source;
  return item;
}

ItemContents noAudibleApps() {
  return enabled(text("No audible apps"), false);
}

MenuContents m4aIsOn(const NS::Target& target) {
  return formatSubmenu(target, true, false);
}

MenuContents wavIsOn(const NS::Target& target) {
  return formatSubmenu(target, false, true);
}

}  // namespace audrel::expected
