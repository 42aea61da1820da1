#include "ui/MenuBuilder.h"

#include <optional>
#include <string>
#include <utility>

#include "platform/Selectors.h"

namespace audrel {
namespace {

std::string titleOf(const RecordingSource& source) {
  const RecordingSource::Process* process = source.asProcess();
  return process == nullptr ? "All System Audio" : process->name;
}

NS::ControlState checkedIf(bool condition) {
  return condition ? NS::ControlState::on : NS::ControlState::off;
}

/// Made when it is first used.
template <const char* name>
const NS::Selector& once() {
  static const NS::Selector selector(name);
  return selector;
}

}  // namespace

/// Appends items to one menu. What it returns was not appended yet: `append` ends an item.
class MenuBuilder::Items {
 public:
  Items(NS::AppKit& appKit, NS::Menu& menu, const Target& target)
      : appKit_(appKit), menu_(menu), target_(target) {}

  std::shared_ptr<NS::MenuItem> command(const std::string& title, const NS::Selector& action,
                                        const std::string& keyEquivalent = "") {
    auto item = appKit_.makeMenuItem(title, action, keyEquivalent);
    item->setTarget(target_);
    return item;
  }

  void append(std::shared_ptr<NS::MenuItem> item) { menu_.addItem(std::move(item)); }

  void separator() { append(appKit_.makeSeparatorItem()); }

  /// A text that cannot be chosen.
  void caption(const std::string& title) {
    auto item = appKit_.makeMenuItem(title, std::nullopt, "");
    item->setEnabled(false);
    append(std::move(item));
  }

  void submenu(const std::string& title, std::shared_ptr<NS::Menu> menu) {
    auto item = appKit_.makeMenuItem(title, std::nullopt, "");
    item->setSubmenu(std::move(menu));
    append(std::move(item));
  }

  void checkable(const std::string& title, const NS::Selector& action, bool isChecked) {
    auto item = command(title, action);
    item->setState(checkedIf(isChecked));
    append(std::move(item));
  }

  void reveal(const std::string& title, const State& state) {
    auto item = command(title, Action::revealLastRecording());
    item->setEnabled(state.lastRecordingAvailable);
    append(std::move(item));
  }

  /// Checked by name, not by object id: the selected process may have come back as another object,
  /// and of two that are called alike both are checked.
  void process(const RecordingSource& source, const RecordingSource& selected) {
    const std::string title = titleOf(source);
    const RecordingSource::Process* selectedProcess = selected.asProcess();
    auto item = command(title, Action::selectProcess());
    item->setRepresentedObject(source);
    item->setState(checkedIf(selectedProcess != nullptr && selectedProcess->name == title));
    append(std::move(item));
  }

 private:
  NS::AppKit& appKit_;
  NS::Menu& menu_;
  const Target& target_;
};

void MenuBuilder::populateIdleMenu(NS::AppKit& appKit, NS::Menu& menu, const State& state,
                                   const Target& target) {
  Items items(appKit, menu, target);
  items.append(items.command("Start Recording", Action::toggleRecording(), "r"));
  items.separator();
  items.submenu("Record from", buildSourceSubmenu(appKit, state, target));
  items.submenu("Format", buildFormatSubmenu(appKit, state, target));
  items.separator();
  items.reveal("Reveal Last Recording in Finder", state);
  items.separator();
  items.append(items.command("About Audrel…", Action::showAbout()));
  items.append(items.command("Check for Updates…", Action::checkForUpdates()));
  items.append(items.command("Quit Audrel", Action::quit(), "q"));
}

void MenuBuilder::populateRecordingMenu(NS::AppKit& appKit, NS::Menu& menu, const State& state,
                                        const Target& target) {
  Items items(appKit, menu, target);
  items.caption("Recording from: " + titleOf(state.source));
  items.separator();
  items.append(items.command("Stop Recording", Action::toggleRecording(), "r"));
  items.separator();
  items.reveal("Reveal Recording in Finder", state);
  items.separator();
  items.append(items.command("Quit Audrel", Action::quit(), "q"));
}

std::shared_ptr<NS::Menu> MenuBuilder::buildSourceSubmenu(NS::AppKit& appKit, const State& state,
                                                          const Target& target) {
  auto menu = appKit.makeMenu();
  menu->setAutoenablesItems(false);
  Items items(appKit, *menu, target);
  items.checkable("All System Audio", Action::selectAllSystemAudio(),
                  state.source == RecordingSource::allSystemAudio());
  items.separator();
  if (state.processes.empty()) {
    items.caption("No audible apps");
  }
  for (const RecordingSource& source : state.processes) {
    items.process(source, state.source);
  }
  items.separator();
  items.append(items.command("Refresh List", Action::refreshProcessList()));
  return menu;
}

std::shared_ptr<NS::Menu> MenuBuilder::buildFormatSubmenu(NS::AppKit& appKit, const State& state,
                                                          const Target& target) {
  auto menu = appKit.makeMenu();
  menu->setAutoenablesItems(false);
  Items items(appKit, *menu, target);
  items.checkable("M4A (AAC 256 kbps)", Action::selectFormatM4A(),
                  state.format == RecordingFormat::m4a);
  items.checkable("WAV (48 kHz / 16-bit)", Action::selectFormatWAV(),
                  state.format == RecordingFormat::wav);
  return menu;
}

const NS::Selector& MenuBuilder::Action::toggleRecording() {
  return once<selectors::toggleRecording>();
}

const NS::Selector& MenuBuilder::Action::selectAllSystemAudio() {
  return once<selectors::selectAllSystemAudio>();
}

const NS::Selector& MenuBuilder::Action::selectProcess() {
  return once<selectors::selectProcess>();
}

const NS::Selector& MenuBuilder::Action::refreshProcessList() {
  return once<selectors::refreshProcessList>();
}

const NS::Selector& MenuBuilder::Action::selectFormatM4A() {
  return once<selectors::selectFormatM4A>();
}

const NS::Selector& MenuBuilder::Action::selectFormatWAV() {
  return once<selectors::selectFormatWAV>();
}

const NS::Selector& MenuBuilder::Action::revealLastRecording() {
  return once<selectors::revealLastRecording>();
}

const NS::Selector& MenuBuilder::Action::checkForUpdates() {
  return once<selectors::checkForUpdates>();
}

const NS::Selector& MenuBuilder::Action::showAbout() {
  return once<selectors::showAbout>();
}

const NS::Selector& MenuBuilder::Action::quit() {
  return once<selectors::quit>();
}

}  // namespace audrel
