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
