#include "tests/macos/frameworks/FakeGraphics.h"

#include <cstdio>

#include "tests/macos/frameworks/FakeFoundation.h"
#include "tests/macos/frameworks/FakeMac.h"

using audrel::fakemac::mac;
using audrel::fakemac::number;
using audrel::fakemac::text;

const NSFontWeight NSFontWeightRegular = 0;

static std::string shown(NSSize size) {
  return number(size.width) + " x " + number(size.height);
}

static std::string shown(NSRect rect) {
  return number(rect.origin.x) + ", " + number(rect.origin.y) + ", " + shown(rect.size);
}

@implementation NSColor {
 @public
  std::string _name;
}

/// What `set` made current.
static std::string currentColor;

+ (NSColor*)systemRedColor {
  NSColor* color = [[NSColor alloc] init];
  color->_name = "red";
  return color;
}

+ (NSColor*)systemOrangeColor {
  NSColor* color = [[NSColor alloc] init];
  color->_name = "orange";
  return color;
}

- (void)set {
  currentColor = _name;
  mac().noteDetail("NSColor " + _name + " is set");
}

@end

@implementation NSFont {
 @public
  std::string _name;
}

+ (NSFont*)monospacedDigitSystemFontOfSize:(CGFloat)size weight:(NSFontWeight)weight {
  NSFont* font = [[NSFont alloc] init];
  font->_name = "monospaced digits, " + number(size) + " pt, weight " + number(weight);
  return font;
}

@end

@implementation NSImageSymbolConfiguration {
 @public
  std::string _name;
}

+ (instancetype)configurationWithPointSize:(CGFloat)pointSize weight:(NSFontWeight)weight {
  NSImageSymbolConfiguration* configuration = [[NSImageSymbolConfiguration alloc] init];
  configuration->_name = number(pointSize) + " pt, weight " + number(weight);
  return configuration;
}

@end

static NSImage* focused;

@implementation NSImage {
 @public
  std::string _content;
  std::string _name;
  NSSize _size;
  BOOL _isTemplate;
}
@dynamic size;

static NSImage* madeImage(const std::string& content, NSSize size) {
  NSImage* image = [[NSImage alloc] init];
  image->_content = content;
  image->_name = "image " + std::to_string(++mac().images);
  image->_size = size;
  return image;
}

+ (instancetype)imageWithSystemSymbolName:(NSString*)name
                 accessibilityDescription:(NSString*)description {
  if (!mac().symbols.contains(text(name))) {
    return nil;
  }
  const std::string described = description == nil ? "" : " described as " + text(description);
  NSImage* image = madeImage(text(name) + described, NSSize{17, 15});
  mac().noteDetail("NSImage.imageWithSystemSymbolName: " + text(name) + " -> " + image->_name);
  return image;
}

- (instancetype)initWithSize:(NSSize)size {
  NSImage* image = madeImage("", size);
  mac().noteDetail("NSImage.initWithSize: " + shown(size) + " -> " + image->_name);
  return image;
}

- (NSImage*)imageWithSymbolConfiguration:(NSImageSymbolConfiguration*)configuration {
  NSImage* image = madeImage(_content + " at " + configuration->_name, _size);
  mac().noteDetail(_name + ".imageWithSymbolConfiguration: " + configuration->_name + " -> " +
                   image->_name);
  return image;
}

- (NSSize)size {
  return _size;
}

- (void)setSize:(NSSize)size {
  _size = size;
}

- (BOOL)isTemplate {
  return _isTemplate;
}

- (void)setTemplate:(BOOL)isTemplate {
  _isTemplate = isTemplate;
  mac().noteDetail(_name + ".template = " + (isTemplate ? "true" : "false"));
}

- (void)lockFocus {
  focused = self;
  mac().noteDetail(_name + ".lockFocus");
}

- (void)unlockFocus {
  focused = nil;
  mac().noteDetail(_name + ".unlockFocus");
}

- (void)drawInRect:(NSRect)rect {
  focused->_content += _content + " in " + shown(rect.size);
  mac().noteDetail(_name + ".drawInRect: " + shown(rect));
}

@end

void NSRectFillUsingOperation(NSRect rect, NSCompositingOperation operation) {
  focused->_content += ", filled " + currentColor + " with operation " + std::to_string(operation) +
                       " in " + shown(rect.size);
  mac().noteDetail("NSRectFillUsingOperation(" + shown(rect) + ", " + std::to_string(operation) +
                   ")");
}

namespace audrel::fakemac {

std::string number(double value) {
  char digits[32];
  std::snprintf(digits, sizeof digits, "%g", value);
  return digits;
}

std::string nameOf(NSFont* font) {
  return font == nil ? "nil" : font->_name;
}

std::string nameOf(NSImage* image) {
  return image == nil ? "nil" : image->_name;
}

std::string shown(NSImage* image) {
  return image == nil ? "no image" : image->_content + (image.isTemplate ? ", template" : "");
}

void resetGraphics() {
  focused = nil;
  currentColor.clear();
}

}  // namespace audrel::fakemac
