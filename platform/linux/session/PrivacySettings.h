#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace audrel::linuxos {

/// The desktop entries of the settings page where a user may look for what programs are allowed to
/// capture, best first, of the desktops that `currentDesktop` names (XDG_CURRENT_DESKTOP, with
/// colons in between). A desktop without such a page gives its settings as a whole.
std::vector<std::string> privacySettingsEntries(std::string_view currentDesktop);

/// Opens the first of them that is installed; whether there is one.
bool openPrivacySettings();

}  // namespace audrel::linuxos
