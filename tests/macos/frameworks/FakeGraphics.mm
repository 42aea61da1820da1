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

static NSColor* madeColor(const std::string& name) {
  NSColor* color = [[NSColor alloc] init];
  color->_name = name;
  return color;
}

+ (NSColor*)systemRedColor {
  return madeColor("red");
}

+ (NSColor*)systemOrangeColor {
  return madeColor("orange");
}

- (void)set {
  mac().note("NSColor " + _name + " is set");
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

@implementation NSImage {
 @public
  std::string _name;
  BOOL _isTemplate;
}

static NSImage* madeImage(NSSize size) {
  NSImage* image = [[NSImage alloc] init];
  image->_name = "image " + std::to_string(++mac().images);
  image.size = size;
  return image;
}

+ (instancetype)imageWithSystemSymbolName:(NSString*)name
                 accessibilityDescription:(NSString*)description {
  if (text(name) != "waveform.circle" && text(name) != "waveform.circle.fill") {
    return nil;
  }
  NSImage* image = madeImage(NSSize{17, 15});
  mac().note("NSImage.imageWithSystemSymbolName: " + text(name) +
             (description == nil ? "" : " described as " + text(description)) + " -> " +
             image->_name);
  return image;
}

- (instancetype)initWithSize:(NSSize)size {
  NSImage* image = madeImage(size);
  mac().note("NSImage.initWithSize: " + shown(size) + " -> " + image->_name);
  return image;
}

- (NSImage*)imageWithSymbolConfiguration:(NSImageSymbolConfiguration*)configuration {
  NSImage* image = madeImage(self.size);
  mac().note(_name + ".imageWithSymbolConfiguration: " + configuration->_name + " -> " +
             image->_name);
  return image;
}

- (BOOL)isTemplate {
  return _isTemplate;
}

- (void)setTemplate:(BOOL)isTemplate {
  _isTemplate = isTemplate;
  mac().note(_name + ".template = " + (isTemplate ? "true" : "false"));
}

- (void)lockFocus {
  mac().note(_name + ".lockFocus");
}

- (void)unlockFocus {
  mac().note(_name + ".unlockFocus");
}

- (void)drawInRect:(NSRect)rect {
  mac().note(_name + ".drawInRect: " + shown(rect));
}

@end

void NSRectFillUsingOperation(NSRect rect, NSCompositingOperation operation) {
  mac().note("NSRectFillUsingOperation(" + shown(rect) + ", " + std::to_string(operation) + ")");
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

}  // namespace audrel::fakemac
