#include "tests/macos/frameworks/FakeFoundation.h"

#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <map>
#include <vector>

#include "tests/macos/frameworks/FakeMac.h"

using audrel::fakemac::mac;
using audrel::fakemac::made;

namespace {

/// As Foundation: neither overlong nor cut off nor half of a surrogate pair.
bool isUtf8(const unsigned char* at, const unsigned char* end) {
  while (at < end) {
    const unsigned char first = *at++;
    if (first < 0x80) {
      continue;
    }
    const int length = first >= 0xF0 ? 3 : first >= 0xE0 ? 2 : 1;
    if (first < 0xC2 || first > 0xF4 || end - at < length) {
      return false;
    }
    unsigned code = first & (0x3FU >> length);
    for (int i = 0; i < length; ++i, ++at) {
      if ((*at & 0xC0) != 0x80) {
        return false;
      }
      code = code << 6 | (*at & 0x3F);
    }
    const bool isOverlong = (length == 2 && code < 0x800) || (length == 3 && code < 0x10000);
    if (isOverlong || (code >= 0xD800 && code < 0xE000) || code > 0x10FFFF) {
      return false;
    }
  }
  return true;
}

std::string fromLatin1(const char* bytes, std::size_t size) {
  std::string text;
  for (std::size_t i = 0; i < size; ++i) {
    const auto byte = static_cast<unsigned char>(bytes[i]);
    if (byte < 0x80) {
      text += static_cast<char>(byte);
    } else {
      text += static_cast<char>(0xC0 | byte >> 6);
      text += static_cast<char>(0x80 | (byte & 0x3F));
    }
  }
  return text;
}

}  // namespace

@implementation NSString {
 @public
  std::string _text;
}

- (instancetype)initWithBytes:(const void*)bytes
                       length:(NSUInteger)length
                     encoding:(NSStringEncoding)encoding {
  const auto* first = static_cast<const unsigned char*>(bytes);
  if (encoding == NSUTF8StringEncoding) {
    if (!isUtf8(first, first + length)) {
      return nil;
    }
    _text.assign(static_cast<const char*>(bytes), length);
  } else {
    _text = fromLatin1(static_cast<const char*>(bytes), length);
  }
  return self;
}

- (const char*)UTF8String {
  return _text.c_str();
}

- (NSComparisonResult)localizedCaseInsensitiveCompare:(NSString*)string {
  const int order = strcasecmp(self.UTF8String, string.UTF8String);
  return order < 0 ? NSOrderedAscending : order > 0 ? NSOrderedDescending : NSOrderedSame;
}

- (id)copy {
  return self;
}

@end

/// What the compiler lays out for @"...".
@interface NSConstantString : NSString {
 @public
  int _flags;
  const char* _bytes;
  long _length;
}
@end

@implementation NSConstantString

// The compiler's object has no room for what NSString's would hold: these are where the compiler
// put them, behind the class.
- (const char*)UTF8String {
  struct Constant {
    void* isa;
    int flags;
    const char* bytes;
    long length;
  };
  return ((__bridge const Constant*)self)->bytes;
}

@end

@implementation NSValue

@end

@implementation NSNumber {
 @public
  std::string _described;
}

static NSNumber* numberDescribed(const std::string& text) {
  NSNumber* number = [[NSNumber alloc] init];
  number->_described = text;
  return number;
}

+ (NSNumber*)numberWithBool:(BOOL)value {
  return numberDescribed(value ? "Boolean true" : "Boolean false");
}

+ (NSNumber*)numberWithDouble:(double)value {
  return numberDescribed("double " + std::to_string(value));
}

+ (NSNumber*)numberWithLongLong:(long long)value {
  return numberDescribed("integer " + std::to_string(value));
}

+ (NSNumber*)numberWithUnsignedInt:(unsigned int)value {
  return numberDescribed("u32 " + std::to_string(value));
}

@end

@implementation NSArray {
 @public
  std::vector<id> _objects;
}

- (NSUInteger)count {
  return _objects.size();
}

- (id)firstObject {
  return _objects.empty() ? nil : _objects.front();
}

- (id)objectAtIndexedSubscript:(NSUInteger)index {
  return _objects.at(index);
}

@end

@implementation NSMutableArray

+ (instancetype)array {
  return [[self alloc] init];
}

- (void)addObject:(id)object {
  if (object == nil) {
    abort();
  }
  _objects.push_back(object);
}

@end

