#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/session/Notifier.h"
#include "platform/linux/tray/RecordingMenu.h"

namespace audrel::linuxos {

/// Tells by a notification what the icon in the panel tells, where no panel shows it: that the
/// program runs, and that it records. Tells it to those who ask by the launcher's entry, too,
/// panel or not. From the notification they can start, stop, and choose what is recorded. There
/// is one at most, and it goes when it is true no more. Main thread.
class Announcer {
 public:
  /// What the notification's buttons do.
  struct Controls {
    std::function<void()> startRecording;
    std::function<void()> stopRecording;

    /// Looks for sources again, where the menu has them.
    std::function<void()> refreshSources;
    std::function<void(const std::shared_ptr<MenuItem>&)> chooseSource;
  };

  /// `notifier` must outlive this.
  Announcer(Notifier& notifier, Controls controls);

  /// Takes the notification away.
  ~Announcer();
  Announcer(const Announcer&) = delete;
  Announcer& operator=(const Announcer&) = delete;

  /// A panel shows the icon; or none does and none is to be expected any more. Whoever has waited
  /// for that is told then.
  void setPanel(bool isThere);

  /// The program has set its menu.
  void setMenu(RecordingMenu menu);

  /// Tells what goes on.
  void tell();

 private:
  enum class Panel { unknown, there, none };

  struct Recording {
    std::string source;
    std::string since;  ///< a time of day
  };

  void tellRecording();
  void tellIdle();

  /// From the one with that index on, as many as there is room for; from the beginning after the
  /// last one.
  void offerSources(std::size_t first);
  std::string chosenSource() const;
  const char* whereToGo() const;
  void show(std::string summary, std::string body, Notification::Actions actions);

  Notifier& notifier_;
  Controls controls_;
  Panel panel_ = Panel::unknown;
  bool isIntroduced_ = false;  ///< the user was told once that the program runs
  std::optional<Recording> recording_;
  std::vector<std::shared_ptr<MenuItem>> sources_;
};

}  // namespace audrel::linuxos
