#pragma once

#include <string>
#include <vector>

#include "model/RecordingSource.h"
#include "platform/AppKit.h"
#include "tests/fakes/MenuContents.h"

/// The menus as the user should find them: written out here a second time, from no code of the
/// program's.
namespace audrel::expected {

using Items = std::vector<fakes::ItemContents>;

/// A menu that was switched off to enable its items itself.
fakes::MenuContents menu(const Items& items, const NS::MenuDelegate* delegate = nullptr);

Items idleItems(const NS::Target& target, const fakes::MenuContents& sources,
                const fakes::MenuContents& formats, bool canReveal);

Items recordingItems(const NS::Target& target, const std::string& caption, bool canReveal);

/// `processes` is what stands between the separators.
fakes::MenuContents sourceSubmenu(const NS::Target& target, bool isAllOn, const Items& processes);

fakes::ItemContents process(const NS::Target& target, const std::string& title, bool isOn,
                            const RecordingSource& source);
fakes::ItemContents noAudibleApps();

fakes::MenuContents m4aIsOn(const NS::Target& target);
fakes::MenuContents wavIsOn(const NS::Target& target);

}  // namespace audrel::expected
