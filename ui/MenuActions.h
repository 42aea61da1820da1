#pragma once

#include <memory>

#include "platform/AppKit.h"

namespace audrel {

/// The commands of the menu. Main thread only.
class MenuActions : public NS::Target {
 public:
  /// The item that was chosen, which the platform keeps alive for the length of the call. Null
  /// when the command came from elsewhere.
  using Sender = std::shared_ptr<NS::MenuItem>;

  virtual void toggleRecording(const Sender& sender) = 0;
  virtual void selectAllSystemAudio(const Sender& sender) = 0;
  virtual void selectProcess(const Sender& sender) = 0;
  virtual void refreshProcessList(const Sender& sender) = 0;
  virtual void selectFormatM4A(const Sender& sender) = 0;
  virtual void selectFormatWAV(const Sender& sender) = 0;
  virtual void revealLastRecording(const Sender& sender) = 0;
  virtual void checkForUpdates(const Sender& sender) = 0;
  virtual void showAbout(const Sender& sender) = 0;
  virtual void quit(const Sender& sender) = 0;

  /// Calls the operation that `MenuBuilder::Action` has that selector for; none for another.
  void perform(const NS::Selector& selector, const Sender& sender) final;
};

}  // namespace audrel
