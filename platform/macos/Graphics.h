#pragma once

#import <AppKit/AppKit.h>

#include "platform/AppKit.h"

namespace audrel::macos {

inline NSRect systemRect(const NS::Rect& rect) {
  return {{rect.x, rect.y}, {rect.size.width, rect.size.height}};
}

class Image final : public NS::Image {
 public:
  explicit Image(NSImage* image) : image_(image) {}

  NSImage* systemImage() const { return image_; }

  std::shared_ptr<NS::Image> withSymbolConfiguration(
      const NS::SymbolConfiguration& configuration) override;
  void setTemplate(bool isTemplate) override;
  NS::Size size() const override;
  void lockFocus() override;
  void unlockFocus() override;
  void drawInRect(const NS::Rect& rect) override;

 private:
  NSImage* image_;
};

class Color final : public NS::Color {
 public:
  explicit Color(NSColor* color) : color_(color) {}

  void set() const override;

 private:
  NSColor* color_;
};

class Font final : public NS::Font {
 public:
  explicit Font(NSFont* font) : font_(font) {}

  NSFont* systemFont() const { return font_; }

 private:
  NSFont* font_;
};

}  // namespace audrel::macos
