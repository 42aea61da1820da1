#include "tests/fakes/FakeGraphics.h"

#include <cstdint>
#include <stdexcept>

namespace audrel::fakes {
namespace {

/// Of a symbol in a configuration; without one it is another, so that a mix-up shows.
constexpr NS::Size configuredSize{18, 16};

}  // namespace

std::string shown(NS::Size size) {
  return shortNumber(size.width) + " x " + shortNumber(size.height);
}

std::string shown(const NS::Rect& rect) {
  return "(" + shortNumber(rect.x) + ", " + shortNumber(rect.y) + ", " + shown(rect.size) + ")";
}

void FakeGraphics::push(FakeImage& image) {
  stack_.push_back({&image, "no colour"});
  journal_.add(image.name() + ".lockFocus()");
}

void FakeGraphics::pop(FakeImage& image) {
  if (focus().image != &image) {
    throw std::runtime_error(image.name() + " has not the focus");
  }
  stack_.pop_back();
  journal_.add(image.name() + ".unlockFocus()");
}

FakeGraphics::Focus& FakeGraphics::focus() {
  if (stack_.empty()) {
    throw std::runtime_error("nothing has the focus");
  }
  return stack_.back();
}

void FakeGraphics::setColor(const std::string& color) {
  focus().color = color;
  journal_.add(color + ".set()");
}

void FakeGraphics::draw(const FakeImage& image, const NS::Rect& rect) {
  focus().image->add("draws [" + image.shown() + "] in " + fakes::shown(rect));
  journal_.add(image.name() + ".drawInRect" + fakes::shown(rect));
}

void FakeGraphics::fill(const NS::Rect& rect, NS::CompositingOperation operation) {
  const std::string how = fakes::shown(rect) + " with operation " +
                          std::to_string(static_cast<std::uint64_t>(operation));
  focus().image->add("fills " + how + " in " + focus().color);
  journal_.add("fillRect" + how);
}

FakeImage::FakeImage(FakeGraphics& graphics, std::string content, NS::Size size,
                     bool isConfigurable)
    : graphics_(graphics),
      name_(graphics.nextImageName()),
      content_(std::move(content)),
      size_(size),
      isConfigurable_(isConfigurable) {}

std::shared_ptr<NS::Image> FakeImage::withSymbolConfiguration(
    const NS::SymbolConfiguration& configuration) {
  const std::string how = "pointSize " + shortNumber(configuration.pointSize) + ", weight " +
                          shortNumber(configuration.weight);
  std::shared_ptr<FakeImage> image;
  if (isConfigurable_) {
    image = std::make_shared<FakeImage>(graphics_, content_ + ", " + how, configuredSize, false);
  }
  graphics_.journal().add(name_ + ".withSymbolConfiguration(" + how + ") -> " +
                          (image ? image->name() : "nil"));
  return image;
}

void FakeImage::setTemplate(bool isTemplate) {
  isTemplate_ = isTemplate;
  graphics_.journal().add(name_ + ".template = " + (isTemplate ? "true" : "false"));
}

void FakeImage::lockFocus() {
  graphics_.push(*this);
}

void FakeImage::unlockFocus() {
  graphics_.pop(*this);
}

void FakeImage::drawInRect(const NS::Rect& rect) {
  graphics_.draw(*this, rect);
}

std::string FakeImage::shown() const {
  return content_ + (isTemplate_ ? "; template" : "; no template");
}

}  // namespace audrel::fakes