@implementation NSDictionary {
 @public
  std::map<std::string, id> _values;
}

- (id)objectForKeyedSubscript:(id)key {
  const auto found = _values.find([(NSString*)key UTF8String]);
  return found == _values.end() ? nil : found->second;
}

@end

@implementation NSMutableDictionary

+ (instancetype)dictionary {
  return [[self alloc] init];
}

- (void)setObject:(id)object forKeyedSubscript:(id<NSCopying>)key {
  _values[[(NSString*)key UTF8String]] = object;
}

@end

@implementation NSError {
 @public
  NSString* _domain;
  NSInteger _code;
  NSString* _localizedDescription;
}
@synthesize domain = _domain;
@synthesize code = _code;
@synthesize localizedDescription = _localizedDescription;
@end

@implementation NSURL {
 @public
  std::string _url;
}

/// Of what is no URL, only two kinds are known here.
+ (instancetype)URLWithString:(NSString*)string {
  const std::string text = string.UTF8String;
  if (text.empty() || text.ends_with("://[")) {
    return nil;
  }
  NSURL* url = [[NSURL alloc] init];
  url->_url = text;
  return url;
}

+ (NSURL*)fileURLWithFileSystemRepresentation:(const char*)path
                                  isDirectory:(BOOL)isDirectory
                                relativeToURL:(NSURL*)baseURL {
  NSURL* url = [[NSURL alloc] init];
  url->_url = path;
  return url;
}

- (NSString*)absoluteString {
  return made(_url);
}

- (const char*)fileSystemRepresentation {
  return _url.c_str();
}

@end

@implementation NSUUID {
  NSString* _text;
}

+ (instancetype)UUID {
  NSUUID* uuid = [[self alloc] init];
  char text[40];
  std::snprintf(text, sizeof text, "00000000-0000-4000-8000-%012X", 0xABCD + mac().uuids++);
  uuid->_text = made(text);
  return uuid;
}

- (NSString*)UUIDString {
  mac().note("NSUUID.UUIDString -> " + audrel::fakemac::described(_text));
  return _text;
}

@end

@implementation NSFileManager

+ (NSFileManager*)defaultManager {
  return [[NSFileManager alloc] init];
}

- (NSURL*)homeDirectoryForCurrentUser {
  return [NSURL fileURLWithFileSystemRepresentation:"/Users/test"
                                        isDirectory:YES
                                      relativeToURL:nil];
}

- (NSArray<NSURL*>*)URLsForDirectory:(NSSearchPathDirectory)directory
                           inDomains:(NSSearchPathDomainMask)domains {
  NSMutableArray<NSURL*>* urls = [NSMutableArray array];
  std::string answer;
  if (directory == NSDownloadsDirectory && domains == NSUserDomainMask) {
    for (const std::string& path : mac().downloads) {
      [urls addObject:[NSURL fileURLWithFileSystemRepresentation:path.c_str()
                                                     isDirectory:YES
                                                   relativeToURL:nil]];
      answer += (answer.empty() ? "" : ", ") + path;
    }
  }
  mac().note("NSFileManager.URLsForDirectory: " + std::to_string(directory) +
             " inDomains: " + std::to_string(domains) + " -> \"" + answer + "\"");
  return urls;
}

- (BOOL)fileExistsAtPath:(NSString*)path {
  if (path == nil) {
    abort();  // declared nonnull
  }
  const bool exists =
      mac().hasDisk ? access(path.UTF8String, F_OK) == 0 : mac().existing.contains(path.UTF8String);
  mac().note("NSFileManager.fileExistsAtPath: " + audrel::fakemac::described(path) + " -> " +
             (exists ? "true" : "false"));
  return exists;
}

- (NSString*)stringWithFileSystemRepresentation:(const char*)path length:(NSUInteger)length {
  return made(std::string(path, length));
}

@end

@implementation NSUserDefaults

+ (NSUserDefaults*)standardUserDefaults {
  return [[NSUserDefaults alloc] init];
}

- (NSString*)stringForKey:(NSString*)key {
  const auto found = mac().defaults.find(key.UTF8String);
  NSString* value = found == mac().defaults.end() ? nil : made(found->second);
  mac().note("NSUserDefaults " + audrel::fakemac::text(key) + " -> " +
             audrel::fakemac::described(value));
  return value;
}

- (void)setObject:(id)value forKey:(NSString*)key {
  mac().note("NSUserDefaults " + audrel::fakemac::text(key) + " = " +
             audrel::fakemac::described(value));
  mac().defaults[key.UTF8String] = [(NSString*)value UTF8String];
}

