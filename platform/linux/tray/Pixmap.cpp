#include "platform/linux/tray/Pixmap.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <initializer_list>

#include "platform/linux/tray/Symbols.h"

namespace audrel::linuxos {

namespace {

constexpr Rgb templateGrey{0x80, 0x80, 0x80};

/// Points looked at along each side of a dot.
constexpr int samplesPerSide = 4;

/// The ink at one point, if there is any. Inks cover fully, so edges come from averaging points.
using Ink = std::optional<Rgb>;

bool contains(const NS::Rect& rect, double x, double y) {
  return x >= rect.x && x < rect.x + rect.size.width && y >= rect.y &&
         y < rect.y + rect.size.height;
}

Ink inkAt(const Picture& picture, double x, double y);

/// Adds one step of a picture to the ink at a point.
class Brush {
 public:
  Brush(const Picture& picture, double x, double y) : picture_(picture), x_(x), y_(y) {}

  const Ink& ink() const { return ink_; }

  void operator()(const SymbolStep& step) {
    if (symbolCovers(step.name, x_ / picture_.size.width, y_ / picture_.size.height)) {
      ink_ = Rgb{};
    }
  }

  void operator()(const PictureStep& step) {
    if (!contains(step.rect, x_, y_)) {
      return;
    }
    const NS::Size& size = step.picture->size;
    const Ink above = inkAt(*step.picture, (x_ - step.rect.x) * size.width / step.rect.size.width,
                            (y_ - step.rect.y) * size.height / step.rect.size.height);
    ink_ = above ? above : ink_;
  }

  void operator()(const FillStep& step) {
    if (ink_ && contains(step.rect, x_, y_)) {
      ink_ = step.color;
    }
  }

 private:
  const Picture& picture_;
  double x_;
  double y_;
  Ink ink_;
};

Ink inkAt(const Picture& picture, double x, double y) {
  Brush brush(picture, x, y);
  for (const auto& step : picture.steps) {
    std::visit(brush, step);
  }
  return brush.ink();
}

/// Adds up the points of one dot.
class Dot {
 public:
  void add(const Ink& ink) {
    if (ink) {
      ++inked_;
      red_ += ink->red;
      green_ += ink->green;
      blue_ += ink->blue;
    }
  }

  void appendTo(std::vector<std::uint8_t>& bytes) const {
    constexpr int points = samplesPerSide * samplesPerSide;
    const int divisor = std::max(inked_, 1);
    for (const int value :
         {inked_ * 255 / points, red_ / divisor, green_ / divisor, blue_ / divisor}) {
      bytes.push_back(static_cast<std::uint8_t>(value));
    }
  }

 private:
  int inked_ = 0;
  int red_ = 0;
  int green_ = 0;
  int blue_ = 0;
};

}  // namespace

Pixmap drawPixmap(const Picture& picture, int side) {
  Pixmap pixmap{.side = side, .argb = {}};
  pixmap.argb.reserve(static_cast<std::size_t>(side) * static_cast<std::size_t>(side) * 4);
  const double extent = std::max(picture.size.width, picture.size.height);
  const double pointsPerSample = extent / (side * samplesPerSide);
  const double left = (picture.size.width - extent) / 2;
  const double bottom = (picture.size.height - extent) / 2;
  for (int row = side - 1; row >= 0; --row) {
    for (int column = 0; column < side; ++column) {
      Dot dot;
      for (int sample = 0; sample < samplesPerSide * samplesPerSide; ++sample) {
        const int sampleRow = sample / samplesPerSide;
        const double x = column * samplesPerSide + sample % samplesPerSide + 0.5;
        const double y = row * samplesPerSide + sampleRow + 0.5;
        const Ink ink = inkAt(picture, left + x * pointsPerSample, bottom + y * pointsPerSample);
        dot.add(ink && picture.isTemplate ? Ink(templateGrey) : ink);
      }
      dot.appendTo(pixmap.argb);
    }
  }
  return pixmap;
}

}  // namespace audrel::linuxos
