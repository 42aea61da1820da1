#include "platform/linux/tray/Image.h"

#include <cmath>
#include <utility>

namespace audrel::linuxos {

namespace {

/// `NSFont.systemFontSize`, which symbols have without a configuration.
constexpr double systemPointSize = 13;

NS::Size symbolSize(double pointSize) {
  const double side = std::round(pointSize * 1.25);
  return {side, side};
}

}  // namespace

Image::Image(std::shared_ptr<DrawingContext> context, Picture picture)
    : context_(std::move(context)), picture_(std::move(picture)) {}

std::shared_ptr<NS::Image> Image::withSymbolConfiguration(
    const NS::SymbolConfiguration& configuration) {
  if (picture_.steps.size() != 1 || !std::holds_alternative<SymbolStep>(picture_.steps.front())) {
    return nullptr;
  }
  Picture configured = picture_;
  configured.size = symbolSize(configuration.pointSize);
  return std::make_shared<Image>(context_, std::move(configured));
}

void Image::setTemplate(bool isTemplate) {
  picture_.isTemplate = isTemplate;
}

void Image::lockFocus() {
  context_->focus.push_back(shared_from_this());
}

void Image::unlockFocus() {
  if (!context_->focus.empty()) {
    context_->focus.pop_back();
  }
}

void Image::drawInRect(const NS::Rect& rect) {
  if (context_->focus.empty() || context_->focus.back().get() == this) {
    return;
  }
  context_->focus.back()->picture_.steps.emplace_back(
      PictureStep{std::make_shared<const Picture>(picture_), rect});
}

void Image::fillAtop(Rgb color, const NS::Rect& rect) {
  picture_.steps.emplace_back(FillStep{color, rect});
}

std::shared_ptr<Image> makeSymbolImage(std::shared_ptr<DrawingContext> context,
                                       const std::string& name) {
  Picture picture{.size = symbolSize(systemPointSize), .isTemplate = false, .steps = {}};
  picture.steps.emplace_back(SymbolStep{name});
  return std::make_shared<Image>(std::move(context), std::move(picture));
}

Color::Color(std::shared_ptr<DrawingContext> context, Rgb value)
    : context_(std::move(context)), value_(value) {}

void Color::set() const {
  context_->color = value_;
}

}  // namespace audrel::linuxos
