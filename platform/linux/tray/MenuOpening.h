#pragma once

#include <chrono>
#include <string>

namespace audrel::linuxos {

/// Tells how often a menu opens. Some panels announce an opening ("about to show"), some report
/// it ("opened"), some do both, in either order.
class MenuOpening {
 public:
  enum class Notice { aboutToShow, opened };

  /// Whether `notice` is the first of an opening. It is not when the same panel gave the other
  /// notice, and nothing since, less than a second ago. `panel` is its name on the bus.
  bool begins(const std::string& panel, Notice notice, std::chrono::microseconds now);

 private:
  std::string panel_;
  Notice notice_ = Notice::opened;
  std::chrono::microseconds time_{};
  bool mayContinue_ = false;
};

}  // namespace audrel::linuxos
