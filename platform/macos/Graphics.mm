#include "platform/macos/Graphics.h"

namespace audrel::macos {

std::shared_ptr<NS::Image> Image::withSymbolConfiguration(
    const NS::SymbolConfiguration& configuration) {
  @autoreleasepool {
    NSImage* image =
        [image_ imageWithSymbolConfiguration:[NSImageSymbolConfiguration
                                                 configurationWithPointSize:configuration.pointSize
                                                                     weight:configuration.weight]];
    return image == nil ? nullptr : std::make_shared<Image>(image);
  }
}

void Image::setTemplate(bool isTemplate) {
  @autoreleasepool {
    [image_ setTemplate:isTemplate];
  }
}

NS::Size Image::size() const {
  @autoreleasepool {
    const NSSize size = image_.size;
    return {size.width, size.height};
  }
}

// What the system has in their place draws at a time and a resolution of its own; these draw now,
// as the interface says.
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wdeprecated-declarations"

void Image::lockFocus() {
  @autoreleasepool {
    [image_ lockFocus];
  }
}

void Image::unlockFocus() {
  @autoreleasepool {
    [image_ unlockFocus];
  }
}

#pragma clang diagnostic pop

void Image::drawInRect(const NS::Rect& rect) {
  @autoreleasepool {
    [image_ drawInRect:systemRect(rect)];
  }
}

void Color::set() const {
  @autoreleasepool {
    [color_ set];
  }
}

}  // namespace audrel::macos
