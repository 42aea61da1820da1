#include "ui/StatusItemController.h"

#include <cstdint>
#include <cstdlib>

namespace audrel {
namespace {

constexpr double fontSize = 12;
constexpr NS::SymbolConfiguration symbolConfiguration{14, NS::fontWeightRegular};
constexpr std::int64_t secondsPerHour = 3600;
constexpr std::int64_t secondsPerMinute = 60;

/// Cuts the fraction off. Converting a double that the integer cannot hold is undefined.
std::int64_t wholeSeconds(double seconds) {
  constexpr double limit = 0x1p63;
  // So written, NaN is outside too.
  const bool isInside = seconds >= -limit && seconds < limit;
  if (!isInside) {
    std::abort();
  }
  return static_cast<std::int64_t>(seconds);
}

/// As printf's "%02d": a sign counts as a digit.
std::string twoDigits(std::int64_t number) {
  std::string text = std::to_string(number);
  return text.size() < 2 ? "0" + text : text;
}

}  // namespace

StatusItemController::State StatusItemController::State::idle() {
  return {};
}

StatusItemController::State StatusItemController::State::recording(double elapsed, bool warning) {
  State state;
  state.recording_ = Recording{elapsed, warning};
  return state;
}

StatusItemController::StatusItemController(NS::AppKit& appKit)
    : appKit_(appKit), statusItem_(appKit.makeStatusItem(NS::variableStatusItemLength)) {
  if (NS::StatusBarButton* button = statusItem_->button()) {
    // Digits of one width, or the ticking time would jitter.
    button->setFont(appKit_.monospacedDigitSystemFont(fontSize, NS::fontWeightRegular));
    button->setImagePosition(NS::CellImagePosition::imageLeft);
  }
  apply(State::idle());
}

void StatusItemController::apply(const State& state) {
  NS::StatusBarButton* button = statusItem_->button();
  if (button == nullptr) {
    return;
  }
  if (const State::Recording* recording = state.asRecording()) {
    const auto color = recording->warning ? appKit_.systemOrangeColor() : appKit_.systemRedColor();
    button->setImage(image("waveform.circle.fill", color.get()));
    button->setTitle(" " + formatElapsed(recording->elapsed));
  } else {
    button->setImage(image("waveform.circle", nullptr));
    button->setTitle("");
  }
}

std::shared_ptr<NS::Image> StatusItemController::image(const std::string& systemName,
                                                       const NS::Color* tintColor) {
  const auto symbol = appKit_.makeSystemSymbol(systemName);
  const auto configured = symbol ? symbol->withSymbolConfiguration(symbolConfiguration) : nullptr;
  if (!configured) {
    return nullptr;
  }
  configured->setTemplate(tintColor == nullptr);
  return tintColor == nullptr ? configured : tinted(*configured, *tintColor);
}

std::shared_ptr<NS::Image> StatusItemController::tinted(NS::Image& symbol, const NS::Color& color) {
  const NS::Rect rect{0, 0, symbol.size()};
  auto image = appKit_.makeImage(rect.size);
  image->lockFocus();
  color.set();
  symbol.drawInRect(rect);
  // Paints only where the symbol has pixels.
  appKit_.fillRect(rect, NS::CompositingOperation::sourceAtop);
  image->unlockFocus();
  return image;
}

std::string StatusItemController::formatElapsed(double elapsed) {
  const std::int64_t total = wholeSeconds(elapsed);
  const std::int64_t hours = total / secondsPerHour;
  const std::int64_t minutes = total % secondsPerHour / secondsPerMinute;
  const std::int64_t seconds = total % secondsPerMinute;
  const std::string minutesAndSeconds = twoDigits(minutes) + ":" + twoDigits(seconds);
  return total < secondsPerHour ? minutesAndSeconds
                                : std::to_string(hours) + ":" + minutesAndSeconds;
}

}  // namespace audrel
