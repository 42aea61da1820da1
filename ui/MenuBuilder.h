#pragma once

#include <memory>
#include <vector>

#include "model/RecordingFormat.h"
#include "model/RecordingSource.h"
#include "platform/AppKit.h"

namespace audrel {

/// Fills the status item's menu from a snapshot of the program's state. A namespace: it has no
/// instances and keeps nothing between calls. Main thread only.
///
/// Menus are never edited in place: whoever has a new state builds a new menu. Every menu made
/// here has automatic enabling off, so that the flags set here are final.
struct MenuBuilder {
  MenuBuilder() = delete;

  struct State {
    bool isRecording = false;
    RecordingSource source = RecordingSource::allSystemAudio();  ///< the selected one
    RecordingFormat format = RecordingFormat::m4a;               ///< the selected one
    std::vector<RecordingSource> processes{};                    ///< in display order
    double elapsed = 0;  ///< seconds since the recording started; no menu shows it
    bool lastRecordingAvailable = false;

    bool operator==(const State&) const = default;
  };

  /// The selector of each command, made when it is first used.
  struct Action {
    Action() = delete;

    static const NS::Selector& toggleRecording();
    static const NS::Selector& selectAllSystemAudio();
    static const NS::Selector& selectProcess();
    static const NS::Selector& refreshProcessList();
    static const NS::Selector& selectFormatM4A();
    static const NS::Selector& selectFormatWAV();
    static const NS::Selector& revealLastRecording();
    static const NS::Selector& checkForUpdates();
    static const NS::Selector& showAbout();
    static const NS::Selector& quit();
  };

  using Target = std::weak_ptr<NS::Target>;

  /// Appends the items of a program that does not record. Every item with an action has `target`;
  /// those of processes carry their `RecordingSource` as represented object.
  static void populateIdleMenu(NS::AppKit& appKit, NS::Menu& menu, const State& state,
                               const Target& target);

  /// Appends the items of a program that records.
  static void populateRecordingMenu(NS::AppKit& appKit, NS::Menu& menu, const State& state,
                                    const Target& target);

  /// The submenus of the idle menu.
  static std::shared_ptr<NS::Menu> buildSourceSubmenu(NS::AppKit& appKit, const State& state,
                                                      const Target& target);
  static std::shared_ptr<NS::Menu> buildFormatSubmenu(NS::AppKit& appKit, const State& state,
                                                      const Target& target);

 private:
  class Items;
};

}  // namespace audrel
