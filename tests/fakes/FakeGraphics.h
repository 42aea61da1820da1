#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/AppKit.h"
#include "tests/fakes/Journal.h"

namespace audrel::fakes {

class FakeImage;

/// As the journal has them: "18 x 16", "(0, 0, 18 x 16)".
std::string shown(NS::Size size);
std::string shown(const NS::Rect& rect);

/// What drawing goes into, and with which colour. Drawing without a focus throws.
class FakeGraphics {
 public:
  explicit FakeGraphics(Journal& journal) : journal_(journal) {}

  Journal& journal() { return journal_; }

  void push(FakeImage& image);
  void pop(FakeImage& image);
  void setColor(const std::string& color);
  void draw(const FakeImage& image, const NS::Rect& rect);
  void fill(const NS::Rect& rect, NS::CompositingOperation operation);

  std::string nextImageName() { return "image " + std::to_string(++images_); }

 private:
  struct Focus {
    FakeImage* image;
    std::string color;
  };

  Focus& focus();

  Journal& journal_;
  std::vector<Focus> stack_;
  int images_ = 0;
};

/// Remembers what it was made from.
class FakeImage final : public NS::Image {
 public:
  /// `content` in words. `isConfigurable`: a symbol that has configurations.
  FakeImage(FakeGraphics& graphics, std::string content, NS::Size size, bool isConfigurable);

  std::shared_ptr<NS::Image> withSymbolConfiguration(
      const NS::SymbolConfiguration& configuration) override;
  void setTemplate(bool isTemplate) override;
  NS::Size size() const override { return size_; }
  void lockFocus() override;
  void unlockFocus() override;
  void drawInRect(const NS::Rect& rect) override;

  void add(const std::string& drawing) { content_ += "; " + drawing; }

  /// "image 3", in the order in which images were made.
  const std::string& name() const { return name_; }

  /// Its content, and whether it is a template.
  std::string shown() const;

 private:
  FakeGraphics& graphics_;
  std::string name_;
  std::string content_;
  NS::Size size_;
  bool isConfigurable_;
  bool isTemplate_ = false;
};

class FakeColor final : public NS::Color {
 public:
  FakeColor(FakeGraphics& graphics, std::string name)
      : graphics_(graphics), name_(std::move(name)) {}

  void set() const override { graphics_.setColor(name_); }

 private:
  FakeGraphics& graphics_;
  std::string name_;
};

class FakeFont final : public NS::Font {
 public:
  explicit FakeFont(std::string description) : description_(std::move(description)) {}

  const std::string& description() const { return description_; }

 private:
  std::string description_;
};

}  // namespace audrel::fakes
