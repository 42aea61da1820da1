#pragma once

#include <memory>
#include <vector>

#include "platform/AppKit.h"
#include "platform/linux/tray/Picture.h"

namespace audrel::linuxos {

class Image;

/// Where drawing goes, and in which colour.
struct DrawingContext {
  std::vector<std::shared_ptr<Image>> focus;  ///< the last one has it
  Rgb color;
};

/// Remembers how it was drawn instead of dots.
class Image final : public NS::Image, public std::enable_shared_from_this<Image> {
 public:
  Image(std::shared_ptr<DrawingContext> context, Picture picture);

  /// A square a quarter larger than the letters of that size. Symbols have one weight here. Null
  /// when this image is no symbol.
  std::shared_ptr<NS::Image> withSymbolConfiguration(
      const NS::SymbolConfiguration& configuration) override;
  void setTemplate(bool isTemplate) override;
  NS::Size size() const override { return picture_.size; }
  void lockFocus() override;
  void unlockFocus() override;

  /// Without effect when no image has the focus, or this one has.
  void drawInRect(const NS::Rect& rect) override;

  const Picture& picture() const { return picture_; }

  /// Fills what is there already with the colour.
  void fillAtop(Rgb color, const NS::Rect& rect);

 private:
  std::shared_ptr<DrawingContext> context_;
  Picture picture_;
};

/// The symbol at the system's own size.
std::shared_ptr<Image> makeSymbolImage(std::shared_ptr<DrawingContext> context,
                                       const std::string& name);

class Color final : public NS::Color {
 public:
  Color(std::shared_ptr<DrawingContext> context, Rgb value);
  void set() const override;

 private:
  std::shared_ptr<DrawingContext> context_;
  Rgb value_;
};

/// Names no font: the panel draws the text in its own.
class Font final : public NS::Font {};

}  // namespace audrel::linuxos
