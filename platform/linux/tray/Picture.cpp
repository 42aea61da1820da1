#include "platform/linux/tray/Picture.h"

namespace audrel::linuxos {

namespace {

bool covers(const NS::Rect& rect, const Picture& picture) {
  return rect == NS::Rect{0, 0, picture.size};
}

/// The symbol that the first step draws over the whole picture.
const SymbolStep* symbolBelow(const Picture& picture) {
  if (picture.steps.empty()) {
    return nullptr;
  }
  if (const auto* drawn = std::get_if<PictureStep>(&picture.steps.front())) {
    const bool isWhole = covers(drawn->rect, picture) && drawn->picture->steps.size() == 1;
    return isWhole ? symbolBelow(*drawn->picture) : nullptr;
  }
  return std::get_if<SymbolStep>(&picture.steps.front());
}

}  // namespace

bool PictureStep::operator==(const PictureStep& other) const {
  return rect == other.rect && *picture == *other.picture;
}

std::optional<TintedSymbol> tintedSymbolOf(const Picture& picture) {
  const SymbolStep* symbol = symbolBelow(picture);
  if (symbol == nullptr || picture.steps.size() > 2) {
    return std::nullopt;
  }
  if (picture.steps.size() == 1) {
    return TintedSymbol{symbol->name, std::nullopt};
  }
  const auto* fill = std::get_if<FillStep>(&picture.steps.back());
  if (fill == nullptr || !covers(fill->rect, picture)) {
    return std::nullopt;
  }
  return TintedSymbol{symbol->name, fill->color};
}

}  // namespace audrel::linuxos