- (void)removeObjectForKey:(NSString*)key {
  mac().note("NSUserDefaults without " + audrel::fakemac::text(key));
  mac().defaults.erase(key.UTF8String);
}

- (void)removePersistentDomainForName:(NSString*)domainName {
  mac().note("NSUserDefaults without the domain " + audrel::fakemac::text(domainName));
  if (mac().processName == domainName.UTF8String) {
    mac().defaults.clear();
  }
}

@end

@implementation NSProcessInfo

+ (NSProcessInfo*)processInfo {
  return [[NSProcessInfo alloc] init];
}

- (NSString*)processName {
  return made(mac().processName);
}

@end

/// What the run loop holds.
static std::vector<NSTimer*>& timers() {
  static auto* const timers = new std::vector<NSTimer*>;
  return *timers;
}

@implementation NSTimer {
 @public
  void (^_block)(NSTimer*);
  std::string _name;
}

+ (NSTimer*)scheduledTimerWithTimeInterval:(NSTimeInterval)interval
                                   repeats:(BOOL)repeats
                                     block:(void (^)(NSTimer* timer))block {
  NSTimer* timer = [[NSTimer alloc] init];
  timer->_name = "timer " + std::to_string(++mac().timers);
  mac().note("NSTimer every " + std::to_string(interval) + " s" + (repeats ? "" : ", once") +
             " -> " + timer->_name);
  timer->_block = block;
  timers().push_back(timer);
  return timer;
}

- (void)invalidate {
  mac().note(_name + " invalidated");
  _block = nil;
  std::erase_if(timers(), [=](NSTimer* timer) { return timer == self; });
}

@end

@implementation NSNotification
@end

@implementation NSException {
 @public
  NSString* _name;
  NSString* _reason;
}
@synthesize name = _name;
@synthesize reason = _reason;
@end

// The timer alone holds its block: one that invalidates its timer is gone while it runs.
void fireTimers() {
  const std::vector<NSTimer*> scheduled = timers();
  for (NSTimer* timer : scheduled) {
    @autoreleasepool {
      __unsafe_unretained void (^block)(NSTimer*) = timer->_block;
      if (block != nil) {
        mac().note(timer->_name + " fires");
        block(timer);
      }
    }
  }
}

const CFRunLoopMode kCFRunLoopDefaultMode = (__bridge CFStringRef) @"kCFRunLoopDefaultMode";

// As if as much time had passed as it takes for each timer to fire once.
CFRunLoopRunResult CFRunLoopRunInMode(CFRunLoopMode mode, CFTimeInterval seconds,
                                      Boolean returnAfterSourceHandled) {
  fireTimers();
  return kCFRunLoopRunTimedOut;
}

std::size_t scheduledTimers() {
  return timers().size();
}

namespace audrel::fakemac {

void raise(const std::string& name, const std::optional<std::string>& reason) {
  NSException* exception = [[NSException alloc] init];
  exception->_name = made(name);
  exception->_reason = reason ? made(*reason) : nil;
  @throw exception;
}

NSString* made(const std::string& text) {
  return [[NSString alloc] initWithBytes:text.data()
                                  length:text.size()
                                encoding:NSUTF8StringEncoding];
}

NSError* made(const Failure& failure) {
  NSError* error = [[NSError alloc] init];
  error->_domain = made(failure.domain);
  error->_code = failure.code;
  error->_localizedDescription = made(failure.description);
  return error;
}

std::string text(NSString* string) {
  const char* bytes = string.UTF8String;
  return bytes == nullptr ? "nil" : bytes;
}

std::string described(id object) {
  if (object == nil) {
    return "nil";
  }
  const Class type = [object class];
  if (type == [NSNumber class]) {
    return static_cast<NSNumber*>(object)->_described;
  }
  if (type == [NSMutableArray class]) {
    std::string all;
    for (id element : static_cast<NSArray*>(object)->_objects) {
      all += (all.empty() ? "" : ", ") + described(element);
    }
    return "[" + all + "]";
  }
  if (type == [NSMutableDictionary class]) {
    std::string all;
    for (const auto& [key, value] : static_cast<NSDictionary*>(object)->_values) {
      all += (all.empty() ? "" : ", ") + key + ": " + described(value);
    }
    return "{" + all + "}";
  }
  return "\"" + text(object) + "\"";
}

}  // namespace audrel::fakemac
