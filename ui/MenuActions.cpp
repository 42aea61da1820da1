#include "ui/MenuActions.h"

#include <array>

#include "ui/MenuBuilder.h"

namespace audrel {
namespace {

struct Command {
  const NS::Selector& (*selector)();
  void (MenuActions::*operation)(const MenuActions::Sender&);
};

using Action = MenuBuilder::Action;

constexpr std::array<Command, 10> commands{{
    {Action::toggleRecording, &MenuActions::toggleRecording},
    {Action::selectAllSystemAudio, &MenuActions::selectAllSystemAudio},
    {Action::selectProcess, &MenuActions::selectProcess},
    {Action::refreshProcessList, &MenuActions::refreshProcessList},
    {Action::selectFormatM4A, &MenuActions::selectFormatM4A},
    {Action::selectFormatWAV, &MenuActions::selectFormatWAV},
    {Action::revealLastRecording, &MenuActions::revealLastRecording},
    {Action::checkForUpdates, &MenuActions::checkForUpdates},
    {Action::showAbout, &MenuActions::showAbout},
    {Action::quit, &MenuActions::quit},
}};

}  // namespace

void MenuActions::perform(const NS::Selector& selector, const Sender& sender) {
  for (const Command& command : commands) {
    if (command.selector() == selector) {
      (this->*command.operation)(sender);
      return;
    }
  }
}

}  // namespace audrel
