#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/AppKit.h"

namespace audrel {

/// Owns the program's one status item and draws it. Main thread only.
class StatusItemController {
 public:
  /// What the item tells.
  class State {
   public:
    struct Recording {
      double elapsed = 0;    ///< seconds since the start
      bool warning = false;  ///< the one-hour warning was given

      bool operator==(const Recording&) const = default;
    };

    static State idle();
    static State recording(double elapsed, bool warning);

    /// Null when idle.
    const Recording* asRecording() const { return recording_ ? &*recording_ : nullptr; }

    bool operator==(const State&) const = default;

   private:
    State() = default;

    std::optional<Recording> recording_;
  };

  /// Creates the item, idle. Refers to `appKit` for life.
  explicit StatusItemController(NS::AppKit& appKit);

  NS::StatusItem& statusItem() { return *statusItem_; }

  /// Redraws the item; nothing when it has no button.
  void apply(const State& state);

  /// "05:07" below an hour, "1:00:00" from there on; fractions are cut off, and a sign stands in
  /// every field (-5 is "00:-5"). Seconds that no 64-bit integer holds end the process.
  static std::string formatElapsed(double elapsed);

 private:
  /// The symbol in the item's size; coloured, or without a tint a template, which the menu bar
  /// colours. Null when the system has no such symbol.
  std::shared_ptr<NS::Image> image(const std::string& systemName, const NS::Color* tintColor);

  std::shared_ptr<NS::Image> tinted(NS::Image& symbol, const NS::Color& color);

  NS::AppKit& appKit_;
  std::shared_ptr<NS::StatusItem> statusItem_;
};

}  // namespace audrel
